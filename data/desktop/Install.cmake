# Installs the desktop entry, the scalable icon, the chain-file MIME type, the
# AppStream metainfo, the licence, the help document and the sample filters
# (the PNG icons: tools/icongen; the manual pages: docs/man), and tells the
# window where the build tree keeps the files it looks for when it runs
# uninstalled.
set(QUILLON_DESKTOP_DIR ${CMAKE_SOURCE_DIR}/data/desktop)

install(FILES ${QUILLON_HELP_PDF} DESTINATION ${CMAKE_INSTALL_DATADIR}/quillon)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/data/filters DESTINATION ${CMAKE_INSTALL_DATADIR}/quillon)
install(FILES ${QUILLON_DESKTOP_DIR}/org.quillon.Quillon.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${QUILLON_DESKTOP_DIR}/quillon.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${QUILLON_DESKTOP_DIR}/quillon-chain.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
install(FILES ${QUILLON_DESKTOP_DIR}/org.quillon.Quillon.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${CMAKE_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/quillon)

# With --demo the window uses the stand-in tool and the
# sample filters; an installed copy finds them next to its executable, a
# build tree through these paths.
set_source_files_properties(
  ${CMAKE_SOURCE_DIR}/src/app/DemoProfile.cpp
  DIRECTORY ${CMAKE_SOURCE_DIR}/src
  PROPERTIES COMPILE_DEFINITIONS
    "QUILLON_SAMPLE_FILTERS_DIR=\"${CMAKE_SOURCE_DIR}/data/filters\";QUILLON_STANDIN_BUILD_PATH=\"$<TARGET_FILE:quillon-standin-render>\"")
add_dependencies(quillon quillon-help quillon-standin-render)
# Tests of the window look for the help document too.
add_dependencies(quillon_ui quillon-help)

# Register the chain-file type and the desktop entry's association with it,
# so a double-click on a .qlch file opens Quillon. Packagers (DESTDIR set)
# leave this to the system's triggers.
install(CODE "set(QUILLON_DATADIR \"${CMAKE_INSTALL_DATADIR}\")")
install(CODE [[
  if("$ENV{DESTDIR}" STREQUAL "")
    find_program(QUILLON_UPDATE_MIME update-mime-database)
    find_program(QUILLON_UPDATE_DESKTOP update-desktop-database)
    if(QUILLON_UPDATE_MIME)
      execute_process(COMMAND ${QUILLON_UPDATE_MIME} "${CMAKE_INSTALL_PREFIX}/${QUILLON_DATADIR}/mime"
                    OUTPUT_QUIET ERROR_QUIET)
    endif()
    if(QUILLON_UPDATE_DESKTOP)
      execute_process(COMMAND ${QUILLON_UPDATE_DESKTOP} "${CMAKE_INSTALL_PREFIX}/${QUILLON_DATADIR}/applications"
                    OUTPUT_QUIET ERROR_QUIET)
    endif()
  endif()
]])

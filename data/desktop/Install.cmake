# Installs the desktop entry, the scalable icon, the chain-file MIME type, the
# AppStream metainfo, the licence, the help document and the sample filters
# (the PNG icons: tools/icongen; the manual pages: docs/man), and lays out the
# build tree's share/ like an install's.
set(QUILLON_DESKTOP_DIR ${CMAKE_SOURCE_DIR}/data/desktop)

install(FILES ${QUILLON_HELP_PDF} DESTINATION ${CMAKE_INSTALL_DATADIR}/quillon)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/data/filters DESTINATION ${CMAKE_INSTALL_DATADIR}/quillon)
install(FILES ${QUILLON_DESKTOP_DIR}/org.quillon.Quillon.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${QUILLON_DESKTOP_DIR}/quillon.svg
        DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES ${QUILLON_DESKTOP_DIR}/quillon-chain.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/mime/packages)
install(FILES ${QUILLON_DESKTOP_DIR}/org.quillon.Quillon.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${CMAKE_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/quillon)
# The JSON Schemas of the plan (--dry-run --json) and the run report.
install(FILES ${CMAKE_SOURCE_DIR}/schemas/plan.schema.json ${CMAKE_SOURCE_DIR}/schemas/report.schema.json
        DESTINATION ${CMAKE_INSTALL_DATADIR}/quillon/schemas)

# With --demo the window uses the stand-in tool and the sample filters, found
# relative to its executable only: the build tree has the filters at the place
# an install has them (<build>/share/quillon/filters, a link to the sources).
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/share/quillon)
file(CREATE_LINK ${CMAKE_SOURCE_DIR}/data/filters ${CMAKE_BINARY_DIR}/share/quillon/filters SYMBOLIC)
add_dependencies(quillon quillon-help quillon-standin-render)
# Tests of the window look for the help document too.
add_dependencies(quillon_ui quillon-help)

# The MIME and desktop caches (share/mime/mime.cache,
# share/applications/mimeinfo.cache) are the system's: a package's triggers
# rebuild them, and an install never writes them.

# The Debian package (cpack -G DEB in the build directory, or
# scripts/package-check.sh): the install rules under /usr, the library
# dependencies found by dpkg-shlibdeps. The MIME and desktop caches are left to
# the triggers of shared-mime-info and desktop-file-utils.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quillon)
set(CPACK_PACKAGE_VENDOR "Quillon")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Quillon developers <developers@quillon.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "batch renderer for filter chains through a render tool")
string(CONCAT CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "Quillon renders images in batches through an external command-line render\n"
    "tool: a chain of filters, each with parameters that vary over the frames,\n"
    "applied to one image, a folder of images or none. It comes as a window\n"
    "(quillon) and a command line (quillon-cli) with the same checks and output.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://quillon.org/")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Plugins Qt loads at run time, which dpkg-shlibdeps cannot see: the window's
# platform, SVG icons and TIFF/TGA thumbnails.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-qpa-plugins, libqt6svg6, qt6-image-formats-plugins")

# What Debian asks of every package: the copyright file and the compressed
# changelog beside the licence.
set(QUILLON_DEBIAN_CHANGELOG ${CMAKE_BINARY_DIR}/share/doc/quillon/changelog.Debian.gz)
add_custom_command(
  OUTPUT ${QUILLON_DEBIAN_CHANGELOG}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/share/doc/quillon
  COMMAND gzip -9nc ${CMAKE_SOURCE_DIR}/data/debian/changelog > ${QUILLON_DEBIAN_CHANGELOG}
  DEPENDS ${CMAKE_SOURCE_DIR}/data/debian/changelog)
add_custom_target(quillon-debian-changelog ALL DEPENDS ${QUILLON_DEBIAN_CHANGELOG})
install(FILES ${CMAKE_SOURCE_DIR}/data/debian/copyright ${QUILLON_DEBIAN_CHANGELOG}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/quillon)
include(CPack)

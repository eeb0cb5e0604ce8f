# `make deb` (cpack -G DEB in the build folder): one Debian package of everything `cmake --install`
# installs, under /usr. Its dependencies are what dpkg-shlibdeps finds in the programs and their
# modules, plus what they load by name at run time, which it cannot see.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME pixcove)
set(CPACK_PACKAGE_VENDOR "Tallowmere")
set(CPACK_PACKAGE_CONTACT "Pixcove maintainers <pixcove@tallowmere.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "fast browser for folders of images and videos")
set(CPACK_PACKAGE_DESCRIPTION "Pixcove opens folders of images and videos in windows, shows thumbnails of tens of
thousands of camera files, reads their camera, exposure, IPTC and GPS metadata, views them large,
and flags, moves, copies, renames, rotates and trashes them. pixcove-cli serves scripts with the
same core.")
set(CPACK_PACKAGE_HOMEPAGE_URL "${PIXCOVE_WEBSITE_URL}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# libheif is opened by name on the first HEIF file; Qt's platform plugins are found at start.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libheif1, qt6-qpa-plugins")
# More image formats (TIFF, WebP), Wayland, and the second video player.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "qt6-image-formats-plugins, qt6-wayland, vlc-plugin-base, vlc-plugin-video-output")
include(CPack)

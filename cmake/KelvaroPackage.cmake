# What `cmake --install` puts where, and the Debian package that `cpack` makes of it.

include(GNUInstallDirs)
install(FILES share/app.kelvaro.Kelvaro.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES share/app.kelvaro.Kelvaro.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES share/app.kelvaro.Kelvaro.svg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/kelvaro RENAME copyright)

# Packing needs the programs, not the tests: build kelvaro and kelvaro-cli before.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kelvaro)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Photo library and non-destructive RAW developer")
set(CPACK_PACKAGE_CONTACT "Kelvaro <hello@kelvaro.app>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
# The libraries come from what the programs really need; the rest is used when it is there.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-inter, qt6-wayland")
include(CPack)

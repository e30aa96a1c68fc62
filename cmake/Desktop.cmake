# Desktop integration: launcher entry, AppStream metadata and the Debian package.
include(GNUInstallDirs)

set(ORVAN_APP_ID org.orvanrcu.OrvanRCU)
configure_file(${CMAKE_SOURCE_DIR}/data/${ORVAN_APP_ID}.metainfo.xml
               ${CMAKE_BINARY_DIR}/data/${ORVAN_APP_ID}.metainfo.xml @ONLY)
install(FILES ${CMAKE_SOURCE_DIR}/data/${ORVAN_APP_ID}.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_BINARY_DIR}/data/${ORVAN_APP_ID}.metainfo.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvanrcu)
set(CPACK_PACKAGE_VENDOR "The OrvanRCU developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Remote control for MIDI-controlled microphone preamplifiers")
set(CPACK_PACKAGE_CONTACT "The OrvanRCU developers <orvanrcu@localhost>")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Not linked, so shlibdeps cannot find them: the window needs Qt's platform plugins.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-urw-base35")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
include(CPack)

# Desktop integration: launcher entry, AppStream metadata and the Debian package.
include(GNUInstallDirs)

set(ORVAN_APP_ID org.orvanrcu.orvanrcu)
set(ORVAN_HOMEPAGE https://orvanrcu.org/)
set(ORVAN_SCREENSHOT_URL ${ORVAN_HOMEPAGE}docs/screenshot.png) # the README's picture
configure_file(${CMAKE_SOURCE_DIR}/data/${ORVAN_APP_ID}.metainfo.xml
               ${CMAKE_BINARY_DIR}/data/${ORVAN_APP_ID}.metainfo.xml @ONLY)
install(FILES ${CMAKE_SOURCE_DIR}/data/${ORVAN_APP_ID}.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_BINARY_DIR}/data/${ORVAN_APP_ID}.metainfo.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

# The icon is rendered at build time by the app itself and scaled with Qt; it is never checked in.
set(ORVAN_ICON_SIZES 1024 512 256 128 64 48)
set(icon_dir ${CMAKE_BINARY_DIR}/icons)
set(icon_outputs)
foreach(size IN LISTS ORVAN_ICON_SIZES)
  list(APPEND icon_outputs ${icon_dir}/${size}x${size}.png)
endforeach()
add_custom_command(
  OUTPUT ${icon_outputs}
  COMMAND ${CMAKE_COMMAND} -E make_directory ${icon_dir}
  COMMAND ${CMAKE_COMMAND} -E env QT_QPA_PLATFORM=offscreen $<TARGET_FILE:orvanrcu> --render-icon ${icon_dir}/rendered.png
  COMMAND orvan-icon-scale ${icon_dir}/rendered.png ${icon_dir} ${ORVAN_ICON_SIZES}
  DEPENDS orvanrcu orvan-icon-scale
  COMMENT "Rendering the application icon")
add_custom_target(orvan_icons ALL DEPENDS ${icon_outputs})
foreach(size IN LISTS ORVAN_ICON_SIZES)
  install(FILES ${icon_dir}/${size}x${size}.png
          DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps
          RENAME ${ORVAN_APP_ID}.png)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvanrcu)
set(CPACK_PACKAGE_VENDOR "The OrvanRCU developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Remote control for MIDI-controlled microphone preamplifiers")
set(CPACK_PACKAGE_CONTACT "The OrvanRCU developers <orvanrcu@localhost>")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_STRIP_FILES ON)
# Not linked, so shlibdeps cannot find them: the window needs Qt's platform plugins.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-urw-base35")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
include(CPack)

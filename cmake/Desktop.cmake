# Desktop integration: launcher entry, AppStream metadata, icons, manual pages and the Debian
# package.
include(GNUInstallDirs)

set(ORVAN_APP_ID org.orvanrcu.orvanrcu)
set(ORVAN_HOMEPAGE https://orvanrcu.org/)
set(ORVAN_SCREENSHOT_URL ${ORVAN_HOMEPAGE}docs/screenshot.png) # the README's picture
set(ORVAN_CONTACT "The OrvanRCU developers <developers@orvanrcu.org>")
# Debian looks for a package's documents under its package name, which is lower case.
set(ORVAN_PACKAGE_DOCDIR ${CMAKE_INSTALL_DATADIR}/doc/orvanrcu)

configure_file(${CMAKE_SOURCE_DIR}/data/${ORVAN_APP_ID}.metainfo.xml
               ${CMAKE_BINARY_DIR}/data/${ORVAN_APP_ID}.metainfo.xml @ONLY)
install(FILES ${CMAKE_SOURCE_DIR}/data/${ORVAN_APP_ID}.desktop
        DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${CMAKE_BINARY_DIR}/data/${ORVAN_APP_ID}.metainfo.xml
        DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)

# The simulator ships too: it is how a user tries the app, and it has its manual page.
install(TARGETS orvan-unit-sim RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# Icons are rendered from the one artwork at build time and never checked in. Debian's hicolor
# theme has folders up to 512; menus and panels use the small ones most.
set(ORVAN_ICON_SIZES 512 256 128 64 48 32 24 22 16)
# The sizes the window carries for task switchers and title bars; compiled in, so that showing
# the window never renders anything.
set(ORVAN_WINDOW_ICON_SIZES 16 24 32 48 64 128)
set(icon_dir ${CMAKE_BINARY_DIR}/icons)
set(icon_outputs)
foreach(size IN LISTS ORVAN_ICON_SIZES)
  list(APPEND icon_outputs ${icon_dir}/${size}x${size}.png)
endforeach()
add_custom_command(
  OUTPUT ${icon_outputs}
  COMMAND orvan-icon-export ${icon_dir} ${ORVAN_ICON_SIZES}
  DEPENDS orvan-icon-export
  COMMENT "Rendering the application icon")
add_custom_target(orvan_icons ALL DEPENDS ${icon_outputs})
foreach(size IN LISTS ORVAN_ICON_SIZES)
  install(FILES ${icon_dir}/${size}x${size}.png
          DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/${size}x${size}/apps
          RENAME ${ORVAN_APP_ID}.png)
endforeach()

set(window_icon_qrc ${icon_dir}/window_icon.qrc)
set(qrc_entries)
set(window_icon_files)
foreach(size IN LISTS ORVAN_WINDOW_ICON_SIZES)
  string(APPEND qrc_entries "    <file alias=\"window-icon/${size}.png\">${size}x${size}.png</file>\n")
  list(APPEND window_icon_files ${icon_dir}/${size}x${size}.png)
endforeach()
file(CONFIGURE OUTPUT ${window_icon_qrc}
     CONTENT "<RCC>\n  <qresource prefix=\"/\">\n${qrc_entries}  </qresource>\n</RCC>\n")
set_source_files_properties(${window_icon_files} PROPERTIES GENERATED TRUE)
qt_add_resources(window_icon_sources ${window_icon_qrc})
add_library(orvan_window_icon STATIC ${window_icon_sources})
add_dependencies(orvan_window_icon orvan_icons)
target_link_libraries(orvan_window_icon PRIVATE Qt6::Core)
target_link_libraries(orvan_app PUBLIC orvan_window_icon)

# Manual pages and the package's changelog, compressed the way Debian wants them: maximum
# compression and no time stamp, so that the same sources give the same package.
set(doc_outputs)
foreach(page orvanrcu orvan-unit-sim)
  configure_file(${CMAKE_SOURCE_DIR}/docs/man/${page}.1 ${CMAKE_BINARY_DIR}/man/${page}.1 @ONLY)
  list(APPEND doc_outputs ${CMAKE_BINARY_DIR}/man/${page}.1.gz)
  add_custom_command(
    OUTPUT ${CMAKE_BINARY_DIR}/man/${page}.1.gz
    COMMAND gzip -9nf -k ${CMAKE_BINARY_DIR}/man/${page}.1
    DEPENDS ${CMAKE_BINARY_DIR}/man/${page}.1)
  install(FILES ${CMAKE_BINARY_DIR}/man/${page}.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endforeach()
configure_file(${CMAKE_SOURCE_DIR}/data/changelog.in ${CMAKE_BINARY_DIR}/doc/changelog @ONLY)
list(APPEND doc_outputs ${CMAKE_BINARY_DIR}/doc/changelog.gz)
add_custom_command(
  OUTPUT ${CMAKE_BINARY_DIR}/doc/changelog.gz
  COMMAND gzip -9nf -k ${CMAKE_BINARY_DIR}/doc/changelog
  DEPENDS ${CMAKE_BINARY_DIR}/doc/changelog)
add_custom_target(orvan_docs ALL DEPENDS ${doc_outputs})
install(FILES ${CMAKE_BINARY_DIR}/doc/changelog.gz ${CMAKE_SOURCE_DIR}/data/copyright
        DESTINATION ${ORVAN_PACKAGE_DOCDIR})
install(FILES ${CMAKE_SOURCE_DIR}/data/orvanrcu.lintian-overrides
        DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME orvanrcu)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvanrcu)
set(CPACK_PACKAGE_VENDOR "The OrvanRCU developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "remote control for MIDI-controlled microphone preamplifiers")
set(CPACK_PACKAGE_DESCRIPTION [[
Orvan RCU shows the front panels of the Orvan (eight channels), Dunra (two
channels with DI inputs) and Melko (one channel, listen only) microphone
preamplifiers in one window, and sets each channel's gain, +48V phantom
power, pad, polarity, mute, DI input and high-pass filter over MIDI Control
Change messages, one channel at a time or on a selection of channels.

The panels follow the units' own reports, so they always show what the
hardware does. Units are found by the names of their MIDI ports on the ALSA
sequencer or a running JACK server, and noticed when they are plugged in or
out. Named presets are kept per unit, and the app asks before anything
switches phantom power on. A demo mode shows sample settings without any
unit attached, and orvan-unit-sim stands in for a unit.]])
set(CPACK_PACKAGE_CONTACT "${ORVAN_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${ORVAN_HOMEPAGE})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_STRIP_FILES ON)
# Not linked, so shlibdeps cannot find them: the window needs Qt's platform plugins.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
# Qt's Wayland plugin: without it the window runs through XWayland in a Wayland session (GNOME,
# Plasma), where the compositor may not honour where the window asks to be.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-urw-base35, qt6-wayland")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
include(CPack)

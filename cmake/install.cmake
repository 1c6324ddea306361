# What an installed zan consists of.
install(TARGETS zan zan-op RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(PROGRAMS packaging/zan-launch DESTINATION ${CMAKE_INSTALL_BINDIR})
if(ZAN_COMPANIONS)
  install(TARGETS ${ZAN_COMPANIONS} RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/zan)
endif()
# It names no directory: the place where a package or --prefix puts the programs is not known when this is configured.
install(FILES packaging/org.freedesktop.FileManager1.service DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/services)
install(FILES packaging/zan.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
# Software centres fetch screenshots from the web. Who publishes docs/images there says where; no address, no screenshots.
set(ZAN_SCREENSHOTS_URL "" CACHE STRING "https address of the published docs/images, for the AppStream metainfo")
set(metainfo_screenshots "")
if(ZAN_SCREENSHOTS_URL)
  foreach(shot "window|A directory beside the favourite ones" "operations|A copy that runs" "properties|The properties of a file")
    string(REPLACE "|" ";" shot "${shot}")
    list(GET shot 0 image)
    list(GET shot 1 caption)
    string(APPEND metainfo_screenshots "    <screenshot><caption>${caption}</caption>"
      "<image type=\"source\">${ZAN_SCREENSHOTS_URL}/${image}.png</image></screenshot>\n")
  endforeach()
  string(REGEX REPLACE "^    <screenshot>" "    <screenshot type=\"default\">" metainfo_screenshots "${metainfo_screenshots}")
  string(PREPEND metainfo_screenshots "  <screenshots>\n")
  string(APPEND metainfo_screenshots "  </screenshots>\n")
endif()
configure_file(packaging/zan.metainfo.xml.in zan.metainfo.xml @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zan.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES docs/man/zan.1 docs/man/zan-launch.1 docs/man/zan-op.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES packaging/zan-tmpfiles.conf DESTINATION ${CMAKE_INSTALL_DATADIR}/user-tmpfiles.d RENAME zan.conf)
install(FILES resources/icons/zan.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES packaging/zan-symbolic.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/symbolic/apps)
install(FILES packaging/copyright CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/zan)

# cpack -G DEB: a Debian package.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zan)
set(CPACK_PACKAGE_CONTACT "zan maintainers <maintainers@users.noreply.example>")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6svg6, file, sensible-utils, xterm | x-terminal-emulator")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "xdg-utils, qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "qt6ct | qt6-gtk-platformtheme")
set(CPACK_PACKAGE_DESCRIPTION
  "zan shows one directory at a time in a multi-column list beside a pane of your
favourite directories. Copies, moves and deletes run beside the window, each
with its progress, time left, pause and cancel; zan-op does the same from a
terminal or a script.")
configure_file(packaging/changelog.Debian.in changelog.Debian @ONLY)
configure_file(packaging/deb_staging.cmake.in deb_staging.cmake @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_BINARY_DIR}/deb_staging.cmake)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
include(CPack)

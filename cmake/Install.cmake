# Where a desktop looks for a program, its entry, its bus name and its icon.
include(GNUInstallDirs)
configure_file(${PROJECT_SOURCE_DIR}/packaging/org.letterloft.Letterloft.service.in
    ${PROJECT_BINARY_DIR}/org.letterloft.Letterloft.service @ONLY)

install(TARGETS letterloft RUNTIME)
install(FILES packaging/org.letterloft.Letterloft.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${PROJECT_BINARY_DIR}/org.letterloft.Letterloft.service
    DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/services)
install(FILES resources/images/drawn-for-22/letter_icon.svg RENAME org.letterloft.Letterloft.svg
    DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})

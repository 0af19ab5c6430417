# Where a desktop looks for a program, its entry, its bus name, its description and its icons.
include(GNUInstallDirs)
set(packaging ${PROJECT_SOURCE_DIR}/packaging)
set(icons ${CMAKE_INSTALL_DATADIR}/icons/hicolor)

# Only at the installation it is certain where the program will be.
install(CODE "
    set(program \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/letterloft\")
    configure_file(\"${packaging}/org.letterloft.Letterloft.service.in\"
        \"${PROJECT_BINARY_DIR}/org.letterloft.Letterloft.service\" @ONLY)")
install(TARGETS letterloft RUNTIME)
install(FILES ${packaging}/org.letterloft.Letterloft.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${PROJECT_BINARY_DIR}/org.letterloft.Letterloft.service
    DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/services)
install(FILES ${packaging}/org.letterloft.Letterloft.metainfo.xml DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
install(FILES ${packaging}/letterloft.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${packaging}/icons/org.letterloft.Letterloft.svg DESTINATION ${icons}/scalable/apps)
install(FILES ${packaging}/icons/org.letterloft.Letterloft-symbolic.svg DESTINATION ${icons}/symbolic/apps)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/letterloft)

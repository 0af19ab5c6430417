add_test(NAME IncludesPointOneWay.InThisTree COMMAND ${PROJECT_SOURCE_DIR}/script/check-includes)
add_test(NAME IncludesPointOneWay.ABreachIsFound COMMAND ${CMAKE_CURRENT_LIST_DIR}/check-includes-finds.sh)
add_test(NAME DesktopEntry.IsValid COMMAND desktop-file-validate
    ${PROJECT_SOURCE_DIR}/packaging/org.letterloft.Letterloft.desktop)

add_test(NAME IncludesPointOneWay.InThisTree COMMAND ${PROJECT_SOURCE_DIR}/script/check-includes)
add_test(NAME IncludesPointOneWay.ABreachIsFound COMMAND ${CMAKE_CURRENT_LIST_DIR}/check-includes-finds.sh)

set(packaging ${PROJECT_SOURCE_DIR}/packaging)
add_test(NAME DesktopEntry.IsValid COMMAND desktop-file-validate ${packaging}/org.letterloft.Letterloft.desktop)
add_test(NAME MetaInfo.IsValid
    COMMAND appstreamcli validate --no-net ${packaging}/org.letterloft.Letterloft.metainfo.xml)
add_test(NAME ManualPage.IsCorrect COMMAND ${CMAKE_CURRENT_LIST_DIR}/manual-is-correct.sh ${packaging}/letterloft.1)
add_test(NAME Version.IsTheSameEverywhere
    COMMAND ${CMAKE_CURRENT_LIST_DIR}/version-is-the-same.sh ${PROJECT_SOURCE_DIR})
add_test(NAME Help.IsWhole COMMAND ${CMAKE_CURRENT_LIST_DIR}/help-is-whole.py ${PROJECT_SOURCE_DIR}/resources)
add_test(NAME Install.IsWhole COMMAND ${CMAKE_CURRENT_LIST_DIR}/install-is-whole.sh ${PROJECT_BINARY_DIR})
add_test(NAME FreshSystem.BuildsTheProgram
    COMMAND ${CMAKE_CURRENT_LIST_DIR}/build-in-a-fresh-system.sh ${PROJECT_SOURCE_DIR})
add_test(NAME FreshSystem.InstallsUpgradesAndRemovesThePackage
    COMMAND ${CMAKE_CURRENT_LIST_DIR}/package-in-a-fresh-system.sh ${PROJECT_SOURCE_DIR}/build/package)
set_tests_properties(FreshSystem.BuildsTheProgram FreshSystem.InstallsUpgradesAndRemovesThePackage PROPERTIES
    TIMEOUT 3600 LABELS root)

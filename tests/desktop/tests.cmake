# The real program on a display, session bus and home of its own for each case; every group makes its own, so that groups
# may run at the same time.
add_executable(letterloft-test-application ${CMAKE_CURRENT_LIST_DIR}/TestApplication.cpp)
target_link_libraries(letterloft-test-application PRIVATE letterloft_options PkgConfig::XCB)

foreach(group Start Settings Switch Disks FullDisk Ending StatusBar Names Accounts Applications Reset OpenQuestion ScreenReader)
    string(TOLOWER ${group} file)
    string(REPLACE ending switch file ${file})
    string(REPLACE fulldisk disks file ${file})
    string(REPLACE names statusbar file ${file})
    string(REGEX REPLACE "accounts|applications|reset|openquestion|screenreader" manager file ${file})
    add_test(NAME Desktop.${group}
        COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_LIST_DIR}/test_${file}.py -v ${group})
    set_tests_properties(Desktop.${group} PROPERTIES TIMEOUT 600 LABELS desktop ENVIRONMENT
        "LETTERLOFT=$<TARGET_FILE:letterloft>;TEST_APPLICATION=$<TARGET_FILE:letterloft-test-application>")
endforeach()
# Needs a mount of its own, which not every container allows; ctest then tells that it was left out.
set_tests_properties(Desktop.FullDisk PROPERTIES SKIP_REGULAR_EXPRESSION "skipped '")

# The real program on a display, session bus and home of its own for each case; every group makes its own, so that groups
# may run at the same time.
foreach(group Start Settings Switch Disks FullDisk Ending StatusBar Names Tour Sheets)
    string(TOLOWER ${group} file)
    string(REPLACE ending switch file ${file})
    string(REPLACE fulldisk disks file ${file})
    string(REPLACE names statusbar file ${file})
    string(REGEX REPLACE "tour|sheets" manager file ${file})
    add_test(NAME Desktop.${group}
        COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_LIST_DIR}/test_${file}.py -v ${group})
    set_tests_properties(Desktop.${group} PROPERTIES TIMEOUT 600 LABELS desktop ENVIRONMENT
        "LETTERLOFT=$<TARGET_FILE:letterloft>;TEST_APPLICATION=$<TARGET_FILE:letterloft-test-application>")
endforeach()
# Needs a mount of its own, which not every container allows; ctest then tells that it was left out.
set_tests_properties(Desktop.FullDisk PROPERTIES SKIP_REGULAR_EXPRESSION "skipped '")

# What takes long in its full size is quick in a small one.
function(letterloft_desktop_test name file group label)
    add_test(NAME Desktop.${name}
        COMMAND /usr/bin/python3 -B ${CMAKE_CURRENT_LIST_DIR}/test_${file}.py -v ${group})
    set_tests_properties(Desktop.${name} PROPERTIES TIMEOUT 3600 LABELS ${label} ENVIRONMENT
        "LETTERLOFT=$<TARGET_FILE:letterloft>;TEST_APPLICATION=$<TARGET_FILE:letterloft-test-application>;${ARGN}")
endfunction()
letterloft_desktop_test(Intruders intruders Intruders desktop)
letterloft_desktop_test(Calls intruders Calls desktop)
letterloft_desktop_test(ManyCalls intruders Calls long LETTERLOFT_CALLS=120000)
letterloft_desktop_test(OtherUsers intruders OtherUsers root)
letterloft_desktop_test(SmallLoad load Load desktop)
letterloft_desktop_test(Load load Load long LETTERLOFT_LOAD=full)

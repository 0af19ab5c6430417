letterloft_test(file_sweep
    SOURCES ${PROJECT_SOURCE_DIR}/tests/sweeps/FileSweep.cpp
    LIBRARIES letterloft_linux letterloft_scratch
    LABELS sweep)

add_library(letterloft_operations STATIC ${PROJECT_SOURCE_DIR}/tests/sweeps/WholeOperations.cpp)
target_link_libraries(letterloft_operations PUBLIC
    letterloft_app letterloft_menu letterloft_manager letterloft_linux letterloft_fakes letterloft_scratch GTest::gmock)
letterloft_test(operation_sweep
    SOURCES ${PROJECT_SOURCE_DIR}/tests/sweeps/OperationSweep.cpp
    LIBRARIES letterloft_operations
    LABELS sweep)
gtest_discover_tests(operation_sweep TEST_PREFIX InFull. DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 3600 LABELS long ENVIRONMENT LETTERLOFT_FULL_SWEEP=1)
letterloft_test(power_cut_test
    SOURCES ${PROJECT_SOURCE_DIR}/tests/sweeps/PowerCutTest.cpp
    LIBRARIES letterloft_operations
    LABELS root)

# The real program: killed a dozen times, or 200 times, and looked at during a long copy.
function(letterloft_program_test name file group label)
    add_test(NAME Desktop.${name}
        COMMAND /usr/bin/python3 -B ${PROJECT_SOURCE_DIR}/tests/desktop/test_${file}.py -v ${group})
    set_tests_properties(Desktop.${name} PROPERTIES TIMEOUT 3600 LABELS ${label} ENVIRONMENT
        "LETTERLOFT=$<TARGET_FILE:letterloft>;TEST_APPLICATION=$<TARGET_FILE:letterloft-test-application>;${ARGN}")
endfunction()
letterloft_program_test(Kills kills Kills desktop LETTERLOFT_KILLS=12)
letterloft_program_test(KillsInFull kills Kills long LETTERLOFT_KILLS=200)
letterloft_program_test(Copy copy Copy desktop)

letterloft_test(file_sweep
    SOURCES ${PROJECT_SOURCE_DIR}/tests/sweeps/FileSweep.cpp ${PROJECT_SOURCE_DIR}/tests/sweeps/WriterTest.cpp
    LIBRARIES letterloft_linux letterloft_scratch
    LABELS sweep)

add_library(letterloft_operations STATIC ${PROJECT_SOURCE_DIR}/tests/sweeps/WholeOperations.cpp)
target_link_libraries(letterloft_operations PUBLIC
    letterloft_app letterloft_menu letterloft_manager letterloft_linux letterloft_fakes letterloft_scratch GTest::gmock)
letterloft_test(operation_sweep
    SOURCES ${PROJECT_SOURCE_DIR}/tests/sweeps/OperationSweep.cpp
    LIBRARIES letterloft_operations
    LABELS sweep)
add_test(NAME OperationSweep.InFull COMMAND operation_sweep)
set_tests_properties(OperationSweep.InFull PROPERTIES TIMEOUT 3600 LABELS long ENVIRONMENT LETTERLOFT_FULL_SWEEP=1)

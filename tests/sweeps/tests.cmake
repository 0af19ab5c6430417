letterloft_test(file_sweep
    SOURCES ${PROJECT_SOURCE_DIR}/tests/sweeps/FileSweep.cpp
    LIBRARIES letterloft_linux letterloft_scratch
    LABELS sweep)

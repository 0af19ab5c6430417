letterloft_benchmark(quitting-benchmark
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/quitting.cpp
    LIBRARIES letterloft_linux)

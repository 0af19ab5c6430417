letterloft_benchmark(files-benchmark
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/files.cpp
    LIBRARIES letterloft_linux)

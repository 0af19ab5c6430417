letterloft_benchmark(manager-benchmark
    SOURCES ${PROJECT_SOURCE_DIR}/benchmarks/manager.cpp
    LIBRARIES letterloft_manager letterloft_linux letterloft_qt)

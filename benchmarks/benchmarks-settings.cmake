letterloft_benchmark(settings-benchmark
    SOURCES ${PROJECT_SOURCE_DIR}/benchmarks/settings.cpp
    LIBRARIES letterloft_linux)

letterloft_benchmark(menu-benchmark
    SOURCES ${PROJECT_SOURCE_DIR}/benchmarks/menu.cpp
    LIBRARIES letterloft_menu letterloft_linux letterloft_qt)

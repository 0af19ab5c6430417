letterloft_benchmark(switch-benchmark
    SOURCES ${CMAKE_CURRENT_LIST_DIR}/switch.cpp
    LIBRARIES letterloft_menu letterloft_linux)

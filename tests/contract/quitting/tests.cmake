# Quitting and launching over real programs, each case on a display, session bus and home of its own.
add_executable(letterloft-quitting-program ${CMAKE_CURRENT_LIST_DIR}/TestProgram.cpp)
target_link_libraries(letterloft-quitting-program PRIVATE letterloft_options PkgConfig::GIO PkgConfig::XCB)

letterloft_test(quitting-test
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/Desktop.cpp
        ${CMAKE_CURRENT_LIST_DIR}/QuittingTest.cpp
    LIBRARIES letterloft_linux
    LABELS contract)
target_compile_definitions(quitting-test PRIVATE
    LETTERLOFT_TEST_PROGRAM="$<TARGET_FILE:letterloft-quitting-program>")
add_dependencies(quitting-test letterloft-quitting-program)

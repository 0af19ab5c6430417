# Quitting and launching over real programs, each case on a display, session bus and home of its own.
add_executable(letterloft-quitting-program ${CMAKE_CURRENT_LIST_DIR}/TestProgram.cpp)
target_link_libraries(letterloft-quitting-program PRIVATE letterloft_options PkgConfig::GIO PkgConfig::XCB)

letterloft_test(quitting-test
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/Desktop.cpp
        ${CMAKE_CURRENT_LIST_DIR}/HeldProcessTest.cpp
        ${CMAKE_CURRENT_LIST_DIR}/QuittingTest.cpp
        ${CMAKE_CURRENT_LIST_DIR}/XWindowsTest.cpp
    LIBRARIES letterloft_linux
    LABELS contract)
letterloft_test(launching-test
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/Desktop.cpp
        ${CMAKE_CURRENT_LIST_DIR}/LaunchingTest.cpp
    LIBRARIES letterloft_linux
    LABELS contract)

foreach(test quitting-test launching-test)
    target_compile_definitions(${test} PRIVATE LETTERLOFT_TEST_PROGRAM="$<TARGET_FILE:letterloft-quitting-program>")
    add_dependencies(${test} letterloft-quitting-program)
endforeach()

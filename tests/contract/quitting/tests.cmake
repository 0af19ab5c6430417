# Finding, quitting and launching over real programs, each case on a display, session bus and home of its own.
add_executable(letterloft-test-application ${CMAKE_CURRENT_LIST_DIR}/TestProgram.cpp)
target_link_libraries(letterloft-test-application PRIVATE letterloft_options PkgConfig::GIO PkgConfig::XCB)

file(GLOB applications_tests CONFIGURE_DEPENDS
    ${CMAKE_CURRENT_LIST_DIR}/*.cpp ${PROJECT_SOURCE_DIR}/tests/contract/applications/*.cpp)
list(REMOVE_ITEM applications_tests ${CMAKE_CURRENT_LIST_DIR}/TestProgram.cpp)
letterloft_test(applications-test SOURCES ${applications_tests} LIBRARIES letterloft_linux LABELS contract)
target_compile_definitions(applications-test PRIVATE
    LETTERLOFT_TEST_PROGRAM="$<TARGET_FILE:letterloft-test-application>")
add_dependencies(applications-test letterloft-test-application)

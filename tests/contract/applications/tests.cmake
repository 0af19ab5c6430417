# Finding instances of applications over real processes, each case in a home of its own.
add_executable(letterloft-found-application ${CMAKE_CURRENT_LIST_DIR}/TestApplication.cpp)
target_link_libraries(letterloft-found-application PRIVATE letterloft_options)

letterloft_test(applications-test
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/ApplicationsFixture.cpp
        ${CMAKE_CURRENT_LIST_DIR}/FindingTest.cpp
        ${CMAKE_CURRENT_LIST_DIR}/InstancesTest.cpp
        ${CMAKE_CURRENT_LIST_DIR}/ProcessTableTest.cpp
        ${CMAKE_CURRENT_LIST_DIR}/RunningApplicationsTest.cpp
        ${CMAKE_CURRENT_LIST_DIR}/StartedProgramTest.cpp
        ${PROJECT_SOURCE_DIR}/tests/contract/quitting/Desktop.cpp
    LIBRARIES letterloft_linux
    LABELS contract applications)
target_compile_definitions(applications-test PRIVATE
    LETTERLOFT_TEST_APPLICATION="$<TARGET_FILE:letterloft-found-application>"
    LETTERLOFT_TEST_PROGRAM="$<TARGET_FILE:letterloft-quitting-program>")
add_dependencies(applications-test letterloft-found-application letterloft-quitting-program)

letterloft_test(controllers_test
    SOURCES
        ${PROJECT_SOURCE_DIR}/tests/controllers/AccountsTest.cpp
        ${PROJECT_SOURCE_DIR}/tests/controllers/ApplicationsTest.cpp
        ${PROJECT_SOURCE_DIR}/tests/controllers/ResetTest.cpp
        ${PROJECT_SOURCE_DIR}/tests/controllers/StatusMenuTest.cpp
        ${PROJECT_SOURCE_DIR}/tests/controllers/StorageTest.cpp
        ${PROJECT_SOURCE_DIR}/tests/controllers/SwitchTest.cpp
    LIBRARIES letterloft_app letterloft_menu letterloft_manager letterloft_fakes
    LABELS quick)

letterloft_test(settings-test
    SOURCES
        ${CMAKE_CURRENT_LIST_DIR}/SettingsContractTest.cpp
        ${CMAKE_CURRENT_LIST_DIR}/SettingsFileTest.cpp
        ${CMAKE_CURRENT_LIST_DIR}/SettingsSweep.cpp
    LIBRARIES letterloft_linux letterloft_scratch
    LABELS contract)

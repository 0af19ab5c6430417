# The menu and its views, without a display.
set(folder ${PROJECT_SOURCE_DIR}/tests/contract/menu)
letterloft_test(menu_contract
    SOURCES ${PROJECT_SOURCE_DIR}/tests/contract/windows/main.cpp ${folder}/MenuContractTest.cpp
        ${folder}/QtMenuTest.cpp
    LIBRARIES letterloft_qt
    LABELS contract)

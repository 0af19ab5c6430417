find_package(Qt6 6.4 REQUIRED COMPONENTS Test)

# Tables, outline, alerts, choosers and closing windows, without a display.
set(folder ${PROJECT_SOURCE_DIR}/tests/contract/windows)
letterloft_test(windows_contract
    SOURCES ${folder}/main.cpp ${folder}/TableContractTest.cpp ${folder}/OutlineContractTest.cpp
        ${folder}/AlertsContractTest.cpp ${folder}/OpenPanelContractTest.cpp ${folder}/WindowContractTest.cpp
        ${folder}/ReadablePaletteTest.cpp
    LIBRARIES letterloft_qt Qt6::Test
    LABELS contract)

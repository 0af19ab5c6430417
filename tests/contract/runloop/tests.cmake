letterloft_test(runloop_contract
    SOURCES ${PROJECT_SOURCE_DIR}/tests/contract/windows/main.cpp
        ${PROJECT_SOURCE_DIR}/tests/contract/runloop/RunLoopContractTest.cpp
    LIBRARIES letterloft_qt
    LABELS contract)

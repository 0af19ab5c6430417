add_library(letterloft_scratch STATIC ${PROJECT_SOURCE_DIR}/tests/contract/files/ScratchFolders.cpp)
target_link_libraries(letterloft_scratch PUBLIC letterloft_options)
target_compile_definitions(letterloft_scratch PRIVATE LETTERLOFT_SCRATCH="${PROJECT_BINARY_DIR}")

letterloft_test(files_contract_test
    SOURCES
        ${PROJECT_SOURCE_DIR}/tests/contract/files/FileManagerContract.cpp
        ${PROJECT_SOURCE_DIR}/tests/contract/files/PosixFileManagerTest.cpp
    LIBRARIES letterloft_linux letterloft_fakes letterloft_scratch
    LABELS quick)

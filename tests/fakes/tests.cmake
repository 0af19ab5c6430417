# The doubles that need more than a header.
add_library(letterloft_fakes STATIC ${PROJECT_SOURCE_DIR}/tests/fakes/FakeFileManager.cpp)
target_link_libraries(letterloft_fakes PUBLIC letterloft_options letterloft_storage)

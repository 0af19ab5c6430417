add_executable(letterloft-status-item-probe StatusItemProbe.cpp)
target_link_libraries(letterloft-status-item-probe PRIVATE letterloft_options Qt6::Widgets)
letterloft_measure(/usr/bin/python3 ${CMAKE_CURRENT_SOURCE_DIR}/start.py $<TARGET_FILE:letterloft>
    $<TARGET_FILE:letterloft-status-item-probe>)

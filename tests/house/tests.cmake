add_test(NAME IncludesPointOneWay.InThisTree COMMAND ${PROJECT_SOURCE_DIR}/script/check-includes)
add_test(NAME IncludesPointOneWay.ABreachIsFound COMMAND ${CMAKE_CURRENT_LIST_DIR}/check-includes-finds.sh)

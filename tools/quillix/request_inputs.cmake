# The inputs of `quillix eval` requests: inline JSON values (json_values.h) and data bound to
# the scene or to mesh files (bound_inputs.h). Included once, by whichever list needs it first;
# the command line links it.
if(TARGET quillix_request_inputs)
  return()
endif()
add_library(quillix_request_inputs STATIC ${CMAKE_CURRENT_LIST_DIR}/json_values.cpp
  ${CMAKE_CURRENT_LIST_DIR}/bound_inputs.cpp)
target_include_directories(quillix_request_inputs PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(quillix_request_inputs PUBLIC xsisdk_host nlohmann_json::nlohmann_json)

# Result files and pictures of `quillix eval` (result_output.h): the JSON side over
# tools/output. Included once, by whichever list needs it first; the command line links it.
if(TARGET quillix_result_output)
  return()
endif()
add_library(quillix_result_output STATIC ${CMAKE_CURRENT_LIST_DIR}/result_output.cpp)
target_include_directories(quillix_result_output PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(quillix_result_output PUBLIC quillix_output nlohmann_json::nlohmann_json)

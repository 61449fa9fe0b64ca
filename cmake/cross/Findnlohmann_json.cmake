include(${CMAKE_CURRENT_LIST_DIR}/build_machine_headers.cmake)
tv2_add_headers_of_build_machine(nlohmann_json::nlohmann_json nlohmann)
set(nlohmann_json_FOUND TRUE)

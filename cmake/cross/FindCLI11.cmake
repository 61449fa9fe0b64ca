include(${CMAKE_CURRENT_LIST_DIR}/build_machine_headers.cmake)
tv2_add_headers_of_build_machine(CLI11::CLI11 CLI)
set(CLI11_FOUND TRUE)

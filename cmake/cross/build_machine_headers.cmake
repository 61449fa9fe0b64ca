# Makes `target` from one folder of the build machine's headers. What else stands in /usr/include belongs to that
# machine's own system and must not be seen.
function(tv2_add_headers_of_build_machine target folder)
    if(NOT IS_DIRECTORY /usr/include/${folder})
        message(FATAL_ERROR "There is no /usr/include/${folder}; scripts/install_packages.sh installs it.")
    endif()
    set(include ${CMAKE_BINARY_DIR}/build_machine_headers)
    file(MAKE_DIRECTORY ${include})
    file(CREATE_LINK /usr/include/${folder} ${include}/${folder} SYMBOLIC)
    if(NOT TARGET ${target})
        add_library(${target} INTERFACE IMPORTED GLOBAL)
        target_include_directories(${target} INTERFACE ${include})
    endif()
endfunction()

# Flags of every target of this project. They stay with the build: nothing of them reaches a user of the library.
add_library(tv2_build_flags INTERFACE)
target_include_directories(tv2_build_flags INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)

if(WIN32)
    # <windows.h> without macros in the way of std::min and std::max.
    target_compile_definitions(tv2_build_flags INTERFACE NOMINMAX)
endif()
if(MSVC)
    target_compile_options(tv2_build_flags INTERFACE /W4 /WX /fp:precise /utf-8)
else()
    # Single precision is part of the format: one scene gives the same bytes under every compiler and level.
    target_compile_options(tv2_build_flags INTERFACE -ffp-contract=off -fno-fast-math)
    target_compile_options(tv2_build_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                           -Wdouble-promotion -Wold-style-cast -Werror)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # Position-independent code may inline its own functions: nothing here is replaced at load time.
        target_compile_options(tv2_build_flags INTERFACE -fno-semantic-interposition)
        # GCC 12 sees overlapping copies in string concatenation where there are none.
        target_compile_options(tv2_build_flags INTERFACE -Wno-restrict)
        if(TV2_SANITIZE)
            # With the checks of the sanitizers in between it loses track of what is initialised.
            target_compile_options(tv2_build_flags INTERFACE -Wno-maybe-uninitialized)
        endif()
    endif()
endif()

if(TV2_SANITIZE)
    add_compile_options(-fsanitize=${TV2_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${TV2_SANITIZE})
endif()
# Libraries to preload where an interpreter without the sanitizers loads what was built with them: theirs has to come
# before everything in the process, the C++ library right after it, since its exceptions are watched.
set(TV2_SANITIZER_PRELOAD "")
if(TV2_SANITIZE MATCHES "address" AND UNIX)
    set(runtime libasan.so)
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        set(runtime libclang_rt.asan-${CMAKE_SYSTEM_PROCESSOR}.so)
    endif()
    foreach(library ${runtime} libstdc++.so)
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}
                        OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
        list(APPEND TV2_SANITIZER_PRELOAD ${path})
    endforeach()
    list(GET TV2_SANITIZER_PRELOAD 0 runtime)
    if(NOT IS_ABSOLUTE "${runtime}")
        set(TV2_SANITIZER_PRELOAD "")
    elseif(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        # One runtime in the process, as with g++, whatever program loads a library.
        get_filename_component(folder ${runtime} DIRECTORY)
        add_link_options(-shared-libsan LINKER:-rpath,${folder})
    endif()
    string(REPLACE ";" ":" TV2_SANITIZER_PRELOAD "${TV2_SANITIZER_PRELOAD}")
endif()
if(TV2_BUILD_FUZZ)
    # Traced, the comparisons that the sanitizers themselves add take more time than what is found by them is worth.
    add_compile_options(-fsanitize=fuzzer-no-link -fno-sanitize-coverage=trace-cmp)
endif()

# Of tests. What they call is optimised, not they: that would take longer than it saves.
set(TV2_TEST_OPTIONS -O0)
if(WIN32)
    set(TV2_TEST_OPTIONS -O1)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    list(APPEND TV2_TEST_OPTIONS -w) # g++ warns of what is wrong in them
endif()
if(TV2_SANITIZE MATCHES "undefined")
    list(APPEND TV2_TEST_OPTIONS -fno-sanitize=undefined) # it is half the work, and looks at what they call anyway
endif()

# Makes 8-bit text of a program UTF-8 on Windows, as it is elsewhere.
function(tv2_use_utf8 program)
    if(WIN32)
        set(folder ${PROJECT_SOURCE_DIR}/cmake/windows)
        target_sources(${program} PRIVATE ${folder}/utf8.rc)
        set_source_files_properties(${folder}/utf8.rc PROPERTIES OBJECT_DEPENDS ${folder}/utf8.manifest)
    endif()
endfunction()

# GoogleTest from Debian's source package, built with the tests.
if(NOT TARGET GTest::gtest)
    set(INSTALL_GTEST OFF)
    set(BUILD_GMOCK OFF)
    add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
endif()
set(GTest_FOUND TRUE)

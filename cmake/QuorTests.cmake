# quor_test(NAME SOURCES src... USES target...): one test program, each of its tests a test of CTest.
# Its sources see QUOR_SOURCE_DIR, the repository's folder as a text: a test starts in any working directory, so a
# file of the repository is named from there.
# quor_check_tests_listed(): called last in tests/; fails when a *_test.cpp below is in no program.

include_guard()
if(CMAKE_CROSSCOMPILING)
    set(INSTALL_GTEST OFF)
    set(BUILD_SHARED_LIBS OFF) # of GoogleTest alone
    add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
    unset(BUILD_SHARED_LIBS)
else()
    find_package(GTest REQUIRED)
endif()
include(GoogleTest)
# Under Wine, and with the address sanitizer, a program takes longer to start than most tests to run.
option(QUOR_TESTS_BY_PROGRAM "Run each test program once, and not once for each of its tests" ${CMAKE_CROSSCOMPILING})

# A program for Windows that runs where it was built, under Wine, finds the root of this system as drive Z.
set(QUOR_ROOT_DRIVE "")
if(WIN32 AND CMAKE_CROSSCOMPILING)
    set(QUOR_ROOT_DRIVE "Z:")
endif()

function(quor_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;USES")
    cmake_path(GET CMAKE_CURRENT_FUNCTION_LIST_DIR PARENT_PATH repository)
    if(NOT TARGET quor_test_main)
        add_library(quor_test_main OBJECT ${repository}/tests/main.cpp ${repository}/tests/${QUOR_SYSTEM}/system.cpp)
        target_link_libraries(quor_test_main PRIVATE quor_options GTest::gmock)
        target_compile_options(quor_test_main PRIVATE ${QUOR_TEST_OPTIONS})
    endif()

    add_executable(${name} ${arg_SOURCES} $<TARGET_OBJECTS:quor_test_main>)
    target_link_libraries(${name} PRIVATE ${arg_USES} quor_options GTest::gmock)
    target_compile_options(${name} PRIVATE ${QUOR_TEST_OPTIONS})
    target_compile_definitions(${name} PRIVATE QUOR_SOURCE_DIR="${QUOR_ROOT_DRIVE}${repository}")
    if(QUOR_TESTS_BY_PROGRAM)
        add_test(NAME program.${name} COMMAND ${name} WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
    else()
        gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST NO_PRETTY_VALUES NO_PRETTY_TYPES
                             WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
    endif()

    # The header of the first program serves them all: same language, options and kind of code.
    get_property(first GLOBAL PROPERTY QUOR_FIRST_TEST)
    if(first)
        target_precompile_headers(${name} REUSE_FROM ${first})
    else()
        target_precompile_headers(${name} PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
        set_property(GLOBAL PROPERTY QUOR_FIRST_TEST ${name})
    endif()
    if(QUOR_CCACHE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(${name} PRIVATE -fpch-preprocess)
    elseif(QUOR_CCACHE)
        target_compile_options(${name} PRIVATE "SHELL:-Xclang -fno-pch-timestamp")
    endif()

    foreach(source IN LISTS arg_SOURCES)
        cmake_path(ABSOLUTE_PATH source NORMALIZE)
        set_property(GLOBAL APPEND PROPERTY QUOR_TEST_SOURCES ${source})
    endforeach()
endfunction()

function(quor_check_tests_listed)
    file(GLOB_RECURSE unlisted CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*_test.cpp)
    get_property(listed GLOBAL PROPERTY QUOR_TEST_SOURCES)
    if(listed)
        list(REMOVE_ITEM unlisted ${listed})
    endif()
    if(unlisted)
        list(JOIN unlisted "\n  " names)
        message(FATAL_ERROR "Test files that no quor_test names:\n  ${names}")
    endif()
endfunction()

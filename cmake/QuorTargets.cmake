# How every target of the project is made: language, warnings, visibility, places of the built files.

include_guard()
include(GNUInstallDirs)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
# What the systems do differently lies in files of the same names, in folders of these.
set(QUOR_SYSTEM posix)
if(WIN32)
    set(QUOR_SYSTEM windows)
    enable_language(RC)
    set(CMAKE_SHARED_LIBRARY_PREFIX "") # QuorScriptor.dll
endif()

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Kind of build" FORCE)
endif()

find_program(QUOR_CCACHE ccache)
if(QUOR_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${QUOR_CCACHE})
endif()

add_library(quor_options INTERFACE)
target_compile_options(quor_options INTERFACE -Wall -Wextra -Wconversion -Wshadow -Wnon-virtual-dtor)
if(QUOR_WARNINGS_AS_ERRORS)
    target_compile_options(quor_options INTERFACE -Werror)
endif()
if(QUOR_SANITIZE)
    add_compile_options(-fsanitize=${QUOR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${QUOR_SANITIZE})
else()
    # A library that uses what it does not link is an error here, not at the host's start.
    add_link_options(-Wl,--no-undefined)
endif()

# quor_library(NAME ARGUMENT...): add_library, shared or static as BUILD_SHARED_LIBS says; a static one tells whoever
# uses it by the definition NAME_STATIC.
function(quor_library name)
    add_library(${name} ${ARGN})
    add_library(QuorScriptor::${name} ALIAS ${name})
    target_compile_features(${name} PUBLIC cxx_std_20)
    set_target_properties(${name} PROPERTIES VERSION ${QuorScriptor_VERSION} SOVERSION ${QuorScriptor_VERSION_MAJOR})
    if(NOT BUILD_SHARED_LIBS)
        target_compile_definitions(${name} PUBLIC ${name}_STATIC)
    endif()
    quor_hide_internals(${name})
    if(BUILD_SHARED_LIBS)
        quor_describe(${name} VFT_DLL "${PROJECT_DESCRIPTION}: ${name}")
    endif()
endfunction()

# Calls of another library go there at once, not by way of a stub of this one, and what is exported may be inlined here:
# nobody puts functions of his own in the place of ours.
add_library(quor_direct_calls INTERFACE)
if(NOT WIN32)
    target_compile_options(quor_direct_calls INTERFACE -fno-plt -fno-semantic-interposition)
endif()

# quor_describe(TARGET TYPE DESCRIPTION): on Windows the file tells its version and what it is.
function(quor_describe target type description)
    if(NOT WIN32)
        return()
    endif()
    set(file ${target}.dll)
    if(type STREQUAL "VFT_APP")
        set(file ${target}.exe)
    endif()
    set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${resource} @ONLY)
    target_sources(${target} PRIVATE ${resource})
    set_source_files_properties(${resource} PROPERTIES INCLUDE_DIRECTORIES ${PROJECT_SOURCE_DIR}/include)
endfunction()

# Of a shared library only what its headers mark is visible; on Windows that is so from the start.
function(quor_hide_internals target)
    if(WIN32 OR NOT BUILD_SHARED_LIBS)
        return()
    endif()
    set(map ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/hide-std.map)
    target_link_options(${target} PRIVATE -Wl,--version-script=${map})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${map})
endfunction()

# quor_platform_library(NAME SOURCES src... [USES target...])
# One of the host's libraries, its interface under include/NAME, linking only what it names. A target of that name that
# is there already, a vendor's, takes its place.
function(quor_platform_library name)
    if(TARGET ${name})
        message(STATUS "${name}: that of the host")
        return()
    endif()
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;USES")
    quor_library(${name} ${arg_SOURCES})
    target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>
                                              $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/platform/include>)
    target_link_libraries(${name} PUBLIC ${arg_USES} PRIVATE $<BUILD_INTERFACE:quor_options>
                                                  $<BUILD_INTERFACE:quor_direct_calls>)
    quor_install_platform_library(${name} USES ${arg_USES})
endfunction()

# quor_room(NAME SOURCES src... [SEES folder...])
# One room of the library: its objects go into the one library; SEES names the rooms whose private
# headers it may include.
function(quor_room name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;SEES")
    add_library(quor_room_${name} OBJECT ${arg_SOURCES})
    target_compile_definitions(quor_room_${name} PRIVATE
                               $<IF:$<BOOL:${BUILD_SHARED_LIBS}>,QuorScriptor_EXPORTS,QuorScriptor_STATIC>)
    target_link_libraries(quor_room_${name} PUBLIC quor_interface PRIVATE quor_options quor_direct_calls)
    foreach(room IN LISTS name arg_SEES)
        target_include_directories(quor_room_${name} PRIVATE ${PROJECT_SOURCE_DIR}/${room})
    endforeach()
    set_property(GLOBAL APPEND PROPERTY QUOR_ROOMS quor_room_${name})
endfunction()

# The one library, of the rooms made so far. It has all that quor_interface has, and does without that target, which
# programs elsewhere know nothing of.
function(quor_finish_library)
    get_property(rooms GLOBAL PROPERTY QUOR_ROOMS)
    list(TRANSFORM rooms REPLACE ".+" "$<TARGET_OBJECTS:\\0>")
    get_target_property(folders quor_interface INTERFACE_INCLUDE_DIRECTORIES)
    get_target_property(uses quor_interface INTERFACE_LINK_LIBRARIES)
    quor_library(QuorScriptor ${rooms})
    set_target_properties(QuorScriptor PROPERTIES LINKER_LANGUAGE CXX)
    target_include_directories(QuorScriptor PUBLIC "$<BUILD_INTERFACE:${folders}>")
    target_link_libraries(QuorScriptor PUBLIC ${uses})
    quor_install_library(QuorScriptor USES ${uses})
endfunction()

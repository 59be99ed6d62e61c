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
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
# What the systems do differently lies in files of the same names, in folders of these.
set(QUOR_SYSTEM posix)
if(WIN32)
    set(QUOR_SYSTEM windows)
    set(CMAKE_SHARED_LIBRARY_PREFIX "") # QuorScriptor.dll
endif()

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
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

# Of a shared library only what its headers mark is visible; on Windows that is so from the start.
function(quor_hide_internals target)
    if(WIN32)
        return()
    endif()
    set(map ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/hide-std.map)
    target_link_options(${target} PRIVATE -Wl,--version-script=${map})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${map})
endfunction()

# quor_platform_library(NAME SOURCES src... [USES target...])
# One of the host's libraries: shared, its interface under include/NAME, linking only what it names.
function(quor_platform_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;USES")
    add_library(${name} SHARED ${arg_SOURCES})
    target_include_directories(${name} PUBLIC include ${PROJECT_SOURCE_DIR}/platform/include)
    target_link_libraries(${name} PUBLIC ${arg_USES} PRIVATE quor_options)
    quor_hide_internals(${name})
endfunction()

# quor_room(NAME SOURCES src... [SEES folder...])
# One room of the library: its objects go into the one shared library; SEES names the rooms whose private
# headers it may include.
function(quor_room name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;SEES")
    add_library(quor_room_${name} OBJECT ${arg_SOURCES})
    target_compile_definitions(quor_room_${name} PRIVATE QuorScriptor_EXPORTS)
    target_link_libraries(quor_room_${name} PUBLIC quor_interface PRIVATE quor_options)
    foreach(room IN LISTS name arg_SEES)
        target_include_directories(quor_room_${name} PRIVATE ${PROJECT_SOURCE_DIR}/${room})
    endforeach()
    set_property(GLOBAL APPEND PROPERTY QUOR_ROOMS quor_room_${name})
endfunction()

# The one shared library, of the rooms made so far.
function(quor_finish_library)
    get_property(rooms GLOBAL PROPERTY QUOR_ROOMS)
    add_library(QuorScriptor SHARED)
    set_target_properties(QuorScriptor PROPERTIES LINKER_LANGUAGE CXX)
    target_link_libraries(QuorScriptor PUBLIC quor_interface PRIVATE ${rooms})
    quor_hide_internals(QuorScriptor)
endfunction()

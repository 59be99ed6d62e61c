# What a library shows to others, and what the public headers declare, as lists of demangled names, sorted, each once:
# files of the build that tests compare.
# quor_list_exports(LIBRARY): exports/LIBRARY.txt in the build's folder, written anew whenever the library is.
# quor_list_declared(): exports/declared.txt, every function and variable of ours that a public header declares.

include_guard()
get_filename_component(quor_binutils_prefix "${CMAKE_NM}" NAME)
string(REGEX REPLACE "(gcc-)?nm.*$" "" quor_binutils_prefix "${quor_binutils_prefix}")
find_program(QUOR_CXXFILT NAMES ${quor_binutils_prefix}c++filt c++filt REQUIRED)
set(QUOR_EXPORT_LISTS ${CMAKE_BINARY_DIR}/exports)
set(quor_list_names ${CMAKE_CURRENT_LIST_DIR}/ListNames.cmake)

function(quor_list_exports library)
    # On Windows that is the import library, which names exactly what the DLL exports.
    set(file $<TARGET_LINKER_FILE:${library}>)
    set(list ${QUOR_EXPORT_LISTS}/${library}.txt)
    add_custom_command(
        OUTPUT ${list}
        COMMAND ${CMAKE_COMMAND} -DFROM=library -DFILE=${file} -DIMPORTS=$<BOOL:${WIN32}> -DNM=${CMAKE_NM}
                -DCXXFILT=${QUOR_CXXFILT} -DOUTPUT=${list} -P ${quor_list_names}
        DEPENDS ${library} ${quor_list_names}
        COMMENT "Lists the exports of ${library}"
        VERBATIM)
    add_custom_target(exports_of_${library} DEPENDS ${list})
endfunction()

# The compiler itself tells what it read in each header: GCC can write the declarations of each as an Ada package, with
# the mangled name of every function and variable, whether anything uses it or not.
function(quor_list_declared)
    set(work ${QUOR_EXPORT_LISTS}/declared)
    set(list ${QUOR_EXPORT_LISTS}/declared.txt)
    set(headers)
    foreach(folder ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR}/platform/include
                   ${PROJECT_SOURCE_DIR}/platform/*/include)
        file(GLOB_RECURSE found CONFIGURE_DEPENDS ${folder}/*.h)
        list(APPEND headers ${found})
    endforeach()
    set(includes ${headers})
    list(TRANSFORM includes REPLACE "^.*/include/(.*)$" "#include <\\1>\n")
    list(JOIN includes "" text)
    file(CONFIGURE OUTPUT ${work}/headers.cpp CONTENT "${text}" @ONLY)

    # Takes part in no build; it knows where the headers are.
    add_library(quor_headers OBJECT EXCLUDE_FROM_ALL ${work}/headers.cpp)
    target_link_libraries(quor_headers PRIVATE QuorScriptor)
    add_custom_command(
        OUTPUT ${list}
        COMMAND ${CMAKE_CXX_COMPILER} -std=c++20 -fsyntax-only -fdump-ada-spec
                "-I$<JOIN:$<TARGET_PROPERTY:quor_headers,INCLUDE_DIRECTORIES>,;-I>" headers.cpp
        COMMAND ${CMAKE_COMMAND} -DFROM=headers -DFILE=headers.cpp -DCXXFILT=${QUOR_CXXFILT} -DOUTPUT=${list}
                -P ${quor_list_names}
        DEPENDS ${headers} ${work}/headers.cpp ${quor_list_names}
        WORKING_DIRECTORY ${work}
        COMMENT "Lists what the public headers declare"
        COMMAND_EXPAND_LISTS VERBATIM)
    add_custom_target(exports_declared DEPENDS ${list})
endfunction()

# What `cmake --install` lays out under its prefix, which may be moved afterwards: nothing in it names a folder of the
# machine that built it.
#
#     bin/                          the command
#     include/                      the headers of the library and of the host's libraries
#     lib/                          the libraries
#     lib/cmake/QuorScriptor/       find_package(QuorScriptor CONFIG)
#     lib/pkgconfig/                a module for each library
#     share/locale/                 translations, where the command looks for them
#     share/QuorScriptor/           documents and the sample

include_guard()
include(CMakePackageConfigHelpers)

# The way from one installed folder to another.
function(quor_installed_way from to result)
    file(RELATIVE_PATH way "${CMAKE_INSTALL_FULL_${from}}" "${CMAKE_INSTALL_FULL_${to}}")
    string(REGEX REPLACE "/$" "" way "${way}")
    set(${result} "${way}" PARENT_SCOPE)
endfunction()

# quor_install_library(NAME USES target...)
# Installs a library without its headers. USES is what it links: the pkg-config module asks for modules of these names.
# Each library is an export set of its own, so that a program can bring another in the place of one.
function(quor_install_library name)
    if(NOT QUOR_INSTALL)
        return()
    endif()
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "USES")
    set_target_properties(${name} PROPERTIES INSTALL_RPATH "$ORIGIN")
    install(TARGETS ${name} EXPORT ${name}Targets INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    install(EXPORT ${name}Targets NAMESPACE QuorScriptor:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/QuorScriptor)
    set_property(GLOBAL APPEND PROPERTY QUOR_INSTALLED_LIBRARIES ${name})

    list(TRANSFORM arg_USES REPLACE "^Quor::Lua$" "${QUOR_LUA}")
    list(REMOVE_DUPLICATES arg_USES)
    list(JOIN arg_USES " " requires)
    set(definition "")
    set(private "")
    if(NOT BUILD_SHARED_LIBS)
        set(definition " -D${name}_STATIC")
        set(private " -lstdc++ -lm") # for programs that are not linked as C++
    endif()
    set(CMAKE_INSTALL_FULL_PKGCONFIGDIR ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
    set(CMAKE_INSTALL_FULL_PREFIX ${CMAKE_INSTALL_PREFIX})
    quor_installed_way(PKGCONFIGDIR PREFIX prefix)
    quor_installed_way(PREFIX LIBDIR libdir)
    quor_installed_way(PREFIX INCLUDEDIR includedir)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

# quor_install_platform_library(NAME USES target...): the same with the headers, which lie under include.
function(quor_install_platform_library name)
    quor_install_library(${name} ${ARGN})
    if(QUOR_INSTALL)
        install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    endif()
endfunction()

function(quor_install_command)
    quor_installed_way(BINDIR LIBDIR libraries)
    set_target_properties(quor PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries}")
    install(TARGETS quor)
    # Not LOCALEDIR: the command looks beside the folder of the programs.
    install(DIRECTORY ${CMAKE_BINARY_DIR}/share/locale DESTINATION ${CMAKE_INSTALL_BINDIR}/../share)
endfunction()

# The rest of the package, when all libraries are made.
function(quor_install_package)
    if(NOT QUOR_INSTALL)
        return()
    endif()
    get_target_property(uses QuorScriptor LINK_LIBRARIES)
    foreach(library IN LISTS uses)
        get_target_property(elsewhere ${library} IMPORTED)
        get_property(installed GLOBAL PROPERTY QUOR_INSTALLED_LIBRARIES)
        if(NOT elsewhere AND NOT library IN_LIST installed)
            message(FATAL_ERROR "${library} is built here by the host, so no package could name it. Bring it as a package "
                                "of QUOR_PLATFORM_PACKAGES, or set QUOR_INSTALL to OFF.")
        endif()
    endforeach()
    list(REMOVE_ITEM installed QuorScriptor)

    set(folder ${CMAKE_INSTALL_LIBDIR}/cmake/QuorScriptor)
    configure_file(cmake/QuorScriptorConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/QuorScriptorConfig.cmake @ONLY)
    write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/QuorScriptorConfigVersion.cmake
                                     COMPATIBILITY SameMajorVersion)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/QuorScriptorConfig.cmake
                  ${CMAKE_CURRENT_BINARY_DIR}/QuorScriptorConfigVersion.cmake DESTINATION ${folder})

    install(DIRECTORY include/QuorScriptor DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    install(FILES platform/include/QuorExport.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    install(DIRECTORY docs sample DESTINATION ${CMAKE_INSTALL_DATADIR}/QuorScriptor)
    install(FILES README.md DESTINATION ${CMAKE_INSTALL_DATADIR}/QuorScriptor)
    if(TARGET quor)
        quor_install_command()
    endif()
endfunction()

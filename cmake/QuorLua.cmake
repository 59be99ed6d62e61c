# The Lua interpreter, as the one target Quor::Lua. The choice is QUOR_LUA; results are the same on all three.

include_guard()
if(TARGET Quor::Lua)
    return() # the host brought it
endif()

if(NOT QUOR_LUA MATCHES "^(lua5\\.1|lua5\\.1-c\\+\\+|luajit)$")
    message(FATAL_ERROR "QUOR_LUA is \"${QUOR_LUA}\"; it must be lua5.1, lua5.1-c++ or luajit")
endif()
add_library(Quor::Lua INTERFACE IMPORTED)

if(WIN32)
    if(NOT QUOR_LUA STREQUAL "lua5.1")
        message(FATAL_ERROR "QUOR_LUA is \"${QUOR_LUA}\"; on Windows it is lua5.1, the DLL beside the others")
    endif()
    find_path(QUOR_LUA_INCLUDE_DIR lua.h PATH_SUFFIXES lua5.1 REQUIRED)
    find_library(QUOR_LUA_LIBRARY lua51 REQUIRED)
    find_file(QUOR_LUA_DLL lua51.dll PATH_SUFFIXES bin REQUIRED)
    target_include_directories(Quor::Lua SYSTEM INTERFACE ${QUOR_LUA_INCLUDE_DIR})
    target_compile_definitions(Quor::Lua INTERFACE LUA_BUILD_AS_DLL)
    target_link_libraries(Quor::Lua INTERFACE ${QUOR_LUA_LIBRARY})
    # A program finds its DLLs in its own folder.
    configure_file(${QUOR_LUA_DLL} ${CMAKE_BINARY_DIR}/bin/lua51.dll COPYONLY)
    if(QUOR_INSTALL) # no package manager would bring it
        install(FILES ${QUOR_LUA_DLL} DESTINATION ${CMAKE_INSTALL_BINDIR})
        install(FILES ${QUOR_LUA_LIBRARY} DESTINATION ${CMAKE_INSTALL_LIBDIR})
        install(DIRECTORY ${QUOR_LUA_INCLUDE_DIR}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/lua5.1)
    endif()
else()
    find_package(PkgConfig REQUIRED)
    pkg_check_modules(QUOR_LUA_ENGINE REQUIRED IMPORTED_TARGET ${QUOR_LUA})
    target_link_libraries(Quor::Lua INTERFACE PkgConfig::QUOR_LUA_ENGINE)
endif()

# The Lua interpreter, as the one target Quor::Lua. The choice is QUOR_LUA; results are the same on all three.

include_guard()
find_package(PkgConfig REQUIRED)

if(QUOR_LUA STREQUAL "lua5.1" OR QUOR_LUA STREQUAL "lua5.1-c++" OR QUOR_LUA STREQUAL "luajit")
    pkg_check_modules(QUOR_LUA_ENGINE REQUIRED IMPORTED_TARGET ${QUOR_LUA})
else()
    message(FATAL_ERROR "QUOR_LUA is \"${QUOR_LUA}\"; it must be lua5.1, lua5.1-c++ or luajit")
endif()

add_library(Quor::Lua INTERFACE IMPORTED)
target_link_libraries(Quor::Lua INTERFACE PkgConfig::QUOR_LUA_ENGINE)

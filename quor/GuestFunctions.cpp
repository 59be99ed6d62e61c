#include "GuestFunctions.h"

#include "Terminal.h"

#include <QuorScriptor/LuaModules.h>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <mutex>

namespace quor {
namespace {

/// As Lua's own, but the line is for people. [-0, +0, e]
int print(lua_State* L)
{
    const int count = lua_gettop(L);
    luaL_checkstack(L, 2 * count + LUA_MINSTACK, "too many values");
    for (int i = 1; i <= count; ++i) {
        if (i > 1) lua_pushliteral(L, "\t");
        lua_getglobal(L, "tostring");
        lua_pushvalue(L, i);
        lua_call(L, 1, 1);
        if (!lua_isstring(L, -1)) return luaL_error(L, "'tostring' must return a string to 'print'");
    }
    lua_concat(L, lua_gettop(L) - count);
    std::size_t length = 0;
    const char* line = lua_tolstring(L, -1, &length);
    terminal::showMessage(std::string_view(line, length));
    return 0;
}

/// [-0, +0, v]
int refuseExit(lua_State* L)
{
    return luaL_error(L, "os.exit: a script cannot end the program that runs it");
}

/// The state's random numbers, in its registry. [-0, +0, m]
std::uint64_t& seedOf(lua_State* L)
{
    static const char key = 0;
    auto* const name = const_cast<char*>(&key);
    lua_pushlightuserdata(L, name);
    lua_rawget(L, LUA_REGISTRYINDEX);
    auto* seed = static_cast<std::uint64_t*>(lua_touserdata(L, -1));
    if (!seed) {
        lua_pushlightuserdata(L, name);
        seed = static_cast<std::uint64_t*>(lua_newuserdata(L, sizeof(std::uint64_t)));
        *seed = 1;
        lua_rawset(L, LUA_REGISTRYINDEX);
    }
    lua_pop(L, 1);
    return *seed;
}

/// Of 53 bits, from 0 to below 1; the generator is SplitMix64.
double nextRandom(std::uint64_t& seed)
{
    std::uint64_t bits = seed += 0x9E3779B97F4A7C15;
    bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9;
    bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EB;
    bits ^= bits >> 31;
    return static_cast<double>(bits >> 11) * 0x1p-53;
}

/// As Lua's own. [-0, +1, v]
int random(lua_State* L)
{
    const int count = lua_gettop(L);
    if (count > 2) return luaL_error(L, "wrong number of arguments");
    double least = 1;
    double most = 1;
    if (count > 0) most = luaL_checkint(L, count);
    if (count > 1) least = luaL_checkint(L, 1);
    if (count > 0) luaL_argcheck(L, least <= most, count, "interval is empty");
    const double share = nextRandom(seedOf(L));
    lua_pushnumber(L, count == 0 ? share : std::floor(share * (most - least + 1)) + least);
    return 1;
}

/// [-0, +0, v]
int seedRandom(lua_State* L)
{
    const int seed = luaL_checkint(L, 1);
    seedOf(L) = static_cast<std::uint64_t>(seed);
    return 0;
}

constexpr luaL_Reg globals[] = {{"print", print}, {nullptr, nullptr}};
constexpr luaL_Reg ofSystem[] = {{"exit", refuseExit}, {nullptr, nullptr}};
constexpr luaL_Reg ofMathematics[] = {{"random", random}, {"randomseed", seedRandom}, {nullptr, nullptr}};

std::mutex& clockMutex()
{
    static std::mutex mutex;
    return mutex;
}

/// Calls the first upvalue, `os.date`, whose parts of a time lie in one place of the C library. [-?, +1, v]
int tellDate(lua_State* L)
{
    lua_pushvalue(L, lua_upvalueindex(1));
    lua_insert(L, 1);
    // No guard object: the error that may follow would jump over it.
    clockMutex().lock();
    const int status = lua_pcall(L, lua_gettop(L) - 1, 1, 0);
    clockMutex().unlock();
    if (status != 0) return lua_error(L);
    return 1;
}

/// [-?, +1, v]
int refuseLocale(lua_State* L)
{
    const char* wanted = luaL_optstring(L, 1, nullptr);
    if (wanted && std::strcmp(wanted, "C") != 0 && std::strcmp(wanted, "POSIX") != 0)
        return luaL_error(L,
                          "os.setlocale: components that are drawn at the same time share one locale, \"C\"");
    lua_pushliteral(L, "C");
    return 1;
}

/// [-0, +0, e]
int replaceShared(lua_State* L)
{
    lua_getglobal(L, "os");
    // [-1] os
    lua_getfield(L, -1, "date");
    lua_pushcclosure(L, tellDate, 1);
    lua_setfield(L, -2, "date");
    lua_getfield(L, -1, "setlocale");
    const bool hasLocale = lua_isfunction(L, -1); // untrusted scripts have none
    lua_pop(L, 1);
    if (hasLocale) {
        lua_pushcfunction(L, refuseLocale);
        lua_setfield(L, -2, "setlocale");
    }
    return 0;
}

} // namespace

void registerGuestFunctions()
{
    quorlua::addRegLuaModule("_G", globals);
    quorlua::addRegLuaModule("os", ofSystem);
    quorlua::addRegLuaModule("math", ofMathematics);
}

void shareProcess(lua_State* L)
{
    if (lua_cpcall(L, replaceShared, nullptr) != 0) lua_pop(L, 1);
}

} // namespace quor

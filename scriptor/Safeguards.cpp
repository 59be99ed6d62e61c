#include "Safeguards.h"

#include "NativeStack.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace quorlua {
namespace {

/// As the interpreter's own, which loses the number of results where that overflows. [-0, +n, v]
int unpack(lua_State* L)
{
    luaL_checktype(L, 1, LUA_TTABLE);
    const int first = luaL_optint(L, 2, 1);
    const int last = lua_isnoneornil(L, 3) ? static_cast<int>(lua_objlen(L, 1)) : luaL_checkint(L, 3);
    if (first > last) return 0;
    const long long count = static_cast<long long>(last) - first + 1;
    if (count > LUAI_MAXCSTACK || !lua_checkstack(L, static_cast<int>(count)))
        return luaL_error(L, "too many results to unpack");
    for (long long i = first; i <= last; ++i)
        lua_rawgeti(L, 1, static_cast<int>(i));
    return static_cast<int>(count);
}

#if !defined(LUAJIT_VERSION)

// Measured are up to 96 bytes of stack for each repetition.
constexpr std::size_t stackOfRepetition = 192;
// Shorter patterns need less than the reserve.
constexpr std::size_t harmlessLength = 512;

std::size_t repetitionsIn(const char* pattern, std::size_t length)
{
    return static_cast<std::size_t>(std::count_if(
        pattern, pattern + length, [](char c) { return c == '?' || c == '*' || c == '+' || c == '-'; }));
}

/// Whether matching the pattern, the second argument, stays on the stack; what is no pattern does.
bool canMatch(lua_State* L)
{
    if (lua_isstring(L, 2) == 0) return true;
    std::size_t length = 0;
    const char* pattern = lua_tolstring(L, 2, &length);
    if (length < harmlessLength) return true;
    const std::size_t repetitions = repetitionsIn(pattern, length);
    return repetitions < harmlessLength || leavesRoom(repetitions * stackOfRepetition);
}

int refusePattern(lua_State* L)
{
    return luaL_error(L, "pattern too complex");
}

/// The interpreter's own function, which is called in this frame: it finds its arguments and, when it raises
/// an error, its name as if it had been called by the script.
int callOriginal(lua_State* L)
{
    return lua_tocfunction(L, lua_upvalueindex(1))(L);
}

/// `string.match`. [-0, +n, e]
int match(lua_State* L)
{
    return canMatch(L) ? callOriginal(L) : refusePattern(L);
}

/// `string.find`, which may be told that its second argument is no pattern. [-0, +n, e]
int find(lua_State* L)
{
    return lua_toboolean(L, 4) != 0 || canMatch(L) ? callOriginal(L) : refusePattern(L);
}

/// A step of `gmatch`: the stack is another one than when it was made, and so may be the pattern's chance.
int nextMatch(lua_State* L)
{
    const auto repetitions = static_cast<std::size_t>(lua_tonumber(L, lua_upvalueindex(2)));
    if (!leavesRoom(repetitions * stackOfRepetition)) return refusePattern(L);
    lua_settop(L, 0);
    lua_pushvalue(L, lua_upvalueindex(1));
    lua_call(L, 0, LUA_MULTRET);
    return lua_gettop(L);
}

/// `string.gmatch`. [-0, +1, e]
int gmatch(lua_State* L)
{
    std::size_t length = 0;
    const char* pattern = lua_isstring(L, 2) != 0 ? lua_tolstring(L, 2, &length) : nullptr;
    if (length < harmlessLength) return callOriginal(L);
    const std::size_t repetitions = repetitionsIn(pattern, length);
    const int results = callOriginal(L);
    if (results != 1 || repetitions < harmlessLength) return results;
    lua_pushnumber(L, static_cast<lua_Number>(repetitions));
    lua_pushcclosure(L, nextMatch, 2);
    return 1;
}

/// `string.gsub`. [-0, +2, e]
int gsub(lua_State* L)
{
    if (!canMatch(L)) return refusePattern(L);
    // Texts call nobody.
    if (lua_isstring(L, 3) == 0 && !leavesRoom(0)) return luaL_error(L, "C stack overflow");
    return callOriginal(L);
}

/// What calls the script with much of the stack in use, or lets the collector run within a finalizer: each
/// may be in a function then that has a buffer of 8 KB. [-0, +n, e]
int callback(lua_State* L)
{
    return leavesRoom(0) ? callOriginal(L) : luaL_error(L, "C stack overflow");
}

constexpr luaL_Reg guardedGlobals[] = {{"load", callback}, {"collectgarbage", callback}};
constexpr luaL_Reg guardedOfString[] = {
    {"find", find}, {"match", match}, {"gmatch", gmatch}, {"gfind", gmatch}, {"gsub", gsub},
};

/// Puts guards in place of the functions of the table at an absolute index. [-0, +0, m]
void guardFunctions(lua_State* L, int table, std::span<const luaL_Reg> guards)
{
    for (const auto& [name, function] : guards) {
        lua_pushstring(L, name);
        lua_pushvalue(L, -1);
        lua_rawget(L, table); // [-2] name, [-1] the interpreter's own
        if (lua_iscfunction(L, -1)) {
            lua_pushcclosure(L, function, 1);
            lua_rawset(L, table);
        } else {
            lua_pop(L, 2);
        }
    }
}

void guardLibraries(lua_State* L)
{
    guardFunctions(L, LUA_GLOBALSINDEX, guardedGlobals);
    lua_getglobal(L, "string");
    guardFunctions(L, lua_gettop(L), guardedOfString);
    lua_pop(L, 1);
}

#else

/// [-0, +0, e]
int askForRoom(lua_State* L)
{
    if (leavesRoom(0)) return 0;
    luaL_where(L, 2); // behind the guard, which is the caller
    lua_pushliteral(L, "C stack overflow");
    lua_concat(L, 2);
    return lua_error(L);
}

/// The functions that call the script. A guard becomes the call of its function, so that one finds the line
/// that it was called from. Of `coroutine.wrap` it is the function it makes that calls the script.
constexpr char guarding[] = R"(
    local askForRoom = ...
    local function guarded(original)
        return function(...)
            askForRoom()
            return original(...)
        end
    end
    local function guard(library, ...)
        for _, name in ipairs {...} do
            if library[name] then library[name] = guarded(library[name]) end
        end
    end
    guard(string, 'format', 'gsub')
    guard(table, 'sort')
    guard(os, 'time')
    guard(coroutine, 'resume')
    guard(_G, 'load', 'loadstring', 'print', 'require', 'module', 'collectgarbage', 'dofile')
    local wrap = coroutine.wrap
    coroutine.wrap = function(body) return guarded(wrap(body)) end
    local open, metatable = package.preload['string.buffer'], debug and debug.getmetatable
    if open and metatable then
        package.preload['string.buffer'] = function(...)
            local library = open(...)
            guard(metatable(library.new()).__index, 'put', 'putf')
            return library
        end
    end)";

void guardLibraries(lua_State* L)
{
    if (luaL_loadbuffer(L, guarding, sizeof guarding - 1, "=guarding") != 0) lua_error(L);
    lua_pushcfunction(L, askForRoom);
    lua_call(L, 1, 0);
}

int doNothing(lua_State*)
{
    return 0;
}

#endif

/// [-0, +0, v]
int refuseHook(lua_State* L)
{
    return luaL_error(L, "debug.sethook: the hook belongs to the time limit of scripts");
}

void replace(lua_State* L, const char* library, const char* name, lua_CFunction function)
{
    lua_getglobal(L, library);
    if (lua_istable(L, -1)) {
        lua_pushcfunction(L, function);
        lua_setfield(L, -2, name);
    }
    lua_pop(L, 1);
}

} // namespace

void installSafeguards(lua_State* L)
{
    lua_pushcfunction(L, unpack);
    lua_setglobal(L, "unpack");
#if !defined(LUAJIT_VERSION)
    guardLibraries(L);
#endif
    nativeStack();
}

void guardCallbacks([[maybe_unused]] lua_State* L)
{
#if defined(LUAJIT_VERSION)
    guardLibraries(L);
#endif
}

void keepHook(lua_State* L)
{
    replace(L, "debug", "sethook", refuseHook);
}

void keepInterpreted([[maybe_unused]] lua_State* L)
{
#if defined(LUAJIT_VERSION)
    luaJIT_setmode(L, 0, LUAJIT_MODE_ENGINE | LUAJIT_MODE_OFF);
    replace(L, "jit", "on", doNothing);
#endif
}

} // namespace quorlua

#include "CallWatch.h"

#include <QuorScriptor/ScriptLimits.h>
#include <algorithm>
#include <iterator>

namespace quor {

CallWatch::CallWatch(lua_State* L, const std::string& function, std::size_t results)
    : L_(L), function_(function), types_(results, LUA_TNIL)
{
    const quorlua::ScriptOperation operation(L);
    if (lua_cpcall(L, install, this) != 0) lua_pop(L, 1);
}

CallWatch::~CallWatch()
{
    if (!place_) return;
    *place_ = nullptr;
    const quorlua::ScriptOperation operation(L_);
    if (lua_cpcall(L_, remove, this) != 0) lua_pop(L_, 1);
}

/// Puts a function that calls the other in its place.
int CallWatch::install(lua_State* L)
{
    auto* watch = static_cast<CallWatch*>(lua_touserdata(L, 1));
    lua_pushlstring(L, watch->function_.data(), watch->function_.size());
    auto* place = static_cast<CallWatch**>(lua_newuserdata(L, sizeof(void*)));
    *place = nullptr;
    lua_pushvalue(L, 2);
    lua_gettable(L, LUA_GLOBALSINDEX);
    lua_pushvalue(L, 2);
    lua_pushvalue(L, 2);
    lua_rawget(L, LUA_GLOBALSINDEX);
    // [2] name, [3] place, [4] function, [5] name, [6] what stands in the table itself
    lua_pushcclosure(L, call, 4);
    lua_pushlightuserdata(L, watch);
    lua_pushvalue(L, 3);
    lua_rawset(L, LUA_REGISTRYINDEX);
    watch->place_ = place;
    *place = watch;
    // [2] name, [3] the function that calls the other
    lua_pushvalue(L, 2);
    lua_pushvalue(L, 3);
    lua_rawset(L, LUA_GLOBALSINDEX);
    return 0;
}

int CallWatch::remove(lua_State* L)
{
    const auto* watch = static_cast<const CallWatch*>(lua_touserdata(L, 1));
    lua_pushlstring(L, watch->function_.data(), watch->function_.size());
    lua_rawget(L, LUA_GLOBALSINDEX);
    lua_pushvalue(L, 1);
    lua_rawget(L, LUA_REGISTRYINDEX);
    // [1] the watch, as a key, [2] the global, [3] the function that calls the other
    if (lua_rawequal(L, 2, 3)) {
        lua_getupvalue(L, 3, 3);
        lua_getupvalue(L, 3, 4);
        lua_rawset(L, LUA_GLOBALSINDEX);
    }
    lua_pushvalue(L, 1);
    lua_pushnil(L);
    lua_rawset(L, LUA_REGISTRYINDEX);
    return 0;
}

int CallWatch::call(lua_State* L)
{
    auto* place = static_cast<CallWatch**>(lua_touserdata(L, lua_upvalueindex(1)));
    CallWatch* watch = *place; // of the first call alone
    *place = nullptr;
    if (watch) {
        lua_pushvalue(L, lua_upvalueindex(3));
        lua_pushvalue(L, lua_upvalueindex(4));
        lua_rawset(L, LUA_GLOBALSINDEX);
    }
    lua_pushvalue(L, lua_upvalueindex(2));
    lua_insert(L, 1);
    lua_call(L, lua_gettop(L) - 1, LUA_MULTRET);
    if (!watch) return lua_gettop(L);
    int index = 0;
    for (int& type : watch->types_) {
        if (++index > lua_gettop(L)) break;
        type = lua_type(L, index);
    }
    watch->returned_ = true;
    return lua_gettop(L);
}

bool CallWatch::returnedOnlyNil() const
{
    return std::all_of(types_.begin(), types_.end(), [](int type) { return type == LUA_TNIL; });
}

bool CallWatch::takes(std::size_t result, char letter) const
{
    const int type = types_[result];
    switch (letter) {
    case 'i':
        return type == LUA_TBOOLEAN || type == LUA_TNUMBER;
    case 'n':
        return type == LUA_TBOOLEAN;
    case 'd':
        return type == LUA_TNUMBER || type == LUA_TSTRING;
    case 'I':
    case 'o':
        return type == LUA_TUSERDATA || type == LUA_TLIGHTUSERDATA || type == LUA_TNIL;
    case 's':
        return type == LUA_TSTRING || type == LUA_TNUMBER || type == LUA_TNIL;
    case 'r':
    case 'y':
        return type == LUA_TSTRING || type == LUA_TNUMBER;
    case 'u':
        return true;
    default:
        return type == LUA_TTABLE;
    }
}

const char* CallWatch::typeName(std::size_t result) const
{
    constexpr const char* names[] = {"nil",   "boolean",  "light userdata", "number", "string",
                                     "table", "function", "userdata",       "thread"};
    const auto type = static_cast<std::size_t>(types_[result]);
    return type < std::size(names) ? names[type] : "value of the engine";
}

} // namespace quor

#include "Protected.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <new>

namespace lua_tinker {
namespace {

using detail::Kept;

// Integer keys of a class's metatable.
constexpr int methodsSlot = 1;
constexpr int parentSlot = 2;

// Lives in a userdata that the state keeps to its end.
struct Record {
    const std::type_info* type;
    const Record* parent;
    void* (*toParent)(void*);
};

// [-0, +1, m]
void pushOrMake(lua_State* L, Kept key)
{
    constexpr int usualEntries = 2; // of one class
    detail::pushKept(L, key);
    if (lua_istable(L, -1)) return;
    lua_settop(L, -2);
    lua_createtable(L, 0, usualEntries);
    lua_pushvalue(L, -1);
    detail::keep(L, key);
}

// The record of a metatable, null when it is no class's. Uses two free slots. [-0, +0, -]
Record* recordOf(lua_State* L, int metatable)
{
    lua_pushvalue(L, metatable);
    detail::pushKept(L, Kept::Classes);
    Record* record = nullptr;
    if (lua_istable(L, -1)) {
        lua_insert(L, -2);
        lua_rawget(L, -2);
        record = static_cast<Record*>(lua_touserdata(L, -1));
    }
    lua_settop(L, -3);
    return record;
}

// [-0, +1, m]
void pushField(lua_State* L, int table, const char* name)
{
    const int at = detail::absolute(L, table);
    lua_pushstring(L, name);
    lua_rawget(L, at);
}

// [-1, +0, m]
void setField(lua_State* L, int table, const char* name)
{
    const int at = detail::absolute(L, table);
    lua_pushstring(L, name);
    lua_insert(L, -2);
    lua_rawset(L, at);
}

// Pushes a class's metatable and gives its record; null, with nothing pushed, when the type is not
// registered. [-0, +(0|1), m]
Record* pushMetatable(lua_State* L, const std::type_info& type)
{
    detail::pushKept(L, Kept::Classes);
    if (!lua_istable(L, -1)) {
        lua_settop(L, -2);
        return nullptr;
    }
    pushField(L, -1, type.name()); // [-2] classes, [-1] metatable
    Record* record = nullptr;
    if (lua_istable(L, -1)) {
        lua_pushvalue(L, -1);
        lua_rawget(L, -3);
        record = static_cast<Record*>(lua_touserdata(L, -1));
        lua_settop(L, -2);
    }
    lua_remove(L, -2);
    // Types of unnamed namespaces may share a name.
    if (record && *record->type == type) return record;
    lua_settop(L, -2);
    return nullptr;
}

// [-0, +1, m]
void makeMetatable(lua_State* L, const std::type_info& type)
{
    constexpr int usualMethods = 8; // room for them, which is there in steps of powers of two
    lua_createtable(L, parentSlot, 3);
    lua_createtable(L, 0, usualMethods);
    lua_rawseti(L, -2, methodsSlot);
    lua_pushcfunction(L, meta_get);
    setField(L, -2, "__index");
    lua_pushcfunction(L, meta_set);
    setField(L, -2, "__newindex");
    lua_pushboolean(L, 0);
    setField(L, -2, "__metatable");

    pushOrMake(L, Kept::Classes);
    lua_pushvalue(L, -2);
    new (lua_newuserdata(L, sizeof(Record))) Record{&type, nullptr, nullptr};
    lua_rawset(L, -3);
    lua_pushvalue(L, -2);
    setField(L, -2, type.name());
    lua_settop(L, -2);
}

} // namespace

namespace detail {

void add_class(lua_State* L, const char* name, const std::type_info& type)
{
    if (!L || !name) return;
    if (!pushMetatable(L, type)) makeMetatable(L, type);
    pushOrMake(L, Kept::ClassNames); // [-2] metatable, [-1] names
    lua_pushvalue(L, -2);
    setField(L, -2, name);
    lua_settop(L, -2);
    lua_rawgeti(L, -1, methodsSlot);
    set_global(L, name);
    lua_settop(L, -2);
}

bool push_methods(lua_State* L, const std::type_info& type)
{
    if (!L || !pushMetatable(L, type)) return false;
    lua_rawgeti(L, -1, methodsSlot);
    lua_remove(L, -2);
    return true;
}

void inherit(lua_State* L, const std::type_info& type, const std::type_info& parent, void* (*toParent)(void*))
{
    if (!L) return;
    Record* record = pushMetatable(L, type);
    if (!record) return;
    if (const Record* above = pushMetatable(L, parent)) {
        lua_rawseti(L, -2, parentSlot);
        record->parent = above;
        record->toParent = toParent;
    }
    lua_settop(L, -2);
}

void push_object(lua_State* L, void* object, const std::type_info& type)
{
    if (!object || !pushMetatable(L, type)) {
        lua_pushnil(L);
        return;
    }
    *static_cast<void**>(lua_newuserdata(L, sizeof object)) = object;
    lua_insert(L, -2);
    lua_setmetatable(L, -2);
}

void* read_object(lua_State* L, int index, const std::type_info& type)
{
    if (!L || lua_type(L, index) != LUA_TUSERDATA || lua_objlen(L, index) != sizeof(void*)) return nullptr;
    void* object = *static_cast<void**>(lua_touserdata(L, index));
    if (!lua_getmetatable(L, index)) return nullptr;
    const Record* record = recordOf(L, -1);
    lua_settop(L, -2);
    while (record && *record->type != type) {
        if (record->toParent) object = record->toParent(object);
        record = record->parent;
    }
    return record ? object : nullptr;
}

} // namespace detail

void meta_push(lua_State* L, const char* className)
{
    if (!L) return;
    detail::pushKept(L, Kept::ClassNames);
    if (className && lua_istable(L, -1)) {
        pushField(L, -1, className);
        lua_remove(L, -2);
    } else {
        lua_settop(L, -2);
        lua_pushnil(L);
    }
}

int meta_get(lua_State* L)
{
    lua_settop(L, 2);
    if (lua_type(L, 1) != LUA_TUSERDATA || !lua_getmetatable(L, 1)) return 0;
    if (!recordOf(L, -1)) return 0;
    while (lua_istable(L, 3)) {
        lua_rawgeti(L, 3, methodsSlot);
        lua_pushvalue(L, 2);
        lua_rawget(L, -2);
        if (!lua_isnil(L, -1)) return 1;
        lua_settop(L, 3);
        lua_rawgeti(L, 3, parentSlot);
        lua_replace(L, 3);
    }
    return 0;
}

int meta_set(lua_State* L)
{
    const char* field = lua_type(L, 2) == LUA_TSTRING ? lua_tostring(L, 2) : luaL_typename(L, 2);
    print_error(L, "attempt to assign to field `%s' of a host object", field);
    return 0;
}

} // namespace lua_tinker

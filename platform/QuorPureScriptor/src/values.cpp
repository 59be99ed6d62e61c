#include "Protected.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <charconv>

namespace quorlua {
namespace {

using lua_tinker::detail::absolute;
using lua_tinker::detail::tableAt;

bool numberAt(lua_State* L, int index, double& value)
{
    if (lua_type(L, index) != LUA_TNUMBER) return false;
    value = lua_tonumber(L, index);
    return true;
}

bool intAt(lua_State* L, int index, int& value)
{
    if (lua_type(L, index) != LUA_TNUMBER) return false;
    value = lua_tinker::read<int>(L, index);
    return true;
}

bool textAt(lua_State* L, int index, const char*& text)
{
    if (lua_type(L, index) != LUA_TSTRING) return false;
    text = lua_tostring(L, index);
    return true;
}

bool flagAt(lua_State* L, int index, bool& flag)
{
    if (lua_type(L, index) != LUA_TBOOLEAN) return false;
    flag = lua_toboolean(L, index) != 0;
    return true;
}

struct Coordinates {
    double& x;
    double& y;
    double& z;
};

bool pointAt(lua_State* L, int index, Coordinates& point)
{
    if (lua_type(L, index) != LUA_TTABLE) return false;
    const int table = absolute(L, index);
    lua_rawgeti(L, table, 1);
    lua_rawgeti(L, table, 2);
    lua_rawgeti(L, table, 3);
    const bool whole =
        lua_type(L, -3) == LUA_TNUMBER && lua_type(L, -2) == LUA_TNUMBER && lua_type(L, -1) == LUA_TNUMBER;
    if (whole) {
        point.x = lua_tonumber(L, -3);
        point.y = lua_tonumber(L, -2);
        point.z = lua_tonumber(L, -1);
    }
    lua_settop(L, -4);
    return whole;
}

// The three places of a value, over one reader of the value itself.
template<class T>
using Reader = bool (*)(lua_State* L, int index, T& value);

template<class T>
int atIndex(lua_State* L, int index, T& value, Reader<T> reader)
{
    return L && reader(L, absolute(L, index), value) ? 0 : 1;
}

template<class T>
bool atKey(lua_State* L, int tableIndex, int key, T& value, Reader<T> reader)
{
    const int table = tableAt(L, tableIndex);
    if (table == 0) return false;
    lua_rawgeti(L, table, key);
    const bool read = reader(L, -1, value);
    lua_settop(L, -2);
    return read;
}

template<class T>
bool inField(lua_State* L, int tableIndex, const char* name, T& value, Reader<T> reader)
{
    const int table = tableAt(L, tableIndex);
    if (table == 0 || !name) return false;
    lua_getfield(L, table, name);
    const bool read = reader(L, -1, value);
    lua_settop(L, -2);
    return read;
}

void fillPoint(lua_State* L, int table, double x, double y, double z)
{
    lua_pushnumber(L, x);
    lua_rawseti(L, table, 1);
    lua_pushnumber(L, y);
    lua_rawseti(L, table, 2);
    lua_pushnumber(L, z);
    lua_rawseti(L, table, 3);
}

void pushPoint(lua_State* L, double x, double y, double z)
{
    lua_createtable(L, 3, 0);
    fillPoint(L, lua_gettop(L), x, y, z);
}

// Stores `value` in a field of the table at the index, when both are there.
template<class T>
void setField(lua_State* L, int tableIndex, const char* name, const T& value)
{
    const int table = tableAt(L, tableIndex);
    if (table == 0 || !name) return;
    lua_tinker::push(L, value);
    lua_setfield(L, table, name);
}

} // namespace

int getADouble(lua_State* L, int index, double& value)
{
    return atIndex(L, index, value, numberAt);
}

bool getADouble(lua_State* L, int tableIndex, int key, double& value)
{
    return atKey(L, tableIndex, key, value, numberAt);
}

bool getADouble(lua_State* L, int tableIndex, const char* name, double& value)
{
    return inField(L, tableIndex, name, value, numberAt);
}

int getAInt(lua_State* L, int index, int& value)
{
    return atIndex(L, index, value, intAt);
}

bool getAInt(lua_State* L, int tableIndex, int key, int& value)
{
    return atKey(L, tableIndex, key, value, intAt);
}

bool getAInt(lua_State* L, int tableIndex, const char* name, int& value)
{
    return inField(L, tableIndex, name, value, intAt);
}

int getAString(lua_State* L, int index, const char*& text)
{
    return atIndex(L, index, text, textAt);
}

bool getAString(lua_State* L, int tableIndex, int key, const char*& text)
{
    return atKey(L, tableIndex, key, text, textAt);
}

bool getAString(lua_State* L, int tableIndex, const char* name, const char*& text)
{
    return inField(L, tableIndex, name, text, textAt);
}

int getABoolean(lua_State* L, int index, bool& flag)
{
    return atIndex(L, index, flag, flagAt);
}

bool getABoolean(lua_State* L, int tableIndex, int key, bool& flag)
{
    return atKey(L, tableIndex, key, flag, flagAt);
}

bool getABoolean(lua_State* L, int tableIndex, const char* name, bool& flag)
{
    return inField(L, tableIndex, name, flag, flagAt);
}

int getAPoint(lua_State* L, int index, double& x, double& y, double& z)
{
    Coordinates point{x, y, z};
    return atIndex(L, index, point, pointAt);
}

bool getAPoint(lua_State* L, int tableIndex, int key, double& x, double& y, double& z)
{
    Coordinates point{x, y, z};
    return atKey(L, tableIndex, key, point, pointAt);
}

bool getAPoint(lua_State* L, int tableIndex, const char* name, double& x, double& y, double& z)
{
    Coordinates point{x, y, z};
    return inField(L, tableIndex, name, point, pointAt);
}

void setAPoint(lua_State* L, int tableIndex, double x, double y, double z)
{
    if (const int table = tableAt(L, tableIndex)) fillPoint(L, table, x, y, z);
}

void setAPoint(lua_State* L, int tableIndex, int key, double x, double y, double z)
{
    const int table = tableAt(L, tableIndex);
    if (table == 0) return;
    pushPoint(L, x, y, z);
    lua_rawseti(L, table, key);
}

void setAPoint(lua_State* L, int tableIndex, const char* name, double x, double y, double z)
{
    const int table = tableAt(L, tableIndex);
    if (table == 0 || !name) return;
    pushPoint(L, x, y, z);
    lua_setfield(L, table, name);
}

void setGlbParamValue(lua_State* L, int tableIndex, const char* key, double value)
{
    setField(L, tableIndex, key, value);
}

void setGlbParamValue(lua_State* L, int tableIndex, const char* key, int value)
{
    setField(L, tableIndex, key, value);
}

void setGlbParamValue(lua_State* L, int tableIndex, const char* key, const char* value)
{
    setField(L, tableIndex, key, value);
}

void setGlbParamValue(lua_State* L, int tableIndex, const char* key, bool value)
{
    setField(L, tableIndex, key, value);
}

void setGlbParamValue(lua_State* L, int tableIndex, const char* key, const QuorPoint& value)
{
    setAPoint(L, tableIndex, key, value.x, value.y, value.z);
}

void setFieldDouble(lua_State* L, int tableIndex, const char* name, double value)
{
    setField(L, tableIndex, name, value);
}

void setFieldInt64(lua_State* L, int tableIndex, const char* name, long long value)
{
    setField(L, tableIndex, name, value);
}

void clearLuaTable(lua_State* L, int tableIndex)
{
    const int table = tableAt(L, tableIndex);
    if (table == 0) return;
    lua_pushnil(L);
    while (lua_next(L, table)) { // [-2] key, [-1] value
        lua_settop(L, -2);
        lua_pushvalue(L, -1);
        lua_pushnil(L);
        // Existing entries may be emptied during a walk.
        lua_rawset(L, table);
    }
}

std::size_t numberText(double value, char (&buffer)[32])
{
    // The digits that Lua's own "%.14g" prints; this cannot outgrow the buffer.
    const auto written = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 14);
    return static_cast<std::size_t>(written.ptr - buffer);
}

std::string numberText(double value)
{
    char buffer[32];
    return std::string(buffer, numberText(value, buffer));
}

} // namespace quorlua

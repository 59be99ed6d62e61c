#include "Protected.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <charconv>
#include <climits>
#include <cstring>

namespace lua_tinker {
namespace {

using Unsigned = unsigned long long;

// The first entry of the metatable, by which it is known: no other metatable holds this address.
const char tag = 0;
constexpr int tagSlot = 1;

// The block of a 64-bit integer, null for every other value. Uses two free slots. [-0, +0, -]
const void* blockOf(lua_State* L, int index)
{
    const void* block = lua_touserdata(L, index);
    if (!block || lua_objlen(L, index) != sizeof(long long) || !lua_getmetatable(L, index)) return nullptr;
    lua_rawgeti(L, -1, tagSlot);
    const bool ours = lua_touserdata(L, -1) == &tag;
    lua_settop(L, -3);
    return ours ? block : nullptr;
}

long long valueIn(const void* block)
{
    long long value;
    std::memcpy(&value, block, sizeof value);
    return value;
}

bool isWhole(double number)
{
    return number >= -0x1p63 && number < 0x1p63 &&
           static_cast<double>(static_cast<long long>(number)) == number;
}

bool getOperand(lua_State* L, int index, long long& value)
{
    if (const void* block = blockOf(L, index)) {
        value = valueIn(block);
        return true;
    }
    if (lua_type(L, index) != LUA_TNUMBER || !isWhole(lua_tonumber(L, index))) return false;
    value = static_cast<long long>(lua_tonumber(L, index));
    return true;
}

long long add(long long a, long long b)
{
    return static_cast<long long>(static_cast<Unsigned>(a) + static_cast<Unsigned>(b));
}

long long subtract(long long a, long long b)
{
    return static_cast<long long>(static_cast<Unsigned>(a) - static_cast<Unsigned>(b));
}

long long multiply(long long a, long long b)
{
    return static_cast<long long>(static_cast<Unsigned>(a) * static_cast<Unsigned>(b));
}

// The lowest value by -1 is beyond the range and wraps to itself.
long long divide(long long a, long long b)
{
    return b == -1 ? subtract(0, a) : a / b;
}

long long remainder(long long a, long long b)
{
    return b == -1 ? 0 : a % b;
}

template<long long (*operation)(long long, long long), bool divides = false>
int calculate(lua_State* L)
{
    long long a = 0;
    long long b = 0;
    if (getOperand(L, 1, a) && getOperand(L, 2, b) && !(divides && b == 0))
        push_int64(L, operation(a, b));
    else
        lua_pushnil(L);
    return 1;
}

int negate(lua_State* L)
{
    long long value = 0;
    if (getOperand(L, 1, value))
        push_int64(L, subtract(0, value));
    else
        lua_pushnil(L);
    return 1;
}

template<bool (*relation)(long long, long long)>
int compare(lua_State* L)
{
    long long a = 0;
    long long b = 0;
    if (getOperand(L, 1, a) && getOperand(L, 2, b))
        lua_pushboolean(L, relation(a, b) ? 1 : 0);
    else
        lua_pushnil(L);
    return 1;
}

bool equal(long long a, long long b)
{
    return a == b;
}

bool less(long long a, long long b)
{
    return a < b;
}

bool lessOrEqual(long long a, long long b)
{
    return a <= b;
}

// Pushes the text of a 64-bit integer, number or string; false, with nothing pushed, for anything else.
bool pushText(lua_State* L, int index)
{
    char digits[32];
    std::size_t length = 0;
    if (lua_type(L, index) == LUA_TSTRING) {
        lua_pushvalue(L, index);
        return true;
    }
    if (lua_type(L, index) == LUA_TNUMBER) {
        length = quorlua::numberText(lua_tonumber(L, index), digits);
    } else {
        const void* block = blockOf(L, index);
        if (!block) return false;
        length = static_cast<std::size_t>(std::to_chars(digits, digits + sizeof digits, valueIn(block)).ptr -
                                          digits);
    }
    lua_pushlstring(L, digits, length);
    return true;
}

int toText(lua_State* L)
{
    return pushText(L, 1) ? 1 : 0;
}

int concatenate(lua_State* L)
{
    if (pushText(L, 1) && pushText(L, 2))
        lua_concat(L, 2);
    else
        lua_pushnil(L);
    return 1;
}

// Script function: int64(value)
int makeInt64(lua_State* L)
{
    long long value = 0;
    bool made = getOperand(L, 1, value);
    if (lua_type(L, 1) == LUA_TSTRING) {
        std::size_t length = 0;
        const char* text = lua_tolstring(L, 1, &length);
        const auto [end, error] = std::from_chars(text, text + length, value);
        made = error == std::errc() && end == text + length;
    }
    if (made)
        push_int64(L, value);
    else
        lua_pushnil(L);
    return 1;
}

constexpr luaL_Reg metamethods[] = {
    {"__tostring", toText},
    {"__eq", compare<equal>},
    {"__lt", compare<less>},
    {"__le", compare<lessOrEqual>},
    {"__add", calculate<add>},
    {"__sub", calculate<subtract>},
    {"__mul", calculate<multiply>},
    {"__div", calculate<divide, true>},
    {"__mod", calculate<remainder, true>},
    {"__unm", negate},
    {"__concat", concatenate},
};

void pushMetatable(lua_State* L)
{
    detail::pushKept(L, detail::Kept::Int64Metatable);
    if (lua_istable(L, -1)) [[likely]]
        return;
    lua_settop(L, -2);
    constexpr int slots = 3; // the table, a key and its value
    luaL_checkstack(L, slots, "64-bit integer");
    lua_createtable(L, tagSlot, static_cast<int>(std::size(metamethods)) + 1);
    lua_pushlightuserdata(L, const_cast<char*>(&tag));
    lua_rawseti(L, -2, tagSlot);
    for (const luaL_Reg& entry : metamethods) {
        lua_pushstring(L, entry.name);
        lua_pushcfunction(L, entry.func);
        lua_rawset(L, -3);
    }
    lua_pushliteral(L, "__metatable");
    lua_pushboolean(L, 0);
    lua_rawset(L, -3);
    lua_pushvalue(L, -1);
    detail::keep(L, detail::Kept::Int64Metatable);
}

} // namespace

void push_int64(lua_State* L, long long value)
{
    std::memcpy(lua_newuserdata(L, sizeof value), &value, sizeof value);
    pushMetatable(L);
    lua_setmetatable(L, -2);
}

bool is_int64(lua_State* L, int index)
{
    return L && blockOf(L, index);
}

long long read_int64(lua_State* L, int index)
{
    if (!L) return 0;
    if (const void* block = blockOf(L, index)) return valueIn(block);
    return lua_type(L, index) == LUA_TNUMBER ? detail::to_int64(lua_tonumber(L, index)) : 0;
}

void detail::installInt64(lua_State* L)
{
    // Their metatable is made with the first of them: most states never have one.
    lua_pushcfunction(L, makeInt64);
    set_global(L, "int64");
}

} // namespace lua_tinker

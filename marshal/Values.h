#pragma once

#include <BaseObj/BaseObj.h>
#include <KxGeBasic/KxGeBasic.h>
#include <algorithm>
#include <exception>
#include <lua.hpp>
#include <string>
#include <vector>

class GlibTextStyle;
namespace quorlua {
class Budget;
}

/// What the rooms share for moving values across the border to Lua. Readers here use raw access, never raise,
/// and need `readerSlots` free slots; writers raise when memory runs out and belong inside guarded work.
namespace quorlua::values {

/// A key and its value, those within the value, an entry of that and three coordinates, with two to spare. A
/// frame that has more than half of its first slots left needs no call to get them (see `guard::reserve`).
inline constexpr int readerSlots = 10;

/// Runs work that may only run out of memory; false then.
template<class Work>
bool withoutThrowing(Work work)
{
    try {
        return work();
    } catch (const std::exception&) {
        return false;
    }
}

/// The number's 64-bit integer, fractions cut off; what no such integer can hold, not-a-number included,
/// gives the smallest, as the processor's own conversion does.
inline long long toInteger(double number)
{
    constexpr double limit = 9223372036854775808.0;
    if (!(number >= -limit && number < limit)) return -9223372036854775807LL - 1;
    return static_cast<long long>(number);
}

/// A vector's size as the room that a new table is given in advance. Room is only that: what is longer grows
/// as it is filled.
template<class Vector>
int sizeHint(const Vector& vector)
{
    constexpr std::size_t most = 1 << 26;
    return static_cast<int>(std::min(vector.size(), most));
}

/// A type test, not a coercion: a numeric text is no number.
inline bool readNumber(lua_State* L, int index, double& number)
{
    if (lua_type(L, index) != LUA_TNUMBER) return false;
    number = lua_tonumber(L, index);
    return true;
}

/// The bytes of a string; 0 for other values. [-0, +0, -]
inline std::size_t textSize(lua_State* L, int index)
{
    return lua_type(L, index) == LUA_TSTRING ? lua_objlen(L, index) : 0;
}

/// As `lua_isnumber` and `lua_tonumber`, which take a numeric text for a number, but without asking the
/// locale. [-0, +0, -]
bool readNumeric(lua_State* L, int index, double& number);

/// Where a slot is found after more was pushed: upvalues, the globals and the registry stay where they are.
inline int behind(int index, int pushed)
{
    return index < 0 && index > LUA_REGISTRYINDEX ? index - pushed : index;
}

/// Reads {x, y, z} and leaves the coordinates on the stack for the caller to cut off. [-0, +(0|3), -]
inline bool readPoint(lua_State* L, int index, QuorPoint& point)
{
    if (lua_type(L, index) != LUA_TTABLE) return false;
    lua_rawgeti(L, index, 1);
    lua_rawgeti(L, behind(index, 1), 2);
    lua_rawgeti(L, behind(index, 2), 3);
    QuorPoint read;
    if (!readNumber(L, -3, read.x) || !readNumber(L, -2, read.y) || !readNumber(L, -1, read.z)) return false;
    point = read;
    return true;
}

/// Pushes a new table {x, y, z}. [-0, +1, m]
void pushPoint(lua_State* L, const QuorPoint& point);

/// Pushes a text style as an object of its class, nil for null. [-0, +1, m]
void pushTextStyle(lua_State* L, const GlibTextStyle* style);

/// Fills the table at an absolute index with a matrix's four rows. [-0, +0, m]
void fillMatrix(lua_State* L, int index, const KxGeMatrix3D& matrix);

/// Fill the table at an absolute index with a sequence. [-0, +0, m]
void fillPoints(lua_State* L, int index, const std::vector<KxGePoint3D>& points);
void fillIds(lua_State* L, int index, const std::vector<KxDbObjectId>& ids);
void fillTexts(lua_State* L, int index, const std::vector<std::string>& texts);
void fillPolyline(lua_State* L, int index, const std::vector<QuorPolyDesc>& vertices);
void fillPolylines(lua_State* L, int index, const std::vector<std::vector<QuorPolyDesc>>& polylines);

/// Append the vertices, or polylines, of the table at an absolute index in traversal order; false at the
/// first value of another shape, or beyond the budget. Throw only when memory runs out. [-0, +0, -]
bool readPolyline(lua_State* L, int index, std::vector<QuorPolyDesc>& vertices, Budget& budget);
bool readPolylines(lua_State* L, int index, std::vector<std::vector<QuorPolyDesc>>& polylines,
                   Budget& budget);

/// Calls `read(key)` for the integer keys from 1 to the table's length, in order. The length of a table with
/// holes can be millions of times its entries: such a table's keys are gathered instead of counted through.
/// Throws only what `read` throws, and when memory runs out.
template<class Read>
void forEachIndex(lua_State* L, int index, Read read)
{
    constexpr std::size_t trusted = 65536;
    const std::size_t length = lua_objlen(L, index);
    std::vector<int> keys;
    if (length > trusted) {
        for (lua_pushnil(L); lua_next(L, index) != 0; lua_pop(L, 1)) {
            double key = 0;
            if (readNumber(L, -2, key) && key >= 1 && key <= static_cast<double>(length) &&
                key == static_cast<double>(static_cast<int>(key)))
                keys.push_back(static_cast<int>(key));
        }
        if (keys.size() < length) {
            std::sort(keys.begin(), keys.end());
            for (const int key : keys)
                read(key);
            return;
        }
    }
    for (int key = 1; key <= static_cast<int>(length); ++key)
        read(key);
}

} // namespace quorlua::values

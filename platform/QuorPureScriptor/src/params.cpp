#include "ListBounds.h"
#include "Protected.h"

#include <QuorPureScriptor/quorlua_helpers.h>
#include <exception>
#include <stdexcept>

namespace quorlua {

constinit detail::ListBounds detail::listBounds;

namespace {

using lua_tinker::detail::reserve;
using lua_tinker::detail::tableAt;

// What is left of the bounds for one list; throws where more is taken, which ends the reading.
class Budget {
public:
    void takeEntry()
    {
        if (left_.entries-- == 0) throw std::length_error("too many entries");
    }
    void takeBytes(std::size_t bytes)
    {
        if (bytes > left_.bytes) throw std::length_error("too much text");
        left_.bytes -= bytes;
    }

private:
    detail::ListBounds left_ = detail::listBounds;
};

// Enough for a list in a list in a table, a record of it and a point in that.
constexpr int slotsOfReader = 14;

bool isWritten(const KVValue& value)
{
    switch (value.tag()) {
    case KVTag::Short:
    case KVTag::Double:
    case KVTag::Point:
    case KVTag::String:
    case KVTag::Int:
    case KVTag::Bool:
        return true;
    default:
        return false;
    }
}

// Only for values that are written. [-0, +1, m]
void pushValue(lua_State* L, const KVValue& value)
{
    switch (value.tag()) {
    case KVTag::Short:
        return lua_pushnumber(L, value.asShort());
    case KVTag::Int:
        return lua_pushnumber(L, value.asInt());
    case KVTag::Double:
        return lua_pushnumber(L, value.asDouble());
    case KVTag::Bool:
        return lua_pushboolean(L, value.asBool() ? 1 : 0);
    case KVTag::String:
        return lua_pushlstring(L, value.asString().data(), value.asString().size());
    case KVTag::Point:
        lua_createtable(L, 3, 0);
        return setAPoint(L, -1, value.asPoint().x, value.asPoint().y, value.asPoint().z);
    default:
        return lua_pushnil(L);
    }
}

void pushText(lua_State* L, const std::string& text)
{
    lua_pushlstring(L, text.data(), text.size());
}

// From here to the next comment: readers. They call nothing that can raise, so they may hold C++ objects,
// whose std::bad_alloc they let out to `readList`.
KVValue valueAt(lua_State* L, int index, Budget& budget)
{
    switch (lua_type(L, index)) {
    case LUA_TNUMBER:
        return KVValue::ofDouble(lua_tonumber(L, index));
    case LUA_TBOOLEAN:
        return KVValue::ofBool(lua_toboolean(L, index) != 0);
    case LUA_TSTRING: {
        std::size_t length = 0;
        const char* text = lua_tolstring(L, index, &length);
        budget.takeBytes(length);
        return KVValue::ofString(std::string(text, length));
    }
    case LUA_TTABLE: {
        QuorPoint point;
        if (getAPoint(L, index, point.x, point.y, point.z) == 0) return KVValue::ofPoint(point);
        return KVValue();
    }
    default:
        return KVValue();
    }
}

// The text of a string; empty for anything else.
std::string textAt(lua_State* L, int index, Budget& budget)
{
    std::size_t length = 0;
    const char* text = lua_type(L, index) == LUA_TSTRING ? lua_tolstring(L, index, &length) : nullptr;
    budget.takeBytes(length);
    return text ? std::string(text, length) : std::string();
}

// A number is rendered aside: lua_tolstring would turn the key itself into a string, and the walk would end
// in an error.
bool keyAt(lua_State* L, int index, std::string& key, Budget& budget)
{
    const int type = lua_type(L, index);
    if (type == LUA_TNUMBER)
        key = numberText(lua_tonumber(L, index));
    else if (type == LUA_TSTRING)
        key = textAt(L, index, budget);
    return type == LUA_TNUMBER || type == LUA_TSTRING;
}

// Calls `entry()` for each entry of the table, with its key at -2 and its value at -1.
template<class Entry>
void eachEntry(lua_State* L, int table, Budget& budget, Entry entry)
{
    lua_pushnil(L);
    while (lua_next(L, table)) {
        budget.takeEntry();
        entry();
        lua_settop(L, -2);
    }
}

// Calls `element(table)` for each table among the values at 1, 2, ... up to the first nil.
template<class Element>
void eachElement(lua_State* L, int table, Budget& budget, Element element)
{
    for (int i = 1;; ++i) {
        lua_rawgeti(L, table, i);
        const bool ended = lua_isnil(L, -1);
        if (!ended) budget.takeEntry();
        if (lua_istable(L, -1)) element(lua_gettop(L));
        lua_settop(L, -2);
        if (ended) return;
    }
}

KVValue fieldValue(lua_State* L, int table, int key, Budget& budget)
{
    lua_rawgeti(L, table, key);
    KVValue value = valueAt(L, -1, budget);
    lua_settop(L, -2);
    return value;
}

std::string fieldText(lua_State* L, int table, int key, Budget& budget)
{
    lua_rawgeti(L, table, key);
    std::string text = textAt(L, -1, budget);
    lua_settop(L, -2);
    return text;
}

bool fieldKey(lua_State* L, int table, int key, std::string& text, Budget& budget)
{
    lua_rawgeti(L, table, key);
    const bool read = keyAt(L, -1, text, budget);
    lua_settop(L, -2);
    return read;
}

void readArray(lua_State* L, int table, std::vector<KVParams>& records, Budget& budget)
{
    eachElement(L, table, budget, [&](int element) {
        KVParams record;
        if (!fieldKey(L, element, 1, record.key, budget)) return;
        record.value = fieldValue(L, element, 2, budget);
        record.note = fieldText(L, element, 3, budget);
        budget.takeBytes(sizeof record);
        records.push_back(std::move(record));
    });
}

// Brings the stack back and answers for the frame of every list reader.
template<class List, class Body>
bool readList(lua_State* L, int tableIndex, List& list, bool clearFirst, Body body)
{
    if (clearFirst) list.clear();
    const int table = tableAt(L, tableIndex);
    if (table == 0 || !reserve(L, slotsOfReader)) return false;
    const int top = lua_gettop(L);
    try {
        Budget budget;
        body(table, budget);
        return true;
    } catch (const std::exception&) {
        lua_settop(L, top);
        return false;
    }
}

// Writers: a Lua error can pass through them.
void writeArray(lua_State* L, int table, const std::vector<KVParams>& records)
{
    int at = 0;
    for (const KVParams& record : records) {
        if (!isWritten(record.value)) continue;
        lua_createtable(L, 3, 0);
        pushText(L, record.key);
        lua_rawseti(L, -2, 1);
        pushValue(L, record.value);
        lua_rawseti(L, -2, 2);
        pushText(L, record.note);
        lua_rawseti(L, -2, 3);
        lua_rawseti(L, table, ++at);
    }
}

int sizeHint(std::size_t count)
{
    return count < 0x10000 ? static_cast<int>(count) : 0x10000;
}

void writeField(lua_State* L, int table, const KVParams& record)
{
    if (!isWritten(record.value)) return;
    pushText(L, record.key);
    pushValue(L, record.value);
    lua_settable(L, table);
}

} // namespace

void setTableKv(lua_State* L, int tableIndex, const KVParams& record)
{
    if (const int table = tableAt(L, tableIndex)) writeField(L, table, record);
}

bool setParams(lua_State* L, int tableIndex, const std::vector<KVParams>& records)
{
    const int table = tableAt(L, tableIndex);
    if (table == 0) return false;
    for (const KVParams& record : records)
        writeField(L, table, record);
    return true;
}

bool getParams(lua_State* L, int tableIndex, std::vector<KVParams>& records, bool clearFirst)
{
    return readList(L, tableIndex, records, clearFirst, [&](int table, Budget& budget) {
        eachEntry(L, table, budget, [&] {
            KVParams record;
            if (!keyAt(L, -2, record.key, budget)) return;
            record.value = valueAt(L, -1, budget);
            budget.takeBytes(sizeof record);
            records.push_back(std::move(record));
        });
    });
}

bool setParams_note(lua_State* L, int tableIndex, const std::vector<KVParams>& records)
{
    const int table = tableAt(L, tableIndex);
    if (table == 0) return false;
    for (const KVParams& record : records) {
        if (!isWritten(record.value)) continue;
        pushText(L, record.key);
        lua_createtable(L, 2, 0);
        pushText(L, record.note);
        lua_rawseti(L, -2, 1);
        pushValue(L, record.value);
        lua_rawseti(L, -2, 2);
        lua_settable(L, table);
    }
    return true;
}

bool getParams_note(lua_State* L, int tableIndex, std::vector<KVParams>& records, bool clearFirst)
{
    return readList(L, tableIndex, records, clearFirst, [&](int table, Budget& budget) {
        eachEntry(L, table, budget, [&] {
            KVParams record;
            if (!lua_istable(L, -1) || !keyAt(L, -2, record.key, budget)) return;
            const int element = lua_gettop(L);
            record.note = fieldText(L, element, 1, budget);
            record.value = fieldValue(L, element, 2, budget);
            budget.takeBytes(sizeof record);
            records.push_back(std::move(record));
        });
    });
}

bool setArrayParams(lua_State* L, int tableIndex, const std::vector<KVParams>& records)
{
    const int table = tableAt(L, tableIndex);
    if (table == 0) return false;
    writeArray(L, table, records);
    return true;
}

bool getArrayParams(lua_State* L, int tableIndex, std::vector<KVParams>& records, bool clearFirst)
{
    return readList(L, tableIndex, records, clearFirst,
                    [&](int table, Budget& budget) { readArray(L, table, records, budget); });
}

bool setArrayParams(lua_State* L, int tableIndex, const std::vector<std::vector<KVParams>>& lists)
{
    const int table = tableAt(L, tableIndex);
    if (table == 0) return false;
    int at = 0;
    for (const std::vector<KVParams>& records : lists) {
        lua_createtable(L, sizeHint(records.size()), 0);
        writeArray(L, lua_gettop(L), records);
        lua_rawseti(L, table, ++at);
    }
    return true;
}

bool getArrayParams(lua_State* L, int tableIndex, std::vector<std::vector<KVParams>>& lists, bool clearFirst)
{
    return readList(L, tableIndex, lists, clearFirst, [&](int table, Budget& budget) {
        eachElement(L, table, budget, [&](int element) {
            budget.takeBytes(sizeof(std::vector<KVParams>));
            readArray(L, element, lists.emplace_back(), budget);
        });
    });
}

bool setKVdataArray(lua_State* L, int tableIndex, const std::vector<KVData>& records)
{
    const int table = tableAt(L, tableIndex);
    if (table == 0) return false;
    int at = 0;
    for (const KVData& record : records) {
        if (!isWritten(record.value)) continue;
        lua_createtable(L, 2, 0);
        pushText(L, record.key);
        lua_rawseti(L, -2, 1);
        pushValue(L, record.value);
        lua_rawseti(L, -2, 2);
        lua_rawseti(L, table, ++at);
    }
    return true;
}

bool getKVdataArray(lua_State* L, int tableIndex, std::vector<KVData>& records, bool clearFirst)
{
    return readList(L, tableIndex, records, clearFirst, [&](int table, Budget& budget) {
        eachElement(L, table, budget, [&](int element) {
            KVData record;
            if (!fieldKey(L, element, 1, record.key, budget)) return;
            record.value = fieldValue(L, element, 2, budget);
            budget.takeBytes(sizeof record);
            records.push_back(std::move(record));
        });
    });
}

} // namespace quorlua

#include "Budget.h"
#include "Guard.h"
#include "Limits.h"
#include "UnitFreeNames.h"
#include "Values.h"

#include <QuorPureScriptor/quorlua_helpers.h>
#include <QuorScriptor/QuorGlibScriptor.h>
#include <cstdio>

using Quor::GlibStatus;

namespace {

namespace guard = quorlua::guard;
namespace values = quorlua::values;

constexpr int positionalParameters = 23;

/// Runs `work(frame)` with a global table as slot 1 of its frame. False when there is no state or no such
/// table.
template<class Work>
bool onGlobalTable(lua_State* L, const char* name, Work work)
{
    if (!L || !name) return false;
    bool found = false;
    const bool ran = guard::run(L, [name, work, &found](lua_State* frame) {
        guard::pushGlobal(frame, name);
        found = lua_istable(frame, 1);
        if (found) work(frame);
        return 0;
    });
    return ran && found;
}

/// Reads a global table with `read(index)`, outside the guard.
template<class Read>
GlibStatus readGlobalTable(lua_State* L, const char* name, Read read)
{
    if (!L || !name || !guard::reserve(L, values::readerSlots)) return GlibStatus::TableMissing;
    const quorlua::limits::Operation operation(L);
    const int top = lua_gettop(L);
    const bool fetched = guard::run(L, 0, 0, [name](lua_State* frame) {
        guard::pushGlobal(frame, name);
        return 1;
    });
    if (!fetched) return GlibStatus::TableMissing;
    GlibStatus status = GlibStatus::TableMissing;
    if (lua_istable(L, -1)) {
        status = GlibStatus::ScriptFailed;
        values::withoutThrowing([&] {
            status = read(top + 1);
            return true;
        });
    }
    lua_settop(L, top);
    return status;
}

/// Stores the list as "cut" of the table in slot 1. [-0, +0, e]
void writeCuts(lua_State* frame, const geolib::paramt* cuts)
{
    lua_newtable(frame);
    int key = 0;
    for (; cuts; cuts = cuts->next) {
        lua_createtable(frame, 2, 0);
        lua_pushnumber(frame, cuts->first);
        lua_rawseti(frame, -2, 1);
        lua_pushnumber(frame, cuts->second);
        lua_rawseti(frame, -2, 2);
        lua_rawseti(frame, -2, ++key);
    }
    lua_setfield(frame, 1, "cut");
}

void removeCuts(lua_State* frame)
{
    lua_pushnil(frame);
    lua_setfield(frame, 1, "cut");
}

/// Writes one record into the table in slot 1; a tag that is not listed is passed over. [-0, +0, e]
void writeRecord(lua_State* frame, const KVParams& record, double factor,
                 const quorlua::UnitFreeNames& unitFree)
{
    const char* key = record.key.c_str();
    const KVValue& value = record.value;
    switch (value.tag()) {
    case KVTag::Short:
        quorlua::setGlbParamValue(frame, 1, key, static_cast<int>(value.asShort()));
        break;
    case KVTag::Int:
        quorlua::setGlbParamValue(frame, 1, key, value.asInt());
        break;
    case KVTag::Double:
        quorlua::setGlbParamValue(frame, 1, key, unitFree.scaled(key, value.asDouble(), factor));
        break;
    case KVTag::Point:
        quorlua::setGlbParamValue(frame, 1, key, value.asPoint());
        break;
    case KVTag::String:
        quorlua::setGlbParamValue(frame, 1, key, value.asString().c_str());
        break;
    case KVTag::Bool:
        quorlua::setGlbParamValue(frame, 1, key, value.asBool());
        break;
    default:
        break;
    }
}

/// A key as text: that of a string up to its end, that of a number as the interpreter writes it, else none.
std::string keyText(lua_State* L, int index)
{
    std::size_t size = 0;
    if (lua_type(L, index) == LUA_TNUMBER) return quorlua::numberText(lua_tonumber(L, index));
    if (lua_type(L, index) != LUA_TSTRING) return {};
    const char* text = lua_tolstring(L, index, &size);
    return std::string(text, size);
}

/// Reads {note, value} at an absolute index into a record; false when the note is no string, or when the
/// texts are beyond the budget.
bool readNoted(lua_State* L, int index, KVParams& record, quorlua::Budget& budget)
{
    lua_rawgeti(L, index, 1);
    lua_rawgeti(L, index, 2); // [-2] note, [-1] value
    const std::size_t texts = values::textSize(L, -2) + values::textSize(L, -1);
    const bool noted = lua_type(L, -2) == LUA_TSTRING && budget.takeEntry(sizeof record + texts);
    if (noted) {
        record.note = keyText(L, -2);
        if (lua_type(L, -1) == LUA_TNUMBER) record.value = KVValue::ofDouble(lua_tonumber(L, -1));
        if (lua_type(L, -1) == LUA_TSTRING) record.value = KVValue::ofString(keyText(L, -1));
    }
    lua_pop(L, 2);
    return noted;
}

GlibStatus readNotes(lua_State* L, int table, std::vector<KVParams>& records)
{
    quorlua::Budget budget(L);
    for (lua_pushnil(L); lua_next(L, table) != 0; lua_pop(L, 1)) {
        KVParams record;
        record.key = keyText(L, -2);
        if (lua_istable(L, -1)) {
            if (!readNoted(L, lua_gettop(L), record, budget)) return GlibStatus::ScriptFailed;
            records.push_back(std::move(record));
        } else if (record.key != "angle") {
            return GlibStatus::ScriptFailed;
        }
    }
    return GlibStatus::Ok;
}

} // namespace

bool QuorGlibScriptor::setParams(const geolib::paramt* cuts)
{
    return onGlobalTable(state_, "param",
                         [cuts](lua_State* frame) { cuts ? writeCuts(frame, cuts) : removeCuts(frame); });
}

bool QuorGlibScriptor::setParams(const double* values, double factor)
{
    if (!values) return false;
    return quorlua::values::withoutThrowing([&] {
        const quorlua::UnitFreeNames unitFree(state_);
        return onGlobalTable(state_, "param", [values, factor, &unitFree](lua_State* frame) {
            removeCuts(frame);
            for (int i = 1; i <= positionalParameters; ++i) {
                char name[16];
                std::snprintf(name, sizeof name, "P%d", i);
                quorlua::setGlbParamValue(frame, 1, name, unitFree.scaled(name, values[i - 1], factor));
            }
        });
    });
}

bool QuorGlibScriptor::setDoubleParam(const char* table, const char* key, double value)
{
    if (!state_ || !table || !key) return false;
    bool found = false;
    const bool ran = guard::run(state_, [table, key, value, &found](lua_State* frame) {
        guard::pushGlobal(frame, table);
        found = !lua_isnil(frame, 1);
        if (!found) return 0;
        lua_pushnumber(frame, value);
        lua_setfield(frame, 1, key);
        return 0;
    });
    return ran && found;
}

bool QuorGlibScriptor::setKeyValues(const std::vector<KVParams>& records, double factor)
{
    return values::withoutThrowing([&] {
        const quorlua::UnitFreeNames unitFree(state_);
        return onGlobalTable(state_, "param", [&records, factor, &unitFree](lua_State* frame) {
            for (const KVParams& record : records)
                writeRecord(frame, record, factor, unitFree);
        });
    });
}

bool QuorGlibScriptor::setParam(const char* table, const std::vector<KVParams>& records)
{
    return onGlobalTable(state_, table,
                         [&records](lua_State* frame) { quorlua::setParams(frame, 1, records); });
}

bool QuorGlibScriptor::clearParam(const char* table)
{
    return onGlobalTable(state_, table, [](lua_State* frame) { quorlua::clearLuaTable(frame, 1); });
}

bool QuorGlibScriptor::setConstFactor(double factor)
{
    return onGlobalTable(state_, "glb",
                         [factor](lua_State* frame) { quorlua::setFieldDouble(frame, 1, "factor", factor); });
}

bool QuorGlibScriptor::setObjectId(long long id) const
{
    return onGlobalTable(state_, "glb",
                         [id](lua_State* frame) { quorlua::setFieldInt64(frame, 1, "objectid", id); });
}

bool QuorGlibScriptor::isMetreUnit(const char* parameter)
{
    bool metre = true;
    values::withoutThrowing([&] {
        metre = !parameter || quorlua::UnitFreeNames(state_).isLength(parameter);
        return true;
    });
    return metre;
}

GlibStatus QuorGlibScriptor::getParams(std::vector<KVParams>& records)
{
    return getParams_note("param", records);
}

GlibStatus QuorGlibScriptor::getParams_note(const char* table, std::vector<KVParams>& records)
{
    if (!table || !*table) return GlibStatus::InvalidArgument;
    return readGlobalTable(state_, table, [&](int index) { return readNotes(state_, index, records); });
}

GlibStatus QuorGlibScriptor::getParams_std(const char* table, std::vector<KVParams>& records)
{
    return readGlobalTable(state_, table, [&](int index) {
        return quorlua::getParams(state_, index, records, false) ? GlibStatus::Ok : GlibStatus::ScriptFailed;
    });
}

#include "Context.h"
#include "Guard.h"
#include "LastError.h"
#include "Values.h"

#include <QuorPureScriptor/quorlua_helpers.h>
#include <QuorScriptor/QuorGlibScriptor.h>
#include <QuorScriptor/primitives.h>

using Quor::GlibStatus;

namespace {

namespace guard = quorlua::guard;
namespace values = quorlua::values;

constexpr int noPrimitivesCode = 2007;
constexpr int keypointMark = 1;

/// Reads {1, id, point, ...} at an absolute index; false for anything else.
bool readKeypoint(lua_State* L, int index, Keypoint& keypoint)
{
    int mark = 0;
    int id = 0;
    double x = 0, y = 0, z = 0;
    if (!lua_istable(L, index)) return false;
    if (!quorlua::getAInt(L, index, 1, mark) || mark != keypointMark) return false;
    if (lua_objlen(L, index) < 3) return false;
    if (!quorlua::getAInt(L, index, 2, id) || !quorlua::getAPoint(L, index, 3, x, y, z)) return false;
    keypoint.first = static_cast<short>(id);
    keypoint.second.set(x, y, z);
    return true;
}

} // namespace

GlibStatus QuorGlibScriptor::parsePrimary(std::vector<QuorPrimary*>& primitives)
{
    primitives.clear();
    if (!state_) return GlibStatus::NoState;
    if (lua_gettop(state_) == 0 || !lua_istable(state_, -1)) {
        quorlua::setLastError(noPrimitivesCode, quorlua::messages::noPrimitives);
        return GlibStatus::ScriptFailed;
    }
    static_cast<void>(justParsePrimary(primitives));
    quorlua::currentContext().reset();
    return GlibStatus::Ok;
}

GlibStatus QuorGlibScriptor::justParsePrimary(std::vector<QuorPrimary*>& primitives)
{
    return quorlua::parse_primary_byidx(state_, state_ ? lua_gettop(state_) : 0, primitives);
}

GlibStatus QuorGlibScriptor::parseKeypoint(std::vector<Keypoint>& keypoints, int index)
{
    keypoints.clear();
    if (!state_) return GlibStatus::ScriptFailed;
    const int top = lua_gettop(state_);
    const int table = index < 1 ? top + index + 1 : index;
    if (table < 1 || table > top || !lua_istable(state_, table)) return GlibStatus::ScriptFailed;
    if (!guard::reserve(state_, values::readerSlots)) return GlibStatus::ScriptFailed;
    const bool read = values::withoutThrowing([&] {
        for (lua_pushnil(state_); lua_next(state_, table) != 0; lua_settop(state_, top + 1)) {
            Keypoint keypoint;
            if (readKeypoint(state_, top + 2, keypoint)) keypoints.push_back(keypoint);
        }
        return true;
    });
    lua_settop(state_, top);
    return read ? GlibStatus::Ok : GlibStatus::ScriptFailed;
}

GlibStatus QuorGlibScriptor::parseRtn(bool& answer)
{
    if (!state_) return GlibStatus::NoState;
    if (lua_gettop(state_) == 0 || !lua_isboolean(state_, -1)) return GlibStatus::ScriptFailed;
    answer = lua_toboolean(state_, -1) != 0;
    return GlibStatus::Ok;
}

GlibStatus QuorGlibScriptor::parseRtn(int& answer)
{
    double number = 0;
    if (!state_) return GlibStatus::NoState;
    if (lua_gettop(state_) == 0 || !values::readNumber(state_, -1, number)) return GlibStatus::ScriptFailed;
    answer = static_cast<int>(values::toInteger(number));
    return GlibStatus::Ok;
}

GlibStatus QuorGlibScriptor::getSmrtlnType(std::string& type)
{
    if (!state_) return GlibStatus::InvalidArgument;
    const int top = lua_gettop(state_);
    const bool fetched = guard::run(state_, [](lua_State* frame) {
        guard::pushGlobal(frame, "glb");
        if (!lua_isnil(frame, 1)) lua_getfield(frame, 1, "smrtlntype");
        return 1;
    });
    if (!fetched) return GlibStatus::ValueMissing;
    const bool read = values::withoutThrowing([&] {
        const int kind = lua_type(state_, -1);
        if (kind == LUA_TNUMBER) {
            type = quorlua::numberText(lua_tonumber(state_, -1));
        } else if (kind == LUA_TSTRING) {
            std::size_t size = 0;
            const char* text = lua_tolstring(state_, -1, &size);
            type.assign(text, size);
        }
        return kind == LUA_TNUMBER || kind == LUA_TSTRING;
    });
    lua_settop(state_, top);
    return read ? GlibStatus::Ok : GlibStatus::ValueMissing;
}

#include "Context.h"
#include "Guard.h"
#include "LastError.h"
#include "Limits.h"
#include "Values.h"

#include <QuorPureScriptor/BackupLuaStackTop.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <QuorScriptor/QuorGlibScriptor.h>
#include <QuorScriptor/luacall.h>

using Quor::GlibStatus;

namespace {

namespace guard = quorlua::guard;
namespace limits = quorlua::limits;
namespace values = quorlua::values;

constexpr int segmentFailedCode = 2003;

/// What the global of a segment's name must be.
enum class Callable { NotNil, Function };

/// Calls a segment under the message handler. `push(frame)` pushes the arguments and returns their number;
/// where `slot` is not 0, that slot's value is slot 1 of its frame. On Ok the handler is left on the stack
/// with the results above it; otherwise the stack is as it was.
template<class Push>
GlibStatus callSegment(lua_State* L, const char* segment, Callable wanted, int results, int slot, Push push)
{
    if (!L) return GlibStatus::NoState;
    if (!segment) return GlibStatus::SegmentMissing;
    const int top = lua_gettop(L);
    bool missing = false;
    bool called = false;
    bool hasRoom = false;
    if (guard::reserve(L, values::readerSlots) && guard::pushHandler(L)) {
        hasRoom = true;
        const int handed = slot != 0 ? 1 : 0;
        if (handed != 0) lua_pushvalue(L, slot);
        called = guard::run(L, handed, top + 1, [&missing, segment, wanted, results, push](lua_State* frame) {
            const int own = lua_gettop(frame);
            guard::pushGlobal(frame, segment);
            missing = wanted == Callable::Function ? !lua_isfunction(frame, -1) : lua_isnil(frame, -1);
            if (missing) return 0;
            const int arguments = push(frame);
            lua_call(frame, arguments, results);
            return lua_gettop(frame) - own;
        });
    }
    if (called && !missing) return GlibStatus::Ok;
    lua_settop(L, top);
    if (missing) return GlibStatus::SegmentMissing;
    if (!hasRoom) lua_tinker::print_error(L, "no room on the stack to call `%s'", segment);
    quorlua::setLastError(segmentFailedCode, quorlua::messages::segmentFailed, segment);
    return GlibStatus::ScriptFailed;
}

/// A call without arguments.
GlibStatus callPlain(lua_State* L, const char* segment, int results)
{
    return callSegment(L, segment, Callable::NotNil, results, 0, [](lua_State*) { return 0; });
}

/// A call that leaves the segment's one result on top.
template<class Push>
GlibStatus callLeavingResult(lua_State* L, const char* segment, Callable wanted, int slot, Push push)
{
    const limits::Operation operation(L);
    const GlibStatus status = callSegment(L, segment, wanted, 1, slot, push);
    if (status == GlibStatus::Ok) lua_remove(L, -2);
    return status;
}

/// The slot of a table argument; 0 for a handle of another state, or of a slot that is gone.
int slotOf(lua_State* L, const lua_tinker::table& argument)
{
    return L && argument.state() == L && guard::isSlot(L, argument.index()) ? argument.index() : 0;
}

/// Reads {boolean, string}; the number is written before the text is looked at.
GlibStatus readDirection(lua_State* L, int index, int& needxdir, std::string& text)
{
    lua_rawgeti(L, index, 1);
    if (!lua_isboolean(L, -1)) return GlibStatus::ScriptFailed;
    needxdir = lua_toboolean(L, -1);
    lua_rawgeti(L, index, 2);
    if (lua_type(L, -1) != LUA_TSTRING) return GlibStatus::ScriptFailed;
    const bool copied = values::withoutThrowing([&] {
        std::size_t size = 0;
        const char* bytes = lua_tolstring(L, -1, &size);
        text.assign(bytes, size);
        return true;
    });
    return copied ? GlibStatus::Ok : GlibStatus::ScriptFailed;
}

void setPointerGlobal(lua_State* L, const char* name, limits::Passed which, const void* pointer)
{
    if (!L) return;
    limits::rememberPassed(L, which, pointer);
    guard::run(L, [name, pointer](lua_State* frame) {
        if (pointer)
            lua_pushlightuserdata(frame, const_cast<void*>(pointer));
        else
            lua_pushnil(frame);
        lua_setglobal(frame, name);
        return 0;
    });
}

} // namespace

GlibStatus QuorGlibScriptor::callSeg(const char* segment)
{
    const limits::Operation operation(state_);
    const BackupLuaStackTop height(state_);
    const GlibStatus status = callPlain(state_, segment, 0);
    if (status == GlibStatus::Ok) quorlua::currentContext().reset();
    return status;
}

GlibStatus QuorGlibScriptor::callSeg(const char* segment, int& needxdir, std::string& text)
{
    const limits::Operation operation(state_);
    const BackupLuaStackTop height(state_);
    GlibStatus status = callPlain(state_, segment, 1);
    if (status != GlibStatus::Ok) return status;
    const bool fetched = lua_istable(state_, -1) && guard::runOn(state_, -1, [](lua_State* frame) {
                             lua_getfield(frame, 1, "needxdir");
                             return 1;
                         });
    if (!fetched || !lua_istable(state_, -1)) return GlibStatus::ScriptFailed;
    status = readDirection(state_, lua_gettop(state_), needxdir, text);
    if (status == GlibStatus::Ok) quorlua::currentContext().reset();
    return status;
}

GlibStatus QuorGlibScriptor::callSeg(const char* segment, std::vector<Keypoint>& keypoints)
{
    keypoints.clear();
    const limits::Operation operation(state_);
    const BackupLuaStackTop height(state_);
    const GlibStatus status = callPlain(state_, segment, 1);
    if (status != GlibStatus::Ok) return status;
    static_cast<void>(parseKeypoint(keypoints, -1));
    quorlua::currentContext().reset();
    return GlibStatus::Ok;
}

GlibStatus QuorGlibScriptor::callSeg(const char* segment, std::vector<QuorPrimary*>& primitives)
{
    const limits::Operation operation(state_);
    const BackupLuaStackTop height(state_);
    const GlibStatus status = callPlain(state_, segment, 1);
    return status == GlibStatus::Ok ? parsePrimary(primitives) : status;
}

GlibStatus QuorGlibScriptor::callSeg3D(const char* segment, std::vector<QuorPrimary*>& primitives)
{
    return callSeg(segment, primitives);
}

GlibStatus QuorGlibScriptor::getKeypoints(std::vector<Keypoint>& keypoints)
{
    return callSeg("keypoint", keypoints);
}

GlibStatus QuorGlibScriptor::callSeg(const char* segment, const std::vector<KVParams>& parameters)
{
    return callLeavingResult(state_, segment, Callable::Function, 0, [&](lua_State*) {
        setCallParam(parameters);
        return 1;
    });
}

GlibStatus QuorGlibScriptor::callSeg(const char* segment, const std::vector<KVParams>& parameters,
                                     const GlibTextStyle& style)
{
    return callLeavingResult(state_, segment, Callable::NotNil, 0, [&](lua_State*) {
        setCallParam(parameters);
        setCallParam(style);
        return 2;
    });
}

GlibStatus QuorGlibScriptor::callSeg(const char* segment, const std::vector<KVParams>& parameters,
                                     const KxGeMatrix3D& matrix)
{
    return callLeavingResult(state_, segment, Callable::Function, 0, [&](lua_State*) {
        setCallParam(parameters);
        setCallParam(matrix);
        return 2;
    });
}

GlibStatus QuorGlibScriptor::callSeg(const char* segment, const GlibTextStyle& style)
{
    return callLeavingResult(state_, segment, Callable::NotNil, 0, [&](lua_State*) {
        setCallParam(style);
        return 1;
    });
}

GlibStatus QuorGlibScriptor::callSeg(const char* segment, const lua_tinker::table& argument)
{
    const int slot = slotOf(state_, argument);
    return callLeavingResult(state_, segment, Callable::Function, slot, [slot](lua_State* frame) {
        if (slot != 0)
            lua_pushvalue(frame, 1);
        else
            lua_pushnil(frame);
        return 1;
    });
}

GlibStatus QuorGlibScriptor::callSeg(const char* segment, const lua_tinker::table& argument,
                                     const GlibTextStyle& style)
{
    const int slot = slotOf(state_, argument);
    return callLeavingResult(state_, segment, Callable::Function, slot, [&, slot](lua_State* frame) {
        if (slot != 0) lua_pushvalue(frame, 1);
        setCallParam(style);
        // A table of another state is left out: the style moves down, and nil fills the end.
        if (slot == 0) lua_pushnil(frame);
        return 2;
    });
}

void QuorGlibScriptor::setCallParam(const std::vector<KVParams>& parameters)
{
    lua_createtable(state_, 0, values::sizeHint(parameters));
    const int table = lua_gettop(state_);
    for (const KVParams& record : parameters)
        quorlua::setTableKv(state_, table, record);
}

void QuorGlibScriptor::setCallParam(const GlibTextStyle& style)
{
    values::pushTextStyle(state_, &style);
}

void QuorGlibScriptor::setCallParam(const KxGeMatrix3D& matrix)
{
    lua_createtable(state_, 4, 0);
    values::fillMatrix(state_, lua_gettop(state_), matrix);
}

Quor::CadReturn QuorGlibScriptor::exeLuaUI(KxGePoint3D& first, KxGePoint3D& second,
                                           std::vector<KVParams>& parameters)
{
    if (!state_) return Quor::CadReturn::StateMissing;
    // In a frame without room for its arguments the call would raise.
    if (!guard::reserve(state_, LUA_MINSTACK)) return Quor::CadReturn::CallFailed;
    const KxGePoint3D start = first;
    KxGePoint3D answer = first;
    // A status that the script does not give as a number cannot be read.
    int status = Quor::CadReturn::CallFailed;
    if (!quorlua::callLua<"p>ippm">(state_, "quorgetparam_ui", start, &status, &answer, &second, &parameters))
        return Quor::CadReturn::CallFailed;
    if (status == Quor::CadReturn::Accepted) first = answer;
    return static_cast<Quor::CadReturn>(status);
}

void QuorGlibScriptor::setFunction(const GlibScriptFunctor* functor)
{
    functor_ = functor;
    quorlua::currentContext().functor = functor;
    setPointerGlobal(state_, "_glib_pass_functor_pointer", limits::Passed::Functor, functor);
}

void QuorGlibScriptor::setGlibTextstyle(const GlibTextStyle* style)
{
    quorlua::currentContext().textStyle = style;
    setPointerGlobal(state_, "_glib_pass_txtstyle_pointer", limits::Passed::TextStyle, style);
}

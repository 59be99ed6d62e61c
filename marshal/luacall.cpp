#include "CallFormats.h"
#include "Guard.h"
#include "Limits.h"
#include "Values.h"

#include <QuorMsgHandle/QuorMsgHandle.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <algorithm>
#include <cstdio>
#include <cstring>

namespace quorlua {
namespace {

constexpr short callTimer = 25;

/// What the pushing of one argument uses besides the argument's own slot.
constexpr int pushingSlots = 8;

/// How a pushing operation ended. Too many arguments is the one failure that is raised to the caller, after
/// every C++ object is gone.
enum class Outcome { Ok, Failed, NoFunction, TooManyArguments };

bool isHandle(char letter)
{
    return letter == 'c' || letter == 't';
}

const lua_tinker::table_obj* handleOf(const CallItem& item)
{
    return static_cast<const lua_tinker::table_obj*>(item.address);
}

/// Pushes the arguments inside a guarded frame whose own arguments are the values of the handles. A handle of
/// another state counts and pushes nothing: the later arguments move down, and nil fills the end. [-0,
/// +count, m]
struct Pushing {
    const char* format;
    const CallItem* items;
    call::Shape shape;
    int callerTop;

    /// Whether the arguments fit, in the caller's frame as in this one.
    bool fits(lua_State* frame) const
    {
        return shape.arguments == 0 || (callerTop + shape.arguments + 1 <= LUAI_MAXCSTACK &&
                                        guard::makeRoom(frame, shape.arguments + pushingSlots));
    }

    /// The number of arguments, 0 when the format has a byte that is no letter.
    int pushArgsByFormat(lua_State* frame, const lua_State* owner) const
    {
        int handle = 0;
        int missing = 0;
        for (int i = 0; i < shape.arguments; ++i) {
            if (!isHandle(format[i])) {
                call::pushArgument(frame, format[i], items[i]);
            } else if (handleOf(items[i]) && lua_tinker::state_of(handleOf(items[i])) == owner) {
                lua_pushvalue(frame, ++handle);
            } else {
                ++missing;
            }
        }
        if (!shape.valid) return 0;
        while (missing-- > 0)
            lua_pushnil(frame);
        return shape.arguments;
    }
};

/// Pushes the values behind the handles of this state, for a guarded frame to take as its arguments. Their
/// number.
int pushHandles(lua_State* L, const call::Shape& shape, const char* format, const CallItem* items)
{
    if (shape.handles == 0) return 0;
    int pushed = 0;
    for (int i = 0; i < shape.arguments; ++i) {
        if (!isHandle(format[i]) || !handleOf(items[i]) || lua_tinker::state_of(handleOf(items[i])) != L)
            continue;
        const int index = lua_tinker::index_of(handleOf(items[i]));
        if (guard::isSlot(L, index))
            lua_pushvalue(L, index);
        else
            lua_pushnil(L);
        ++pushed;
    }
    return pushed;
}

/// Why the caller's frame has no room for pushing: too many arguments, when it comes to pushing them at all.
Outcome outcomeWithoutRoom(lua_State* L, const char* function, const call::Shape& shape)
{
    const bool full = lua_gettop(L) + shape.arguments + LUA_MINSTACK > LUAI_MAXCSTACK;
    const bool pushes = shape.arguments > 0 && (!function || is_global_function(L, function));
    return full && pushes ? Outcome::TooManyArguments : Outcome::Failed;
}

/// The call: on Ok its results are on top of the caller's stack, above the message handler and, where a byte
/// of the format was no letter, above what had been pushed before it.
Outcome callAndLeaveResults(lua_State* L, const char* function, const char* format, const CallItem* items,
                            const call::Shape& shape)
{
    if (!guard::reserve(L, 1 + shape.handles + shape.results)) return outcomeWithoutRoom(L, function, shape);
    if (!guard::pushHandler(L)) return Outcome::Failed;
    const int handler = lua_gettop(L);
    const int handles = pushHandles(L, shape, format, items);
    Outcome outcome = Outcome::Ok;
    Pushing pushing{format, items, shape, handler + 1};
    const bool ran = guard::run(L, handles, handler, [&, L, handles](lua_State* frame) {
        guard::pushGlobal(frame, function);
        if (!lua_isfunction(frame, -1)) {
            outcome = Outcome::NoFunction;
            return 0;
        }
        if (!pushing.fits(frame)) {
            outcome = Outcome::TooManyArguments;
            return 0;
        }
        // Where a byte was no letter, the values pushed before it stay, and what is on top is called.
        const int arguments = pushing.pushArgsByFormat(frame, L);
        if (!guard::makeRoom(frame, std::max(shape.results - arguments, 0))) {
            outcome = Outcome::Failed;
            return 0;
        }
        lua_call(frame, arguments, pushing.shape.results);
        return lua_gettop(frame) - handles;
    });
    return ran ? outcome : Outcome::Failed;
}

Outcome callAndRead(lua_State* L, const char* function, const char* format, const CallItem* items,
                    const call::Shape& shape)
{
    const limits::Operation operation(L);
    const int top = lua_gettop(L);
    int kept = 0;
    Outcome outcome = callAndLeaveResults(L, function, format, items, shape);
    if (outcome == Outcome::Ok) {
        const bool read = guard::reserve(L, values::readerSlots) && values::withoutThrowing([&] {
                              return call::readResultsByFormat(L, shape.rest, items + shape.arguments, &kept);
                          });
        if (!read) outcome = Outcome::Failed;
    }
    lua_settop(L, kept > top ? kept : top);
    return outcome;
}

/// The variadic operations' common part: gathers the items first.
Outcome callWithList(lua_State* L, const char* function, const char* format, va_list& list)
{
    if (!L || !function || !format) return Outcome::Failed;
    Outcome outcome = Outcome::Failed;
    values::withoutThrowing([&] {
        const call::Shape shape = call::shapeOf(format);
        call::Items items;
        items.takeArguments(shape, format, list);
        items.takeResults(shape.rest, list);
        outcome = callAndRead(L, function, format, items.data(), shape);
        return true;
    });
    return outcome;
}

/// Pushes the arguments, above the function when there is a name for one. The number of arguments, or -1.
int prepareWithList(lua_State* L, const char* function, const char* format, va_list& list, Outcome& outcome)
{
    int count = -1;
    values::withoutThrowing([&] {
        const call::Shape shape = call::shapeOf(format);
        call::Items items;
        items.takeArguments(shape, format, list);
        if (!guard::reserve(L, shape.handles + 1)) {
            outcome = outcomeWithoutRoom(L, function, shape);
            return false;
        }
        const int top = lua_gettop(L);
        const int handles = pushHandles(L, shape, format, items.data());
        Pushing pushing{format, items.data(), shape, top + (function ? 1 : 0)};
        Outcome ended = Outcome::Ok;
        int pushed = 0;
        const bool ran = guard::run(L, handles, 0, [&, L, handles](lua_State* frame) {
            if (function) {
                guard::pushGlobal(frame, function);
                if (!lua_isfunction(frame, -1)) {
                    ended = Outcome::NoFunction;
                    return 1;
                }
            }
            if (!pushing.fits(frame)) {
                ended = Outcome::TooManyArguments;
                return 0;
            }
            pushed = pushing.pushArgsByFormat(frame, L);
            return lua_gettop(frame) - handles;
        });
        outcome = ran ? ended : Outcome::Failed;
        if (outcome == Outcome::Ok) count = pushed;
        return true;
    });
    return count;
}

void raiseTooManyArguments(lua_State* L)
{
    guard::raiseOverflow(L, "too many arguments");
}

/// Prints the error value on top, which stays there.
void reportFailure(lua_State* L, const char* function)
{
    constexpr const char* format = "error running function `%s': %s";
    const int type = lua_type(L, -1);
    char text[64];
    if (type == LUA_TSTRING) {
        lua_tinker::print_error(L, format, function, lua_tostring(L, -1));
        return;
    }
    if (type == LUA_TNUMBER) {
        char digits[32];
        const int size = static_cast<int>(numberText(lua_tonumber(L, -1), digits));
        std::snprintf(text, sizeof text, "%.*s", size, digits);
    } else {
        std::snprintf(text, sizeof text, "(error object is a %s value)", lua_typename(L, type));
    }
    lua_tinker::print_error(L, format, function, text);
}

} // namespace

bool callLuaItems(lua_State* L, const char* function, const char* format, const CallItem* items)
{
    if (!L || !function || !format) return false;
    const Outcome outcome = callAndRead(L, function, format, items, call::shapeOf(format));
    if (outcome == Outcome::TooManyArguments) raiseTooManyArguments(L);
    return outcome == Outcome::Ok;
}

bool callLuaFunc_gen(lua_State* L, const char* function, const char* format, va_list& items)
{
    const Outcome outcome = callWithList(L, function, format, items);
    if (outcome == Outcome::TooManyArguments) raiseTooManyArguments(L);
    return outcome == Outcome::Ok;
}

bool callLuaFunc(lua_State* L, const char* function, const char* format, ...)
{
    kxcom::quorDebugTimeBegin(callTimer);
    va_list items;
    va_start(items, format);
    const Outcome outcome = callWithList(L, function, format, items);
    va_end(items);
    kxcom::quorDebugTimeEnd(callTimer);
    if (outcome == Outcome::TooManyArguments) raiseTooManyArguments(L);
    return outcome == Outcome::Ok;
}

int prepareCallParam(lua_State* L, const char* function, const char* format, ...)
{
    if (!L || !function || !format) return -1;
    Outcome outcome = Outcome::Failed;
    va_list items;
    va_start(items, format);
    const int count = prepareWithList(L, function, format, items, outcome);
    va_end(items);
    if (outcome == Outcome::TooManyArguments) raiseTooManyArguments(L);
    // The caller finds one value also where there was no memory to fetch it.
    if (outcome == Outcome::Failed) lua_pushnil(L);
    return count;
}

int prepareCallParam_vl(lua_State* L, const char* format, va_list& items)
{
    if (!L || !format) return -1;
    Outcome outcome = Outcome::Failed;
    const int count = prepareWithList(L, nullptr, format, items, outcome);
    if (outcome == Outcome::TooManyArguments) raiseTooManyArguments(L);
    return count;
}

bool callLuaFunc1(lua_State* L, const char* function, int arguments, const char* resultFormat, ...)
{
    if (!L || arguments < 0 || lua_gettop(L) < arguments + 1) return false;
    const int results = resultFormat ? static_cast<int>(std::strlen(resultFormat)) : 0;
    if (!guard::reserve(L, results)) {
        lua_pop(L, arguments + 1);
        lua_pushnil(L);
        return false;
    }
    if (lua_pcall(L, arguments, results, 0) != 0) {
        reportFailure(L, function ? function : "");
        return false;
    }
    if (!resultFormat) return false;
    const int top = lua_gettop(L);
    va_list list;
    va_start(list, resultFormat);
    const bool read = values::withoutThrowing([&] {
        call::Items items;
        items.takeResults(resultFormat, list);
        return guard::reserve(L, values::readerSlots) &&
               call::readResultsByFormat(L, resultFormat, items.data(), nullptr);
    });
    va_end(list);
    lua_settop(L, top);
    return read;
}

} // namespace quorlua

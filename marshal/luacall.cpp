#include "CallFormats.h"
#include "Guard.h"
#include "Limits.h"
#include "NativeStack.h"
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

/// Pushes the values behind the handles of this state, for a guarded frame to take as its arguments. Their
/// number.
int pushHandles(lua_State* L, const call::Shape& shape, const char* format, const CallItem* items)
{
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

/// What is called with what; the function may be null where only arguments are pushed.
struct Call {
    const char* function;
    const char* format;
    const CallItem* items;
    call::Shape shape;
};

/// Why the caller's frame has no room for pushing: too many arguments, when it comes to pushing them at all.
Outcome outcomeWithoutRoom(lua_State* L, const Call& call)
{
    const int arguments = call.shape.arguments;
    const bool full = lua_gettop(L) + arguments + LUA_MINSTACK > LUAI_MAXCSTACK;
    const bool pushes = arguments > 0 && (!call.function || is_global_function(L, call.function));
    return full && pushes ? Outcome::TooManyArguments : Outcome::Failed;
}

/// Pushes the arguments from the first on that take no memory. Their number. [-0, +number, -]
int pushKnownArguments(lua_State* L, const Call& call)
{
    int pushed = 0;
    while (pushed < call.shape.arguments &&
           call::pushKnownArgument(L, call.format[pushed], call.items[pushed]))
        ++pushed;
    return pushed;
}

/// Pushes the arguments from one on inside a guarded frame whose own arguments are the values of the handles.
/// A handle of another state counts and pushes nothing: the later arguments move down, and nil fills the end,
/// unless the format has a byte that is no letter. [-0, +arguments, m]
void pushArgsByFormat(lua_State* frame, const Call& call, int from, const lua_State* owner)
{
    int handle = 0;
    int missing = 0;
    for (int i = from; i < call.shape.arguments; ++i) {
        const CallItem& item = call.items[i];
        if (!isHandle(call.format[i]))
            call::pushArgument(frame, call.format[i], item);
        else if (handleOf(item) && lua_tinker::state_of(handleOf(item)) == owner)
            lua_pushvalue(frame, ++handle);
        else
            ++missing;
    }
    while (call.shape.valid && missing-- > 0)
        lua_pushnil(frame);
}

/// Pushes the rest of a call in guarded code: the arguments from one on, below them the function where it is
/// wanted. A value that is no function is pushed for NoFunction; otherwise it cuts the stack to `base` when
/// it fails. Apart from the common case, which would pay for what this function saves. [-0, +values, -]
[[gnu::noinline]] Outcome prepareRest(lua_State* L, const Call& call, int base, const char* function,
                                      int from)
{
    const int top = lua_gettop(L) - from;
    const int handles = pushHandles(L, call.shape, call.format, call.items);
    Outcome outcome = Outcome::Ok;
    const bool ran = guard::run(L, handles, 0, [&, function, from, top, handles, L](lua_State* frame) {
        const int arguments = call.shape.arguments;
        if (function && guard::pushGlobal(frame, function) != LUA_TFUNCTION) {
            outcome = Outcome::NoFunction;
            return 1;
        }
        if (arguments > 0 && (top + (function ? 1 : 0) + arguments >= LUAI_MAXCSTACK ||
                              !guard::makeRoom(frame, arguments + pushingSlots))) {
            outcome = Outcome::TooManyArguments;
            return 0;
        }
        pushArgsByFormat(frame, call, from, L);
        return lua_gettop(frame) - handles;
    });
    if (!ran) outcome = Outcome::Failed;
    if (outcome == Outcome::Failed || outcome == Outcome::TooManyArguments) lua_settop(L, base);
    return outcome;
}

/// Pushes the function, where it is not there and there is a name for one, and its arguments. What takes no
/// memory is pushed here, the rest in guarded code: in the common case there is none, and the call itself is
/// the only protected one. Whatever was pushed stays above `top`, unless it fails. [-0, +values, -]
Outcome prepare(lua_State* L, const Call& call, int top, bool isFunctionThere)
{
    const char* wanted = isFunctionThere ? nullptr : call.function;
    const int pushed = wanted ? 0 : pushKnownArguments(L, call);
    if (!wanted && pushed == call.shape.arguments) return Outcome::Ok;
    return prepareRest(L, call, top, wanted, pushed);
}

/// How many arguments there are; 0 where a byte of the format is no letter, and what was pushed before it
/// stays.
int countOf(const call::Shape& shape)
{
    return shape.valid ? shape.arguments : 0;
}

/// The call: on Ok its results are on top of the caller's stack, above the message handler in the slot behind
/// `top` and, where a byte of the format was no letter, above what had been pushed before it.
Outcome callAndLeaveResults(lua_State* L, const Call& call, int top)
{
    const call::Shape& shape = call.shape;
    const int handler = top + 1;
    // The results take the place of the function and its arguments.
    const int most = shape.valid ? std::max(shape.results, shape.arguments + 1)
                                 : shape.arguments + std::max(shape.results, 1);
    if (!guard::reserveAbove(L, top, 2 + most)) return outcomeWithoutRoom(L, call);
    const bool isKnown = guard::pushHandlerAndKnownFunction(L, call.function);
    if (!isKnown && !guard::pushHandler(L)) return Outcome::Failed;
    const Outcome outcome = prepare(L, call, handler, isKnown);
    if (outcome != Outcome::Ok) return outcome;
    return lua_pcall(L, countOf(shape), shape.results, handler) == 0 ? Outcome::Ok : Outcome::Failed;
}

Outcome callAndRead(lua_State* L, const Call& call)
{
    const limits::Operation operation(L);
    if (!leavesRoom(0)) return Outcome::Failed;
    const int top = lua_gettop(L);
    int kept = top;
    Outcome outcome = callAndLeaveResults(L, call, top);
    if (outcome == Outcome::Ok) {
        const int results = lua_gettop(L);
        const bool read =
            guard::reserveAbove(L, results, values::readerSlots) && values::withoutThrowing([&] {
                return call::readResultsByFormat(L, call.shape.rest, results, call.shape.results,
                                                 call.items + call.shape.arguments, kept);
            });
        if (!read) outcome = Outcome::Failed;
    }
    lua_settop(L, kept);
    return outcome;
}

/// The variadic operations' common part: gathers the items first.
Outcome callWithList(lua_State* L, const char* function, const char* format, va_list& list)
{
    if (!L || !function || !format) return Outcome::Failed;
    Outcome outcome = Outcome::Failed;
    values::withoutThrowing([&] {
        const call::Shape shape = call::shapeOf(format);
        outcome = call::withItems(shape.arguments + shape.results, [&](CallItem* items) {
            call::takeArguments(shape, format, list, items);
            call::takeResults(shape.rest, list, items + shape.arguments);
            return callAndRead(L, {function, format, items, shape});
        });
        return true;
    });
    return outcome;
}

/// Pushes the arguments, above the function when there is a name for one. The number of arguments, or -1.
int prepareWithList(lua_State* L, const char* function, const char* format, va_list& list, Outcome& outcome)
{
    const limits::Operation operation(L);
    int count = -1;
    values::withoutThrowing([&] {
        const call::Shape shape = call::shapeOf(format);
        outcome = call::withItems(shape.arguments, [&](CallItem* items) {
            call::takeArguments(shape, format, list, items);
            const Call call{function, format, items, shape};
            if (!guard::reserve(L, 2 + shape.arguments)) return outcomeWithoutRoom(L, call);
            return prepare(L, call, lua_gettop(L), false);
        });
        if (outcome == Outcome::Ok) count = countOf(shape);
        return true;
    });
    return count;
}

[[noreturn]] void raiseTooManyArguments(lua_State* L)
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
    const Outcome outcome = callAndRead(L, {function, format, items, call::shapeOf(format)});
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
    if (!L || arguments < 0 || arguments >= lua_gettop(L)) return false;
    const limits::Operation operation(L);
    const int results = resultFormat ? static_cast<int>(std::strlen(resultFormat)) : 0;
    // Of all calls this takes the most stack for each that the interpreter counts.
    if (!leavesRoom(0) || !guard::reserve(L, results)) {
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
        return call::withItems(results, [&](CallItem* items) {
            int kept = 0; // all of them are, here
            call::takeResults(resultFormat, list, items);
            return guard::reserve(L, values::readerSlots) &&
                   call::readResultsByFormat(L, resultFormat, top, results, items, kept);
        });
    });
    va_end(list);
    lua_settop(L, top);
    return read;
}

} // namespace quorlua

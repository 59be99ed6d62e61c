#pragma once

#include <lua.hpp>
#include <type_traits>

/// The library's one protected call. An operation that calls anything that can raise a Lua error, running out
/// of memory included, runs that work in here, once; what cannot raise stays outside.
///
/// The work runs in a Lua frame of its own. It sees none of the caller's slots: what it needs of them is
/// pushed before and is its arguments 1 to n; what it returns arrives on top of the caller's stack. On some
/// engines a Lua error is a jump, on others an exception: so the work, and every frame below it, holds only
/// trivially destructible locals.
namespace quorlua::guard {

namespace detail {

/// What the guard pushes itself: the trampoline and a text, with a slot to spare for the error value.
inline constexpr int ownSlots = 3;

/// Lets the current frame have that many values. [-0, +0, -]
bool growStack(lua_State* L, int wanted);

} // namespace detail

/// As `reserve`, for a caller that knows how many values the frame has. [-0, +0, -]
inline bool reserveAbove(lua_State* L, int top, int slots)
{
    // Every frame starts with room for LUA_MINSTACK values: the common case needs no call.
    const int wanted = top + slots + detail::ownSlots;
    return wanted <= LUA_MINSTACK || detail::growStack(L, wanted);
}

/// Makes room for `slots` more values in the current frame, besides those the guard pushes itself. False when
/// the memory or the frame's limit does not allow it. [-0, +0, -]
inline bool reserve(lua_State* L, int slots)
{
    return reserveAbove(L, lua_gettop(L), slots);
}

/// Whether an index names a slot of the current frame, or is a pseudo-index.
bool isSlot(lua_State* L, int index);

/// An index counted from the bottom; one below 1 is counted from the top, with 0 just above it, and gives 0
/// when it lies below the bottom. Pseudo-indices stay.
int absolute(lua_State* L, int index);

/// Pushes the binding layer's message handler, made once per state. False, with nothing pushed, when memory
/// ran out.
/// [-0, +(0|1), -]
bool pushHandler(lua_State* L);

/// Pushes the value of a slot, as an argument of guarded work. False, with nothing pushed, when there is no
/// such slot or no room. [-0, +(0|1), -]
bool pushSlot(lua_State* L, int index);

/// Makes room for `slots` more values in the frame of guarded work; false when the frame's limit does not
/// allow it.
/// [-0, +0, m]
inline bool makeRoom(lua_State* L, int slots)
{
    return lua_gettop(L) + slots <= LUA_MINSTACK || lua_checkstack(L, slots) != 0;
}

/// Pushes a text that was among the last that `pushText` pushed in this state; false, with nothing pushed,
/// when it was not. Needs a free slot. [-0, +(0|1), -]
bool pushKnownText(lua_State* L, const char* text);

/// Pushes a global function whose name is such a text; false, with nothing pushed, where that takes more.
/// Needs a free slot. [-0, +(0|1), -]
bool pushKnownFunction(lua_State* L, const char* name);

/// The same above the message handler. Needs two free slots. [-0, +(0|2), -]
bool pushHandlerAndKnownFunction(lua_State* L, const char* name);

/// In a state that may come to be refused memory: makes all that the guard keeps in it. What scripts left
/// uses up nothing that a call of a function would need then. False when memory ran out. [-0, +0, -]
bool prepare(lua_State* L);

/// Pushes a text, as `lua_pushstring` does. Needs two free slots. [-0, +1, m]
void pushText(lua_State* L, const char* text);

/// Pushes a global, nil when a metatable on the globals raises; its type. For use inside guarded work. [-0,
/// +1, m]
int pushGlobal(lua_State* L, const char* name);

/// Raises "stack overflow (WHAT)" in a frame that may be full. Nothing that needs a destructor may be alive.
/// [-0, +0, v]
[[noreturn]] void raiseOverflow(lua_State* L, const char* what);

namespace detail {

struct Task {
    int (*run)(lua_State* L, void* work);
    void* work;
    int results = -1; ///< how many there are once the work has ended without an error
};

/// A task that starts work, which must outlive it.
template<class Work>
Task taskOf(Work& work)
{
    Task task;
    task.run = [](lua_State* state, void* self) { return (*static_cast<Work*>(self))(state); };
    task.work = &work;
    return task;
}

/// Calls the task with the top `arguments` values. The status of lua_pcall; an error value is popped, unless
/// it is asked for: one is then there, nil where memory ran out before the call.
int call(lua_State* L, int arguments, int handler, Task& task, bool keepsError = false);

} // namespace detail

/// Runs `work(L)`, which returns its number of results, with the top `arguments` values as its arguments,
/// which are popped in any case. `handler` is the absolute index of a message handler, or 0. True when the
/// work ended without an error; its results are then on top. The caller has reserved room. [-arguments,
/// +results, -]
template<class Work>
bool run(lua_State* L, int arguments, int handler, Work work)
{
    static_assert(std::is_trivially_destructible_v<Work>, "a Lua error may jump over guarded work");
    detail::Task task = detail::taskOf(work);
    return detail::call(L, arguments, handler, task) == 0;
}

/// As `run`, without arguments or handler, for a caller that has reserved nothing. [-0, +results, -]
template<class Work>
bool run(lua_State* L, Work work)
{
    return reserve(L, 0) && run(L, 0, 0, work);
}

/// As `run` without arguments, for a caller that tells failures apart: the status of lua_pcall. [-0,
/// +results,
/// -]
template<class Work>
int statusOf(lua_State* L, Work work)
{
    static_assert(std::is_trivially_destructible_v<Work>, "a Lua error may jump over guarded work");
    if (!reserve(L, 0)) return LUA_ERRMEM;
    detail::Task task = detail::taskOf(work);
    return detail::call(L, 0, 0, task);
}

/// As `run`, with the value of one slot of the caller's as the one argument. False when there is no such
/// slot.
template<class Work>
bool runOn(lua_State* L, int index, Work work)
{
    return pushSlot(L, index) && run(L, 1, 0, work);
}

/// As `run`, without arguments or handler, for an operation that is defined to raise: what the work raises is
/// raised once more in the caller's frame, when it is no longer an operation by the limits for scripts. A
/// full frame raises "stack overflow (WHAT)". Nothing that needs a destructor may be alive. [-0, +results, e]
template<class Work>
void runRaising(lua_State* L, const char* what, Work work)
{
    static_assert(std::is_trivially_destructible_v<Work>, "a Lua error may jump over guarded work");
    constexpr int slots = 4;
    if (!makeRoom(L, slots)) raiseOverflow(L, what);
    detail::Task task = detail::taskOf(work);
    const int status = detail::call(L, 0, 0, task, true);
    if (status == 0) return;
    if (status == LUA_ERRMEM && lua_isnil(L, -1)) luaL_error(L, "not enough memory");
    lua_error(L);
}

} // namespace quorlua::guard

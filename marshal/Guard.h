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

/// Makes room for `slots` more values in the current frame, besides those the guard pushes itself. False when
/// the memory or the frame's limit does not allow it. [-0, +0, -]
bool reserve(lua_State* L, int slots);

/// Whether an index names a slot of the current frame, or is a pseudo-index.
bool isSlot(lua_State* L, int index);

/// An index counted from the bottom; one below 1 is counted from the top, with 0 just above it, and gives 0
/// when it lies below the bottom. Pseudo-indices stay.
int absolute(lua_State* L, int index);

/// Pushes the binding layer's message handler, made once per state. False, with nothing pushed, when memory
/// ran out.
/// [-0, +(0|1), -]
bool pushHandler(lua_State* L);

/// Makes room for `slots` more values in the frame of guarded work; false when the frame's limit does not
/// allow it.
/// [-0, +0, m]
inline bool makeRoom(lua_State* L, int slots)
{
    return lua_gettop(L) + slots <= LUA_MINSTACK || lua_checkstack(L, slots) != 0;
}

/// Pushes a global, nil when a metatable on the globals raises. For use inside guarded work. [-0, +1, m]
void pushGlobal(lua_State* L, const char* name);

/// Raises "stack overflow (WHAT)" in a frame that may be full. Nothing that needs a destructor may be alive.
/// [-0, +0, v]
void raiseOverflow(lua_State* L, const char* what);

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

/// Calls the task with the top `arguments` values. The status of lua_pcall; an error value is popped.
int call(lua_State* L, int arguments, int handler, Task& task);

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
    if (!L || !isSlot(L, index) || !reserve(L, 1)) return false;
    lua_pushvalue(L, index);
    return run(L, 1, 0, work);
}

} // namespace quorlua::guard

#pragma once

#include <atomic>
#include <lua.hpp>

/// What holds a script's state to its limits (ScriptLimits.h). A state made under limits has an allocator
/// around its own one, whose user data tells the state's limiter from any coroutine.
namespace quorlua::limits {

struct Limiter;

/// Whether any state may have limits. Once set it stays.
extern constinit std::atomic<bool> inUse;

/// An operation's beginning, null without limits, and its end.
Limiter* begin(lua_State* L);
void end(Limiter& limiter);

/// One operation of a host on a state: the first one on its way starts the time. Lives in a frame that no Lua
/// error crosses, and ends before its state is closed. [-0, +0, -]
class Operation {
public:
    explicit Operation(lua_State* L)
        : limiter_(inUse.load(std::memory_order_relaxed) && L ? begin(L) : nullptr)
    {
    }
    ~Operation()
    {
        if (limiter_) end(*limiter_);
    }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

private:
    Limiter* limiter_;
};

/// Gives a state that is new, and still empty, the limits that new states have; it is untrusted where they
/// are, or where it must be. False when memory ran out.
bool limitNewState(lua_State* L, bool untrusted);

/// Closes a state: what its script left for the end runs within the limits.
void closeState(lua_State* L);

bool hasTimeLimit(lua_State* L);
bool hasMemoryLimit(lua_State* L);
/// Whether an operation is on its way whose time is over; that is reported as an error once. [-0, +0, -]
bool isTimeOver(lua_State* L);
bool isUntrusted(lua_State* L);

/// The host's pointers that a script holds in its globals.
enum class Passed { Functor, TextStyle };

/// Remembers what the host passed; nothing where the script is trusted.
void rememberPassed(lua_State* L, Passed which, const void* pointer);
/// Whether a pointer that was found in a global may be used: in an untrusted state only the remembered one.
bool mayBeUsed(lua_State* L, Passed which, const void* pointer);

} // namespace quorlua::limits

#pragma once

#include <QuorScriptor/Export.h>
#include <cstddef>
#include <lua.hpp>

/// Limits for scripts that a host does not trust to end, or to be kind. They are this library's own, and off
/// until a host asks for them: a state made without them is what it would be without this header.
///
/// A time limit counts within one operation of this library on a state, the outermost: loading, a segment
/// call, a call by format, the question of a configuration getter (loading that it brings about counts for
/// itself), the end of a state. When it is over, the place where the script stands is reported to the error
/// outlet, all requests for more memory fail, and each instruction raises an error of memory: so loops of
/// protected calls, message handlers that never return, coroutines and finalizers that need memory end, too.
/// The operation then has the status that it has for any script that fails. What runs no instruction of Lua's
/// and takes no memory cannot be ended from within: a pattern that tries for ever, a read that waits, a
/// native function of the host's; nor can a finalizer (`__gc`) that loops without taking memory, because the
/// engine calls no hook there. A host that must end these too watches from another thread.
///
/// A memory limit counts all that a state holds, what is no longer used but not yet collected included: it
/// is set to twice of what scripts need. Within an operation a request above it fails as if memory were
/// used up. Host code that works on a state outside of operations is never refused anything.
///
/// Afterwards a state is as after any other script error: what the script had done so far stays, and the
/// next operation has all of its time again.
///
/// A host that runs a script's code itself, by Lua's own functions, makes that an operation by a
/// `ScriptOperation` around it.
///
/// Cost: with a time limit the interpreter counts instructions, which makes scripts up to two fifths slower.
/// A memory limit costs a few nanoseconds for each request. With either, LuaJIT compiles nothing: its
/// compiled loops count nothing, and its compiler does not always survive when it is refused memory. Without
/// any limit nothing is added but one test per operation.
///
/// The limits lie in the state's allocator, as `lua_getallocf` gives it: a host that puts another one in its
/// place, or around it, takes the limits and the distrust away, and puts it back before the state is closed.
///
/// The one debug hook of a state belongs to its time limit: `debug.sethook` raises an error there. A host's
/// debugger or coverage tool may set a hook of its own with `lua_sethook`; it then calls `checkScriptLimits`
/// from it (a count event every 1,000 instructions is enough), else the limit is noticed only where scripts
/// take memory. A hook taken away (set to null) is the limit's again from the next operation on; coroutines
/// have the hook that held when they were made.
namespace quorlua {

struct ScriptLimits {
    /// Wall-clock time of an operation; 0, and what is no positive number, for no limit.
    double seconds = 0;
    /// Most bytes of a state; 0 for no limit. A state with all libraries takes some 30,000 bytes when it is
    /// new; with less than that there is none.
    std::size_t bytes = 0;
    /// Whether scripts run without access to files, processes, the environment, native modules, and the
    /// engine's inside, and only from source text (see docs/hosting.md for what is left).
    bool untrusted = false;
};

enum class LimitReached : int { None = 0, Time = 1, Memory = 2 };

/// Sets the limits of all states that the library makes from now on, on every thread: those of scriptors, of
/// configuration scripts and of the serializer. States that are there keep theirs; a scriptor whose state was
/// untrusted gets no other one when it makes its state anew. To be set up like modules, before other threads
/// use the library.
QUORSCRIPTOR_API void limitNewStates(const ScriptLimits& wanted);

/// Which limit scripts have met on this thread since it was asked last; the time limit, if they met both. A
/// script may have caught a refusal of memory and gone on. [none of the stack]
QUORSCRIPTOR_API LimitReached takeLimitReached();

/// For a hook of the host's: raises the error of the time limit when it is over; in a state without one, and
/// outside of operations, it does nothing. [-0, +0, e]
QUORSCRIPTOR_API void checkScriptLimits(lua_State* L);

/// An operation of the host's own on a state, for as long as it lives; within another one it is part of that.
/// It lives in a frame that no Lua error crosses, and ends before its state is closed. A null state has none.
/// [-0, +0, -]
class QUORSCRIPTOR_API ScriptOperation {
public:
    explicit ScriptOperation(lua_State* L);
    ~ScriptOperation();
    ScriptOperation(const ScriptOperation&) = delete;
    ScriptOperation& operator=(const ScriptOperation&) = delete;

private:
    void* limiter_;
};

} // namespace quorlua

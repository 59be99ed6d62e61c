#pragma once

#include <lua.hpp>

/// Puts functions in place of some of the interpreter's own that a script can crash it with. For what did not
/// crash they do the same, and say the same where they raise errors.
namespace quorlua {

/// Closes, in a state whose libraries have just been opened:
/// - `unpack` with bounds so far apart that their number overflows: "too many results to unpack";
/// - patterns with so many repetitions that matching them uses up the processor's stack: "pattern too
///   complex";
/// - native functions that call the script, which calls them again, until that stack is used up: "C stack
///   overflow". The interpreter bounds their depth, but `string.gsub` takes 9 KB for each, and so does any
///   function with a buffer in which a finalizer runs; of LuaJIT see `guardCallbacks`.
/// [-0, +0, m]
void installSafeguards(lua_State* L);

/// The last of these on LuaJIT, which has no bound: for the library's functions, and those that the host has
/// put in their places. [-0, +0, e]
void guardCallbacks(lua_State* L);

/// Lets no script take away the hook of the time limit. [-0, +0, m]
void keepHook(lua_State* L);

/// Lets no script have code compiled, which calls no hook, and which LuaJIT itself does not always survive
/// when it is refused memory. [-0, +0, m]
void keepInterpreted(lua_State* L);

} // namespace quorlua

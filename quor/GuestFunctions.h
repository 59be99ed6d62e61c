#pragma once

#include <lua.hpp>

namespace quor {

/// Puts into every Lua state that is made from now on, those of the configuration included, what a guest has:
/// `print` goes to standard error in the terminal's character set, `os.exit` is an error, and `math.random`
/// has numbers of the state's own, the same in every new state. Once for the whole process.
void registerGuestFunctions();

/// For a new state of several that run at a time: what the C library has once for the process does not pass
/// from one to the other. `os.date` is asked by one at a time, and `os.setlocale` changes nothing: other
/// locales than "C" are an error. [-0, +0, -]
void shareProcess(lua_State* L);

} // namespace quor

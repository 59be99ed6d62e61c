#pragma once

#include <lua.hpp>

namespace quorlua {

/// Opens, in a new state, those of the standard libraries that a script may have that nobody trusts (see
/// docs/hosting.md): what is left reads Lua files of the installation and the project and nothing else of the
/// system, and takes no precompiled code. [-0, +?, e]
void openUntrustedLibraries(lua_State* L);

} // namespace quorlua

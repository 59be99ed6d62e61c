#pragma once

#include <QuorScriptor/LuaModules.h>

namespace quorlua {

/// A copy of the process's registry of modules.
LuaLRegHelper::Map registeredModules();

} // namespace quorlua

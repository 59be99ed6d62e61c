#pragma once

/// Everything that the library exports in the namespace `quorlua`.

#include <QuorScriptor/LuaModules.h>
#include <QuorScriptor/LuaSerialize.h>
#include <QuorScriptor/ScriptContext.h>
#include <QuorScriptor/geometry.h>
#include <QuorScriptor/luacall.h>
#include <QuorScriptor/objectregistry.h>
#include <QuorScriptor/primitives.h>

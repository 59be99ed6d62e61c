#pragma once

/// The whole library.

#include <QuorScriptor/GlibCallbacks.h>
#include <QuorScriptor/GlibStatus.h>
#include <QuorScriptor/QuorGlibScriptor.h>
#include <QuorScriptor/QuorGlibScriptorHelper.h>
#include <QuorScriptor/ScriptLimits.h>
#include <QuorScriptor/quorconfig.h>
#include <QuorScriptor/quorlua.h>
#include <QuorScriptor/version.h>

#pragma once

#include "../platform/QuorPureScriptor/src/NeutralLocale.h"

/// While one lives, the C library, and with it the interpreter, reads and writes numbers in the "C" locale on
/// this thread: for what is compared with them, and only there.
using lua_tinker::detail::NeutralLocale;

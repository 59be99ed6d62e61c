#pragma once

/// Draws with scriptors of the library, in a program that has a Lua of its own. Compiled into a program or,
/// as "drawOnce", into a module that the program loads.
///
/// Makes a scriptor in the first call and keeps it. Each call draws with it and with a new one; the result is
/// the number of primitives drawn so far by the kept one, 0 when anything went wrong. `kind` receives what
/// the engine tells of itself: its version and the type of its global "jit".
extern "C" int drawOnce(char (&kind)[16]);

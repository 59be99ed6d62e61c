#pragma once

#include <QuorScriptor/Export.h>

struct lua_State;
class GlibTextStyle;

namespace quorlua {

/// Gives a thread a script context of its own: current drawing attributes, functor and text style. A thread
/// without one shares the default context with all others like it, so at most one such thread may be in the
/// library at a time. A thread that has one keeps it. The id is the operating system's, as
/// `quorsys::currentThreadId` gives it. Not synchronised: call it while no other thread is in the library.
QUORSCRIPTOR_API void allocThreadVars(unsigned long threadId);
/// Takes a thread's own context away; ids without one are ignored. Ids are used again by the system: a thread
/// that was given a context must have it taken away when it ends.
QUORSCRIPTOR_API void freeThreadVars(unsigned long threadId);

/// Pushes a text style as an object of the class "GlibTextStyle", by pointer; null pushes nothing, and so
/// does exhausted memory. The object must outlive the script's use of it. [-0, +(0|1), -]
QUORSCRIPTOR_API void push_txtstyle(lua_State* L, const GlibTextStyle* style);

} // namespace quorlua

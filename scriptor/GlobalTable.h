#pragma once

#include "Guard.h"

namespace quorlua {

/// Pushes the global table of a name; where the global is something else, a new table takes its place first.
/// False when the globals do not keep it; what was pushed is then no table. For use inside guarded work.
/// [-0, +?, e]
inline bool pushGlobalTable(lua_State* frame, const char* name)
{
    guard::pushGlobal(frame, name);
    if (lua_istable(frame, -1)) return true;
    lua_newtable(frame);
    lua_setglobal(frame, name);
    guard::pushGlobal(frame, name);
    return lua_istable(frame, -1);
}

/// Stores what `push` pushes in the global table of a name, past metamethods; nothing where there is no such
/// table. [-0, +?, e]
template<class Push>
void setInGlobalTable(lua_State* frame, const char* table, const char* field, Push push)
{
    if (!pushGlobalTable(frame, table)) return;
    lua_pushstring(frame, field);
    push(frame);
    lua_rawset(frame, -3);
}

} // namespace quorlua

#pragma once

#include <QuorScriptor/Export.h>

struct lua_State;
class KxDbObjectId;

/// One table for each database object, in a Lua state, where scripts attach data to objects. The registry is
/// a global table; its keys are the ids as decimal text ("-5"), its values the objects' tables. A null
/// registry name is "quor_global_temp". Entries go when a script, or the state's end, takes them away.
///
/// Globals and fields are read and written with metamethods. Globals whose metatable raises an error have no
/// registry.
namespace quorlua {

/// Makes the registry a new table, unless it is a table. It stays as it is without a state, when memory runs
/// out or when a metatable on the globals does not take it. [-0, +0, -]
QUORSCRIPTOR_API void initObjectIdInState(lua_State* L, const char* registryName);

/// Leaves the object's table on the stack; true. False, with nothing left, when the registry has no table of
/// the object. False as well when the registry is no table itself: what the global holds, nil when it is
/// missing, is then left. False, with nothing left, without a state, when the registry's metatable raises an
/// error, and when memory or the stack frame is exhausted. [-0, +(0|1), -]
QUORSCRIPTOR_API bool findObjectIdInState(lua_State* L, const KxDbObjectId& id, const char* registryName);

/// Stores a new, empty table for the object, in place of one that was there, and leaves what the registry
/// then gives for the object on the stack, which is that table; true. False, with nothing left, without a
/// state.
///
/// Raises the error of indexing what is no table when the registry is none, so `initObjectIdInState` comes
/// first; also what the registry's metatable raises, and when memory or the stack frame is exhausted. A host
/// that cannot rule these out calls it in a protected call. [-0, +(0|1), e]
QUORSCRIPTOR_API bool requireObjectIdInState(lua_State* L, const KxDbObjectId& id, const char* registryName);

} // namespace quorlua

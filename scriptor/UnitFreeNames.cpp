#include "UnitFreeNames.h"

#include "Budget.h"
#include "Guard.h"
#include "Values.h"

#include <QuorPureScriptor/BackupLuaStackTop.h>
#include <QuorPureScriptor/quorlua_helpers.h>

namespace quorlua {

UnitFreeNames::UnitFreeNames(lua_State* L)
{
    if (!L || !guard::reserve(L, values::readerSlots)) return;
    // Nothing below raises outside the guard, so the stack may be restored by a destructor.
    const BackupLuaStackTop height(L);
    collect(L, "quantumUnit");
    collect(L, "angleUnit");
}

void UnitFreeNames::collect(lua_State* L, const char* list)
{
    // Each list for itself: a metatable that raises for one of them says nothing of the other.
    const bool fetched = guard::run(L, 0, 0, [list](lua_State* frame) {
        guard::pushGlobal(frame, "skey");
        if (lua_isnil(frame, 1)) return 1;
        lua_getfield(frame, 1, list);
        return 1;
    });
    if (!fetched || !lua_istable(L, -1)) return;
    const int table = lua_gettop(L);
    Budget budget(L);
    for (lua_pushnil(L); lua_next(L, table) != 0; lua_pop(L, 1)) {
        if (!budget.takeEntry(values::textSize(L, -1))) return;
        if (lua_type(L, -1) == LUA_TSTRING) names_.emplace(lua_tostring(L, -1));
        if (lua_type(L, -1) == LUA_TNUMBER) names_.insert(numberText(lua_tonumber(L, -1)));
    }
}

} // namespace quorlua

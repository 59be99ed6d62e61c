#include "Guard.h"

#include <BaseObj/KxDbObjectId.h>
#include <QuorScriptor/objectregistry.h>
#include <charconv>

namespace quorlua {
namespace {

constexpr const char* defaultRegistry = "quor_global_temp";

const char* nameOf(const char* registryName)
{
    return registryName ? registryName : defaultRegistry;
}

/// An id's key: signed decimal, which no locale groups.
struct ObjectKey {
    char text[24];

    explicit ObjectKey(const KxDbObjectId& id)
    {
        *std::to_chars(text, text + sizeof text - 1, static_cast<long long>(id.toInt())).ptr = '\0';
    }
};

} // namespace

void initObjectIdInState(lua_State* L, const char* registryName)
{
    if (!L) return;
    const char* name = nameOf(registryName);
    guard::run(L, [name](lua_State* frame) {
        guard::pushGlobal(frame, name);
        if (lua_istable(frame, -1)) return 0;
        lua_newtable(frame);
        lua_setfield(frame, LUA_GLOBALSINDEX, name);
        return 0;
    });
}

bool findObjectIdInState(lua_State* L, const KxDbObjectId& id, const char* registryName)
{
    if (!L) return false;
    const char* name = nameOf(registryName);
    const ObjectKey key(id);
    bool found = false;
    const bool ran = guard::run(L, [&found, &key, name](lua_State* frame) {
        guard::pushGlobal(frame, name);
        if (!lua_istable(frame, -1)) return 1;
        lua_getfield(frame, -1, key.text);
        found = lua_istable(frame, -1);
        return found ? 1 : 0;
    });
    return ran && found;
}

// Whatever is raised here is the caller's: nothing that needs a destructor may stand in this frame.
bool requireObjectIdInState(lua_State* L, const KxDbObjectId& id, const char* registryName)
{
    if (!L) return false;
    const ObjectKey key(id);
    const char* name = nameOf(registryName);
    guard::runRaising(L, "no room for an object's table", [&key, name](lua_State* frame) {
        guard::pushGlobal(frame, name);
        lua_newtable(frame);
        lua_setfield(frame, 1, key.text);
        lua_getfield(frame, 1, key.text);
        return 1;
    });
    return true;
}

} // namespace quorlua

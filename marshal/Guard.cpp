#include "Guard.h"

#include "Limits.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <algorithm>
#include <cstdint>

namespace quorlua::guard {
namespace {

// The values behind these keys are in every state's registry that the guard has worked in. They are fetched
// outside protection, where a light userdata will not do: on one engine the first one of a region of memory
// takes memory itself. No other user of a registry has reason for negative keys.
constexpr int trampolineKey = -0x51553101;
constexpr int handlerKey = -0x51553102;
constexpr int anchorKey = -0x51553103;

// What the guard pushes itself: the trampoline and the task, with a slot to spare for the error value.
constexpr int ownSlots = 3;

// More than the interpreter lets a function have.
constexpr int mostUpvalues = 255;

// The task travels as a number, for the same reason. Addresses have far fewer bits than a double keeps.
double numberOf(const detail::Task* task)
{
    return static_cast<double>(reinterpret_cast<std::uintptr_t>(task));
}

int trampoline(lua_State* L)
{
    auto* task = reinterpret_cast<detail::Task*>(static_cast<std::uintptr_t>(lua_tonumber(L, -1)));
    lua_settop(L, -2);
    task->results = task->run(L, task->work);
    return task->results;
}

int install(lua_State* L)
{
    // First: lua_pcall interns this text, outside protection, when a message handler fails. Kept here it is
    // there already, whichever of the others was reached before memory ran out.
    lua_pushliteral(L, "error in error handling");
    lua_rawseti(L, LUA_REGISTRYINDEX, anchorKey);
    lua_pushcfunction(L, lua_tinker::on_error);
    lua_rawseti(L, LUA_REGISTRYINDEX, handlerKey);
    lua_pushcfunction(L, trampoline);
    lua_rawseti(L, LUA_REGISTRYINDEX, trampolineKey);
    return 0;
}

/// `lua_cpcall`, once more where a script's finalizer raised while the collector ran: it has had its turn
/// then. Leaves no error value. [-0, +0, -]
int callTwice(lua_State* L, lua_CFunction function, void* data)
{
    int status = lua_cpcall(L, function, data);
    if (status != 0) lua_pop(L, 1);
    if (status != LUA_ERRRUN) return status;
    status = lua_cpcall(L, function, data);
    if (status != 0) lua_pop(L, 1);
    return status;
}

/// Pushes a stored function. One that a script has put another value in place of is stored anew.
bool pushStored(lua_State* L, int key, lua_CFunction function)
{
    lua_rawgeti(L, LUA_REGISTRYINDEX, key);
    if (lua_tocfunction(L, -1) == function) [[likely]]
        return true;
    lua_pop(L, 1);
    if (callTwice(L, install, nullptr) != 0) return false;
    lua_rawgeti(L, LUA_REGISTRYINDEX, key);
    return true;
}

int growStack(lua_State* L)
{
    const int slots = *static_cast<const int*>(lua_touserdata(L, 1));
    lua_settop(L, 0);
    lua_checkstack(L, slots);
    return 0;
}

int getGlobal(lua_State* L)
{
    lua_getfield(L, LUA_GLOBALSINDEX, static_cast<const char*>(lua_touserdata(L, 1)));
    return 1;
}

} // namespace

bool reserve(lua_State* L, int slots)
{
    const int top = lua_gettop(L);
    const int wanted = top + slots + ownSlots;
    // Every frame starts with room for LUA_MINSTACK values: the common case needs no call.
    if (wanted <= LUA_MINSTACK) return true;
    if (wanted > LUAI_MAXCSTACK) return false;
    // lua_checkstack raises when memory runs out, and lua_cpcall needs no free slot: the memory is taken
    // inside, where an error is caught; the frame's own limit is then raised here, without taking any. As
    // lua_cpcall ends, the collector may halve a stack of which less than a quarter is in use. Hence the
    // steps: what is left then is always twice what the frame has.
    for (int reached = std::max(top, LUA_MINSTACK); reached < wanted;) {
        reached = std::min(wanted, 2 * reached - ownSlots);
        int step = reached - top;
        if (callTwice(L, growStack, &step) != 0) return false;
        if (!lua_checkstack(L, step)) return false;
    }
    return true;
}

bool isSlot(lua_State* L, int index)
{
    if (index > 0) return index <= lua_gettop(L);
    if (index == LUA_REGISTRYINDEX || index == LUA_GLOBALSINDEX) return true;
    if (index < LUA_REGISTRYINDEX) {
        // The environment and the upvalues are those of the running function; there may be none.
        lua_Debug running;
        return index >= lua_upvalueindex(mostUpvalues) && lua_getstack(L, 0, &running) != 0;
    }
    return index != 0 && -index <= lua_gettop(L);
}

int absolute(lua_State* L, int index)
{
    if (index > 0 || index <= LUA_REGISTRYINDEX) return index;
    return std::max(lua_gettop(L) + index + 1, 0);
}

bool pushHandler(lua_State* L)
{
    return pushStored(L, handlerKey, lua_tinker::on_error);
}

void pushGlobal(lua_State* L, const char* name)
{
    if (!lua_getmetatable(L, LUA_GLOBALSINDEX)) [[likely]] {
        lua_getfield(L, LUA_GLOBALSINDEX, name);
        return;
    }
    lua_pop(L, 1);
    lua_pushcfunction(L, getGlobal);
    lua_pushlightuserdata(L, const_cast<char*>(name));
    const int status = lua_pcall(L, 1, 1, 0);
    if (status == LUA_ERRMEM) lua_error(L);
    if (status != 0) {
        lua_pop(L, 1);
        lua_pushnil(L);
    }
}

void raiseOverflow(lua_State* L, const char* what)
{
    // The error takes the frame with it: values at its top make way for the message.
    constexpr int messageSlots = 4;
    if (lua_gettop(L) > messageSlots) lua_settop(L, -1 - messageSlots);
    luaL_error(L, "stack overflow (%s)", what);
}

namespace detail {

int call(lua_State* L, int arguments, int handler, Task& task)
{
    const limits::Operation operation(L);
    if (!pushStored(L, trampolineKey, trampoline)) {
        lua_pop(L, arguments);
        return LUA_ERRMEM;
    }
    if (arguments > 0) lua_insert(L, -1 - arguments);
    lua_pushnumber(L, numberOf(&task));
    const int status = lua_pcall(L, arguments + 1, LUA_MULTRET, handler);
    if (status == 0) return 0;
    lua_pop(L, 1);
    // The interpreter runs its collector once more as a call ends, and a finalizer of the script's may raise
    // then. Work that leaves nothing on the stack is done all the same.
    return task.results == 0 ? 0 : status;
}

} // namespace detail
} // namespace quorlua::guard

#include "Protected.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <cstdint>
#include <cstring>

namespace lua_tinker {
namespace detail {
namespace {

// The handler, the trampoline and the task; the error value takes the place of the trampoline.
constexpr int ownSlots = 3;

struct Task {
    void (*body)(lua_State* L, void* data);
    void* data;
    int status;
};

// The task travels as a number, which a double keeps: LuaJIT takes memory, and so may raise, when it first
// sees a light userdata of a region of memory, and every thread's C stack is another one.
double numberOf(const Task* task)
{
    return static_cast<double>(reinterpret_cast<std::uintptr_t>(task));
}

int trampoline(lua_State* L)
{
    const auto* task = reinterpret_cast<Task*>(static_cast<std::uintptr_t>(lua_tonumber(L, 1)));
    task->body(L, task->data);
    return 0;
}

int install(lua_State* L)
{
    installProtection(L);
    return 0;
}

void reportValue(lua_State* L) // [-1] error value
{
    std::size_t length = 0;
    const char* text = lua_type(L, -1) == LUA_TSTRING ? lua_tolstring(L, -1, &length) : nullptr;
    if (text)
        print_error_text(L, text, length);
    else
        print_error(L, "(error object is a %s value)", lua_typename(L, lua_type(L, -1)));
}

// `lua_cpcall`, once more where a script's finalizer raised while the collector ran: it has had its turn
// then. Leaves the error value of a failure. [-0, +(0|1), -]
int callTwice(lua_State* L, lua_CFunction function, void* data)
{
    const int status = lua_cpcall(L, function, data);
    if (status != LUA_ERRRUN) return status;
    lua_pop(L, 1);
    return lua_cpcall(L, function, data);
}

bool installOnce(lua_State* L)
{
    const int status = callTwice(L, install, nullptr);
    if (status != 0) {
        reportValue(L);
        lua_pop(L, 1);
    }
    return status == 0;
}

int runHere(lua_State* L, Task& task)
{
    const int top = lua_gettop(L);
    pushKept(L, Kept::Handler);
    if (!lua_isfunction(L, -1)) {
        lua_settop(L, top);
        if (!installOnce(L)) return LUA_ERRMEM;
        pushKept(L, Kept::Handler);
    }
    pushKept(L, Kept::Trampoline);
    lua_pushnumber(L, numberOf(&task));
    const int status = lua_pcall(L, 1, 0, top + 1);
    if (status != 0 && status != LUA_ERRRUN) {
        countError(); // the handler, which counts, was not asked
        reportValue(L);
    }
    lua_settop(L, top);
    return status;
}

int runInOwnFrame(lua_State* L)
{
    Task* task = static_cast<Task*>(lua_touserdata(L, 1));
    task->status = runHere(L, *task);
    return 0;
}

int growStack(lua_State* L)
{
    lua_checkstack(L, *static_cast<const int*>(lua_touserdata(L, 1)));
    return 0;
}

int getGlobal(lua_State* L)
{
    lua_getfield(L, LUA_GLOBALSINDEX, static_cast<const char*>(lua_touserdata(L, 1)));
    return 1;
}

// A script may give the globals a metatable that raises for unknown names. [-0, +1, m]
void pushGlobal(lua_State* L, const char* name)
{
    if (!lua_getmetatable(L, LUA_GLOBALSINDEX)) {
        lua_getfield(L, LUA_GLOBALSINDEX, name);
        return;
    }
    lua_pop(L, 1);
    lua_pushcfunction(L, getGlobal);
    lua_pushlightuserdata(L, const_cast<char*>(name));
    if (lua_pcall(L, 1, 1, 0) != 0) {
        lua_pop(L, 1);
        lua_pushnil(L);
    }
}

void callGlobal(lua_State* L, void* data)
{
    const auto* task = static_cast<const script_call*>(data);
    pushGlobal(L, task->name);
    if (lua_isfunction(L, -1)) {
        const int arguments = task->push(L, task->arguments);
        lua_call(L, arguments, 1);
    } else {
        print_error(L, "attempt to call global `%s' (not a function)", task->name);
    }
    if (!task->take) return;
    if (lua_type(L, -1) == LUA_TSTRING) {
        // Its slot ends with this frame, and the collector may run as a protected call ends.
        lua_pushvalue(L, -1);
        keep(L, Kept::Answer);
    }
    task->take(L, task->result);
}

} // namespace

void installProtection(lua_State* L)
{
    // lua_pcall interns this text, outside protection, when a message handler fails; kept here it is there
    // already.
    lua_pushliteral(L, "error in error handling");
    keep(L, Kept::ErrorText);
    lua_pushboolean(L, 0); // the entry is there from now on: to set it takes no memory
    keep(L, Kept::Answer);
    lua_pushcfunction(L, trampoline);
    keep(L, Kept::Trampoline);
    // Last: its presence tells that the others are there.
    lua_pushcfunction(L, on_error);
    keep(L, Kept::Handler);
}

int runReported(lua_State* L, void (*body)(lua_State* L, void* data), void* data)
{
    Task task{body, data, LUA_ERRMEM};
    // Every frame starts with room for LUA_MINSTACK values.
    if (lua_gettop(L) + ownSlots <= LUA_MINSTACK) [[likely]]
        return runHere(L, task);
    // lua_cpcall brings the slots that it needs, and its frame is a new one.
    const int status = lua_cpcall(L, runInOwnFrame, &task);
    if (status == 0) return task.status;
    reportValue(L);
    lua_pop(L, 1);
    return status;
}

bool reserve(lua_State* L, int slots)
{
    if (lua_gettop(L) + slots <= LUA_MINSTACK) [[likely]]
        return true;
    // lua_checkstack raises when memory runs out. So the memory is taken in a protected frame first; what
    // remains to be done here takes none, and only fails by its result.
    int wanted = slots + LUA_MINSTACK;
    if (callTwice(L, growStack, &wanted) != 0) {
        lua_pop(L, 1);
        return false;
    }
    return lua_checkstack(L, slots) != 0;
}

void run_call(lua_State* L, const script_call& call)
{
    if (!L || !call.name) return;
    script_call task = call;
    runReported(L, callGlobal, &task);
}

void textualize(lua_State* L, int index)
{
    if (lua_type(L, index) != LUA_TNUMBER) return;
    char text[32];
    const std::size_t length = quorlua::numberText(lua_tonumber(L, index), text);
    lua_pushlstring(L, text, length);
    lua_replace(L, index);
}

void set_global(lua_State* L, const char* name)
{
    lua_pushstring(L, name);
    lua_insert(L, -2);
    lua_rawset(L, LUA_GLOBALSINDEX);
}

} // namespace detail

void init(lua_State* L)
{
    if (!L) return;
    detail::installProtection(L);
    detail::installInt64(L);
}

} // namespace lua_tinker

#include "Guard.h"

#include "Limits.h"
#include "NativeStack.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace quorlua::guard {
namespace {

// The values behind these keys are in every state's registry that the guard has worked in. They are fetched
// outside protection, where a light userdata will not do: on one engine the first one of a region of memory
// takes memory itself. No other user of a registry has reason for negative keys.
constexpr int trampolineKey = -0x51553101;
constexpr int handlerKey = -0x51553102;
constexpr int anchorKey = -0x51553103;

// More than the interpreter lets a function have.
constexpr int mostUpvalues = 255;

// The task that the next trampoline of this thread takes up: handed over on the stack it would cost three
// calls more.
#if defined(_WIN32)

/// Not `thread_local`: this compiler's run-time library takes memory at a thread's first use of one, and ends
/// the process where there is none.
class PendingTask {
public:
    PendingTask() : slot_(TlsAlloc()) {}
    ~PendingTask() { TlsFree(slot_); }
    PendingTask(const PendingTask&) = delete;
    PendingTask& operator=(const PendingTask&) = delete;

    detail::Task* exchange(detail::Task* task) const
    {
        auto* before = static_cast<detail::Task*>(TlsGetValue(slot_));
        TlsSetValue(slot_, task);
        return before;
    }

private:
    DWORD slot_;
};

const PendingTask pendingTask;

detail::Task* exchangePending(detail::Task* task)
{
    return pendingTask.exchange(task);
}

#else

// What is known when a library is linked is reached in one instruction.
#if defined(__ELF__)
[[gnu::tls_model("initial-exec")]]
#endif
constinit thread_local detail::Task* pending = nullptr;

detail::Task* exchangePending(detail::Task* task)
{
    return std::exchange(pending, task);
}

#endif

int trampoline(lua_State* L)
{
    detail::Task* task = exchangePending(nullptr);
    if (!task) return 0; // a script has found this function
    task->results = task->run(L, task->work);
    return task->results;
}

// The texts last pushed lie behind the keys from this one downwards. Those that hosts pass are the same few
// again and again, and to find one here costs half of what it costs the interpreter.
constexpr int firstTextKey = -0x51553200;
constexpr unsigned int textKeys = 32;
constexpr std::size_t longestKeptText = 200;

/// Texts that lie elsewhere have another key, more often than not.
int textKey(const char* text)
{
    const auto address = reinterpret_cast<std::uintptr_t>(text);
    return firstTextKey - static_cast<int>((address ^ (address >> 5)) % textKeys);
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

int installAll(lua_State* L)
{
    install(L);
    for (unsigned int text = 0; text < textKeys; ++text) {
        lua_pushboolean(L, 0);
        lua_rawseti(L, LUA_REGISTRYINDEX, firstTextKey - static_cast<int>(text));
    }
    return 0;
}

/// `lua_cpcall`, once more where a script's finalizer raised while the collector ran: it has had its turn
/// then. Leaves no error value. [-0, +0, -]
int callTwice(lua_State* L, lua_CFunction function, void* data)
{
    const limits::Operation operation(L); // of the finalizers
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

int checkStack(lua_State* L)
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

bool detail::growStack(lua_State* L, int wanted)
{
    if (wanted > LUAI_MAXCSTACK) return false;
    const int top = lua_gettop(L);
    // lua_checkstack raises when memory runs out, and lua_cpcall needs no free slot: the memory is taken
    // inside, where an error is caught; the frame's own limit is then raised here, without taking any. As
    // lua_cpcall ends, the collector may halve a stack of which less than a quarter is in use. Hence the
    // steps: what is left then is always twice what the frame has.
    for (int reached = std::max(top, LUA_MINSTACK); reached < wanted;) {
        reached = std::min(wanted, 2 * reached - detail::ownSlots);
        int step = reached - top;
        if (callTwice(L, checkStack, &step) != 0) return false;
        // GCOVR_EXCL_BR_START: the memory is there, and the frame's own limit was looked at above
        if (!lua_checkstack(L, step)) return false;
        // GCOVR_EXCL_BR_STOP
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

bool pushSlot(lua_State* L, int index)
{
    if (!isSlot(L, index) || !reserve(L, 1)) return false;
    lua_pushvalue(L, index);
    return true;
}

bool prepare(lua_State* L)
{
    return callTwice(L, installAll, nullptr) == 0;
}

bool pushKnownText(lua_State* L, const char* text)
{
    lua_rawgeti(L, LUA_REGISTRYINDEX, textKey(text));
    const char* known = lua_tostring(L, -1);
    if (known && std::strcmp(known, text) == 0) [[likely]]
        return true;
    lua_settop(L, -2);
    return false;
}

bool pushKnownFunction(lua_State* L, const char* name)
{
    if (!pushKnownText(L, name)) return false;
    lua_rawget(L, LUA_GLOBALSINDEX);
    if (lua_type(L, -1) == LUA_TFUNCTION) [[likely]]
        return true;
    lua_settop(L, -2);
    return false;
}

bool pushHandlerAndKnownFunction(lua_State* L, const char* name)
{
    // Where a text is known, guarded code has run, and the handler is there.
    lua_rawgeti(L, LUA_REGISTRYINDEX, handlerKey);
    if (pushKnownFunction(L, name)) [[likely]]
        return true;
    lua_settop(L, -2);
    return false;
}

void pushText(lua_State* L, const char* text)
{
    if (pushKnownText(L, text)) return;
    const std::size_t size = std::strlen(text);
    lua_pushlstring(L, text, size);
    if (size > longestKeptText) return;
    lua_pushvalue(L, -1);
    lua_rawseti(L, LUA_REGISTRYINDEX, textKey(text));
}

int pushGlobal(lua_State* L, const char* name)
{
    pushText(L, name);
    lua_rawget(L, LUA_GLOBALSINDEX);
    const int type = lua_type(L, -1);
    if (type != LUA_TNIL || !lua_getmetatable(L, LUA_GLOBALSINDEX)) [[likely]]
        return type;
    lua_settop(L, -3);
    lua_pushcfunction(L, getGlobal);
    lua_pushlightuserdata(L, const_cast<char*>(name));
    const int status = lua_pcall(L, 1, 1, 0);
    if (status == LUA_ERRMEM) lua_error(L);
    if (status != 0) {
        lua_pop(L, 1);
        lua_pushnil(L);
    }
    return lua_type(L, -1);
}

void raiseOverflow(lua_State* L, const char* what)
{
    // The error takes the frame with it: values at its top make way for the message.
    constexpr int messageSlots = 4;
    if (lua_gettop(L) > messageSlots) lua_settop(L, -1 - messageSlots);
    luaL_error(L, "stack overflow (%s)", what);
    std::abort(); // not reached
}

namespace detail {

int call(lua_State* L, int arguments, int handler, Task& task, bool keepsError)
{
    const limits::Operation operation(L);
    if (!leavesRoom(0)) {
        lua_pop(L, arguments);
        if (keepsError) lua_pushnil(L);
        // Past "_ALERT", which would be a call of the script's again.
        if (handler != 0) lua_tinker::print_error(nullptr, "C stack overflow");
        return LUA_ERRRUN;
    }
    if (!pushStored(L, trampolineKey, trampoline)) {
        lua_pop(L, arguments);
        if (keepsError) lua_pushnil(L);
        return LUA_ERRMEM;
    }
    if (arguments > 0) lua_insert(L, -1 - arguments);
    // A hook may run other tasks before this one begins, so each puts back what it found.
    Task* const outer = exchangePending(&task);
    const int status = lua_pcall(L, arguments, LUA_MULTRET, handler);
    exchangePending(outer);
    if (status == 0 || keepsError) return status;
    lua_pop(L, 1);
    // The interpreter runs its collector once more as a call ends, and a finalizer of the script's may raise
    // then. Work that leaves nothing on the stack is done all the same.
    return task.results == 0 ? 0 : status;
}

} // namespace detail
} // namespace quorlua::guard

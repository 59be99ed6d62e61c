// Formats with argument lists: any text is a format. Its letters get items of their types, and the function
// answers any values.

#include "CallSlots.h"
#include "Drawn.h"
#include "Limits.h"
#include "Shapes.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/QuorScriptor.h>
#include <string_view>

namespace {

constexpr std::size_t longestFormat = 24;

/// Gives the values of the table that the target put into the registry, up to the first nil.
int answer(lua_State* L)
{
    const int given = lua_gettop(L);
    lua_getfield(L, LUA_REGISTRYINDEX, "fuzz.answer");
    if (!lua_istable(L, -1)) return 1;
    luaL_checkstack(L, 32, "answer");
    int count = 0;
    for (; count < 32; ++count) {
        lua_rawgeti(L, given + 1, count + 1);
        if (lua_isnil(L, -1)) {
            lua_pop(L, 1);
            break;
        }
    }
    return count;
}

int echo(lua_State* L)
{
    return lua_gettop(L);
}

int fail(lua_State* L)
{
    lua_settop(L, 1); // whatever was given, nil included
    return lua_error(L);
}

lua_State* makeState()
{
    lua_State* L = luaL_newstate();
    luaL_openlibs(L);
    lua_tinker::init(L);
    lua_tinker::set_error_outlet(fuzz::silence, nullptr);
    lua_register(L, "answer", answer);
    lua_register(L, "echo", echo);
    lua_register(L, "fail", fail);
    return L;
}

constexpr const char* functions[] = {"answer", "echo", "fail", "missing", "_G"};

/// Whether results of a format may stay on the stack, under a table that is handed out.
bool keepsResults(const std::string& results)
{
    return results.find_first_of("ct") != std::string::npos;
}

} // namespace

const char fuzz::target[] = "formats";

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static lua_State* const L = makeState();
    static fuzz::CallSlots slots;
    fuzz::Input input(data, size);
    lua_settop(L, 0);
    const char* function = functions[input.below(std::size(functions))];
    const bool inTwoSteps = input.flag();
    std::string format = input.word(longestFormat);
    format.resize(std::strlen(format.c_str())); // a NUL ends a format
    fuzz::pushValue(L, input);
    lua_setfield(L, LUA_REGISTRYINDEX, "fuzz.answer");
    lua_newtable(L); // what 'c' and 't' hand over
    const int height = lua_gettop(L);

    if (inTwoSteps) {
        // The first half as the host does it for any function, the second with as many outputs as there are.
        lua_getglobal(L, function);
        lua_pushvalue(L, 1);
        const fuzz::SlotAddresses out = slots.outputs(format);
        const bool called = quorlua::callLuaFunc1(
            L, function, 1, format.c_str(), out[0], out[1], out[2], out[3], out[4], out[5], out[6], out[7],
            out[8], out[9], out[10], out[11], out[12], out[13], out[14], out[15], out[16], out[17], out[18],
            out[19], out[20], out[21], out[22], out[23]);
        const int left = lua_gettop(L) - height;
        fuzz::require(left == 1 || left == static_cast<int>(format.size()), "the results or an error stay");
        fuzz::require(!called || left == static_cast<int>(format.size()), "results of a call stay");
        slots.free(format);
        return 0;
    }

    // A byte that is no letter ends the arguments as '>' does; what follows are results.
    std::vector<quorlua::CallItem> items = slots.arguments(format, input, L);
    const std::string results = items.size() < format.size() ? format.substr(items.size() + 1) : "";
    const fuzz::SlotAddresses out = slots.outputs(results);
    for (std::size_t i = 0; i < results.size(); ++i)
        items.push_back({.address = out[i]});
    const bool called = quorlua::callLuaItems(L, function, format.c_str(), items.data());
    const int left = lua_gettop(L) - height;
    if (keepsResults(results))
        fuzz::require(left >= 0, "no more than was called for is taken off the stack");
    else
        fuzz::require(left == 0, "the stack is as high as before");
    if (std::string_view("fail missing _G").find(function) != std::string_view::npos)
        fuzz::require(!called && left == 0, "a failed call leaves nothing");
    slots.free(results);
    return 0;
}

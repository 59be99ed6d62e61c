// Table shapes to primitives: any value is parsed, twice, and gives the same.

#include "Shapes.h"
#include "Drawn.h"

#include <QuorCommon/quorsys.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/QuorScriptor.h>

namespace {

lua_State* makeState()
{
    lua_State* L = luaL_newstate();
    luaL_openlibs(L);
    lua_tinker::init(L);
    lua_tinker::set_error_outlet(fuzz::silence, nullptr);
    return L;
}

Quor::GlibStatus parse(lua_State* L, int index, fuzz::Drawn& drawn)
{
    const int height = lua_gettop(L);
    quorlua::allocThreadVars(quorsys::currentThreadId()); // with fresh attributes
    const Quor::GlibStatus status = quorlua::parse_primary_byidx(L, index, drawn);
    quorlua::freeThreadVars(quorsys::currentThreadId());
    fuzz::require(lua_gettop(L) == height, "the stack is as high as before");
    return status;
}

} // namespace

const char fuzz::target[] = "shapes";

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static lua_State* const L = makeState();
    fuzz::Input input(data, size);
    lua_settop(L, 0);
    // A hatch takes what stands at 5 and 6.
    lua_settop(L, input.below(8));
    if (lua_gettop(L) >= 5) {
        lua_pushnumber(L, fuzz::readNumber(input));
        lua_replace(L, 5);
    }
    fuzz::pushValue(L, input);
    const bool isTable = lua_istable(L, -1);

    fuzz::Drawn first;
    fuzz::Drawn second;
    const Quor::GlibStatus status = parse(L, -1, first);
    fuzz::require(status == (isTable ? Quor::Ok : Quor::InvalidArgument), "tables alone are parsed");
    fuzz::require(isTable || first.empty(), "what is no table draws nothing");
    fuzz::require(parse(L, lua_gettop(L), second) == status, "a second parse has the same status");
    fuzz::require(first.text() == second.text(), "a second parse draws the same");
    return 0;
}

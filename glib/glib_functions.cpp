#include <QuorScriptor/LuaModules.h>

namespace quorlua {
namespace {

int answerNothing(lua_State*)
{
    return 0;
}

constexpr luaL_Reg functions[] = {
    {"setpath", answerNothing},
    {"setkpt", answerNothing},
    {"getArcIsoMat", answerNothing},
    {"getNormalIsoMat", answerNothing},
    {"getDefaultIsoMat", answerNothing},
    {"getDefaultMat", answerNothing},
    {"getRefIsoMat", answerNothing},
    {"getIsoPoint", answerNothing},
    {"getIsoVgdir", answerNothing},
    {"getCurrentObjectId", answerNothing},
    {"getCurrentObjectPointer", answerNothing},
    {"getPsView", answerNothing},
    {"getCurrentTxtstyle", answerNothing},
    {nullptr, nullptr},
};

} // namespace

const luaL_Reg* getGlibRegFuncForLua()
{
    return functions;
}

} // namespace quorlua

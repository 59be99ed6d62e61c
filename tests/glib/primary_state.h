#pragma once

#include "../platform/lua_state.h"

#include <QuorCommon/quorsys.h>
#include <QuorPrimary/QuorPrimary.h>
#include <QuorScriptor/QuorScriptor.h>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

using Texts = std::vector<std::string>;

/// What every solid, and every drawing, ends in that is stamped with the attributes of a new context.
inline const std::string plainSolid = " color=257 material=null";
inline const std::string plainDrawing = " color=257 thick=0 ltScale=1 lineType=null";

inline std::string printed(const QuorPrimary& primitive)
{
    std::ostringstream out;
    out << primitive;
    return out.str();
}

/// A Lua state with the values that records are written with, and a thread whose drawing attributes are fresh
/// in every test.
class PrimaryState : public LuaState {
protected:
    void SetUp() override
    {
        quorlua::allocThreadVars(quorsys::currentThreadId());
        run(R"(
            a, b, c = {1, 2, 3}, {4, 5, 7}, {9, 9, 1}
            x, y, z = {1, 0, 0}, {0, 2, 0}, {0, 0, 3}
            line = {{0, {0, 0, 0}, 0.5, 10, 20}, {1, {4, 5, 6}}}
            loop = {{2, {1, 1, 1}}}
        )");
    }
    void TearDown() override
    {
        quorlua::freeThreadVars(quorsys::currentThreadId());
        LuaState::TearDown();
    }

    /// Parses the table at an index and hands over what was built.
    std::vector<std::unique_ptr<QuorPrimary>> parseAt(int index)
    {
        const int height = lua_gettop(L);
        std::vector<QuorPrimary*> list;
        EXPECT_EQ(quorlua::parse_primary_byidx(L, index, list), Quor::Ok);
        EXPECT_EQ(lua_gettop(L), height) << "the parser moved the stack";
        return {list.begin(), list.end()};
    }

    /// Parses what an expression gives; the primitives' texts.
    Texts parse(const std::string& expression)
    {
        Texts texts;
        run("return " + expression, 1);
        for (const auto& primitive : parseAt(-1))
            texts.push_back(printed(*primitive));
        lua_pop(L, 1);
        return texts;
    }
};

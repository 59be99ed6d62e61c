#include "primary_state.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string hatch(const std::string& inner, const std::string& numbers)
{
    return "createQuorHatch(\"NET\", [{2, 0, 0, 0, (1, 1, 1)}], " + inner + ", " + numbers + ")" +
           plainDrawing;
}

class Hatch : public PrimaryState {
protected:
    /// Parses one hatch that stands on top of the values that the expressions give; and the same from a
    /// negative index and from within a group.
    std::string above(const std::string& values)
    {
        const int height = lua_gettop(L);
        Texts made;
        for (const char* table : {"{{28, 'NET', loop}}", "{{40, {{40, {{28, 'NET', loop}}}}}}"}) {
            run("return " + values + (values.empty() ? "" : ", ") + table, LUA_MULTRET);
            for (const int index : {lua_gettop(L), -1}) {
                const auto primitives = parseAt(index);
                EXPECT_EQ(primitives.size(), 1u);
                for (const auto& primitive : primitives)
                    made.push_back(printed(*primitive));
            }
            lua_settop(L, height);
        }
        EXPECT_THAT(made, testing::Each(made.at(0)));
        return made.at(0);
    }
};

TEST_F(Hatch, HasAngleZeroAndScaleOneOnAShortStack)
{
    for (const char* values : {"", "7", "7, 7", "7, 7, 7"})
        EXPECT_EQ(above(values), hatch("[]", "0, 1")) << values;
}

TEST_F(Hatch, ReadsNothingOfWhatTheWalkPushed)
{
    // Key and record of the walk would stand at 5 and 6; the key is a number.
    EXPECT_EQ(above("7, 7, 7"), hatch("[]", "0, 1"));
    // The table itself stands at 5.
    EXPECT_EQ(above("7, 7, 7, 7"), hatch("[]", "0, 1"));
}

TEST_F(Hatch, TakesItsAngleFromTheCallersPositionFive)
{
    // The table stands at 6.
    EXPECT_EQ(above("7, 7, 7, 7, 45"), hatch("[]", "45, 1"));
}

TEST_F(Hatch, TakesItsAngleAndScaleFromTheCallersPositionsFiveAndSix)
{
    EXPECT_EQ(above("7, 7, 7, 7, 45, 2.5"), hatch("[]", "45, 2.5"));
    EXPECT_EQ(above("7, 7, 7, 7, 45, 2.5, 8, 9"), hatch("[]", "45, 2.5"));
}

TEST_F(Hatch, TakesOnlyNumbersFromTheCallersStack)
{
    EXPECT_EQ(above("7, 7, 7, 7, '45', 2.5"), hatch("[]", "0, 2.5"));
    EXPECT_EQ(above("7, 7, 7, 7, 45, '2.5'"), hatch("[]", "45, 1"));
    EXPECT_EQ(above("7, 7, 7, 7, nil, true"), hatch("[]", "0, 1"));
}

TEST_F(Hatch, TakesThemFromTheTopOfTheStackToo)
{
    run("return {{28, 'NET', loop}}, 7, 7, 7", 4);
    EXPECT_EQ(printed(*parseAt(1).at(0)), hatch("[]", "0, 1"));
    lua_pushnumber(L, 45);
    EXPECT_EQ(printed(*parseAt(1).at(0)), hatch("[]", "45, 1"));
    lua_pushnumber(L, 2.5);
    EXPECT_EQ(printed(*parseAt(1).at(0)), hatch("[]", "45, 2.5"));
    lua_settop(L, 0);
}

TEST_F(Hatch, IsRefusedWithAScaleThatIsNotFinite)
{
    run("return 7, 7, 7, 7, 45, 1/0, {{28, 'NET', loop}}", 7);
    EXPECT_THAT(parseAt(-1), IsEmpty());
    lua_settop(L, 0);
}

TEST_F(Hatch, TakesItsInnerLoopFromARecordOfExactlyFourFields)
{
    const std::string line = "[{0, 10, 20, 0.5, (0, 0, 0)}, {1, 0, 0, 0, (4, 5, 6)}]";
    EXPECT_THAT(parse("{{28, 'NET', loop, line}, {28, 'NET', loop, line, 5}, {28, 'NET', loop, 5}}"),
                ElementsAre(hatch(line, "0, 1"), hatch("[]", "0, 1"), hatch("[]", "0, 1")));
}

TEST_F(Hatch, IsMalformedWithAnInnerLoopThatIsNoPolyline)
{
    EXPECT_THAT(
        parse("{{28, 'NET', loop, {5}}, {28, 'NET', loop, {{0}}}, {28, 'NET', loop, {loop[1], {0}}}}"),
        IsEmpty());
    EXPECT_THAT(parse("{{28, 'NET', loop, {5}, 5}}"), ElementsAre(hatch("[]", "0, 1")))
        << "looked at in a record of another length";
}

TEST_F(Hatch, MayHaveLoopsWithoutVertices)
{
    EXPECT_THAT(parse("{{28, 'NET', {}, {}}}"),
                ElementsAre("createQuorHatch(\"NET\", [], [], 0, 1)" + plainDrawing));
}

class HatchOfASegment : public testing::Test {
protected:
    void SetUp() override
    {
        const std::string script = "function main() return {{28, 'NET', {{2, {1, 1, 1}}}}} end";
        const quor_binary buffer{static_cast<int>(script.size()), const_cast<char*>(script.data())};
        ASSERT_EQ(scriptor.loadBuffer(buffer, 100, false), Quor::Ok);
    }

    std::string call()
    {
        std::vector<QuorPrimary*> primitives;
        lua_State* L = scriptor.getLua(false);
        const int height = lua_gettop(L);
        EXPECT_EQ(scriptor.callSeg("main", primitives), Quor::Ok);
        EXPECT_EQ(lua_gettop(L), height);
        std::string text;
        for (QuorPrimary* primitive : primitives) {
            text += printed(*primitive);
            delete primitive;
        }
        return text;
    }

    QuorGlibScriptor scriptor;
};

TEST_F(HatchOfASegment, HasAngleZeroAndScaleOne)
{
    EXPECT_EQ(call(), hatch("[]", "0, 1"));
}

TEST_F(HatchOfASegment, ReadsWhatTheHostLeftOnTheStack)
{
    lua_State* L = scriptor.getLua(false);
    while (lua_gettop(L) < 4)
        lua_pushboolean(L, 1);
    lua_pushnumber(L, 45);
    EXPECT_EQ(call(), hatch("[]", "45, 1")) << "position 6 holds the call's message handler";
    lua_pushnumber(L, 2.5);
    EXPECT_EQ(call(), hatch("[]", "45, 2.5"));
    lua_pushnumber(L, 9);
    EXPECT_EQ(call(), hatch("[]", "45, 2.5"));
}

} // namespace

#include "primary_state.h"

#include <thread>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string sphere(int radius)
{
    return "createQuorGraphy3DSphere((1, 2, 3), " + std::to_string(radius) + ", 12, false)" + plainSolid;
}

class Groups : public PrimaryState {
protected:
    /// How many primitives a global table becomes.
    std::size_t count(const char* global)
    {
        lua_getglobal(L, global);
        const std::size_t number = parseAt(-1).size();
        lua_pop(L, 1);
        return number;
    }
};

TEST_F(Groups, AreTakenInTheirPlace)
{
    EXPECT_THAT(
        parse("{{10, a, 1}, {40, {{10, a, 2}, {40, {{10, a, 3}, {10, a, 4}}}, {10, a, 5}}}, {10, a, 6}}"),
        ElementsAre(sphere(1), sphere(2), sphere(3), sphere(4), sphere(5), sphere(6)));
}

TEST_F(Groups, WithoutATableAreIgnored)
{
    for (const char* group :
         {"{40}", "{40, 5}", "{40, '{}'}", "{40, true}", "{40, print}", "{40, nil, {{10, a, 5}}}"})
        EXPECT_THAT(parse(std::string("{") + group + ", {10, a, 1}}"), ElementsAre(sphere(1))) << group;
}

TEST_F(Groups, MayBeEmpty)
{
    EXPECT_THAT(parse("{{40, {}}, {40, {{40, {}}}}, {10, a, 1}}"), ElementsAre(sphere(1)));
}

TEST_F(Groups, IgnoreWhatStandsBehindTheirTable)
{
    EXPECT_THAT(parse("{{40, {{10, a, 1}}, {{10, a, 2}}}}"), ElementsAre(sphere(1)));
}

TEST_F(Groups, HoldMalformedRecordsLikeAnyTable)
{
    EXPECT_THAT(parse("{{40, {5, 'x', {10, a}, {10, a, 1}, {41}, {'10', a, 2}}}}"), ElementsAre(sphere(1)));
    EXPECT_EQ(alerts.size(), 1u);
}

TEST_F(Groups, MayShareATable)
{
    EXPECT_THAT(parse("(function() local t = {{10, a, 1}} return {{40, t}, {40, t}} end)()"),
                ElementsAre(sphere(1), sphere(1)));
}

TEST_F(Groups, AreTakenAThousandDeep)
{
    run("t = {{10, a, 5}} for i = 1, 1000 do t = {{40, t}} end");
    EXPECT_EQ(count("t"), 1u);
}

TEST_F(Groups, AreTakenDownTo1024)
{
    run("t = {{10, a, 5}} for i = 1, 1024 do t = {{40, t}, {10, a, i}} end");
    EXPECT_EQ(count("t"), 1025u);
    run("t = {{40, t}}");
    EXPECT_EQ(count("t"), 1024u) << "the innermost lies too deep";
}

TEST_F(Groups, AHundredThousandDeepEnd)
{
    run("t = {{10, a, 5}} for i = 1, 100000 do t = {{40, t}, {10, a, 5}} end");
    EXPECT_EQ(count("t"), 1025u);
}

TEST_F(Groups, InsideThemselvesEnd)
{
    run("t = {{10, a, 5}} t[2] = {40, t}");
    EXPECT_EQ(count("t"), 1025u);
}

TEST_F(Groups, InsideThemselvesAsARecordEnd)
{
    run("t = {40} t[2] = t t[3] = {10, a, 5}");
    EXPECT_EQ(count("t"), 1025u) << "its values are a number, itself, and a record";
    run("t = {{10, a, 5}} local g = {40} g[2] = {g, {10, a, 5}} t[2] = g");
    EXPECT_EQ(count("t"), 1025u);
}

TEST_F(Groups, HoldAtLeastTwoMillionRecords)
{
    run("local r, t = {300, 1}, {} for i = 1, 1999999 do t[i] = r end t[2000000] = {10, a, 5} g = {{40, t}}");
    EXPECT_EQ(count("g"), 1u);
}

TEST_F(Groups, ThatDoubleAtEveryLevelEnd)
{
    run("t = {{300, 1}} for i = 1, 60 do t = {{40, t}, {40, t}} end t[3] = {10, a, 5}");
    EXPECT_EQ(count("t"), 1u) << "the records of the table itself have no bound";
}

TEST_F(Groups, BeyondTheBoundOfRecordsAreSkippedAndTheTableGoesOn)
{
    run("local r, many = {300, 1}, {} for i = 1, 2097152 do many[i] = r end "
        "many[2097153] = {10, a, 1} "
        "t = {{40, many}, {10, a, 2}, {40, {{10, a, 3}}}, {10, a, 4}}");
    Texts made = parse("t");
    for (std::string& text : made)
        text = text.substr(0, text.find(','));
    EXPECT_EQ(made.size(), 2u);
    EXPECT_THAT(parse("{{300}, t[2], t[4]}"), ElementsAre(sphere(2), sphere(4)));
}

TEST_F(Groups, AreTakenFromAFrameThatIsNearlyFull)
{
    run("t = {{10, a, 5}} for i = 1, 1000 do t = {{40, t}, {10, a, 5}} end");
    lua_getglobal(L, "t");
    fillFrame();
    lua_settop(L, lua_gettop(L) - 50);
    EXPECT_EQ(parseAt(1).size(), 1001u);
    lua_settop(L, 0);
}

TEST_F(Groups, AreNotTakenFromAFullFrame)
{
    run("return {{10, a, 5}}", 1);
    fillFrame();
    EXPECT_THAT(parseAt(1), IsEmpty());
    lua_settop(L, 0);
}

TEST_F(Groups, EndOnAThreadWithASmallStackToo)
{
    run("t = {{10, a, 5}} t[2] = {40, t}");
    lua_getglobal(L, "t");
    std::size_t made = 0;
    std::thread([&] { made = parseAt(1).size(); }).join();
    lua_pop(L, 1);
    EXPECT_EQ(made, 1025u);
}

} // namespace

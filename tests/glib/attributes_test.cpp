#include "primary_state.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string plainLine = "createQuorLine((1, 2, 3), (4, 5, 7))";
const std::string sphere = "createQuorGraphy3DSphere((1, 2, 3), 5, 12, false)";

class Attributes : public PrimaryState {
protected:
    /// The attributes of a line and of a sphere that follow the records.
    std::string line(const std::string& records)
    {
        return parse("{" + records + ", {16, a, b}}").at(0).substr(plainLine.size());
    }
    std::string solid(const std::string& records)
    {
        return parse("{" + records + ", {10, a, 5}}").at(0).substr(sphere.size());
    }
};

struct AttributeCase {
    int code;
    const char* value;
    const char* set;   ///< the line's attributes with the value
    const char* wrong; ///< a value of another type
    const char* reset; ///< the line's attributes without one
};

const AttributeCase attributeCases[] = {
    {300, "7", " color=7 thick=0 ltScale=1 lineType=null", "'7'",
     " color=257 thick=0 ltScale=1 lineType=null"},
    {500, "0.7", " color=257 thick=0.7 ltScale=1 lineType=null", "'0.7'",
     " color=257 thick=0 ltScale=1 lineType=null"},
    {600, "'DASHED'", " color=257 thick=0 ltScale=1 lineType=\"DASHED\"", "5",
     " color=257 thick=0 ltScale=1 lineType=null"},
    {700, "2.5", " color=257 thick=0 ltScale=2.5 lineType=null", "'2.5'",
     " color=257 thick=0 ltScale=0 lineType=null"},
};

class EveryAttribute : public Attributes, public testing::WithParamInterface<AttributeCase> {
protected:
    std::string record(const std::string& value) const
    {
        return "{" + std::to_string(GetParam().code) + (value.empty() ? "" : ", " + value) + "}";
    }
};

TEST_P(EveryAttribute, ActsOnWhatFollows)
{
    EXPECT_EQ(line(record(GetParam().value)), GetParam().set);
}

TEST_P(EveryAttribute, ActsOnNothingBefore)
{
    EXPECT_EQ(parse("{{16, a, b}, " + record(GetParam().value) + "}").at(0), plainLine + plainDrawing);
}

TEST_P(EveryAttribute, StaysForTheNextTable)
{
    parse("{" + record(GetParam().value) + "}");
    EXPECT_EQ(parse("{{16, a, b}}").at(0), plainLine + GetParam().set);
}

TEST_P(EveryAttribute, IsResetByARecordWithoutAValue)
{
    EXPECT_EQ(line(record(GetParam().value) + ", " + record("")), GetParam().reset);
}

TEST_P(EveryAttribute, IsResetByAValueOfAnotherType)
{
    for (const char* wrong : {GetParam().wrong, "true", "{}", "print", "nil"})
        EXPECT_EQ(line(record(GetParam().value) + ", " + record(wrong)), GetParam().reset) << wrong;
}

TEST_P(EveryAttribute, IsTakenFromARecordOfAnyLength)
{
    EXPECT_EQ(line(record(std::string(GetParam().value) + ", 1, 2, 3")), GetParam().set);
}

TEST_P(EveryAttribute, MakesNothing)
{
    EXPECT_THAT(parse("{" + record(GetParam().value) + ", " + record("") + "}"), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Attributes, EveryAttribute, testing::ValuesIn(attributeCases),
                         [](const auto& test) { return "Code" + std::to_string(test.param.code); });

TEST_F(Attributes, MaterialActsOnSolidsUntilReset)
{
    EXPECT_EQ(solid("{400, 'steel'}"), " color=257 material=\"steel\"");
    EXPECT_EQ(solid("{300, 3}"), " color=3 material=\"steel\"");
    EXPECT_EQ(solid("{400, 5}"), " color=3 material=null");
    EXPECT_EQ(solid("{400, 'brass'}, {400}"), " color=3 material=null");
}

TEST_F(Attributes, OfDrawingsAreNotThoseOfSolids)
{
    EXPECT_EQ(solid("{500, 0.7}, {600, 'DASHED'}, {700, 2.5}"), " color=257 material=null");
    EXPECT_EQ(line("{400, 'steel'}"), " color=257 thick=0.7 ltScale=2.5 lineType=\"DASHED\"");
}

TEST_F(Attributes, TextIsStampedAsADrawing)
{
    EXPECT_EQ(
        parse("{{300, 3}, {500, 0.7}, {600, 'DASHED'}, {700, 2.5}, {19, 1, a, 't', 0, 9}}").at(0),
        "createQuorText(1, (1, 2, 3), \"t\", 0) color=3 thick=0.7 ltScale=2.5 lineType=\"DASHED\" scale=9");
}

TEST_F(Attributes, ReferenceTakesTheColourOnly)
{
    EXPECT_EQ(parse("{{300, 3}, {400, 'steel'}, {500, 0.7}, {32, 'l', 'b', a, x, y}}").at(0),
              "createCadReference(\"l\", \"b\", (1, 2, 3), (1, 0, 0), (0, 2, 0)) color=3");
}

TEST_F(Attributes, ColourIsNarrowedToSixteenBits)
{
    EXPECT_EQ(solid("{300, 70000}"), " color=4464 material=null");
    EXPECT_EQ(solid("{300, -1}"), " color=-1 material=null");
    EXPECT_EQ(solid("{300, 3.9}"), " color=3 material=null");
    EXPECT_EQ(solid("{300, 0/0}"), " color=0 material=null");
    EXPECT_EQ(solid("{300, 1/0}"), " color=0 material=null");
}

TEST_F(Attributes, MaterialIsACopyThatOutlivesTheScriptsText)
{
    parse("{{400, 'st' .. 'eel' .. tostring({})}}");
    parse("{{400, string.rep('steel', 2)}}");
    lua_gc(L, LUA_GCCOLLECT, 0);
    EXPECT_EQ(solid("{1}"), " color=257 material=\"steelsteel\"");
}

TEST_F(Attributes, TextEndsAtItsFirstNul)
{
    EXPECT_EQ(solid("{400, 'st\\0eel'}"), " color=257 material=\"st\"");
}

// A drawing's own thickness counts from above 0.00001 on.
TEST_F(Attributes, OwnThicknessWinsAboveItsTolerance)
{
    const auto thick = [this](const char* own) {
        return parse(std::string("{{500, 3}, {31, a, z, x, 1, 0, 9, ") + own + "}}").at(0);
    };
    const std::string start = "createQuorEllipse((1, 2, 3), (0, 0, 3), (1, 0, 0), 1, 0, 9) color=257 thick=";
    const std::string end = " ltScale=1 lineType=null";
    EXPECT_EQ(thick("0.7"), start + "0.7" + end);
    EXPECT_EQ(thick("1.0000000000000003e-5"), start + "1.0000000000000003e-05" + end);
    EXPECT_EQ(thick("1e-5"), start + "3" + end);
    EXPECT_EQ(thick("0.9e-5"), start + "3" + end);
    EXPECT_EQ(thick("0"), start + "3" + end);
    EXPECT_EQ(thick("-0.7"), start + "3" + end);
    EXPECT_EQ(thick("0/0"), start + "nan" + end);
}

// A drawing's own line-type scale counts when it is more than 0.0001 away from 1.
TEST_F(Attributes, OwnLineTypeScaleWinsOutsideItsTolerance)
{
    const auto scale = [this](const char* own) {
        const std::string made =
            parse(std::string("{{700, 2}, {16, a, b, 'D', ") + own + "}}").at(0).substr(plainLine.size());
        const std::string start = " color=257 thick=0 ltScale=", end = " lineType=\"D\"";
        EXPECT_THAT(made, testing::AllOf(testing::StartsWith(start), testing::EndsWith(end)));
        return made.substr(start.size(), made.size() - start.size() - end.size());
    };
    EXPECT_EQ(scale("2.5"), "2.5");
    EXPECT_EQ(scale("1"), "2") << "a scale of 1 counts as unset";
    EXPECT_EQ(scale("1.00009"), "2");
    EXPECT_EQ(scale("0.99991"), "2");
    EXPECT_EQ(scale("1.00011"), "1.00011");
    EXPECT_EQ(scale("0.99989"), "0.99989");
    EXPECT_EQ(scale("-1"), "-1");
    EXPECT_EQ(scale("0"), "0");
}

TEST_F(Attributes, OwnLineTypeWins)
{
    EXPECT_EQ(parse("{{600, 'DASHED'}, {16, a, b, 'DOT'}}").at(0),
              plainLine + " color=257 thick=0 ltScale=1 lineType=\"DOT\"");
    EXPECT_EQ(parse("{{16, a, b, ''}}").at(0), plainLine + " color=257 thick=0 ltScale=1 lineType=\"\"");
}

TEST_F(Attributes, ScaleRecordWithoutAValueGivesZeroToEveryLaterDrawing)
{
    EXPECT_THAT(parse("{{700, 2}, {700}, {16, a, b}, {16, a, b, 'D', 1}, {16, a, b, 'D', 3}}"),
                ElementsAre(plainLine + " color=257 thick=0 ltScale=0 lineType=null",
                            plainLine + " color=257 thick=0 ltScale=0 lineType=\"D\"",
                            plainLine + " color=257 thick=0 ltScale=3 lineType=\"D\""));
}

TEST_F(Attributes, ActInsideLaterGroupsAndOutOfThem)
{
    EXPECT_THAT(parse("{{300, 3}, {40, {{10, a, 5}, {300, 4}}}, {10, a, 5}, {40, {{40, {{10, a, 5}}}}}}"),
                ElementsAre(sphere + " color=3 material=null", sphere + " color=4 material=null",
                            sphere + " color=4 material=null"));
}

TEST_F(Attributes, AreResetWhenASegmentsPrimitivesAreParsed)
{
    QuorGlibScriptor scriptor;
    const std::string script =
        "function first() return {{300, 3}, {400, 'steel'}, {500, 0.7}, {600, 'D'}, {700}, {10, {1, 2, 3}, "
        "5}} end "
        "function second() return {{10, {1, 2, 3}, 5}, {16, {1, 2, 3}, {4, 5, 7}}} end";
    const quor_binary buffer{static_cast<int>(script.size()), const_cast<char*>(script.data())};
    ASSERT_EQ(scriptor.loadBuffer(buffer, 100, false), Quor::Ok);

    const auto call = [&scriptor](const char* segment) {
        Texts texts;
        std::vector<QuorPrimary*> primitives;
        const int height = lua_gettop(scriptor.getLua(false));
        EXPECT_EQ(scriptor.callSeg3D(segment, primitives), Quor::Ok);
        EXPECT_EQ(lua_gettop(scriptor.getLua(false)), height);
        for (QuorPrimary* primitive : primitives) {
            texts.push_back(printed(*primitive));
            delete primitive;
        }
        return texts;
    };
    EXPECT_THAT(call("first"), ElementsAre(sphere + " color=3 material=\"steel\""));
    EXPECT_THAT(call("second"), ElementsAre(sphere + plainSolid, plainLine + plainDrawing));
}

} // namespace

#include "kind_cases.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class EveryKind : public PrimaryState, public testing::WithParamInterface<cases::Kind> {
protected:
    /// The fields from field 2 on.
    Texts fields() const
    {
        Texts list;
        for (const cases::Field& field : GetParam().required)
            list.push_back(field.lua);
        return list;
    }

    /// A table with one record.
    std::string record(const Texts& fields, const char* form = "{{%}}") const
    {
        std::string list = std::to_string(GetParam().code);
        for (const std::string& field : fields)
            list += ", " + field;
        return std::string(form).replace(std::string(form).find('%'), 1, list);
    }

    /// The well-formed record with one more field.
    std::string recordWith(int field, const std::string& value) const
    {
        Texts list = fields();
        list.resize(static_cast<std::size_t>(field) - 2, "nil");
        list.push_back(value);
        return record(list);
    }
};

TEST_P(EveryKind, IsMadeOfItsRequiredFields)
{
    EXPECT_THAT(parse(record(fields())), ElementsAre(GetParam().made));
}

TEST_P(EveryKind, IsReadFromTheHashPartToo)
{
    run("function hashed(...) local r = {} for i = select('#', ...), 1, -1 do r[i] = (select(i, ...)) end "
        "return r end");
    EXPECT_THAT(parse(record(fields(), "{hashed(%)}")), ElementsAre(GetParam().made));
}

TEST_P(EveryKind, TakesItsCodeWithAFraction)
{
    const std::string whole = record(fields());
    EXPECT_THAT(parse("{{" + std::to_string(GetParam().code) + ".9" + whole.substr(whole.find(','))),
                ElementsAre(GetParam().made));
}

TEST_P(EveryKind, IsRefusedWithoutFields)
{
    EXPECT_THAT(parse(record({})), IsEmpty());
}

TEST_P(EveryKind, IsRefusedWhenOneFieldTooShort)
{
    Texts list = fields();
    list.pop_back();
    EXPECT_THAT(parse(record(list)), IsEmpty());
}

TEST_P(EveryKind, IsRefusedWithARequiredFieldMissing)
{
    for (std::size_t i = 0; i < fields().size(); ++i) {
        Texts list = fields();
        list[i] = "nil";
        SCOPED_TRACE(record(list));
        EXPECT_THAT(parse(record(list)), IsEmpty());
    }
}

TEST_P(EveryKind, IsRefusedWithARequiredFieldOfAnotherType)
{
    for (std::size_t i = 0; i < fields().size(); ++i) {
        for (const std::string& wrong : cases::wrongFor(GetParam().required[i].letter)) {
            Texts list = fields();
            list[i] = wrong;
            SCOPED_TRACE(record(list));
            EXPECT_THAT(parse(record(list)), IsEmpty());
        }
    }
}

TEST_P(EveryKind, MinimumLengthCountsNothingBehindAMetatable)
{
    const std::string code = std::to_string(GetParam().code);
    const std::string whole = record(fields(), "{%}");
    EXPECT_THAT(
        parse("{setmetatable({" + code + "}, {__index = " + whole + ", __len = function() return 9 end})}"),
        IsEmpty());
}

TEST_P(EveryKind, TakesEachOptionalField)
{
    for (const cases::Option& option : GetParam().options) {
        const std::string table = recordWith(option.field, option.value.lua);
        SCOPED_TRACE(table);
        EXPECT_THAT(parse(table), ElementsAre(option.made));
    }
}

TEST_P(EveryKind, LeavesTheDefaultForAnOptionalFieldOfAnotherType)
{
    for (const cases::Option& option : GetParam().options) {
        for (const std::string& wrong : cases::wrongFor(option.value.letter)) {
            if (option.value.letter == "PL" && wrong[0] == '{') continue; // makes the record malformed
            SCOPED_TRACE(recordWith(option.field, wrong));
            EXPECT_THAT(parse(recordWith(option.field, wrong)), ElementsAre(GetParam().made));
        }
    }
}

TEST_P(EveryKind, IgnoresFieldsBehindItsLastUnlessTheLengthIsExact)
{
    const int last =
        GetParam().options.empty() ? static_cast<int>(fields().size()) + 1 : GetParam().options.back().field;
    const Texts made = parse(recordWith(last + 1, "5"));
    if (GetParam().exactLength != 0)
        EXPECT_THAT(made, IsEmpty());
    else
        EXPECT_THAT(made, ElementsAre(GetParam().made));
}

TEST_P(EveryKind, HasAClassThatItsAttributesTell)
{
    run("return " + record(fields()), 1);
    const auto made = parseAt(-1);
    lua_pop(L, 1);
    ASSERT_EQ(made.size(), 1u);
    EXPECT_EQ(made[0]->toPrimary3D() != nullptr, GetParam().made.find(" material=") != std::string::npos);
    EXPECT_EQ(made[0]->toPrimary2D() != nullptr, GetParam().made.find(" lineType=") != std::string::npos);
    EXPECT_EQ(made[0]->toPrimaryText() != nullptr, GetParam().code == 19);
}

INSTANTIATE_TEST_SUITE_P(Kinds, EveryKind, testing::ValuesIn(cases::all()),
                         [](const auto& test) { return "Code" + std::to_string(test.param.code); });

class Kinds : public PrimaryState {};

TEST_F(Kinds, FlagThatIsFalseLeavesTheEndsClosed)
{
    for (const char* record :
         {"{2, a, b, 25, false}", "{15, a, b, 10, 5, false}", "{5, a, b, 10, 5, z, false}",
          "{4, 100, 10, a, b, c, 1, false}", "{22, 100, 10, a, b, c, 90, false}"}) {
        const Texts made = parse(std::string("{") + record + "}");
        ASSERT_EQ(made.size(), 1u) << record;
        EXPECT_THAT(made[0], testing::EndsWith(plainSolid));
    }
}

TEST_F(Kinds, LineWithThreeFieldsHasNoLineType)
{
    // Field 5 stands apart from the sequence, whose length stays 3.
    run("r = {16, a, b}; r[5] = 2.5; r[100] = 1");
    EXPECT_THAT(parse("{r}"), ElementsAre("createQuorLine((1, 2, 3), (4, 5, 7))" + plainDrawing));
}

TEST_F(Kinds, LineTakesItsLineTypeAndItsScale)
{
    EXPECT_THAT(parse("{{16, a, b, 'DASHED', 2.5}}"),
                ElementsAre("createQuorLine((1, 2, 3), (4, 5, 7)) color=257 thick=0 ltScale=2.5 "
                            "lineType=\"DASHED\""));
}

TEST_F(Kinds, EllipseTakesItsScaleOnlyWithALineType)
{
    const std::string made =
        "createQuorEllipse((1, 2, 3), (0, 0, 3), (1, 0, 0), 0.5, 30, 60) color=257 thick=0.7 ";
    EXPECT_THAT(parse("{{31, a, z, x, 0.5, 30, 60, 0.7, 'DASHED', 2.5}}"),
                ElementsAre(made + "ltScale=2.5 lineType=\"DASHED\""));
    EXPECT_THAT(parse("{{31, a, z, x, 0.5, 30, 60, 0.7, 5, 2.5}}"),
                ElementsAre(made + "ltScale=1 lineType=null"));
}

TEST_F(Kinds, TextRunsAlongADirectionWhenFieldFiveIsNoNumber)
{
    EXPECT_THAT(parse("{{19, 1, a, 'DN50', y}}"),
                ElementsAre("createQuorText(1, (1, 2, 3), \"DN50\", (0, 2, 0))" + plainDrawing));
}

TEST_F(Kinds, TextTakesAllItsOptionsTogether)
{
    EXPECT_THAT(parse("{{19, 1, a, 'DN50', 30, 2, 3.5, y, 4}}"),
                ElementsAre("createQuorText(1, (1, 2, 3), \"DN50\", 30)" + plainDrawing +
                            " scale=2 height=3.5 normal=(0, 2, 0) txtFlag=4"));
}

TEST_F(Kinds, LineArrayPassesOverWhatIsNoPoint)
{
    EXPECT_THAT(parse("{{27, {a, 'text', 5, {1, 2}, b, true, {}, c}}}"),
                ElementsAre("createQuorLineArr([(1, 2, 3), (4, 5, 7), (9, 9, 1)], true)" + plainDrawing));
}

TEST_F(Kinds, LineArrayMayBeEmpty)
{
    EXPECT_THAT(parse("{{27, {}}}"), ElementsAre("createQuorLineArr([], true)" + plainDrawing));
}

TEST_F(Kinds, InnerLoopThatIsNoPolylineMakesThePolygonSolidMalformed)
{
    for (const char* inner : {"{5}", "{{5}}", "{loop, {{0}}}", "{loop, 'text'}"})
        EXPECT_THAT(parse(std::string("{{24, a, x, y, z, 5, line, ") + inner + "}}"), IsEmpty()) << inner;
}

TEST_F(Kinds, RevolutionTakesItsAngleFromARecordOfExactlyFiveFields)
{
    const auto with = [this](const char* fields) {
        return parse(std::string("{{30, a, z, loop") + fields + "}}").at(0);
    };
    const std::string start = "createQuorGraphy3DRevolve((1, 2, 3), (0, 0, 3), [{2, 0, 0, 0, (1, 1, 1)}], ";
    EXPECT_EQ(with(", 90"), start + "90, 32, false, 1)" + plainSolid);
    EXPECT_EQ(with(", 90, 5"), start + "360, 32, false, 1)" + plainSolid);
    EXPECT_EQ(with(", '90'"), start + "360, 32, false, 1)" + plainSolid);
}

TEST_F(Kinds, PointStyleIsNarrowedToSixteenBits)
{
    EXPECT_THAT(parse("{{26, a, 70000}, {26, a, -1}, {26, a, 0/0}, {26, a, 1e300}, {26, a, 7.9}}"),
                ElementsAre("createQuorPoint((1, 2, 3), 4464)" + plainDrawing,
                            "createQuorPoint((1, 2, 3), -1)" + plainDrawing,
                            "createQuorPoint((1, 2, 3), 0)" + plainDrawing,
                            "createQuorPoint((1, 2, 3), 0)" + plainDrawing,
                            "createQuorPoint((1, 2, 3), 7)" + plainDrawing));
}

TEST_F(Kinds, OperationWithAnotherNumberThanFourCombinesTwoElements)
{
    EXPECT_THAT(
        parse("{{41, 2, 5, 6}, {41, 99, -1, 0}}"),
        ElementsAre("createQuorPrimaryBooleanOpr(2, 5, 6)", "createQuorPrimaryBooleanOpr(99, -1, 0)"));
}

TEST_F(Kinds, OperationFourCutsByAPlane)
{
    EXPECT_THAT(parse("{{41, 4, 5, {a, z}}}"),
                ElementsAre("createQuorPrimarySliceOpr(5, (1, 2, 3), (0, 0, 3))"));
}

TEST_F(Kinds, OperationsAndParametersCarryNoColour)
{
    run("return {{300, 7}, {41, 1, 2, 3}, {41, 4, 2, {a, z}}, {200, {}}}", 1);
    for (const auto& primitive : parseAt(-1))
        EXPECT_FALSE(primitive->hasColor()) << *primitive;
    lua_pop(L, 1);
}

TEST_F(Kinds, ParameterRecordKeepsEveryTypeOfValue)
{
    EXPECT_THAT(
        parse("{{200, {DN = 50}}, {200, {name = 'gate'}}, {200, {open = true}}, {200, {at = a}}, {200, "
              "{}}, {200, {1}}}"),
        ElementsAre("QuorOprKVParamArray([{\"DN\", \"\", double:50}])",
                    "QuorOprKVParamArray([{\"name\", \"\", string:\"gate\"}])",
                    "QuorOprKVParamArray([{\"open\", \"\", bool:true}])",
                    "QuorOprKVParamArray([{\"at\", \"\", point:(1, 2, 3)}])", "QuorOprKVParamArray([])",
                    "QuorOprKVParamArray([{\"1\", \"\", double:1}])"));
}

TEST_F(Kinds, WhatTheFactoryRefusesIsPassedOver)
{
    EXPECT_THAT(
        parse("{{2, a, a, 25}, {10, a, 0}, {10, {0/0, 0, 0}, 5}, {32, 'l', 'b', a, {0, 0, 0}, y}, {41, 4, 1, "
              "{a, {0, 0, 0}}}, {19, 1, a, 't', {0, 0, 0}, 1, 2}, {17, a, 5, 1, 2, {0, 0, 0}, 'D', 2}, "
              "{31, a, z, {0, 0, 0}, 0.5, 0, 90, 2.5}, {10, a, 5}}"),
        ElementsAre("createQuorGraphy3DSphere((1, 2, 3), 5, 12, false)" + plainSolid));
    EXPECT_THAT(alerts, IsEmpty());
}

} // namespace

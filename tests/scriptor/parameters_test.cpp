#include "scriptor_fixture.h"

#include <cmath>
#include <limits>

namespace {

using testing::IsEmpty;

class Parameters : public Scriptor {
protected:
    bool writeArray(double factor)
    {
        double values[23];
        for (int i = 0; i < 23; ++i)
            values[i] = i + 1;
        return kept([&] { return scriptor.setParams(values, factor); });
    }
    bool writeValues(const std::vector<KVParams>& records, double factor = 1.0)
    {
        return kept([&] { return scriptor.setKeyValues(records, factor); });
    }
    /// "P1" to "P23", parted by spaces.
    std::string positional()
    {
        run("local t = {} for i = 1, 23 do t[i] = textOf(param['P' .. i]) end all = table.concat(t, ' ')");
        return shown("all");
    }
};

TEST_F(Parameters, ArrayScalesLengthsOnly)
{
    run("param = {}; skey = {quantumUnit = {'P3'}, angleUnit = {'P4'}}");
    EXPECT_TRUE(writeArray(1000));
    EXPECT_EQ(positional(),
              "1000 2000 3 4 5000 6000 7000 8000 9000 10000 11000 12000 13000 14000 15000 16000 "
              "17000 18000 19000 20000 21000 22000 23000");
    EXPECT_EQ(shown("param.P24"), "nil");
    EXPECT_EQ(shown("param.P0"), "nil");
}

TEST_F(Parameters, ArrayScalesEverythingWithoutADeclaration)
{
    for (const char* skey :
         {"nil", "{}", "{quantumUnit = {}, angleUnit = {}}", "{quantumUnit = 'P3'}", "5", "true", "'P3'",
          "{'P3'}", "{quantumUnit = {p3 = 1, P3 = true}}", "{quantumUnit = {'p3', 'P3 '}}",
          "setmetatable({}, {__index = function() error('x') end})"}) {
        run(std::string("param = {}; skey = ") + skey);
        EXPECT_TRUE(writeArray(10)) << skey;
        EXPECT_EQ(shown("param.P3 .. ' ' .. param.P23"), "30 230") << skey;
    }
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Parameters, DeclarationsAreTheValuesOfTheirTablesAsText)
{
    const char* const declarations[] = {
        "{quantumUnit = {'P3'}}",
        "{angleUnit = {'P3'}}",
        "{quantumUnit = {any = 'P3'}}",
        "{quantumUnit = {'P1', {}, true, print, 'P3'}, angleUnit = 7}",
        "{quantumUnit = 7, angleUnit = {[100] = 'P3'}}",
        "setmetatable({}, {__index = {quantumUnit = {'P3'}}})",
    };
    for (const char* skey : declarations) {
        run(std::string("param = {}; skey = ") + skey);
        EXPECT_TRUE(writeArray(10)) << skey;
        EXPECT_EQ(shown("param.P3 .. ' ' .. param.P2"), "3 20") << skey;
    }
}

TEST_F(Parameters, OneListThatRaisesLeavesTheOther)
{
    run("param = {}; skey = setmetatable({angleUnit = {'P4'}}, {__index = function() error('no') end})");
    EXPECT_TRUE(writeArray(10));
    EXPECT_EQ(shown("param.P4 .. ' ' .. param.P2"), "4 20");
}

TEST_F(Parameters, NumericDeclarationExemptsTheParameterOfThatName)
{
    run("param = {}; skey = {quantumUnit = {5, 0.5, 1e15}}");
    EXPECT_TRUE(writeArray(10));
    EXPECT_EQ(shown("param.P5"), "50") << "P5 is not named 5";
    EXPECT_TRUE(writeValues({{"5", "", KVValue::ofDouble(1)},
                             {"0.5", "", KVValue::ofDouble(1)},
                             {"1e+15", "", KVValue::ofDouble(1)},
                             {"5.0", "", KVValue::ofDouble(1)}},
                            10));
    EXPECT_EQ(shown("param['5'] .. param['0.5'] .. param['1e+15'] .. param['5.0']"), "11110");
    EXPECT_EQ(shown("skey.quantumUnit[1] == 5"), "true") << "the script's table is left as it is";
}

TEST_F(Parameters, ArrayRemovesTheCutList)
{
    run("param = {cut = {{1, 2}}, other = 5}");
    EXPECT_TRUE(writeArray(1));
    EXPECT_EQ(shown("param.cut"), "nil");
    EXPECT_EQ(shown("param.other"), "5");
}

TEST_F(Parameters, ArrayNeedsItsTableAndItsNumbers)
{
    for (const char* value : {"nil", "5", "'text'", "print", "true", "io.stdout"}) {
        run(std::string("param = ") + value);
        EXPECT_FALSE(writeArray(1)) << value;
    }
    run("param = {cut = 1}");
    EXPECT_FALSE(kept([&] { return scriptor.setParams(static_cast<const double*>(nullptr), 1.0); }));
    EXPECT_EQ(shown("param.cut"), "1");
}

TEST_F(Parameters, NumbersArriveAsTheyAre)
{
    run("param = {}");
    double values[23] = {
        0.1,   -0.0,  std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
        1e300, 5e-324};
    EXPECT_TRUE(kept([&] { return scriptor.setParams(values, 1.0); }));
    EXPECT_EQ(
        shown("param.P1 == 0.1 and 1 / param.P2 < 0 and param.P3 ~= param.P3 and param.P4 == math.huge"),
        "true");
    EXPECT_EQ(shown("param.P5 == 1e300 and param.P6 > 0"), "true");
    EXPECT_TRUE(kept([&] { return scriptor.setParams(values, 1e300); }));
    EXPECT_EQ(shown("param.P5 == math.huge"), "true");
}

TEST_F(Parameters, CutListIsAnArrayOfPairs)
{
    run("param = {cut = 5, other = 6}; skey = nil");
    geolib::paramt last{nullptr, 5, 6};
    geolib::paramt middle{&last, -1, 0.5};
    const geolib::paramt first{&middle, 1, 2};
    EXPECT_TRUE(kept([&] { return scriptor.setParams(&first); }));
    EXPECT_EQ(shown("#param.cut"), "3");
    for (const auto& [place, pair] :
         {std::pair{"1", "1 2"}, std::pair{"2", "-1 0.5"}, std::pair{"3", "5 6"}}) {
        const std::string cut = std::string("param.cut[") + place + "]";
        EXPECT_EQ(shown("textOf(" + cut + "[1]) .. ' ' .. textOf(" + cut + "[2])"), pair);
        EXPECT_EQ(shown("#" + cut), "2") << pair;
    }
    EXPECT_EQ(shown("param.other"), "6");
    EXPECT_TRUE(kept([&] { return scriptor.setParams(&last); }));
    EXPECT_EQ(shown("#param.cut"), "1") << "a later list replaces the former";
}

TEST_F(Parameters, NullCutListRemovesTheCutAlone)
{
    run("param = {cut = {{1, 2}}, P1 = 5}");
    EXPECT_TRUE(kept([&] { return scriptor.setParams(static_cast<const geolib::paramt*>(nullptr)); }));
    EXPECT_EQ(shown("param.cut"), "nil");
    EXPECT_EQ(shown("param.P1"), "5");
}

TEST_F(Parameters, CutListNeedsItsTable)
{
    const geolib::paramt cut{nullptr, 1, 2};
    for (const char* value : {"nil", "5", "'text'"}) {
        run(std::string("param = ") + value);
        EXPECT_FALSE(kept([&] { return scriptor.setParams(&cut); })) << value;
        EXPECT_FALSE(kept([&] { return scriptor.setParams(static_cast<const geolib::paramt*>(nullptr)); }));
        EXPECT_EQ(shown("param"), shown(value)) << "no table is made";
    }
}

TEST_F(Parameters, CutListMayBeLong)
{
    run("param = {}");
    std::vector<geolib::paramt> nodes(100000);
    for (std::size_t i = 0; i < nodes.size(); ++i)
        nodes[i] = {i + 1 < nodes.size() ? &nodes[i + 1] : nullptr, static_cast<double>(i), 0};
    EXPECT_TRUE(kept([&] { return scriptor.setParams(nodes.data()); }));
    EXPECT_EQ(shown("#param.cut .. ' ' .. param.cut[100000][1]"), "100000 99999");
}

TEST_F(Parameters, DoubleIsSetInAnyTableUnscaled)
{
    run("mine = {}; skey = nil");
    EXPECT_TRUE(kept([&] { return scriptor.setDoubleParam("mine", "angle", 30.5); }));
    EXPECT_EQ(shown("mine.angle"), "30.5");
    EXPECT_TRUE(kept([&] { return scriptor.setDoubleParam("mine", "", 1); }));
    EXPECT_EQ(shown("mine['']"), "1");
    EXPECT_FALSE(kept([&] { return scriptor.setDoubleParam("missing", "angle", 1); }));
    EXPECT_EQ(shown("missing"), "nil");
    EXPECT_FALSE(kept([&] { return scriptor.setDoubleParam("", "angle", 1); }));
    EXPECT_FALSE(kept([&] { return scriptor.setDoubleParam(nullptr, "angle", 1); }));
    EXPECT_FALSE(kept([&] { return scriptor.setDoubleParam("mine", nullptr, 1); }));
}

TEST_F(Parameters, DoubleCannotBeSetInWhatHasNoFields)
{
    run("number = 5; text = 'x'; flag = false; task = print");
    for (const char* name : {"number", "text", "flag", "task"})
        EXPECT_FALSE(kept([&] { return scriptor.setDoubleParam(name, "field", 1); })) << name;
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Parameters, KeyValuesAreWrittenByTheirTags)
{
    run("param = {}");
    EXPECT_TRUE(writeValues({{"short", "", KVValue::ofShort(-32768)},
                             {"int", "", KVValue::ofInt(2147483647)},
                             {"double", "", KVValue::ofDouble(0.5)},
                             {"point", "", KVValue::ofPoint({1, 2, 3})},
                             {"string", "", KVValue::ofString("DN50")},
                             {"yes", "", KVValue::ofBool(true)},
                             {"no", "", KVValue::ofBool(false)}},
                            10));
    EXPECT_EQ(shown("param.short"), "-32768") << "integers are not scaled";
    EXPECT_EQ(shown("param.int"), "2147483647");
    EXPECT_EQ(shown("param.double"), "5");
    EXPECT_EQ(shown("table.concat(param.point, ' ')"), "1 2 3") << "points are not scaled";
    EXPECT_EQ(shown("param.string"), "DN50");
    EXPECT_EQ(shown("param.yes"), "true");
    EXPECT_EQ(shown("param.no"), "false");
}

TEST_F(Parameters, KeyValuesScaleLengthsOnly)
{
    run("param = {}; skey = {quantumUnit = {'count'}, angleUnit = {'bend'}}");
    EXPECT_TRUE(writeValues({{"count", "", KVValue::ofDouble(2)},
                             {"bend", "", KVValue::ofDouble(90)},
                             {"length", "", KVValue::ofDouble(3)}},
                            1000));
    EXPECT_EQ(shown("param.count .. ' ' .. param.bend .. ' ' .. param.length"), "2 90 3000");
}

TEST_F(Parameters, KeyValuesOfOtherTagsAreSkipped)
{
    run("param = {}");
    const short tags[] = {0, 6, 7, 9, -1, 32767};
    for (const short tag : tags) {
        EXPECT_TRUE(
            writeValues({{"skipped", "", KVValue::ofTag(tag)}, {"written", "", KVValue::ofInt(tag)}}));
        EXPECT_EQ(shown("param.skipped"), "nil") << tag;
        EXPECT_EQ(shown("param.written"), std::to_string(tag));
    }
}

TEST_F(Parameters, LaterKeyValueOverwritesAnEarlierOne)
{
    run("param = {}");
    EXPECT_TRUE(writeValues({{"k", "", KVValue::ofInt(1)},
                             {"k", "", KVValue::ofString("two")},
                             {"k", "", KVValue::ofTag(6)},
                             {"", "", KVValue::ofInt(3)}}));
    EXPECT_EQ(shown("param.k"), "two");
    EXPECT_EQ(shown("param['']"), "3");
}

TEST_F(Parameters, KeyValuesNeedTheirTable)
{
    for (const char* value : {"nil", "5", "'text'"}) {
        run(std::string("param = ") + value);
        EXPECT_FALSE(writeValues({{"k", "", KVValue::ofInt(1)}})) << value;
        EXPECT_FALSE(writeValues({})) << value;
    }
    run("param = {}");
    EXPECT_TRUE(writeValues({}));
    EXPECT_EQ(shown("next(param)"), "nil");
}

TEST_F(Parameters, SetParamWritesUnscaledIntoANamedTable)
{
    run("mine = {old = 1}; skey = nil");
    EXPECT_TRUE(kept([&] {
        return scriptor.setParam("mine",
                                 {{"P1", "n", KVValue::ofDouble(2)}, {"t", "", KVValue::ofString("x")}});
    }));
    EXPECT_EQ(shown("mine.P1 .. mine.t .. mine.old"), "2x1");
    EXPECT_TRUE(kept([&] { return scriptor.setParam("mine", {}); }));
}

TEST_F(Parameters, SetParamNeedsItsTable)
{
    run("number = 5");
    const std::vector<KVParams> records = {{"k", "", KVValue::ofInt(1)}};
    for (const char* name : {static_cast<const char*>(nullptr), "", "missing", "number"})
        EXPECT_FALSE(kept([&] { return scriptor.setParam(name, records); })) << (name ? name : "null");
}

TEST_F(Parameters, ClearParamEmptiesANamedTable)
{
    run("mine = setmetatable({1, 2, a = 3, [print] = 4}, {__index = {inherited = 5}}); same = mine");
    EXPECT_TRUE(kept([&] { return scriptor.clearParam("mine"); }));
    EXPECT_EQ(shown("next(mine)"), "nil");
    EXPECT_EQ(shown("rawequal(mine, same)"), "true");
    EXPECT_EQ(shown("mine.inherited"), "5");
    run("number = 5");
    for (const char* name : {static_cast<const char*>(nullptr), "", "missing", "number"})
        EXPECT_FALSE(kept([&] { return scriptor.clearParam(name); })) << (name ? name : "null");
}

TEST_F(Parameters, ConstFactorAndObjectIdNeedTheGlbTable)
{
    EXPECT_FALSE(kept([&] { return scriptor.setConstFactor(2.5); })) << "before the script made it";
    EXPECT_FALSE(kept([&] { return scriptor.setObjectId(5); }));
    EXPECT_EQ(shown("glb"), "nil");
    run("glb = 5");
    EXPECT_FALSE(kept([&] { return scriptor.setConstFactor(2.5); }));
    EXPECT_FALSE(kept([&] { return scriptor.setObjectId(5); }));
    run("glb = {other = 1}");
    EXPECT_TRUE(kept([&] { return scriptor.setConstFactor(2.5); }));
    EXPECT_EQ(shown("glb.factor"), "2.5");
    EXPECT_EQ(shown("glb.other"), "1");
}

TEST_F(Parameters, ObjectIdIsAWholeSixtyFourBitInteger)
{
    run("glb = {}");
    for (const long long id : {0LL, 5LL, -1LL, 9007199254740993LL, std::numeric_limits<long long>::max(),
                               std::numeric_limits<long long>::min()}) {
        const QuorGlibScriptor& constant = scriptor;
        EXPECT_TRUE(kept([&] { return constant.setObjectId(id); }));
        EXPECT_EQ(shown("glb.objectid"), std::to_string(id));
        EXPECT_EQ(shown("type(glb.objectid)"), "userdata");
    }
}

TEST_F(Parameters, TablesOfTheGlobalsMetatableAreFound)
{
    run("setmetatable(_G, {__index = {param = {}, glb = {}, skey = {quantumUnit = {'P1'}}}})");
    EXPECT_TRUE(writeArray(10));
    EXPECT_TRUE(kept([&] { return scriptor.setConstFactor(2); }));
    EXPECT_EQ(shown("param.P1 .. ' ' .. param.P2 .. ' ' .. glb.factor"), "1 20 2");
}

TEST_F(Parameters, WritesPassThroughTheTablesMetamethods)
{
    run("log = ''; param = setmetatable({}, {__newindex = function(t, k, v) log = log .. k .. ' ' rawset(t, "
        "k, v) "
        "end})");
    EXPECT_TRUE(writeValues({{"b", "", KVValue::ofInt(1)}, {"a", "", KVValue::ofInt(1)}}));
    EXPECT_EQ(shown("log"), "b a ") << "in the order of the records";
    run("log = ''");
    EXPECT_TRUE(writeArray(1));
    EXPECT_EQ(shown("log:sub(1, 12)"), "cut P1 P2 P3") << "the cut first, then in ascending order";
}

TEST_F(Parameters, TableThatRaisesIsAFailure)
{
    const char* const raising = "setmetatable({}, {__newindex = function() error('no') end})";
    run(std::string("param = ") + raising + "; glb = " + raising + "; mine = " + raising);
    const geolib::paramt cut{nullptr, 1, 2};
    EXPECT_FALSE(writeArray(1));
    EXPECT_FALSE(writeValues({{"k", "", KVValue::ofInt(1)}}));
    EXPECT_FALSE(kept([&] { return scriptor.setParams(&cut); }));
    EXPECT_FALSE(kept([&] { return scriptor.setConstFactor(1); }));
    EXPECT_FALSE(kept([&] { return scriptor.setObjectId(1); }));
    EXPECT_FALSE(kept([&] { return scriptor.setDoubleParam("mine", "k", 1); }));
    EXPECT_FALSE(kept([&] { return scriptor.setParam("mine", {{"k", "", KVValue::ofInt(1)}}); }));
    EXPECT_TRUE(kept([&] { return scriptor.clearParam("mine"); }));
    EXPECT_THAT(alerts, IsEmpty());
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 0);
}

} // namespace

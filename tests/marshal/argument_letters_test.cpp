#include "letters.h"
#include "marshal_state.h"

#include <QuorScriptor/GlibCallbacks.h>
#include <QuorScriptor/ScriptContext.h>
#include <limits>

namespace {

using namespace quorlua;
using namespace std::string_literals;

class Style final : public GlibTextStyle {
public:
    double height() const override { return 2.5; }
    double getlen(const char*) const override { return 0; }
    double getlen_h(const char*, double) const override { return 0; }
    void setstyle(const char*) override {}
    double getfactor() const override { return 1; }
};

/// What Lua sees of one argument, in the variadic and in the checked call.
class ArgumentLetters : public MarshalState {
protected:
    template<CallFormat format, class T>
    void expectSeen(const T& value, const std::string& expected)
    {
        const SameHeight same(L);
        EXPECT_TRUE(callLuaFunc(L, "seen", format.text, inVariableList(value))) << format.text;
        EXPECT_EQ(whatWasSeen(), expected) << format.text;
        run("what = nil");
        EXPECT_TRUE(callLua<format>(L, "seen", value)) << format.text;
        EXPECT_EQ(whatWasSeen(), expected) << format.text;
    }
};

KVParams record(const char* key, KVValue value, const char* note = "")
{
    return KVParams{key, note, std::move(value)};
}

TEST_F(ArgumentLetters, NumbersArePushedAsNumbers)
{
    expectSeen<"i">(42, "42");
    expectSeen<"i">(-2147483647 - 1, "-2147483648");
    expectSeen<"d">(0.5, "0.5");
    expectSeen<"d">(-std::numeric_limits<double>::infinity(), "-inf");
    run("function same(v) return v == 0.1 end");
    bool same = false;
    EXPECT_TRUE(callLuaFunc(L, "same", "d>n", 0.1, &same));
    EXPECT_TRUE(same);
}

TEST_F(ArgumentLetters, TruthIsPushedAsBoolean)
{
    expectSeen<"n">(true, "true");
    expectSeen<"n">(false, "false");
}

TEST_F(ArgumentLetters, OfTruthOnlyTheLowByteCounts)
{
    EXPECT_TRUE(callLuaFunc(L, "seen", "nn", 0x100, 0x101));
    EXPECT_EQ(whatWasSeen(), "false true");
}

TEST_F(ArgumentLetters, LongIntegersAndIdsArePushedAs64BitIntegers)
{
    constexpr long long most = std::numeric_limits<long long>::max();
    expectSeen<"I">(most, "userdata 9223372036854775807");
    expectSeen<"I">(-5LL, "userdata -5");
    expectSeen<"o">(KxDbObjectId(-5), "userdata -5");
    expectSeen<"o">(KxDbObjectId(), "userdata 0");
}

TEST_F(ArgumentLetters, TextsArePushedAsStrings)
{
    const char* text = "DN50";
    expectSeen<"s">(text, "\"DN50\"");
    expectSeen<"s">(static_cast<const char*>(""), "\"\"");
    expectSeen<"s">(static_cast<const char*>(nullptr), "nil");
    expectSeen<"r">("a\0b"s, "\"a\\0b\"");
    expectSeen<"r">(""s, "\"\"");
}

TEST_F(ArgumentLetters, BuffersArePushedAsStringsOfTheirLength)
{
    char bytes[] = {'a', '\0', 'b', 'c'};
    quor_binary buffer;
    buffer.data = bytes;
    buffer.length = 3;
    expectSeen<"y">(buffer, "\"a\\0b\"");
    buffer.length = 0;
    expectSeen<"y">(buffer, "\"\"");
    buffer.length = -1;
    expectSeen<"y">(buffer, "\"\"");
    expectSeen<"y">(quor_binary{5, nullptr}, "\"\"");
}

TEST_F(ArgumentLetters, BarePointersArePushedAsLightUserdata)
{
    expectSeen<"u">(static_cast<void*>(this), "light");
    EXPECT_TRUE(callLuaFunc(L, "type", "u", static_cast<void*>(nullptr)));
    run("function isNull(p) return type(p) == 'userdata' and tostring(p):match('0x0*$') ~= nil or "
        "tostring(p):match('NULL') "
        "~= nil or tostring(p):match('nil') ~= nil or tostring(p):match(': 0+$') ~= nil end");
    bool null = false;
    EXPECT_TRUE(callLuaFunc(L, "isNull", "u>n", static_cast<void*>(nullptr), &null));
    EXPECT_TRUE(null);
}

TEST_F(ArgumentLetters, PointsVectorsAndMatricesArePushedAsTables)
{
    expectSeen<"p">(KxGePoint3D(1, 2.5, -3), "{1,2.5,-3}");
    expectSeen<"v">(KxGeVector3D(1, 2.5, -3), "{1,2.5,-3}");
    KxGeMatrix3D matrix;
    matrix.setRow(1, 5, 6, 7, 8);
    expectSeen<"X">(matrix, "{{1,0,0,0},{5,6,7,8},{0,0,1,0},{0,0,0,1}}");
}

TEST_F(ArgumentLetters, VectorsOfValuesArePushedAsSequences)
{
    expectSeen<"P">(std::vector<KxGePoint3D>{{1, 2, 3}, {4, 5, 6}}, "{{1,2,3},{4,5,6}}");
    expectSeen<"P">(std::vector<KxGePoint3D>(), "{}");
    expectSeen<"O">(std::vector<KxDbObjectId>{KxDbObjectId(5), KxDbObjectId(6)}, "{userdata 5,userdata 6}");
    expectSeen<"O">(std::vector<KxDbObjectId>(), "{}");
    expectSeen<"S">(std::vector<std::string>{"one", "", "a\0b"s}, "{\"one\",\"\",\"a\"}");
    expectSeen<"S">(std::vector<std::string>(), "{}");
}

TEST_F(ArgumentLetters, PolylinesArePushedAsTablesOfVertices)
{
    QuorPolyDesc vertex;
    vertex.kind = 2;
    vertex.startWidth = 10;
    vertex.endWidth = 20;
    vertex.bulge = 30;
    vertex.point.set(1, 2, 3);
    expectSeen<"g">(std::vector<QuorPolyDesc>{vertex}, "{{2,{1,2,3},30,10,20}}");
    expectSeen<"g">(std::vector<QuorPolyDesc>(), "{}");
    expectSeen<"l">(std::vector<std::vector<QuorPolyDesc>>{{vertex, vertex}, {}},
                    "{{{2,{1,2,3},30,10,20},{2,{1,2,3},30,10,20}},{}}");
    expectSeen<"l">(std::vector<std::vector<QuorPolyDesc>>(), "{}");
}

TEST_F(ArgumentLetters, ParametersArePushedInTheirFourLayouts)
{
    const std::vector<KVParams> records = {record("a", KVValue::ofDouble(1.5), "first"),
                                           record("b", KVValue::ofString("x")),
                                           record("c", KVValue::ofBool(true)),
                                           record("d", KVValue::ofPoint({1, 2, 3})),
                                           record("e", KVValue::ofShort(-7)),
                                           record("f", KVValue::ofInt(70000)),
                                           record("g", KVValue::ofTag(6))};
    expectSeen<"m">(records, "{a=1.5,b=\"x\",c=true,d={1,2,3},e=-7,f=70000}");
    expectSeen<"M">(
        records,
        "{a={\"first\",1.5},b={\"\",\"x\"},c={\"\",true},d={\"\",{1,2,3}},e={\"\",-7},f={\"\",70000}}");
    expectSeen<"a">(records,
                    "{{\"a\",1.5,\"first\"},{\"b\",\"x\",\"\"},{\"c\",true,\"\"},{\"d\",{1,2,3},\"\"},"
                    "{\"e\",-7,\"\"},{\"f\",70000,\"\"}}");
    const std::vector<KVParams> one = {records[0]};
    expectSeen<"B">(std::vector<std::vector<KVParams>>{one, {}}, "{{{\"a\",1.5,\"first\"}},{}}");
    expectSeen<"m">(std::vector<KVParams>(), "{}");
    expectSeen<"M">(std::vector<KVParams>(), "{}");
    expectSeen<"a">(std::vector<KVParams>(), "{}");
    expectSeen<"B">(std::vector<std::vector<KVParams>>(), "{}");
}

TEST_F(ArgumentLetters, MapsOfParametersArePushedWithALaterKeyOverwriting)
{
    const std::vector<std::vector<KVParams>> maps = {
        {record("a", KVValue::ofDouble(1), "note"), record("b", KVValue::ofString("x")),
         record("a", KVValue::ofInt(2))},
        {},
        {record("c", KVValue::ofBool(false)), record("none", KVValue())}};
    expectSeen<"b">(maps, "{{a=2,b=\"x\"},{},{c=false}}");
    expectSeen<"b">(std::vector<std::vector<KVParams>>(), "{}");
}

TEST_F(ArgumentLetters, DatabaseRecordsArePushedAsPairs)
{
    expectSeen<"k">(std::vector<KVData>{{"a", KVValue::ofDouble(1.5)}, {"b", KVValue::ofString("x")}},
                    "{{\"a\",1.5},{\"b\",\"x\"}}");
    expectSeen<"k">(std::vector<KVData>(), "{}");
}

TEST_F(ArgumentLetters, TablesArePushedAsTheyStandInTheirSlots)
{
    push("{1, 2}");
    push("'no table'");
    expectSeen<"c">(lua_tinker::table(L, 1), "{1,2}");
    expectSeen<"t">(lua_tinker::table(L, 1), "{1,2}");
    expectSeen<"c">(lua_tinker::table(L, 2), "\"no table\"");
    run("function keep(a, b) return rawequal(a, b) end");
    lua_tinker::table table(L, 1);
    bool same = false;
    EXPECT_TRUE(callLuaFunc(L, "keep", "ct>n", table.handle(), table.handle(), &same));
    EXPECT_TRUE(same);
    same = false;
    EXPECT_TRUE(callLua<"ct>n">(L, "keep", table, &table, &same));
    EXPECT_TRUE(same);
}

TEST_F(ArgumentLetters, TablesOfAPseudoIndexArePushed)
{
    run("function isGlobals(t) return t == _G end");
    lua_tinker::table globals(L, LUA_GLOBALSINDEX);
    bool same = false;
    EXPECT_TRUE(callLuaFunc(L, "isGlobals", "c>n", globals.handle(), &same));
    EXPECT_TRUE(same);
}

TEST_F(ArgumentLetters, TablesWhoseSlotIsGoneArePushedAsNil)
{
    lua_settop(L, 8);
    push("{}");
    const lua_tinker::table gone(L, 9);
    lua_settop(L, 0);
    EXPECT_TRUE(callLuaFunc(L, "seen", "ici", 1, gone.handle(), 2));
    EXPECT_EQ(whatWasSeen(), "1 nil 2");
}

TEST_F(ArgumentLetters, TablesOfAnotherStateMoveTheArgumentsAfterThemDown)
{
    lua_State* other = luaL_newstate();
    {
        const lua_tinker::table foreign(other);
        push("{'own'}");
        const lua_tinker::table own(L, 1);
        const SameHeight same(L);
        EXPECT_TRUE(callLuaFunc(L, "seen", "icti", 1, foreign.handle(), own.handle(), 2));
        EXPECT_EQ(whatWasSeen(), "1 {\"own\"} 2 nil");
        EXPECT_TRUE(callLua<"ctci">(L, "seen", foreign, own, foreign, 3));
        EXPECT_EQ(whatWasSeen(), "{\"own\"} 3 nil nil");
        EXPECT_TRUE(callLuaFunc(L, "seen", "c", static_cast<void*>(nullptr)));
        EXPECT_EQ(whatWasSeen(), "nil");
        EXPECT_EQ(lua_gettop(other), 1);
    }
    lua_close(other);
}

TEST_F(ArgumentLetters, TablesOfACoroutineAreThoseOfAnotherState)
{
    lua_State* thread = lua_newthread(L);
    const lua_tinker::table foreign(thread);
    EXPECT_TRUE(callLuaFunc(L, "seen", "ci", foreign.handle(), 5));
    EXPECT_EQ(whatWasSeen(), "5 nil");
}

TEST_F(ArgumentLetters, TextStylesArePushedAsObjectsOfTheirClass)
{
    lua_tinker::class_add<GlibTextStyle>(L, "GlibTextStyle");
    lua_tinker::class_def<GlibTextStyle>(L, "height", &GlibTextStyle::height);
    run("function heightOf(style) return style:height(), style end");
    const Style style;
    const GlibTextStyle* base = &style;
    double height = 0;
    void* block = nullptr;
    EXPECT_TRUE(callLuaFunc(L, "heightOf", "x>du", base, &height, &block));
    EXPECT_EQ(height, 2.5);
    EXPECT_NE(block, nullptr);
    height = 0;
    EXPECT_TRUE(callLua<"x>d">(L, "heightOf", &style, &height));
    EXPECT_EQ(height, 2.5);
    push_txtstyle(L, &style);
    ASSERT_EQ(lua_gettop(L), 1);
    run("function sameClass(a, b) return getmetatable(a) == getmetatable(b) end");
    bool same = false;
    EXPECT_TRUE(callLuaFunc(L, "sameClass", "xt>n", base, lua_tinker::table(L, 1).handle(), &same));
    EXPECT_TRUE(same);
    EXPECT_TRUE(callLuaFunc(L, "seen", "x", static_cast<GlibTextStyle*>(nullptr)));
    EXPECT_EQ(whatWasSeen(), "nil");
}

TEST_F(ArgumentLetters, FollowEachOtherInOrder)
{
    const std::string text = "r";
    const KxGePoint3D point(1, 2, 3);
    EXPECT_TRUE(callLuaFunc(L, "seen", "isdnrpI", 1, "two", 3.5, true, &text, &point, 7LL));
    EXPECT_EQ(whatWasSeen(), "1 \"two\" 3.5 true \"r\" {1,2,3} userdata 7");
}

} // namespace

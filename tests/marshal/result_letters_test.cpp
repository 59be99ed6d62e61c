#include "../neutral_locale.h"
#include "letters.h"
#include "marshal_state.h"

#include <QuorPrimary/QuorPrimary.h>
#include <charconv>
#include <cmath>
#include <memory>
#include <optional>

namespace {

using namespace quorlua;
using namespace std::string_literals;

// One value of every Lua type, and the numbers and texts that letters tell apart.
constexpr const char* values[] = {"nil",        "true",      "false",    "12",
                                  "3.9",        "'12'",      "' 0x10 '", "'DN50'",
                                  "''",         "{}",        "describe", "coroutine.create(describe)",
                                  "newproxy()", "int64(12)", "light"};
constexpr std::size_t valueCount = std::size(values);

/// What became of an output, for each of `values`; "-" where it is untouched.
using Expected = const char* const[valueCount];

std::string text(int value)
{
    return std::to_string(value);
}
std::string text(long long value)
{
    return std::to_string(value);
}
std::string text(bool value)
{
    return value ? "true" : "false";
}
std::string text(double value)
{
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}
std::string text(const std::string& value)
{
    return "'" + value + "'";
}
std::string text(const KxDbObjectId& value)
{
    return std::to_string(value.toInt());
}

char untouchedText[] = "untouched";

class ResultLetters : public MarshalState {
protected:
    /// Calls for one result, which `true` follows; the call must be true and read that, too.
    template<class Output>
    void read(const std::string& letter, const std::string& expression, Output* output)
    {
        answer(expression + ", true");
        bool next = false;
        const SameHeight same(L);
        EXPECT_TRUE(callLuaFunc(L, "answer", (">" + letter + "n").c_str(), output, &next))
            << letter << expression;
        EXPECT_TRUE(next) << letter << expression;
        next = false;
    }

    template<class Output>
    void expectEach(const char* letter, const Output& before, Expected& expected)
    {
        for (std::size_t i = 0; i < valueCount; ++i) {
            Output output = before;
            read(letter, values[i], &output);
            const std::string now = text(output);
            if (expected[i] == "-"s)
                EXPECT_EQ(output, before) << letter << " of " << values[i];
            else
                EXPECT_EQ(now, expected[i]) << letter << " of " << values[i];
        }
    }

    /// A letter for tables leaves its output alone for everything else.
    template<class Output>
    void expectOnlyTables(const char* letter, const Output& before)
    {
        for (const char* value : values) {
            if (value == "{}"s) continue;
            Output output = before;
            read(letter, value, &output);
            EXPECT_EQ(output, before) << letter << " of " << value;
        }
    }

    /// The number that an expression gives where texts of numbers have a point; none for another value.
    std::optional<double> byInterpreter(const std::string& expression)
    {
        const NeutralLocale neutral;
        run("return " + expression, 1);
        std::optional<double> number;
        if (lua_type(L, -1) == LUA_TNUMBER) number = lua_tonumber(L, -1);
        lua_pop(L, 1);
        return number;
    }

    template<CallFormat format, class Output>
    Output checked(const std::string& expression)
    {
        answer(expression);
        Output output{};
        const SameHeight same(L);
        EXPECT_TRUE(callLua<format>(L, "answer", &output)) << format.text << " of " << expression;
        return output;
    }
};

//                             nil      true     false    12      3.9     '12'    ' 0x10 '   'DN50'    ''
//                             {}   function  thread  proxy  int64  light
TEST_F(ResultLetters, IntegersComeFromBooleansAndNumbers)
{
    expectEach("i", 77, {"-", "1", "0", "12", "3", "-", "-", "-", "-", "-", "-", "-", "-", "-", "-"});
}

TEST_F(ResultLetters, IntegersAreDefinedForEveryNumber)
{
    const struct {
        const char* number;
        int value;
    } cases[] = {{"-3.9", -3},
                 {"0/0", 0},
                 {"1/0", 0},
                 {"-1/0", 0},
                 {"1e300", 0},
                 {"-1e300", 0},
                 {"2^63", 0},
                 {"2^31", -2147483647 - 1},
                 {"2^32 + 5", 5},
                 {"-2^32 - 5", -5},
                 {"2147483647", 2147483647}};
    for (const auto& [number, value] : cases) {
        int output = 77;
        read("i", number, &output);
        EXPECT_EQ(output, value) << number;
        EXPECT_EQ((checked<">i", int>(number)), value) << number;
    }
}

TEST_F(ResultLetters, TruthComesFromBooleansAlone)
{
    expectEach("n", true, {"-", "true", "false", "-", "-", "-", "-", "-", "-", "-", "-", "-", "-", "-", "-"});
    expectEach("n", false,
               {"-", "true", "false", "-", "-", "-", "-", "-", "-", "-", "-", "-", "-", "-", "-"});
}

TEST_F(ResultLetters, NumbersComeFromNumbersAndNumericTexts)
{
    expectEach("d", 77.5, {"-", "-", "-", "12", "3.9", "12", "16", "-", "-", "-", "-", "-", "-", "-", "-"});
}

TEST_F(ResultLetters, NumericTextsAreThoseOfTheInterpreter)
{
    const struct {
        const char* expression;
        double value;
    } numeric[] = {{"'1.5'", 1.5},        {"'-1.5e2'", -150}, {"'+7'", 7},    {"' \\t\\n7 \\r'", 7},
                   {"'.5'", 0.5},         {"'5.'", 5},        {"'0x1F'", 31}, {"'-0X1f'", -31},
                   {"'1e400'", HUGE_VAL}, {"'0.1'", 0.1}};
    for (const auto& [expression, value] : numeric) {
        double output = 77.5;
        read("d", expression, &output);
        EXPECT_EQ(output, value) << expression;
        EXPECT_EQ(byInterpreter(expression + " + 0"s), value) << expression;
    }
    for (const char* expression :
         {"'1,5'", "'1.5x'", "'x1.5'", "'--1'", "'+-1'", "'0x'", "'0x-1'", "'1 2'", "' '", "'-'"}) {
        double output = 77.5;
        read("d", expression, &output);
        EXPECT_EQ(output, 77.5) << expression;
        EXPECT_EQ(byInterpreter("tonumber("s + expression + ")"), std::nullopt) << expression;
    }
}

// What a double cannot hold is endless or nothing, however it is written.
TEST_F(ResultLetters, NumericTextsBeyondADoubleAreItsEnds)
{
    const std::string manyDigits(400, '9');
    const std::string manyZeros(400, '0');
    const std::pair<std::string, double> rows[] = {
        {"1e-400", 0.0},
        {"-1e400", -HUGE_VAL},
        {manyDigits, HUGE_VAL},
        {"." + manyZeros + "1", 0.0},
        {"0." + manyZeros + "1", 0.0},
        {"0x1p-5000", 0.0},
        {"0x1p5000", HUGE_VAL},
        {"0x" + manyDigits, HUGE_VAL},
    };
    for (const auto& [text, value] : rows) {
        double output = 77.5;
        read("d", "'" + text + "'", &output);
        EXPECT_EQ(output, value) << text;
    }
}

TEST_F(ResultLetters, LongIntegersComeFromUserdataAndNil)
{
    expectEach("I", 77LL, {"0", "-", "-", "-", "-", "-", "-", "-", "-", "-", "-", "-", "0", "12", "0"});
}

TEST_F(ResultLetters, IdsComeFromUserdataAndNilButNotFromNumbers)
{
    expectEach("o", KxDbObjectId(77),
               {"0", "-", "-", "-", "-", "-", "-", "-", "-", "-", "-", "-", "0", "12", "0"});
}

TEST_F(ResultLetters, StringsComeFromTextsAndNumbers)
{
    expectEach(
        "r", "before"s,
        {"-", "-", "-", "'12'", "'3.9'", "'12'", "' 0x10 '", "'DN50'", "''", "-", "-", "-", "-", "-", "-"});
    std::string output;
    read("r", "'a\\0b'", &output);
    EXPECT_EQ(output, "a\0b"s);
    read("r", "-1/0", &output);
    EXPECT_EQ(output, "-inf");
    read("r", "0.1", &output);
    EXPECT_EQ(output, "0.1");
    read("r", "1/3", &output);
    EXPECT_EQ(output, "0.33333333333333");
    read("r", "1e15", &output);
    EXPECT_EQ(output, "1e+15");
}

TEST_F(ResultLetters, TextsComeAsBlocksToFree)
{
    Expected expected = {"null", "-", "-", "12", "3.9", "12", " 0x10 ", "DN50",
                         "",     "-", "-", "-",  "-",   "-",  "-"};
    for (std::size_t i = 0; i < valueCount; ++i) {
        char* output = untouchedText;
        read("s", values[i], &output);
        if (expected[i] == "-"s) {
            EXPECT_EQ(output, untouchedText) << values[i];
        } else if (expected[i] == "null"s) {
            EXPECT_EQ(output, nullptr) << values[i];
        } else {
            EXPECT_STREQ(output, expected[i]) << values[i];
            std::free(output);
        }
    }
}

TEST_F(ResultLetters, TextsOutliveTheirLuaString)
{
    char* output = checked<">s", char*>("string.rep('ab', 3) .. '\\0cut'");
    lua_gc(L, LUA_GCCOLLECT, 0);
    EXPECT_STREQ(output, "ababab");
    std::free(output);
}

TEST_F(ResultLetters, BuffersComeAsBlocksToFree)
{
    Expected expected = {"-", "-", "-", "12", "3.9", "12", " 0x10 ", "DN50",
                         "",  "-", "-", "-",  "-",   "-",  "-"};
    for (std::size_t i = 0; i < valueCount; ++i) {
        quor_binary output{77, untouchedText};
        read("y", values[i], &output);
        if (expected[i] == "-"s) {
            EXPECT_EQ(output.data, untouchedText) << values[i];
            EXPECT_EQ(output.length, 77) << values[i];
        } else {
            EXPECT_EQ(std::string(output.data ? output.data : "", static_cast<std::size_t>(output.length)),
                      expected[i])
                << values[i];
            EXPECT_EQ(output.data == nullptr, output.length == 0) << values[i];
            std::free(output.data);
        }
    }
    const auto bytes = checked<">y", quor_binary>("'a\\0b'");
    EXPECT_EQ(std::string(bytes.data, static_cast<std::size_t>(bytes.length)), "a\0b"s);
    std::free(bytes.data);
}

TEST_F(ResultLetters, BarePointersComeFromAnythingAndAreNullOfWhatIsNoUserdata)
{
    for (const char* value : values) {
        void* output = &output;
        read("u", value, &output);
        const bool userdata = value == "newproxy()"s || value == "int64(12)"s || value == "light"s;
        if (userdata)
            EXPECT_TRUE(output && output != &output) << value;
        else
            EXPECT_EQ(output, nullptr) << value;
    }
    EXPECT_EQ((checked<">u", void*>("light")), this);
}

TEST_F(ResultLetters, GeometryComesFromTablesAndIsTheDefaultOfBadOnes)
{
    expectOnlyTables("p", KxGePoint3D(7, 8, 9));
    expectOnlyTables("v", KxGeVector3D(7, 8, 9));
    KxGeMatrix3D other;
    other.setRow(0, 7, 7, 7, 7);
    expectOnlyTables("X", other);

    EXPECT_EQ((checked<">p", KxGePoint3D>("{1, 2.5, -3}")), KxGePoint3D(1, 2.5, -3));
    EXPECT_EQ((checked<">v", KxGeVector3D>("{1, 2.5, -3}")), KxGeVector3D(1, 2.5, -3));
    KxGeMatrix3D matrix;
    matrix.setRow(1, 5, 6, 7, 8);
    EXPECT_EQ((checked<">X", KxGeMatrix3D>("{{1,0,0,0},{5,6,7,8},{0,0,1,0},{0,0,0,1}}")), matrix);

    KxGePoint3D point(7, 8, 9);
    read("p", "{1, 2}", &point);
    EXPECT_EQ(point, KxGePoint3D());
    KxGeVector3D vector(7, 8, 9);
    read("v", "{1, 2, '3'}", &vector);
    EXPECT_EQ(vector, KxGeVector3D());
    read("X", "{{1,0,0,0},{5,6,7,8},{0,0,1,0}}", &other);
    EXPECT_EQ(other, KxGeMatrix3D());
    read("X", "{{1,0,0,0},{5,6,7,8},{0,0,1,0},{1}}", &other);
    EXPECT_EQ(other, matrix);
}

TEST_F(ResultLetters, VectorsAreReplacedByWhatTheirTableHolds)
{
    const std::vector<KxGePoint3D> points = {{7, 8, 9}};
    const std::vector<KxDbObjectId> ids = {KxDbObjectId(7)};
    const std::vector<std::string> texts = {"before"};
    expectOnlyTables("P", points);
    expectOnlyTables("O", ids);
    expectOnlyTables("S", texts);

    auto outPoints = points;
    read("P", "{{1,2,3}, 'bad', {4,5,6}}", &outPoints);
    EXPECT_EQ(outPoints, (std::vector<KxGePoint3D>{{1, 2, 3}, {4, 5, 6}}));
    read("P", "{}", &outPoints);
    EXPECT_TRUE(outPoints.empty());
    auto outIds = ids;
    read("O", "{int64(5), 'bad', 6}", &outIds);
    EXPECT_EQ(outIds, (std::vector<KxDbObjectId>{KxDbObjectId(5), KxDbObjectId(6)}));
    read("O", "{}", &outIds);
    EXPECT_TRUE(outIds.empty());
    auto outTexts = texts;
    read("S", "{'one', 2, 'three'}", &outTexts);
    EXPECT_EQ(outTexts, (std::vector<std::string>{"one", "three"}));
    read("S", "{}", &outTexts);
    EXPECT_TRUE(outTexts.empty());
}

TEST_F(ResultLetters, PolylinesAreReplacedByTheVerticesUpToABadOne)
{
    QuorPolyDesc vertex;
    vertex.kind = 2;
    vertex.startWidth = 10;
    vertex.endWidth = 20;
    vertex.bulge = 30;
    vertex.point.set(1, 2, 3);
    std::vector<QuorPolyDesc> polyline = {QuorPolyDesc(), QuorPolyDesc()};
    std::vector<std::vector<QuorPolyDesc>> polylines = {{}, {}, {}, {}};
    expectOnlyTables("g", polyline);
    expectOnlyTables("l", polylines);

    read("g", "{{2, {1,2,3}, 30, 10, 20}, {2}, {2, {1,2,3}}}", &polyline);
    EXPECT_EQ(polyline, std::vector<QuorPolyDesc>{vertex});
    read("g", "{}", &polyline);
    EXPECT_TRUE(polyline.empty());

    const std::string good = "{{2, {1,2,3}, 30, 10, 20}, {2, {1,2,3}, 30, 10, 20}}";
    read("l", "{" + good + ", {}, " + good + "}", &polylines);
    EXPECT_EQ(polylines, (std::vector<std::vector<QuorPolyDesc>>{{vertex, vertex}, {}, {vertex, vertex}}));
    for (const char* bad : {"12", "{{2}}", "'text'", "{{2, {1,2,3}}, 5}"}) {
        read("l", "{" + good + ", " + bad + ", " + good + "}", &polylines);
        EXPECT_EQ(polylines, (std::vector<std::vector<QuorPolyDesc>>{{vertex, vertex}})) << bad;
    }
    read("l", "{}", &polylines);
    EXPECT_TRUE(polylines.empty());
}

TEST_F(ResultLetters, ParametersAreReadInTheirFourLayouts)
{
    const KVParams before{"before", "", KVValue::ofInt(1)};
    const KVParams a{"a", "note", KVValue::ofDouble(1.5)};
    const KVParams bare{"a", "", KVValue::ofDouble(1.5)};
    std::vector<KVParams> records = {before};
    std::vector<std::vector<KVParams>> lists = {{before}};
    for (const char* letter : {"m", "M", "a"})
        expectOnlyTables(letter, records);
    for (const char* letter : {"B", "b"})
        expectOnlyTables(letter, lists);

    read("m", "{a = 1.5}", &records);
    EXPECT_EQ(records, std::vector<KVParams>{bare});
    read("M", "{a = {'note', 1.5}}", &records);
    EXPECT_EQ(records, std::vector<KVParams>{a});
    read("a", "{{'a', 1.5, 'note'}, {'a', 1.5}}", &records);
    EXPECT_EQ(records, (std::vector<KVParams>{a, bare}));
    read("B", "{{{'a', 1.5, 'note'}}, {}}", &lists);
    EXPECT_EQ(lists, (std::vector<std::vector<KVParams>>{{a}, {}}));
    for (const char* letter : {"m", "M", "a"}) {
        records = {before};
        read(letter, "{}", &records);
        EXPECT_TRUE(records.empty()) << letter;
    }
    for (const char* letter : {"B", "b"}) {
        lists = {{before}};
        read(letter, "{}", &lists);
        EXPECT_TRUE(lists.empty()) << letter;
    }
}

TEST_F(ResultLetters, MapsTakeEveryPairAndEndAtTheFirstValueThatIsNoTable)
{
    std::vector<std::vector<KVParams>> maps;
    const struct {
        const char* pair;
        KVParams record;
    } pairs[] = {{"a = 1.5", {"a", "", KVValue::ofDouble(1.5)}},
                 {"a = 'x\\0y'", {"a", "", KVValue::ofString("x\0y"s)}},
                 {"a = '12'", {"a", "", KVValue::ofString("12")}},
                 {"a = true", {"a", "", KVValue()}},
                 {"a = {1, 2, 3}", {"a", "", KVValue()}},
                 {"a = print", {"a", "", KVValue()}},
                 {"[2.5] = 7", {"2.5", "", KVValue::ofDouble(7)}},
                 {"[1] = 7", {"1", "", KVValue::ofDouble(7)}},
                 {"[true] = 7", {"", "", KVValue::ofDouble(7)}},
                 {"[{}] = 7", {"", "", KVValue::ofDouble(7)}}};
    for (const auto& [pair, record] : pairs) {
        read("b", std::string("{{") + pair + "}, {}}", &maps);
        EXPECT_EQ(maps, (std::vector<std::vector<KVParams>>{{record}, {}})) << pair;
    }
    read("b", "{only = {a = 1}}", &maps);
    EXPECT_EQ(maps, (std::vector<std::vector<KVParams>>{{{"a", "", KVValue::ofDouble(1)}}}));
    read("b", "{{a = 1}, 'end', {b = 2}}", &maps);
    EXPECT_EQ(maps, (std::vector<std::vector<KVParams>>{{{"a", "", KVValue::ofDouble(1)}}}));
    read("b", "{{10, 20, 30, [40] = 50}}", &maps);
    ASSERT_EQ(maps.size(), 1u);
    EXPECT_EQ(maps[0].size(), 4u);
}

TEST_F(ResultLetters, DatabaseRecordsAreReadAsPairs)
{
    const std::vector<KVData> before = {{"before", KVValue()}};
    expectOnlyTables("k", before);
    auto output = before;
    read("k", "{{'a', 1.5}, {'b', 'x'}}", &output);
    EXPECT_EQ(output, (std::vector<KVData>{{"a", KVValue::ofDouble(1.5)}, {"b", KVValue::ofString("x")}}));
    read("k", "{}", &output);
    EXPECT_TRUE(output.empty());
}

TEST_F(ResultLetters, PrimitivesAreMadeFromRecordsAndReplaceTheOutput)
{
    std::vector<QuorPrimary*> output = {nullptr, nullptr};
    expectOnlyTables("T", output);
    read("T", "{{16, {0,0,0}, {1,0,0}}, {'no record'}, {16, {0,0,0}, {0,1,0}}}", &output);
    ASSERT_EQ(output.size(), 2u);
    for (QuorPrimary* primary : output) {
        const std::unique_ptr<QuorPrimary> owned(primary);
        EXPECT_NE(primary, nullptr);
    }
    read("T", "{}", &output);
    EXPECT_TRUE(output.empty());
}

TEST_F(ResultLetters, TablesLeaveTheirHandleAloneForOtherValues)
{
    push("{'own'}");
    for (const char* value : values) {
        if (value == "{}"s) continue;
        lua_tinker::table handle(L, 1);
        lua_tinker::table* made = nullptr;
        read("c", value, &handle);
        read("t", value, &made);
        EXPECT_EQ(handle.index(), 1) << value;
        EXPECT_EQ(made, nullptr) << value;
    }
}

TEST_F(ResultLetters, EveryCheckedFormReads)
{
    EXPECT_EQ((checked<">n", bool>("true")), true);
    EXPECT_EQ((checked<">d", double>("'1.5'")), 1.5);
    EXPECT_EQ((checked<">I", long long>("int64('9007199254740993')")), 9007199254740993LL);
    EXPECT_EQ((checked<">o", KxDbObjectId>("int64(5)")), KxDbObjectId(5));
    EXPECT_EQ((checked<">r", std::string>("'text'")), "text");
    EXPECT_EQ((checked<">P", std::vector<KxGePoint3D>>("{{1,2,3}}")).size(), 1u);
    EXPECT_EQ((checked<">O", std::vector<KxDbObjectId>>("{1}")).size(), 1u);
    EXPECT_EQ((checked<">S", std::vector<std::string>>("{'a'}")).size(), 1u);
    EXPECT_EQ((checked<">g", std::vector<QuorPolyDesc>>("{{1,{1,2,3}}}")).size(), 1u);
    EXPECT_EQ((checked<">l", std::vector<std::vector<QuorPolyDesc>>>("{{}}")).size(), 1u);
    EXPECT_EQ((checked<">m", std::vector<KVParams>>("{a=1}")).size(), 1u);
    EXPECT_EQ((checked<">M", std::vector<KVParams>>("{a={'',1}}")).size(), 1u);
    EXPECT_EQ((checked<">a", std::vector<KVParams>>("{{'a',1}}")).size(), 1u);
    EXPECT_EQ((checked<">B", std::vector<std::vector<KVParams>>>("{{}}")).size(), 1u);
    EXPECT_EQ((checked<">b", std::vector<std::vector<KVParams>>>("{{}}")).size(), 1u);
    EXPECT_EQ((checked<">k", std::vector<KVData>>("{{'a',1}}")).size(), 1u);
    EXPECT_EQ((checked<">T", std::vector<QuorPrimary*>>("{}")).size(), 0u);
}

} // namespace

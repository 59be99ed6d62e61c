#include "scriptor_fixture.h"

#include <limits>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Results : public Scriptor {
protected:
    /// Leaves a value on top of the stack while the work reads it.
    template<class Work>
    int reading(const std::string& value, Work work)
    {
        run("return " + value, 1);
        const int status = kept([&] { return static_cast<int>(work()); });
        lua_pop(state(), 1);
        return status;
    }
    std::vector<Keypoint> keypointsOf(const std::string& table)
    {
        std::vector<Keypoint> keypoints(1);
        EXPECT_EQ(reading(table, [&] { return scriptor.parseKeypoint(keypoints, -1); }), Quor::Ok) << table;
        return keypoints;
    }
};

TEST_F(Results, PrimitivesAreReadFromTheTop)
{
    Primitives primitives;
    primitives.push_back(nullptr);
    draw("{{300, 7}}", primitives);
    EXPECT_EQ(reading("{{16, {0, 0, 0}, {1, 0, 0}}}", [&] { return scriptor.parsePrimary(primitives); }),
              Quor::Ok);
    ASSERT_EQ(primitives.size(), 1u) << "the list was cleared";
    EXPECT_EQ(primitives[0]->getColor(), 7);
    EXPECT_EQ(currentColour(), 257) << "the context is reset";
}

TEST_F(Results, NoTableOfPrimitivesIsAFailure)
{
    for (const char* value : {"nil", "5", "'text'", "true", "print"}) {
        Primitives primitives;
        primitives.push_back(nullptr);
        draw("{{300, 7}}", primitives);
        kxcom::clearQuorLastError();
        EXPECT_EQ(reading(value, [&] { return scriptor.parsePrimary(primitives); }), Quor::ScriptFailed);
        EXPECT_THAT(primitives, IsEmpty()) << value;
        EXPECT_EQ(kxcom::getQuorLastErrorCode(), 2007) << value;
        EXPECT_EQ(utf8(kxcom::getQuorLastErrorText()), "图形库脚本未返回结果");
        EXPECT_EQ(currentColour(), 7) << "the context is left";
    }
}

TEST_F(Results, AreMissingFromAnEmptyStack)
{
    Primitives primitives;
    std::vector<Keypoint> keypoints;
    bool yes = true;
    int number = 5;
    lua_settop(state(), 0);
    EXPECT_EQ(scriptor.parsePrimary(primitives), Quor::ScriptFailed);
    EXPECT_EQ(scriptor.justParsePrimary(primitives), Quor::InvalidArgument);
    EXPECT_EQ(scriptor.parseKeypoint(keypoints, -1), Quor::ScriptFailed);
    EXPECT_EQ(scriptor.parseRtn(yes), Quor::ScriptFailed);
    EXPECT_EQ(scriptor.parseRtn(number), Quor::ScriptFailed);
    EXPECT_EQ(height(), 0);
    lua_newtable(state());
}

TEST_F(Results, JustParsingAppendsAndLeavesTheContext)
{
    Primitives primitives;
    const char* const records = "{{300, 7}, {16, {0, 0, 0}, {1, 0, 0}}}";
    EXPECT_EQ(reading(records, [&] { return scriptor.justParsePrimary(primitives); }), Quor::Ok);
    EXPECT_EQ(reading(records, [&] { return scriptor.justParsePrimary(primitives); }), Quor::Ok);
    EXPECT_EQ(primitives.size(), 2u);
    EXPECT_EQ(currentColour(), 7);
    for (const char* value : {"nil", "5", "'text'"})
        EXPECT_EQ(reading(value, [&] { return scriptor.justParsePrimary(primitives); }),
                  Quor::InvalidArgument);
    EXPECT_EQ(primitives.size(), 2u);
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 0);
    primitives.free();
    EXPECT_EQ(reading("{}", [&] { return scriptor.parsePrimary(primitives); }), Quor::Ok)
        << "resets the context";
}

TEST_F(Results, KeypointsAreTheEntriesMarkedWithOne)
{
    EXPECT_THAT(keypointsOf("{{1, 5, {1, 2, 3}}, {2, 6, {1, 2, 3}}, {1, 7, {4, 5, 6}, 'more', 'fields'}}"),
                ElementsAre(Keypoint{5, {1, 2, 3}}, Keypoint{7, {4, 5, 6}}));
    EXPECT_THAT(keypointsOf("{named = {1, 5, {1, 2, 3}}}"), ElementsAre(Keypoint{5, {1, 2, 3}}));
    EXPECT_THAT(keypointsOf("{}"), IsEmpty());
}

TEST_F(Results, KeypointsThatAreIncompleteAreSkipped)
{
    for (const char* entry : {"5",
                              "'text'",
                              "true",
                              "print",
                              "{}",
                              "{1}",
                              "{1, 5}",
                              "{1, 5, nil}",
                              "{2, 5, {1, 2, 3}}",
                              "{0, 5, {1, 2, 3}}",
                              "{-1, 5, {1, 2, 3}}",
                              "{'1', 5, {1, 2, 3}}",
                              "{true, 5, {1, 2, 3}}",
                              "{nil, 5, {1, 2, 3}}",
                              "{1, '5', {1, 2, 3}}",
                              "{1, {}, {1, 2, 3}}",
                              "{1, 5, 6}",
                              "{1, 5, {}}",
                              "{1, 5, {1, 2}}",
                              "{1, 5, {1, 2, '3'}}",
                              "{1, 5, {x = 1, y = 2, z = 3}}",
                              "{0.5, 5, {1, 2, 3}}",
                              "{2^32 + 2, 5, {1, 2, 3}}",
                              "{0/0, 5, {1, 2, 3}}",
                              "{1e300, 5, {1, 2, 3}}"})
        EXPECT_THAT(keypointsOf(std::string("{") + entry + ", {1, 9, {7, 8, 9}}}"),
                    ElementsAre(Keypoint{9, {7, 8, 9}}))
            << entry;
}

TEST_F(Results, KeypointNumbersAreNarrowedToSixteenBits)
{
    const std::pair<const char*, short> cases[] = {
        {"70000", 4464}, {"32767", 32767},  {"32768", -32768}, {"65535", -1}, {"65536", 0},
        {"-1", -1},      {"-32769", 32767}, {"2.9", 2},        {"-2.9", -2},  {"2^32 + 5", 5},
        {"0/0", 0},      {"1e300", 0},      {"-math.huge", 0}};
    for (const auto& [id, number] : cases)
        EXPECT_THAT(keypointsOf(std::string("{{1, ") + id + ", {1, 2, 3}}}"),
                    ElementsAre(Keypoint{number, {1, 2, 3}}))
            << id;
}

TEST_F(Results, KeypointMarkIsCutToAnInteger)
{
    EXPECT_THAT(keypointsOf("{{1.9, 5, {1, 2, 3}}}"), ElementsAre(Keypoint{5, {1, 2, 3}}));
}

TEST_F(Results, KeypointsAreReadPastMetamethods)
{
    EXPECT_THAT(keypointsOf("{setmetatable({}, {__index = function() error('x') end}),"
                            " setmetatable({1, 5, {1, 2, 3}}, {__index = error})}"),
                ElementsAre(Keypoint{5, {1, 2, 3}}));
}

TEST_F(Results, KeypointsAreFoundByIndexFromEitherEnd)
{
    run("return {{1, 1, {0, 0, 0}}}, {{1, 2, {0, 0, 0}}}, 5", 3);
    const std::pair<int, int> expected[] = {{2, 1}, {3, 2}, {-2, 2}, {-3, 1}, {-4, -1}, {1, -1}};
    std::vector<Keypoint> keypoints;
    for (const auto& [at, id] : expected) {
        const int index = at;
        EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.parseKeypoint(keypoints, index)); }), Quor::Ok);
        EXPECT_EQ(keypoints.empty() ? -1 : keypoints[0].first, id) << index;
    }
    for (const int index :
         {4, -1, 0, 5, -5, 100, -100, LUA_REGISTRYINDEX, LUA_ENVIRONINDEX, LUA_GLOBALSINDEX,
          lua_upvalueindex(1), std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        keypoints.resize(1);
        EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.parseKeypoint(keypoints, index)); }),
                  Quor::ScriptFailed)
            << index;
        EXPECT_THAT(keypoints, IsEmpty()) << "cleared first";
    }
    lua_settop(state(), 1);
}

TEST_F(Results, BooleanIsReadFromTheTop)
{
    bool answer = false;
    EXPECT_EQ(reading("true", [&] { return scriptor.parseRtn(answer); }), Quor::Ok);
    EXPECT_TRUE(answer);
    EXPECT_EQ(reading("false", [&] { return scriptor.parseRtn(answer); }), Quor::Ok);
    EXPECT_FALSE(answer);
    for (const bool before : {false, true}) {
        answer = before;
        for (const char* value : {"1", "0", "nil", "'true'", "{}", "print"})
            EXPECT_EQ(reading(value, [&] { return scriptor.parseRtn(answer); }), Quor::ScriptFailed) << value;
        EXPECT_EQ(answer, before);
    }
}

TEST_F(Results, IntegerIsReadFromTheTop)
{
    const std::pair<const char*, int> numbers[] = {{"5", 5},
                                                   {"-5", -5},
                                                   {"5.9", 5},
                                                   {"-5.9", -5},
                                                   {"2147483647", 2147483647},
                                                   {"-2147483648", std::numeric_limits<int>::min()},
                                                   {"2^32 + 7", 7},
                                                   {"0/0", 0},
                                                   {"1e300", 0},
                                                   {"math.huge", 0}};
    for (const auto& [text, number] : numbers) {
        int answer = 99;
        EXPECT_EQ(reading(text, [&] { return scriptor.parseRtn(answer); }), Quor::Ok) << text;
        EXPECT_EQ(answer, number) << text;
    }
    for (const char* value : {"nil", "true", "'5'", "{}", "print"}) {
        int answer = 99;
        EXPECT_EQ(reading(value, [&] { return scriptor.parseRtn(answer); }), Quor::ScriptFailed) << value;
        EXPECT_EQ(answer, 99) << value;
    }
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 0);
}

TEST_F(Results, SmartLineTypeIsAFieldOfGlb)
{
    const std::pair<const char*, const char*> types[] = {
        {"{smrtlntype = 'PIPE'}", "PIPE"},
        {"{smrtlntype = ''}", ""},
        {"{smrtlntype = 5}", "5"},
        {"{smrtlntype = 0.5}", "0.5"},
        {"setmetatable({}, {__index = {smrtlntype = 'up'}})", "up"},
    };
    for (const auto& [table, expected] : types) {
        std::string type = "old";
        run(std::string("glb = ") + table);
        EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.getSmrtlnType(type)); }), Quor::Ok) << table;
        EXPECT_EQ(type, expected);
    }
    std::string type;
    run("glb = {smrtlntype = 'a\\0b'}");
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.getSmrtlnType(type)); }), Quor::Ok);
    EXPECT_EQ(type, std::string("a\0b", 3));
}

TEST_F(Results, SmartLineTypeMayBeMissing)
{
    for (const char* glb :
         {"nil", "{}", "{smrtlntype = nil}", "5", "'text'", "true", "{smrtlntype = {}}",
          "{smrtlntype = true}", "setmetatable({}, {__index = function() error('x') end})"}) {
        run(std::string("glb = ") + glb);
        std::string type = "old";
        EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.getSmrtlnType(type)); }), Quor::ValueMissing)
            << glb;
        EXPECT_EQ(type, "old") << glb;
    }
    EXPECT_THAT(alerts, IsEmpty());
}

} // namespace

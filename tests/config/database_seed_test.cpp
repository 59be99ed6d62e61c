#include "config_fixture.h"

namespace {

using QuorAuth::Module;
using quorconfig::AnswerOrigin;
using quorconfig::getProjectDbSeed;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr short untouched = -7;

class DatabaseSeed : public Config {
protected:
    void define(const std::string& function)
    {
        takeFreshSlots();
        EXPECT_TRUE(loadProject("getProjectDbSeed = " + function));
    }
};

struct Seed {
    const char* value;
    bool isAnswer;
    short seed;
};

TEST_F(DatabaseSeed, IsTheLowSixteenBitsOfAnIntegerFromZero)
{
    constexpr Seed seeds[] = {
        {"0", true, 0},
        {"1", true, 1},
        {"32767", true, 32767},
        {"32768", true, -32768},
        {"40000", true, -25536},
        {"65535", true, -1},
        {"65536", true, 0},
        {"70000", true, 4464},
        {"2147483647", true, -1},
        {"3.9", true, 3},
        {"0.5", true, 0},
        {"-0.5", true, 0},
        {"-0", true, 0},
        {"-1", false, untouched},
        {"-1.5", false, untouched},
        {"-70000", false, untouched},
        {"-2147483648", false, untouched},
        // As an integer of 32 bits.
        {"2147483648", false, untouched},
        {"4294967295", false, untouched},
        {"4294967296", true, 0},
        {"4294967296 + 5", true, 5},
        {"9007199254740992", true, 0},
        // What no integer of 64 bits can hold is the lowest of them.
        {"1e300", true, 0},
        {"-1e300", true, 0},
        {"1/0", true, 0},
        {"-1/0", true, 0},
        {"0/0", true, 0},
        {"true", true, 1},
        {"false", true, 0},
        // No numbers.
        {"'5'", false, untouched},
        {"'text'", false, untouched},
        {"{5}", false, untouched},
        {"print", false, untouched},
        {"int64('5')", false, untouched},
        {"nil", false, untouched},
        {"nil, 5", false, untouched},
        {"5, 6", true, 5},
    };
    for (const Seed& given : seeds) {
        define(std::string("function() return ") + given.value + " end");
        for (const bool permitsNull : {false, true}) {
            quorconfig::permitNullReturn(permitsNull);
            short seed = untouched;
            EXPECT_EQ(getProjectDbSeed("db", pipe, seed), given.isAnswer) << given.value;
            EXPECT_EQ(seed, given.seed) << given.value;
            EXPECT_EQ(quorconfig::lastAnswerOrigin(),
                      given.isAnswer ? AnswerOrigin::Script : AnswerOrigin::None)
                << given.value;
        }
    }
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(DatabaseSeed, OfNoDatabaseIsNotAskedFor)
{
    define("function() probe.note('asked') return 5 end");
    short seed = untouched;
    EXPECT_FALSE(getProjectDbSeed(nullptr, pipe, seed));
    EXPECT_EQ(seed, untouched);
    EXPECT_EQ(quorconfig::lastAnswerOrigin(), AnswerOrigin::None);
    EXPECT_THAT(Probe::notes, IsEmpty());
}

TEST_F(DatabaseSeed, IsAskedForByDatabaseAndModule)
{
    define(
        "function(...) local d, m = ... probe.note(select('#', ...) .. ' [' .. d .. '] [' .. m .. ']') end");
    short seed = untouched;
    EXPECT_FALSE(getProjectDbSeed("db", pipe, seed));
    EXPECT_FALSE(getProjectDbSeed("", Module::Equip, seed));
    EXPECT_FALSE(getProjectDbSeed("\xC5\xE4\\", Module::None, seed));
    EXPECT_FALSE(getProjectDbSeed("db", static_cast<Module>(77), seed));
    EXPECT_THAT(Probe::notes, ElementsAre("2 [db] [PIPE]", "2 [] [EQUIP]", "2 [\xC5\xE4\\] []", "2 [db] []"));
}

TEST_F(DatabaseSeed, WithoutAFunctionIsMissingInSilence)
{
    for (const char* value :
         {"nil", "5", "'5'", "{}", "setmetatable({}, {__call = function() return 5 end})"}) {
        define(value);
        short seed = untouched;
        EXPECT_FALSE(getProjectDbSeed("db", pipe, seed)) << value;
        EXPECT_EQ(seed, untouched);
        EXPECT_THAT(messages(), IsEmpty()) << value;
    }
}

TEST_F(DatabaseSeed, OfAFailingFunctionIsReportedAndMissing)
{
    define("function() error('broken', 0) end");
    short seed = untouched;
    EXPECT_FALSE(getProjectDbSeed("db", pipe, seed));
    EXPECT_EQ(seed, untouched);
    EXPECT_EQ(quorconfig::lastAnswerOrigin(), AnswerOrigin::None);
    EXPECT_THAT(messages(), ElementsAre("broken"));
}

TEST_F(DatabaseSeed, IsMissingWhenTheScriptCannotBeLoaded)
{
    short seed = untouched;
    EXPECT_FALSE(getProjectDbSeed("db", pipe, seed)) << "the load fails";
    EXPECT_FALSE(getProjectDbSeed("db", pipe, seed)) << "the state is used as it stands";
    EXPECT_EQ(seed, untouched);
    EXPECT_THAT(messages(), IsEmpty());
}

} // namespace

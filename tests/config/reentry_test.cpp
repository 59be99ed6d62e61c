#include "getter_rows.h"

namespace {

using quorconfig::AnswerOrigin;
using quorconfig::getProjectUserDbPath;
using quorconfig::initConfig;
using testing::ElementsAre;
using testing::IsEmpty;

/// Scripts that come back to the library while it runs them.
class Reentry : public Config {
protected:
    void TearDown() override { Probe::again = nullptr; }

    /// The project script, in fresh states.
    bool start(const std::string& script)
    {
        takeFreshSlots();
        return loadProject(script);
    }
};

TEST_F(Reentry, IntoTheGettersOwnFunctionEnds)
{
    for (const Getter& getter : allGetters()) {
        SCOPED_TRACE(getter.name);
        ASSERT_TRUE(
            start(getter.function + " = function() depth = (depth or 0) + 1 return probe.again() end"));
        ASSERT_TRUE(loadSystem("function initConfig() end " + getter.function +
                               " = function() depth = (depth or 0) + 1 return probe.again() end"));
        messages();
        Probe::again = [&getter] { return getter.ask(pipe, "n"); };
        const std::string last = textOr(Probe::again());
        // The innermost call finds the stack exhausted; what it falls back to is everybody's answer.
        if (getter.gives != Gives::Null) {
            EXPECT_EQ(last, getter.fallback("n"));
        }
        EXPECT_FALSE(messages().empty());
        Probe::again = nullptr;
        ASSERT_TRUE(initConfig("\\quorModuleSystem.lua", nullptr, nullptr, nullptr));
        EXPECT_NE(inProject("1"), "?") << "the state is usable";
    }
}

TEST_F(Reentry, IntoGettersOfTruthValuesAndIntegersEnds)
{
    ASSERT_TRUE(start("function isPropertyClass_full() return probe.again() end "
                      "function getProjectDbSeed() probe.again() return 5 end"));
    ASSERT_TRUE(loadSystem(
        "function initConfig() end function set_project_dbengine() probe.again() return true end"));
    Probe::again = [] { return quorconfig::isPropertyClass_full(pipe) ? "yes" : nullptr; };
    EXPECT_FALSE(quorconfig::isPropertyClass_full(pipe));
    short seed = 0;
    Probe::again = [&seed] {
        quorconfig::getProjectDbSeed("db", pipe, seed);
        return "";
    };
    EXPECT_TRUE(quorconfig::getProjectDbSeed("db", pipe, seed));
    EXPECT_EQ(seed, 5);
    Probe::again = [] {
        quorconfig::set_escape_dbengine(KxDb::DbType::Odbc);
        return "";
    };
    EXPECT_TRUE(quorconfig::set_escape_dbengine(KxDb::DbType::Odbc));
    EXPECT_FALSE(messages().empty()) << "each recursion ended in an error";
}

TEST_F(Reentry, IntoOtherGettersAnswers)
{
    ASSERT_TRUE(start("function getProjectSpec(m, n) return probe.again() .. '/' .. n end "
                      "function getProjectUser() return 'user' end"));
    Probe::again = getProjectUserDbPath;
    EXPECT_STREQ(quorconfig::getProjectSpec(pipe, "n"), "user/n");
    Probe::again = [] { return quorconfig::getProjDatabaseClass(pipe, "given"); };
    EXPECT_STREQ(quorconfig::getProjectSpec(pipe, "n"), "given/n");
    EXPECT_EQ(quorconfig::lastAnswerOrigin(), AnswerOrigin::Script) << "the outer getter's";
}

TEST_F(Reentry, FromACoroutineAnswers)
{
    ASSERT_TRUE(start("function getProjectSpec(m, n) return coroutine.wrap(function() "
                      "coroutine.yield(probe.again() .. n) end)() end "
                      "function getProjectUser() return 'user ' end "
                      "function getProjectDbSeed() return 5 end"));
    Probe::again = [] {
        short seed = 0;
        EXPECT_TRUE(quorconfig::getProjectDbSeed("db", pipe, seed));
        return getProjectUserDbPath();
    };
    EXPECT_STREQ(quorconfig::getProjectSpec(pipe, "n"), "user n");
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(Reentry, FromACoroutineEnds)
{
    ASSERT_TRUE(
        start("function getProjectSpec() return coroutine.wrap(function() return probe.again() end)() end"));
    Probe::again = [] { return quorconfig::getProjectSpec(pipe, "n"); };
    EXPECT_EQ(textOr(quorconfig::getProjectSpec(pipe, "n")), inProjectFolder("projectSpec.quor"));
    EXPECT_FALSE(messages().empty());
}

TEST_F(Reentry, FromAFrameFullOfArgumentsRaisesNothing)
{
    ASSERT_TRUE(
        start("function getProjectSpec() local many = {} for i = 1, 7997 do many[i] = i end "
              "return probe.again(unpack(many)) end "
              "function getProjectUser() return 'user' end function getProjectDbSeed() return 5 end"));
    bool ended = false;
    Probe::again = [&ended] {
        const char* user = getProjectUserDbPath();
        EXPECT_STREQ(user, "user");
        short seed = 0;
        EXPECT_TRUE(quorconfig::getProjectDbSeed("db", pipe, seed));
        EXPECT_EQ(seed, 5);
        ended = true;
        return "answer";
    };
    EXPECT_STREQ(quorconfig::getProjectSpec(pipe, "n"), "answer");
    EXPECT_TRUE(ended);
}

TEST_F(Reentry, ThatLoadsAnotherScriptChangesWhatIsAskedNext)
{
    write("other.lua", "function getProjectSpec() return 'of other' end "
                       "function initConfig(a) probe.note('init ' .. a) end");
    ASSERT_TRUE(start("function getProjectSpec() probe.again() return 'of the first' end"));
    Probe::again = [] { return initConfig("other.lua", "a", nullptr, nullptr) ? "" : nullptr; };
    EXPECT_STREQ(quorconfig::getProjectSpec(pipe, "n"), "of the first");
    EXPECT_THAT(Probe::notes, ElementsAre("init a"));
    EXPECT_STREQ(quorconfig::getProjectSpec(pipe, "n"), "of other");
    EXPECT_TRUE(initConfig("other.lua", "b", nullptr, nullptr));
    EXPECT_THAT(Probe::notes, ElementsAre("init a")) << "it is the state's script now";
}

TEST_F(Reentry, ThatLoadsAnotherScriptWhileTheFirstOneLoadsLayersThem)
{
    write("other.lua", "probe.note('other runs') which = 'other' function initConfig(a) probe.note(a) end");
    Probe::again = [] { return initConfig("other.lua", "inner", nullptr, nullptr) ? "" : nullptr; };
    write("first.lua", "which = 'first' probe.again() probe.note('first goes on')");
    EXPECT_TRUE(initConfig("first.lua", "outer", nullptr, nullptr));
    EXPECT_THAT(Probe::notes, ElementsAre("other runs", "inner", "first goes on", "outer"));
    EXPECT_EQ(inProject("which"), "other");
    EXPECT_TRUE(initConfig("OTHER.lua", "again", nullptr, nullptr));
    EXPECT_EQ(Probe::notes.size(), 4u) << "the inner name was recorded last";
}

TEST_F(Reentry, OfAScriptThatLoadsItselfFindsItThere)
{
    Probe::again = [] { return initConfig("SELF.lua", "inner", nullptr, nullptr) ? "there" : "not there"; };
    write("self.lua", "probe.note(probe.again()) function initConfig(a) probe.note(a) end");
    EXPECT_TRUE(initConfig("self.lua", "outer", nullptr, nullptr));
    EXPECT_THAT(Probe::notes, ElementsAre("there", "outer"));
}

TEST_F(Reentry, OfScriptsThatLoadEachOtherEnds)
{
    static int loads;
    static int overflows;
    loads = overflows = 0;
    // Where one engine counts the calls, another one is stopped by what is left of the processor's stack.
    lua_tinker::set_error_outlet([](const char*, std::size_t, void*) { ++overflows; }, nullptr);
    Probe::again = [] {
        return initConfig(++loads % 2 == 0 ? "a.lua" : "b.lua", nullptr, nullptr, nullptr) ? "" : nullptr;
    };
    write("a.lua", "probe.again()");
    write("b.lua", "probe.again()");
    EXPECT_TRUE(initConfig("a.lua", nullptr, nullptr, nullptr));
    lua_tinker::set_error_outlet(nullptr, nullptr);
    EXPECT_GT(loads, 10);
    EXPECT_TRUE(overflows > 0 || !messages().empty());
    Probe::again = nullptr;
    EXPECT_TRUE(start("function getProjectUser() return 'user' end"));
    EXPECT_STREQ(getProjectUserDbPath(), "user");
}

TEST_F(Reentry, OfAQuestionWhileTheFirstLoadRunsUsesTheStateAsItStands)
{
    Probe::again = [] {
        const char* user = getProjectUserDbPath();
        return user ? user : "(null)";
    };
    EXPECT_TRUE(start("function getProjectUser() return 'early' end probe.note(probe.again()) "
                      "function getProjectUser() return 'late' end"));
    EXPECT_THAT(Probe::notes, ElementsAre("early"));
    EXPECT_STREQ(getProjectUserDbPath(), "late");
}

TEST_F(Reentry, OfAllocationChangesNothing)
{
    ASSERT_TRUE(start("function getProjectUser() probe.again() return 'user' end"));
    Probe::again = [] {
        for (unsigned int id = 0; id < 100; ++id)
            quorconfig::allocThreadConfig(id ^ 0x80000000U);
        quorconfig::allocThreadConfig(quorsys::currentThreadId());
        for (unsigned int id = 0; id < 100; ++id)
            quorconfig::freeThreadConfig(id ^ 0x80000000U);
        return "";
    };
    EXPECT_STREQ(getProjectUserDbPath(), "user");
    EXPECT_STREQ(getProjectUserDbPath(), "user");
}

TEST_F(Reentry, OfTheCollectorLeavesAnswersThatTheScriptHoldsNowhere)
{
    for (const Getter& getter : allGetters()) {
        SCOPED_TRACE(getter.name);
        const std::string function = getter.function + " = function() return 'made ' .. depth end ";
        const std::string script =
            "depth = 1 " + function + "collectgarbage('setpause', 0) collectgarbage('setstepmul', 0)";
        ASSERT_TRUE(start(script));
        ASSERT_TRUE(loadSystem("function initConfig() end " + script));
        const char* answer = getter.ask(pipe, "n");
        ASSERT_NE(answer, nullptr);
        EXPECT_THAT(std::string(answer), testing::StartsWith("made 1"));
    }
}

TEST_F(Reentry, OfTheCollectorBehindAMemoryLimitLeavesTheAnswer)
{
    constexpr std::size_t megabyte = std::size_t{1} << 20;
    quorlua::limitNewStates({0, 8 * megabyte, false});
    ASSERT_TRUE(start("function getProjectUser() pcall(string.rep, 'x', 30000000) return 'made ' .. 1 end"));
    EXPECT_STREQ(getProjectUserDbPath(), "made 1"); // known from the second question on
    EXPECT_STREQ(getProjectUserDbPath(), "made 1");
    quorlua::limitNewStates({});
    EXPECT_EQ(quorlua::takeLimitReached(), quorlua::LimitReached::Memory);
    takeFreshSlots();
}

} // namespace

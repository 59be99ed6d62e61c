#include "../rationed_memory.h"
#include "../rationed_states.h"

#include "getter_rows.h"

#include <algorithm>

namespace {

using quorconfig::getProjectUserDbPath;
using quorconfig::initConfig;
using rationed::requestsOfLibraries;
using rationed::statesLeft;

/// Which memory runs out: the library's own, or that of the states.
enum class Memory { OfTheLibrary, OfStates };

/// What runs out, and whether one request alone is refused or all from it on.
struct Shortage {
    Memory memory;
    bool once;
};
constexpr Shortage shortages[] = {{Memory::OfTheLibrary, false},
                                  {Memory::OfTheLibrary, true},
                                  {Memory::OfStates, false},
                                  {Memory::OfStates, true}};

long refusals()
{
    return rationed::refused + rationed::statesRefused;
}

void grant(Memory memory, int requests)
{
    (memory == Memory::OfStates ? static_cast<void>(statesLeft = requests)
                                : static_cast<void>(rationed::allowed = requests));
}

class ExhaustedMemory : public Config {
protected:
    ExhaustedMemory() { kxcom::setMessageSink(count, &messageCount_); }
    void SetUp() override
    {
        QuorGlibScriptor probe;
        if (!probe.getLua(false)) GTEST_SKIP() << "this engine takes no allocator";
        // What a thread's first use of the libraries takes is not rationed: on Windows it must be there.
        write("first.lua", "error('first')");
        EXPECT_FALSE(initConfig("first.lua", nullptr, nullptr, nullptr));
        getProjectUserDbPath();
        messages();
    }
    void TearDown() override
    {
        statesLeft = -1;
        rationed::allowed = -1;
        refuseOnce(false);
    }

    static void refuseOnce(bool once) { rationed::statesRefuseOnce = rationed::refusesOnce = once; }

    /// Runs an operation with so many requests granted. What it prints where "_ALERT" fails is not shown.
    template<class Operation>
    static auto with(Memory memory, int requests, Operation operation)
    {
        testing::internal::CaptureStderr();
        rationed::refused = rationed::statesRefused = 0;
        grant(memory, requests);
        const auto result = operation();
        grant(memory, -1);
        testing::internal::GetCapturedStderr();
        return result;
    }

    /// Grants an operation in fresh states more and more requests until it is true; after each failure
    /// `recover` is run. The number of failures.
    template<class Operation, class Recover>
    int walk(Memory memory, Operation operation, Recover recover)
    {
        constexpr int most = 3000;
        const int libraries = requestsOfLibraries();
        int failures = 0;
        for (int granted = 0; granted < most; ++granted) {
            takeFreshSlots();
            if (with(memory, granted, operation)) {
                if (refusals() == 0) return failures;
                continue; // it could do without
            }
            ++failures;
            recover(granted);
            if (granted == 0 && memory == Memory::OfStates) granted = libraries;
        }
        ADD_FAILURE() << "never succeeded";
        return failures;
    }

    /// Asks with more and more requests granted until the text is the expected one. What comes before is one
    /// of the others; and with memory again, the expected one. The number of failures.
    int failuresBefore(Memory memory, const Getter& getter, const std::vector<std::string>& others,
                       const std::string& expected)
    {
        lua_State* L = Probe::states.at(getter.isOfSystemScript() ? 1 : 0);
        for (int granted = 0; granted < 500; ++granted) {
            lua_gc(L, LUA_GCCOLLECT, 0);
            // Nothing is collected while memory is short, so that every request counts.
            lua_gc(L, LUA_GCSTOP, 0);
            const char* text = with(memory, granted, [&] { return getter.ask(pipe, name); });
            const std::string answer = textOr(text);
            lua_gc(L, LUA_GCRESTART, 0);
            EXPECT_EQ(lua_gettop(L), 1) << getter.name << " with " << granted;
            if (answer == expected && refusals() == 0) return granted;
            if (answer == expected) continue;
            EXPECT_NE(std::count(others.begin(), others.end(), answer), 0)
                << answer << " from " << getter.name << " with " << granted;
            EXPECT_EQ(textOr(getter.ask(pipe, name)), expected) << getter.name << " after " << granted;
        }
        ADD_FAILURE() << getter.name << " never succeeded";
        return 0;
    }

    static constexpr const char* name = "a name that no text holds within itself";
    static constexpr const char* setUp = "function initConfig(a) first = a .. '!' end "
                                         "function setUserVersion(a) second = {a} end "
                                         "function setDesignDbModule(a) third = {a .. a} end ";

private:
    static void count(const char*, void* counter) { ++*static_cast<int*>(counter); }

    int messageCount_ = 0;
};

TEST_F(ExhaustedMemory, FailsTheFirstLoadAndNoneAfterIt)
{
    const std::string longName = "a-script-whose-name-no-text-holds-within-itself.lua";
    write(longName, setUp + std::string("for i = 1, 20 do _G['v' .. i] = {} end"));
    write("again.lua", "function getProjectUser() return 'again' end");
    for (const auto& [memory, once] : shortages) {
        refuseOnce(once);
        const int failures = walk(
            memory, [&] { return initConfig(longName.c_str(), "a", "b", "c"); },
            [&](int granted) {
                EXPECT_TRUE(initConfig("again.lua", nullptr, nullptr, nullptr)) << granted;
                EXPECT_EQ(textOr(getProjectUserDbPath()), "again") << granted;
            });
        EXPECT_GT(failures, 5);
    }
}

TEST_F(ExhaustedMemory, FailsTheFirstLoadOfTheSystemScriptOnly)
{
    write(systemScript,
          "function initConfig() done = {} end function escape_dbkey(key) return key .. '!' end");
    for (const auto& [memory, once] : shortages) {
        refuseOnce(once);
        const int failures = walk(
            memory, [] { return quorconfig::initSysConfig(); },
            [](int granted) { EXPECT_TRUE(quorconfig::initSysConfig()) << granted; });
        EXPECT_GT(failures, 5);
        EXPECT_STREQ(quorconfig::escape_dbkey("key"), "key!");
    }
}

TEST_F(ExhaustedMemory, FailsAReloadAndKeepsTheState)
{
    write("first.lua", "kept = 'kept' function getProjectUser() return kept end");
    const std::string longName = "another-script-whose-name-no-text-holds-within-itself.lua";
    write(longName, setUp + std::string("for i = 1, 20 do _G['v' .. i] = {} end "
                                        "function getProjectUser() return kept .. 'still' end"));
    for (const auto& [memory, once] : shortages) {
        refuseOnce(once);
        int failures = 0;
        for (bool isRefused = true; isRefused; ++failures) {
            ASSERT_LT(failures, 500);
            takeFreshSlots();
            ASSERT_TRUE(initConfig("first.lua", nullptr, nullptr, nullptr));
            const bool done =
                with(memory, failures, [&] { return initConfig(longName.c_str(), "a", "b", "c"); });
            isRefused = refusals() != 0;
            const std::string user = textOr(getProjectUserDbPath());
            EXPECT_TRUE(user == "kept" || user == "keptstill") << user;
            if (done) {
                EXPECT_EQ(user, "keptstill");
            }
        }
        EXPECT_GT(failures, 3);
    }
}

TEST_F(ExhaustedMemory, LeavesAThreadWithTheDefaultStates)
{
    useDefaultSlot("function getProjectUser() return which or 'own' end");
    inProject("(function() which = 'default' end)()");
    const auto give = [this] { return quorconfig::allocThreadConfig(thread), true; };
    for (int granted = 0; granted < 2; ++granted) {
        with(Memory::OfTheLibrary, granted, give);
        EXPECT_STREQ(getProjectUserDbPath(), "default") << granted;
        quorconfig::freeThreadConfig(thread);
    }
    with(Memory::OfTheLibrary, 2, give);
    EXPECT_STREQ(getProjectUserDbPath(), "own");
}

TEST_F(ExhaustedMemory, MakesGettersGiveTheirAnswerOrNone)
{
    // Two tables, hence two requests at least; compiled code would do without tables that are only counted.
    const std::string interpreted = "if jit then jit.off() end\n";
    std::string project = interpreted;
    for (const Getter& getter : allGetters())
        if (!getter.isOfSystemScript())
            project +=
                getter.function + " = function(...) return 'ans' .. #({{...}, {...}})[1] .. 'wer' end\n";
    ASSERT_TRUE(loadProject(project));
    ASSERT_TRUE(loadSystem(interpreted +
                           "function initConfig() end "
                           "function escape_dbkey(...) return 'ans' .. #({{...}, {...}})[1] .. 'wer' end"));
    int failuresOfTheLibrary = 0;
    for (const bool once : {false, true})
        for (const Getter& getter : allGetters()) {
            refuseOnce(once);
            const std::string answer = textOr(getter.ask(pipe, name));
            EXPECT_TRUE(answer.starts_with("ans")) << getter.name;
            const std::vector<std::string> others = {"(null)", "", getter.fallback(name).value_or("(null)")};
            EXPECT_GT(failuresBefore(Memory::OfStates, getter, others, answer), 1) << getter.name;
            failuresOfTheLibrary += failuresBefore(Memory::OfTheLibrary, getter, others, answer);
        }
    EXPECT_EQ(failuresOfTheLibrary, 0) << "an answer is taken where it is";
}

TEST_F(ExhaustedMemory, MakesGettersGiveTheirFallbackOrNone)
{
    ASSERT_TRUE(loadProject(""));
    ASSERT_TRUE(loadSystem("escape_dbkey = nil function initConfig() end"));
    int failuresOfTheLibrary = 0;
    for (const bool once : {false, true})
        for (const Getter& getter : allGetters()) {
            refuseOnce(once);
            const std::string fallback = getter.fallback(name).value_or("(null)");
            failuresBefore(Memory::OfStates, getter, {"(null)", ""}, fallback);
            failuresOfTheLibrary += failuresBefore(Memory::OfTheLibrary, getter, {"(null)", ""}, fallback);
        }
    EXPECT_GT(failuresOfTheLibrary, 10);
}

TEST_F(ExhaustedMemory, LeavesSeedsAndTruthValuesAsTheyAreWithoutAnAnswer)
{
    ASSERT_TRUE(loadProject("function getProjectDbSeed(a) return #(a .. '!') end "
                            "function isPropertyClass_full(a) return {a} end"));
    for (const auto& [memory, once] : shortages) {
        refuseOnce(once);
        int granted = 0;
        short seed = -7;
        while (!with(memory, granted, [&] { return quorconfig::getProjectDbSeed(name, pipe, seed); })) {
            EXPECT_EQ(seed, -7);
            ASSERT_LT(++granted, 500);
        }
        EXPECT_EQ(seed, 40);
        granted = 0;
        while (!with(memory, granted, [] { return quorconfig::isPropertyClass_full(pipe); }))
            ASSERT_LT(++granted, 500);
        EXPECT_TRUE(quorconfig::isPropertyClass_full(pipe));
    }
}

} // namespace

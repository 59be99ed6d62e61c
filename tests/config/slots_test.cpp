#include "config_fixture.h"

#include <limits>

namespace {

using quorconfig::allocThreadConfig;
using quorconfig::freeThreadConfig;
using quorconfig::getProjectUserDbPath;
using quorconfig::initConfig;
using quorconfig::initSysConfig;
using testing::ElementsAre;
using testing::IsEmpty;

/// Leaves a message to be shown when its state is closed.
std::string saidAtTheEnd(const std::string& text)
{
    return "last = newproxy(true) getmetatable(last).__gc = function() kxcom.errorMsg('" + text + "') end ";
}

class Slots : public Config {};

TEST_F(Slots, OfAThreadAreApartFromTheDefaultOnes)
{
    useDefaultSlot("which = 'default' function getProjectUser() return which end");
    allocThreadConfig(thread);
    EXPECT_TRUE(loadProject("function getProjectUser() return which or 'own' end"));
    EXPECT_STREQ(getProjectUserDbPath(), "own") << "a new slot is empty";
    onThread([](unsigned int) { EXPECT_STREQ(getProjectUserDbPath(), "default"); });
}

TEST_F(Slots, FreedGiveWayToTheDefaultOnes)
{
    useDefaultSlot("function getProjectUser() return 'default' end");
    allocThreadConfig(thread);
    EXPECT_TRUE(loadProject("function getProjectUser() return 'own' end"));
    EXPECT_STREQ(getProjectUserDbPath(), "own");
    freeSlots();
    EXPECT_STREQ(getProjectUserDbPath(), "default");
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(Slots, FreedAreEmptyWhenGivenAgain)
{
    EXPECT_TRUE(loadProject("changed = 'no'"));
    EXPECT_TRUE(loadSystem("changed = 'no' function initConfig() end"));
    inProject("(function() changed = 'yes' end)()");
    inSystem("(function() changed = 'yes' end)()");
    takeFreshSlots();
    EXPECT_EQ(inProject("changed"), "no") << "the script was run in a new state";
    EXPECT_EQ(inSystem("changed"), "no");
}

TEST_F(Slots, GivenTwiceKeepTheFirstStates)
{
    EXPECT_TRUE(loadProject("changed = 'no'"));
    EXPECT_TRUE(loadSystem("changed = 'no' function initConfig() end"));
    inProject("(function() changed = 'yes' end)()");
    inSystem("(function() changed = 'yes' end)()");
    allocThreadConfig(thread);
    EXPECT_EQ(inProject("changed"), "yes");
    EXPECT_EQ(inSystem("changed"), "yes");
    ASSERT_EQ(Probe::states.size(), 2u);
    freeSlots();
    EXPECT_NE(inProject("changed"), "yes") << "freed once is enough";
}

TEST_F(Slots, AreGivenForBothScripts)
{
    EXPECT_TRUE(loadProject(saidAtTheEnd("project")));
    EXPECT_TRUE(loadSystem(saidAtTheEnd("system") + "function initConfig() end"));
    EXPECT_THAT(messages(), IsEmpty());
    freeSlots();
    EXPECT_THAT(messages(), ElementsAre("system", "project")) << "both states are closed";
}

TEST_F(Slots, AreGivenToAThreadByAnother)
{
    write(projectScript, "function getProjectUser() return 'own' end");
    onThread([&](unsigned int id) {
        std::thread giver([id] { allocThreadConfig(id); });
        giver.join();
        EXPECT_STREQ(getProjectUserDbPath(), "own");
        std::thread taker([id] { freeThreadConfig(id); });
        taker.join();
    });
}

TEST_F(Slots, OfUnknownThreadsAreFreedInVain)
{
    EXPECT_TRUE(loadProject("kept = 'kept'"));
    for (const unsigned int id : {0U, 1U, thread + 1, std::numeric_limits<unsigned int>::max()})
        freeThreadConfig(id);
    EXPECT_EQ(inProject("kept"), "kept");
    freeSlots();
    freeThreadConfig(thread);
    freeThreadConfig(thread);
    allocThreadConfig(thread);
    EXPECT_EQ(inProject("kept"), "kept") << "loaded anew";
}

TEST_F(Slots, ExistForIdsAtBothEnds)
{
    EXPECT_TRUE(loadProject("kept = 'kept'"));
    for (const unsigned int id : {0U, std::numeric_limits<unsigned int>::max(), 0x80000000U, 0x7FFFFFFFU}) {
        allocThreadConfig(id);
        allocThreadConfig(id);
        EXPECT_EQ(inProject("kept"), "kept");
        freeThreadConfig(id);
        EXPECT_EQ(inProject("kept"), "kept");
    }
}

TEST_F(Slots, NeverUsedAreFreed)
{
    onThread([](unsigned int id) {
        allocThreadConfig(id);
        freeThreadConfig(id);
    });
    takeFreshSlots();
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(Slots, AreClosedWhileTheirScriptStillAsks)
{
    useDefaultSlot("function getProjectUser() return 'default' end");
    allocThreadConfig(thread);
    EXPECT_TRUE(loadProject("function getProjectUser() return 'own' end last = newproxy(true) "
                            "getmetatable(last).__gc = function() probe.note(probe.again()) end"));
    Probe::again = getProjectUserDbPath;
    freeSlots();
    EXPECT_THAT(Probe::notes, ElementsAre("default")) << "the slot is gone already";
}

// A process that has done nothing yet: each runs in one of its own, since what other tests did stays.

class ProcessDeathTest : public testing::Test {
protected:
    ProcessDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    ~ProcessDeathTest() override { GTEST_FLAG_SET(death_test_style, "fast"); }

    /// Ends the process with 0 when the work gives true.
    [[noreturn]] static void run(bool (*work)(const ScriptFolder& folder))
    {
        bool done = false;
        {
            const ScriptFolder folder;
            QuorSystem::setInstallationFolder(folder.path().c_str());
            folder.write("bin/quorModuleSystem.lua", "function getProjectUser() return 'default file' end");
            done = work(folder);
        }
        std::exit(done ? 0 : 1);
    }
};

TEST_F(ProcessDeathTest, StartsWithTheDefaultName)
{
    const auto work = [](const ScriptFolder&) {
        return initConfig(nullptr, nullptr, nullptr, nullptr) &&
               getProjectUserDbPath() == std::string("default file");
    };
    EXPECT_EXIT(run(work), testing::ExitedWithCode(0), "");
}

TEST_F(ProcessDeathTest, ShowsMessagesAtFirst)
{
    const auto work = [](const ScriptFolder& folder) {
        folder.write("bin/quorModuleSystem.lua", "function getProjectUser() end");
        return getProjectUserDbPath() != nullptr;
    };
    EXPECT_EXIT(run(work), testing::ExitedWithCode(0), "getProjectUser");
}

TEST_F(ProcessDeathTest, FallsBackToADefaultStateThatIsNotLoadedYet)
{
    const auto work = [](const ScriptFolder& folder) {
        const unsigned int id = quorsys::currentThreadId();
        allocThreadConfig(id);
        folder.write("bin/own.lua", "function getProjectUser() return 'own file' end");
        folder.write("bin/mirtSystemConfig.lua", "function initConfig() end");
        if (!initConfig("own.lua", nullptr, nullptr, nullptr) || !initSysConfig()) return false;
        folder.write("bin/own.lua", "function getProjectUser() return 'own file, later' end");
        if (getProjectUserDbPath() != std::string("own file")) return false;
        freeThreadConfig(id);
        return getProjectUserDbPath() == std::string("own file, later");
    };
    EXPECT_EXIT(run(work), testing::ExitedWithCode(0), "");
}

} // namespace

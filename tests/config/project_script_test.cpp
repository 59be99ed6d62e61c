#include "config_fixture.h"

namespace {

using quorconfig::getProjectUserDbPath;
using quorconfig::initConfig;
using testing::ElementsAre;
using testing::IsEmpty;

/// Notes its run and what its set-up functions are given.
std::string noting(const std::string& name)
{
    return "probe.note('run " + name +
           "') "
           "function initConfig(a) probe.note('init ' .. a) end "
           "function setUserVersion(a) probe.note('version ' .. a) end "
           "function setDesignDbModule(a) probe.note('database ' .. a) end ";
}

class ProjectScript : public Config {};

TEST_F(ProjectScript, IsLoadedByInitWithoutArgumentsAndRunsNoSetUp)
{
    write(projectScript, noting("default"));
    EXPECT_TRUE(initConfig(nullptr, nullptr, nullptr, nullptr));
    EXPECT_THAT(Probe::notes, ElementsAre("run default"));
    EXPECT_TRUE(initConfig(nullptr, nullptr, nullptr, nullptr));
    EXPECT_THAT(Probe::notes, ElementsAre("run default")) << "the second call loads nothing";
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(ProjectScript, IsLoadedByTheFirstQuestionAndRunsNoSetUp)
{
    write(projectScript, noting("default") + "function getProjectUser() return 'user.db' end");
    EXPECT_STREQ(getProjectUserDbPath(), "user.db");
    EXPECT_STREQ(getProjectUserDbPath(), "user.db");
    EXPECT_THAT(Probe::notes, ElementsAre("run default"));
}

TEST_F(ProjectScript, IsAskedForByTheNameThatAnyThreadSetLast)
{
    write("named.lua", "function getProjectUser() return 'of named' end");
    onThread([](unsigned int id) {
        quorconfig::allocThreadConfig(id);
        EXPECT_TRUE(initConfig("named.lua", nullptr, nullptr, nullptr));
        quorconfig::freeThreadConfig(id);
    });
    EXPECT_STREQ(getProjectUserDbPath(), "of named");
}

TEST_F(ProjectScript, OfTheSameNameInOtherLettersStaysAsItIs)
{
    write("NAMED.LUA", noting("NAMED"));
    write("Named.lua", noting("Named")); // where letter case is nothing to the system, the same file
    EXPECT_TRUE(initConfig("Named.lua", "first", nullptr, nullptr));
    EXPECT_THAT(Probe::notes, ElementsAre("run Named", "init first"));
    EXPECT_TRUE(initConfig("NAMED.LUA", "second", "version", "database"));
    EXPECT_TRUE(initConfig("Named.lua", "second", "version", "database"));
    EXPECT_TRUE(initConfig("nAmEd.lUa", "second", "version", "database"))
        << "not even where no file has this name";
    EXPECT_THAT(Probe::notes, ElementsAre("run Named", "init first"));
}

TEST_F(ProjectScript, OfTheSameNameStaysAsItIsWhenItsFileChanged)
{
    write(projectScript, noting("before"), 1000);
    EXPECT_TRUE(initConfig(projectScript, nullptr, nullptr, nullptr));
    write(projectScript, noting("after"), 2000);
    EXPECT_TRUE(initConfig(projectScript, "a", nullptr, nullptr));
    EXPECT_THAT(Probe::notes, ElementsAre("run before"));
}

TEST_F(ProjectScript, NameIsTheSameOnlyWhereLettersOfAsciiDiffer)
{
    // In one code page or another these are the two cases of a letter.
    const char* const one = "\xC4\xC4.lua";
    const char* const other = "\xE4\xE4.lua";
    write(one, noting("one"));
    write(other, noting("other"));
    EXPECT_TRUE(initConfig(one, nullptr, nullptr, nullptr));
    EXPECT_TRUE(initConfig(other, nullptr, nullptr, nullptr));
    EXPECT_THAT(Probe::notes, ElementsAre("run one", "run other"));
    for (const char* name : {"@.lua", "`.lua", "[.lua", "{.lua", "longer.lua", "longer.lua2", "longer.lu"}) {
        write(name, "probe.note([=[" + std::string(name) + "]=])");
        Probe::notes.clear();
        EXPECT_TRUE(initConfig(name, nullptr, nullptr, nullptr));
        EXPECT_THAT(Probe::notes, ElementsAre(name));
    }
}

TEST_F(ProjectScript, OfAnotherNameRunsInTheSameStateAndSetsUpAgain)
{
    write("a.lua", noting("a") + "onlyInA = 'kept' both = 'a'");
    write("b.lua", noting("b") + "both = 'b'");
    EXPECT_TRUE(initConfig("a.lua", "1", nullptr, nullptr));
    const auto states = Probe::states;
    EXPECT_TRUE(initConfig("b.lua", "2", "3", "4"));
    EXPECT_THAT(Probe::notes, ElementsAre("run a", "init 1", "run b", "init 2", "version 3", "database 4"));
    EXPECT_EQ(inProject("onlyInA"), "kept");
    EXPECT_EQ(inProject("both"), "b");
    EXPECT_THAT(Probe::states, ElementsAre(states[0], states[0]));
}

TEST_F(ProjectScript, RunsAgainWhenAnotherRanInBetween)
{
    write("a.lua", noting("a"), 1000);
    write("b.lua", noting("b"), 1000);
    EXPECT_TRUE(initConfig("a.lua", nullptr, nullptr, nullptr));
    EXPECT_TRUE(initConfig("b.lua", nullptr, nullptr, nullptr));
    EXPECT_TRUE(initConfig("a.lua", nullptr, nullptr, nullptr));
    EXPECT_THAT(Probe::notes, ElementsAre("run a", "run b", "run a")) << "although its file is unchanged";
}

TEST_F(ProjectScript, OfAnUnchangedFileIsNotRunAgainUnderAnotherNameButSetUp)
{
    write("a.lua", noting("a"), 1000);
    EXPECT_TRUE(initConfig("a.lua", "1", nullptr, nullptr));
    EXPECT_TRUE(initConfig("\\a.lua", "2", nullptr, nullptr));
    folder.setTime("installation/bin/a.lua", 1004);
    EXPECT_TRUE(initConfig("a.lua", "3", nullptr, nullptr));
    folder.setTime("installation/bin/a.lua", 1005);
    EXPECT_TRUE(initConfig("\\a.lua", "4", nullptr, nullptr));
    EXPECT_THAT(Probe::notes, ElementsAre("run a", "init 1", "init 2", "init 3", "run a", "init 4"));
}

TEST_F(ProjectScript, WithAnEmptyNameIsTheOneNamedBefore)
{
    write(projectScript, noting("default"));
    EXPECT_TRUE(initConfig("", "1", nullptr, nullptr));
    EXPECT_TRUE(initConfig("", "2", nullptr, nullptr));
    EXPECT_THAT(Probe::notes, ElementsAre("run default", "init 1"));
}

TEST_F(ProjectScript, LiesInTheRunTimeBinFolder)
{
    write("sub/inner.lua", noting("inner"));
    EXPECT_TRUE(initConfig("sub\\inner.lua", nullptr, nullptr, nullptr));
    EXPECT_THAT(Probe::notes, ElementsAre("run inner"));
    EXPECT_EQ(inProject("mirt_get_luafile()"), QuorSystem::getBinRuntimeFullName("sub/inner.lua"));
    // An absolute name is one in that folder too.
    EXPECT_FALSE(
        initConfig(folder.path("installation/bin/sub/inner.lua").c_str(), nullptr, nullptr, nullptr));
}

} // namespace

#include "config_fixture.h"

namespace {

using quorconfig::initConfig;
using quorconfig::initSysConfig;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* noting =
    "probe.note('run') function initConfig(...) probe.note('init ' .. select('#', ...)) end ";

class SystemScript : public Config {};

TEST_F(SystemScript, IsLoadedAndSetUpOnce)
{
    EXPECT_TRUE(loadSystem(noting));
    EXPECT_THAT(Probe::notes, ElementsAre("run", "init 0"));
    EXPECT_TRUE(initSysConfig());
    EXPECT_THAT(Probe::notes, ElementsAre("run", "init 0"));
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(SystemScript, IsLoadedAndSetUpByTheFirstQuestion)
{
    write(systemScript, std::string(noting) + "function escape_dbkey(key) return key .. '!' end "
                                              "function set_project_dbengine() return true end");
    EXPECT_STREQ(quorconfig::escape_dbkey("key"), "key!");
    EXPECT_TRUE(quorconfig::set_escape_dbengine(KxDb::DbType::Sqlite));
    EXPECT_THAT(Probe::notes, ElementsAre("run", "init 0"));
}

TEST_F(SystemScript, LiesInTheInstallationsBinFolder)
{
    EXPECT_TRUE(loadSystem("function initConfig() end"));
    EXPECT_EQ(inSystem("mirt_get_luafile()"), installed("bin/mirtSystemConfig.lua"));
}

TEST_F(SystemScript, KeepsItsNameWhateverTheProjectScriptIs)
{
    write("other.lua", "");
    EXPECT_TRUE(initConfig("other.lua", nullptr, nullptr, nullptr));
    EXPECT_TRUE(loadSystem(noting));
    EXPECT_THAT(Probe::notes, ElementsAre("run", "init 0"));
}

TEST_F(SystemScript, HasAStateOfItsOwn)
{
    EXPECT_TRUE(loadProject("which = 'project'"));
    EXPECT_TRUE(loadSystem("which = 'system' function initConfig() end"));
    EXPECT_EQ(inProject("which"), "project");
    EXPECT_EQ(inSystem("which"), "system");
    ASSERT_EQ(Probe::states.size(), 2u);
    EXPECT_NE(Probe::states[0], Probe::states[1]);
}

TEST_F(SystemScript, WithoutItsSetUpFunctionIsReportedAndAvailable)
{
    EXPECT_TRUE(loadSystem(""));
    EXPECT_THAT(messages(), ElementsAre(noFunction("initConfig")));
    EXPECT_EQ(inSystem("1 + 1"), "2");
}

TEST_F(SystemScript, WhoseSetUpFunctionRaisesIsReportedAndAvailable)
{
    EXPECT_TRUE(loadSystem("function initConfig() error('not ready', 0) end"));
    EXPECT_THAT(messages(), ElementsAre("not ready"));
    EXPECT_TRUE(initSysConfig());
    EXPECT_THAT(messages(), IsEmpty());
    EXPECT_EQ(inSystem("1 + 1"), "2");
}

} // namespace

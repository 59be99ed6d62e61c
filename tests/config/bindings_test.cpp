#include "config_fixture.h"

namespace {

using quorconfig::initConfig;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Bindings : public Config {};

TEST_F(Bindings, AreThereWhenTheScriptRuns)
{
    const std::string script = "_ALERT('one') kxcom.errorMsg('two') kxcom.errorMsg(kxcom.quorPath()) "
                               "kxcom.errorMsg(kxcom.projectPath())";
    const std::vector<std::string> said = {"one", "two", folder.path("installation"), folder.path("project")};
    EXPECT_TRUE(loadProject(script));
    EXPECT_EQ(messages(), said);
    EXPECT_TRUE(loadSystem(script + " function initConfig() end"));
    EXPECT_EQ(messages(), said);
}

TEST_F(Bindings, HaveTheirNumberOfResults)
{
    EXPECT_TRUE(loadProject(""));
    EXPECT_EQ(inProject("select('#', _ALERT('a'))"), "0");
    EXPECT_EQ(inProject("select('#', kxcom.errorMsg('a'))"), "0");
    EXPECT_EQ(inProject("select('#', kxcom.quorPath())"), "1");
    EXPECT_EQ(inProject("select('#', kxcom.projectPath())"), "1");
    EXPECT_EQ(inProject("select('#', kxcom.quorPath(1, {}, nil))"), "1") << "arguments are passed over";
    EXPECT_EQ(inProject("kxcom.projectPath('x')"), folder.path("project"));
}

TEST_F(Bindings, ShowOneTextAsItIs)
{
    EXPECT_TRUE(loadProject("for _, show in ipairs({_ALERT, kxcom.errorMsg}) do "
                            "show('100%s %d', 5) show('') show('\\0behind') show(7.5) end"));
    EXPECT_THAT(messages(), ElementsAre("100%s %d", "", "", "7.5", "100%s %d", "", "", "7.5"));
    write("gbk.lua", "_ALERT('\xC5\xE4\xD6\xC3')");
    EXPECT_TRUE(initConfig("gbk.lua", nullptr, nullptr, nullptr));
    EXPECT_THAT(messages(), ElementsAre("配置"));
}

TEST_F(Bindings, ShowNothingForWhatIsNoText)
{
    EXPECT_TRUE(loadProject("for _, show in ipairs({_ALERT, kxcom.errorMsg}) do "
                            "show() show(nil) show({}) show(true) show(print) show(int64(5)) end "
                            "ended = 'ended'"));
    EXPECT_THAT(messages(), IsEmpty());
    EXPECT_EQ(inProject("ended"), "ended") << "and no error is raised";
}

TEST_F(Bindings, ShowReportsOfTheBindingLayer)
{
    EXPECT_TRUE(loadProject("function getProjectUser() error('told', 0) end"));
    quorconfig::permitNullReturn(true);
    EXPECT_EQ(quorconfig::getProjectUserDbPath(), nullptr);
    EXPECT_THAT(messages(), ElementsAre("told"));
    EXPECT_EQ(inProject("(function() _ALERT = probe.note return 1 end)()"), "1");
    EXPECT_EQ(quorconfig::getProjectUserDbPath(), nullptr);
    EXPECT_THAT(messages(), IsEmpty());
    EXPECT_THAT(Probe::notes, ElementsAre(HasSubstr("told"))) << "the script may take them over";
}

TEST_F(Bindings, GiveTheFoldersOfTheMomentTheyAreCalled)
{
    EXPECT_TRUE(loadProject(""));
    EXPECT_EQ(inProject("kxcom.quorPath()"), folder.path("installation"));
    QuorSystem::setInstallationFolder("/elsewhere");
    QuorSystem::setProjectFolder("/elsewhere/p");
    EXPECT_EQ(inProject("kxcom.quorPath() .. kxcom.projectPath()"),
              sys::pathOf("/elsewhere") + sys::pathOf("/elsewhere/p"));
    QuorSystem::setProjectFolder("/elsewhere/q");
    EXPECT_EQ(inProject("kxcom.quorPath() .. kxcom.projectPath()"),
              sys::pathOf("/elsewhere") + sys::pathOf("/elsewhere/q"));
}

TEST_F(Bindings, AreMadeAnewByEveryLoad)
{
    EXPECT_TRUE(
        loadProject("_ALERT = nil kxcom.errorMsg = 5 kxcom.quorPath = nil kxcom.own = 'own' was = kxcom"));
    write("b.lua", "_ALERT('here') kxcom.errorMsg('too')");
    EXPECT_TRUE(initConfig("b.lua", nullptr, nullptr, nullptr));
    EXPECT_THAT(messages(), ElementsAre("here", "too"));
    EXPECT_EQ(inProject("kxcom.quorPath()"), folder.path("installation"));
    EXPECT_EQ(inProject("kxcom.own"), "own") << "what else is in the table stays";
    EXPECT_EQ(inProject("kxcom == was"), "true");
}

TEST_F(Bindings, ReplaceAnythingElseNamedLikeTheirTable)
{
    for (const char* value : {"'text'", "5", "true", "print", "nil", "newproxy(true)"}) {
        takeFreshSlots();
        EXPECT_TRUE(loadProject(std::string("kxcom = ") + value)) << value;
        EXPECT_EQ(inProject("type(_ALERT)"), "function");
        write("b.lua", "kxcom.errorMsg('table again')");
        EXPECT_TRUE(initConfig("b.lua", nullptr, nullptr, nullptr)) << value;
        EXPECT_THAT(messages(), ElementsAre("table again")) << value;
        EXPECT_EQ(inProject("kxcom.projectPath()"), folder.path("project")) << value;
    }
}

TEST_F(Bindings, AreSkippedSilentlyWhereTheGlobalsForbidTheirTable)
{
    const char* const metatables[] = {
        "{__newindex = function() error('no new globals') end}",
        "{__newindex = function() end}",
        "{__newindex = {}}",
        "{__index = function() error('no such global') end, __newindex = error}",
        "{__index = function(_, name) return name end, __newindex = function() end}",
    };
    for (const char* metatable : metatables) {
        takeFreshSlots();
        EXPECT_TRUE(loadProject("kxcom = nil setmetatable(_G, " + std::string(metatable) + ")")) << metatable;
        write("b.lua", "probe.note(type(rawget(_G, 'kxcom'))) _ALERT('still')");
        Probe::notes.clear();
        EXPECT_TRUE(initConfig("b.lua", nullptr, nullptr, nullptr)) << metatable;
        EXPECT_THAT(Probe::notes, ElementsAre("nil")) << metatable;
        EXPECT_THAT(messages(), ElementsAre("still")) << metatable;
    }
}

TEST_F(Bindings, AreStoredPastMetamethods)
{
    EXPECT_TRUE(loadProject("kxcom = setmetatable({}, {__newindex = function() error('closed') end}) "
                            "_ALERT = nil setmetatable(_G, {__newindex = function() error('closed') end})"));
    write("b.lua", "_ALERT('one') kxcom.errorMsg('two') probe.note(kxcom.quorPath())");
    EXPECT_TRUE(initConfig("b.lua", nullptr, nullptr, nullptr));
    EXPECT_THAT(messages(), ElementsAre("one", "two"));
    EXPECT_THAT(Probe::notes, ElementsAre(folder.path("installation")));
}

TEST_F(Bindings, UseATableThatTheGlobalsOfferInsteadOfAMissingOne)
{
    EXPECT_TRUE(loadProject("offered = {} kxcom = nil setmetatable(_G, {__index = {kxcom = offered}})"));
    write("b.lua", "");
    EXPECT_TRUE(initConfig("b.lua", nullptr, nullptr, nullptr));
    EXPECT_EQ(inProject("type(rawget(_G, 'kxcom')) .. type(offered.errorMsg)"), "nilfunction");
}

TEST_F(Bindings, ComeAfterTheModulesOfEveryState)
{
    EXPECT_TRUE(loadProject("probe.note(type(glib.getPsView)) probe.note(type(GlibTextStyle.height)) "
                            "probe.note(tostring((glib.getPsView()))) probe.note(type(mirt_get_luafile))"));
    EXPECT_THAT(Probe::notes, ElementsAre("function", "function", "nil", "function"));
}

} // namespace

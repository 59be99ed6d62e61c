#include "config_fixture.h"

#include <memory>

namespace {

using quorconfig::getProjectUserDbPath;
using quorconfig::initConfig;
using quorconfig::initSysConfig;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

enum class Kind { Missing, Folder, Unreadable, Syntax, HalfWay, NoTextRaised };

/// A script that cannot be loaded.
struct BadScript {
    const char* name;
    Kind kind;
    bool runs;
    /// What the one message says; null when there is none.
    const char* message;
};

constexpr BadScript badScripts[] = {
    {"missing.lua", Kind::Missing, false, nullptr},
    {"folder.lua", Kind::Folder, false, "cannot open"},
    {"unreadable.lua", Kind::Unreadable, false, "cannot open"},
    {"syntax.lua", Kind::Syntax, false, "expected near '('"},
    {"half.lua", Kind::HalfWay, true, "broken here"},
    {"raising.lua", Kind::NoTextRaised, true, "(error object is a table value)"},
};

class FailedLoad : public Config {
protected:
    /// Puts a bad script where one of that name is looked for.
    void make(const BadScript& bad, const std::string& name)
    {
        const std::string file = "installation/bin/" + name;
        const std::string begun = "begun = 'begun' function getProjectUser() return 'partial' end ";
        switch (bad.kind) {
        case Kind::Missing:
            break;
        case Kind::Folder:
            folder.write(file + "/inner", "");
            break;
        case Kind::Unreadable:
            folder.write("installation/bin/beside.lua", "");
            obstacles.push_back(std::make_unique<sys::Obstacle>(folder.path(file)));
            break;
        case Kind::Syntax:
            write(name, begun + "function (");
            break;
        case Kind::HalfWay:
            write(name, begun + "error('broken here', 0)");
            break;
        case Kind::NoTextRaised:
            write(name, begun + "error(setmetatable({}, {__tostring = error}))");
            break;
        }
    }

    void expectMessage(const BadScript& bad)
    {
        const std::vector<std::string> said = messages();
        if (bad.message) {
            EXPECT_THAT(said, ElementsAre(HasSubstr(bad.message)));
        } else {
            EXPECT_THAT(said, IsEmpty());
        }
    }

    /// What shows that the set-up functions are called.
    static constexpr const char* noting = "function initConfig(a) probe.note('init ' .. tostring(a)) end "
                                          "function setUserVersion() probe.note('version') end "
                                          "function setDesignDbModule() probe.note('database') end ";

    std::vector<std::unique_ptr<sys::Obstacle>> obstacles;
};

TEST_F(FailedLoad, MakesInitFalse)
{
    for (const BadScript& bad : badScripts) {
        SCOPED_TRACE(bad.name);
        takeFreshSlots();
        make(bad, bad.name);
        EXPECT_FALSE(initConfig(bad.name, nullptr, nullptr, nullptr));
        expectMessage(bad);
    }
}

TEST_F(FailedLoad, RunsNoSetUp)
{
    for (const BadScript& bad : badScripts) {
        SCOPED_TRACE(bad.name);
        takeFreshSlots();
        EXPECT_TRUE(loadProject(noting));
        make(bad, bad.name);
        EXPECT_FALSE(initConfig(bad.name, "a", "b", "c"));
        EXPECT_THAT(Probe::notes, IsEmpty());
    }
}

TEST_F(FailedLoad, LeavesAStateThatLaterCallsUseAsItStands)
{
    for (const BadScript& bad : badScripts) {
        SCOPED_TRACE(bad.name);
        takeFreshSlots();
        make(bad, bad.name);
        EXPECT_FALSE(initConfig(bad.name, nullptr, nullptr, nullptr));
        messages();
        EXPECT_TRUE(initConfig(nullptr, "a", nullptr, nullptr));
        EXPECT_THAT(messages(), IsEmpty()) << "nothing is loaded or called";
        if (bad.runs) {
            EXPECT_STREQ(getProjectUserDbPath(), "partial");
        } else {
            EXPECT_STREQ(getProjectUserDbPath(), QuorSystem::getCurrentProjPath());
            EXPECT_THAT(messages(), ElementsAre(noFunction("getProjectUser"), complaint + "getProjectUser"));
        }
    }
}

TEST_F(FailedLoad, RecordsItsNameAndIsNotTriedAgain)
{
    for (const BadScript& bad : badScripts) {
        SCOPED_TRACE(bad.name);
        takeFreshSlots();
        EXPECT_TRUE(loadProject("before = 'before' " + std::string(noting)));
        make(bad, bad.name);
        EXPECT_FALSE(initConfig(bad.name, nullptr, nullptr, nullptr));
        messages();
        std::string capitals = bad.name;
        capitals[0] = static_cast<char>(capitals[0] - 'a' + 'A');
        EXPECT_TRUE(initConfig(bad.name, "a", "b", "c"));
        EXPECT_TRUE(initConfig(capitals.c_str(), "a", "b", "c"));
        EXPECT_THAT(messages(), IsEmpty());
        EXPECT_THAT(Probe::notes, IsEmpty()) << "nothing is set up";
        EXPECT_EQ(inProject("before"), "before");
        EXPECT_EQ(inProject("begun"), bad.runs ? "begun" : "nil");
    }
}

TEST_F(FailedLoad, IsNotTriedAgainWhenItsScriptHasAppeared)
{
    EXPECT_FALSE(initConfig("late.lua", nullptr, nullptr, nullptr));
    write("late.lua", noting);
    EXPECT_TRUE(initConfig("late.lua", "a", nullptr, nullptr));
    EXPECT_THAT(Probe::notes, IsEmpty());
    EXPECT_TRUE(initConfig("\\late.lua", "a", nullptr, nullptr)) << "another name for it";
    EXPECT_THAT(Probe::notes, ElementsAre("init a"));
}

TEST_F(FailedLoad, IsFollowedByAnotherNamesLoadIntoTheSameState)
{
    for (const BadScript& bad : badScripts) {
        SCOPED_TRACE(bad.name);
        takeFreshSlots();
        Probe::notes.clear();
        make(bad, bad.name);
        EXPECT_FALSE(initConfig(bad.name, nullptr, nullptr, nullptr));
        EXPECT_TRUE(loadProject(noting));
        EXPECT_EQ(inProject("begun"), bad.runs ? "begun" : "nil");
        EXPECT_FALSE(initConfig(bad.name, nullptr, nullptr, nullptr))
            << "tried again: it is another name now";
    }
}

TEST_F(FailedLoad, IsTheProcessesNameAllTheSame)
{
    EXPECT_TRUE(loadProject("function getProjectUser() return 'of the first' end"));
    EXPECT_FALSE(initConfig("late.lua", nullptr, nullptr, nullptr));
    write("late.lua", "function getProjectUser() return 'of the second' end");
    EXPECT_STREQ(getProjectUserDbPath(), "of the first");
    onThread([](unsigned int id) {
        quorconfig::allocThreadConfig(id);
        EXPECT_STREQ(getProjectUserDbPath(), "of the second");
        quorconfig::freeThreadConfig(id);
    });
}

TEST_F(FailedLoad, HalfWayIsTakenForLoadedUnderAnotherNameOfTheUnchangedFile)
{
    make(badScripts[4], "half.lua");
    EXPECT_FALSE(initConfig("half.lua", nullptr, nullptr, nullptr));
    messages();
    EXPECT_TRUE(initConfig("\\half.lua", nullptr, nullptr, nullptr));
    EXPECT_THAT(messages(), IsEmpty());
    EXPECT_STREQ(getProjectUserDbPath(), "partial");
}

TEST_F(FailedLoad, OfTheSystemScriptIsNotTriedAgain)
{
    for (const BadScript& bad : badScripts) {
        SCOPED_TRACE(bad.name);
        takeFreshSlots();
        obstacles.clear();
        std::filesystem::remove_all(folder.path("installation/bin"));
        messages();
        make(bad, systemScript);
        EXPECT_FALSE(initSysConfig());
        expectMessage(bad);
        EXPECT_TRUE(initSysConfig());
        EXPECT_THAT(messages(), IsEmpty()) << "nor is anything called";
        EXPECT_EQ(inSystem("begun"), bad.runs ? "begun" : "?");
        obstacles.clear();
        std::filesystem::remove_all(folder.path("installation/bin"));
        EXPECT_TRUE(loadSystem("")) << "the state is there, whatever the folder holds now";
        EXPECT_EQ(inSystem("begun"), bad.runs ? "begun" : "?");
    }
}

} // namespace

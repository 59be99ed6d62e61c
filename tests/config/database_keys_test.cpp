#include "config_fixture.h"

namespace {

using QuorAuth::Module;
using quorconfig::AnswerOrigin;
using quorconfig::escape_dbkey;
using quorconfig::getProject_general;
using quorconfig::lastAnswerOrigin;
using quorconfig::set_escape_dbengine;
using testing::ElementsAre;
using testing::IsEmpty;

class DatabaseKeys : public Config {};

TEST_F(DatabaseKeys, OfNoFunctionAreNull)
{
    EXPECT_TRUE(loadProject(""));
    EXPECT_EQ(getProject_general("", "default", pipe, "arg"), nullptr);
    EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::None);
    EXPECT_EQ(getProject_general(nullptr, "default", pipe, "arg"), nullptr);
    EXPECT_EQ(getProject_general("", "default", Module::None, nullptr), nullptr);
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(DatabaseKeys, OfAModuleWithoutANameAreTheDefaultItself)
{
    EXPECT_TRUE(loadProject("function key() probe.note('asked') return 'answer' end"));
    const char* const given = "default";
    for (const Module module : {Module::None, static_cast<Module>(77)}) {
        for (const bool permitsNull : {false, true}) {
            quorconfig::permitNullReturn(permitsNull);
            EXPECT_EQ(getProject_general("key", given, module, "arg"), given);
            EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::Fallback);
            EXPECT_EQ(getProject_general("key", nullptr, module, "arg"), nullptr);
            EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::None);
        }
    }
    EXPECT_THAT(Probe::notes, IsEmpty());
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(DatabaseKeys, WithoutAnAnswerAreTheDefaultItself)
{
    EXPECT_TRUE(loadProject("function key() return '' end"));
    const std::string given = "default";
    EXPECT_EQ(getProject_general("key", given.c_str(), pipe, nullptr), given.c_str()) << "the same pointer";
    EXPECT_EQ(getProject_general("key", nullptr, pipe, nullptr), nullptr);
    EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::None);
    EXPECT_THAT(messages(), ElementsAre(complaint + "key: PIPE", complaint + "key: PIPE"));
    const quorconfig::TempPermitNull permit;
    EXPECT_EQ(getProject_general("key", given.c_str(), pipe, nullptr), nullptr);
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(DatabaseKeys, AreEscapedByTheSystemScript)
{
    EXPECT_TRUE(loadProject("function escape_dbkey() return 'of the project' end"));
    EXPECT_TRUE(loadSystem("function initConfig() end function escape_dbkey(key) return 'to ' .. key end"));
    EXPECT_STREQ(escape_dbkey("key"), "to key");
    EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::Script);
}

TEST_F(DatabaseKeys, ThatAreNotEscapedAreTheCallersOwn)
{
    EXPECT_TRUE(loadSystem("function initConfig() end function escape_dbkey() return '' end"));
    const std::string key = "a key";
    EXPECT_EQ(escape_dbkey(key.c_str()), key.c_str()) << "the same pointer";
    EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::Argument);
    EXPECT_EQ(escape_dbkey(nullptr), nullptr);
    EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::None);
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(DatabaseKeys, AreTheCallersOwnWhenTheSystemScriptFails)
{
    EXPECT_STREQ(escape_dbkey("key"), "key") << "there is no script";
    EXPECT_EQ(lastAnswerOrigin(), AnswerOrigin::Argument);
    EXPECT_THAT(messages(), IsEmpty());
    EXPECT_STREQ(escape_dbkey("key"), "key");
    EXPECT_THAT(messages(), ElementsAre(noFunction("escape_dbkey")));
}

struct Engine {
    const char* function; ///< the script's
    bool answer;
    AnswerOrigin origin;
    const char* report;
};

TEST_F(DatabaseKeys, StandOnTheEngineThatTheSystemScriptAccepts)
{
    const std::string none = noFunction("set_project_dbengine");
    const Engine engines[] = {
        {"function(t) return t == 1 end", true, AnswerOrigin::Script, nullptr},
        {"function(t) return t ~= 1 end", false, AnswerOrigin::Script, nullptr},
        {"function(...) return select('#', ...) == 1 and type(...) == 'number' end", true,
         AnswerOrigin::Script, nullptr},
        {"function() end", false, AnswerOrigin::Script, nullptr},
        {"function() return nil end", false, AnswerOrigin::Script, nullptr},
        {"function() return 0 end", true, AnswerOrigin::Script, nullptr},
        {"function() return '' end", true, AnswerOrigin::Script, nullptr},
        {"function() return {} end", true, AnswerOrigin::Script, nullptr},
        {"function() error('broken', 0) end", false, AnswerOrigin::Script, "broken"},
        {"nil", false, AnswerOrigin::None, none.c_str()},
        {"false", false, AnswerOrigin::None, none.c_str()},
        {"true", true, AnswerOrigin::Script, none.c_str()},
        {"5", true, AnswerOrigin::Script, none.c_str()},
        {"{}", true, AnswerOrigin::Script, none.c_str()},
    };
    for (const Engine& engine : engines) {
        takeFreshSlots();
        EXPECT_TRUE(
            loadSystem("function initConfig() end set_project_dbengine = " + std::string(engine.function)));
        for (const bool permitsNull : {false, true}) {
            quorconfig::permitNullReturn(permitsNull);
            EXPECT_EQ(set_escape_dbengine(KxDb::DbType::Odbc), engine.answer) << engine.function;
            EXPECT_EQ(lastAnswerOrigin(), engine.origin) << engine.function;
            if (engine.report) {
                EXPECT_THAT(messages(), ElementsAre(engine.report)) << engine.function;
            }
            EXPECT_THAT(messages(), IsEmpty()) << engine.function;
        }
    }
}

TEST_F(DatabaseKeys, StandOnAnEngineByItsNumber)
{
    EXPECT_TRUE(loadSystem("function initConfig() end "
                           "function set_project_dbengine(t) probe.note(tostring(t)) end"));
    set_escape_dbengine(KxDb::DbType::Sqlite);
    set_escape_dbengine(KxDb::DbType::Odbc);
    set_escape_dbengine(static_cast<KxDb::DbType>(-2147483647 - 1));
    EXPECT_THAT(Probe::notes, ElementsAre("0", "1", "-2147483648"));
}

} // namespace

#include "config_fixture.h"

namespace {

using quorconfig::allocThreadConfig;
using quorconfig::freeThreadConfig;
using quorconfig::initConfig;
using quorconfig::initSysConfig;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// A process that ends while states are open, and what their scripts left for the end runs. Under the address
/// sanitizer it ends with 0 only when that touched nothing that was gone before, and nothing has leaked.
class ProcessEndDeathTest : public testing::Test {
protected:
    ProcessEndDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    ~ProcessEndDeathTest() override { GTEST_FLAG_SET(death_test_style, "fast"); }

    static std::string atTheEnd(const std::string& work)
    {
        return "last = newproxy(true) getmetatable(last).__gc = function() " + work + " end ";
    }
    static std::string saidAtTheEnd(const std::string& text)
    {
        return atTheEnd("kxcom.errorMsg([[end of " + text + "]])");
    }
    static unsigned int thisThread() { return quorsys::currentThreadId(); }

    /// The process: loads its scripts, and ends with the states open.
    [[noreturn]] static void end(const std::function<void(const ScriptFolder& folder)>& loadScripts)
    {
        {
            const ScriptFolder folder;
            QuorSystem::setInstallationFolder(folder.path().c_str());
            loadScripts(folder);
        }
        std::exit(0);
    }
    static void loadProject(const ScriptFolder& folder, const std::string& script)
    {
        folder.write("bin/quorModuleSystem.lua", script);
        if (!initConfig(nullptr, nullptr, nullptr, nullptr)) std::exit(2);
    }
    static void loadSystem(const ScriptFolder& folder, const std::string& script)
    {
        folder.write("bin/mirtSystemConfig.lua", script + " function initConfig() end");
        if (!initSysConfig()) std::exit(3);
    }
};

TEST_F(ProcessEndDeathTest, ClosesTheStatesOfThreadsBeforeTheDefaultOnes)
{
    const auto scripts = [](const ScriptFolder& folder) {
        loadProject(folder, saidAtTheEnd("the default project state"));
        loadSystem(folder, saidAtTheEnd("the default system state"));
        allocThreadConfig(thisThread());
        loadProject(folder, saidAtTheEnd("a thread's project state"));
        loadSystem(folder, saidAtTheEnd("a thread's system state"));
    };
    EXPECT_EXIT(end(scripts), testing::ExitedWithCode(0),
                AllOf(HasSubstr("end of a thread's project state\nend of the default project state\n"),
                      HasSubstr("end of a thread's system state\nend of the default system state\n")));
}

TEST_F(ProcessEndDeathTest, LetsScriptsUseWhatTheyWereGiven)
{
    const auto scripts = [](const ScriptFolder& folder) {
        const std::string script =
            atTheEnd("kxcom.errorMsg(type(kxcom.quorPath()) .. ' ' .. type(kxcom.projectPath())) _ALERT({}) "
                     "for name, f in pairs(glib) do f() f(1, 2, 3, 4) f('x') end "
                     "int64('5') local ok = pcall(error) mirt_get_luafile() "
                     "kxcom.errorMsg('glib ends')");
        loadProject(folder, script);
        loadSystem(folder, script);
        allocThreadConfig(thisThread());
        quorlua::allocThreadVars(thisThread());
        loadProject(folder, script);
        loadSystem(folder, script);
    };
    EXPECT_EXIT(end(scripts), testing::ExitedWithCode(0), HasSubstr("string string\nglib ends\n"));
}

TEST_F(ProcessEndDeathTest, OutlivesErrorsOfScripts)
{
    const auto scripts = [](const ScriptFolder& folder) {
        loadProject(folder, atTheEnd("kxcom.errorMsg('runs') error('broken')"));
        loadSystem(folder, atTheEnd("kxcom.errorMsg('runs too') error({})"));
    };
    EXPECT_EXIT(end(scripts), testing::ExitedWithCode(0),
                AllOf(HasSubstr("runs\n"), HasSubstr("runs too\n")));
}

/// A native function that asks all there is, for scripts that call it at the end.
int askAll(lua_State* L)
{
    constexpr QuorAuth::Module pipe = QuorAuth::Module::Pipe;
    const unsigned int id = quorsys::currentThreadId();
    allocThreadConfig(id);
    short seed = 0;
    const bool isAnswered =
        initConfig("other.lua", "a", "b", "c") || initSysConfig() ||
        textOr(quorconfig::getProjectUserDbPath()) == "answer" ||
        textOr(quorconfig::getProjectTemplatePath("\\x")) == "answer\\x" ||
        textOr(quorconfig::getQuorInt2Str_key(pipe)) == "answer" ||
        textOr(quorconfig::escape_dbkey("key")) == "answer" || quorconfig::isPropertyClass_full(pipe) ||
        quorconfig::set_escape_dbengine(KxDb::DbType::Odbc) || quorconfig::getProjectDbSeed("db", pipe, seed);
    freeThreadConfig(id);
    lua_pushstring(L, isAnswered ? "answered" : "nothing");
    return 1;
}

TEST_F(ProcessEndDeathTest, AnswersNoGetterAnyMore)
{
    const auto scripts = [](const ScriptFolder& folder) {
        static const luaL_Reg functions[] = {{"askAll", askAll}, {nullptr, nullptr}};
        quorlua::addRegLuaModule("host", functions);
        const std::string script = "function answer() return 'answer' end getProjectUser = answer "
                                   "getProjectTemplate = answer getQuorInt2Str_key = answer "
                                   "escape_dbkey = answer isPropertyClass_full = answer "
                                   "set_project_dbengine = answer function getProjectDbSeed() return 1 end " +
                                   atTheEnd("kxcom.errorMsg('asks: ' .. host.askAll())");
        loadProject(folder, script);
        loadSystem(folder, script);
        allocThreadConfig(thisThread());
        loadProject(folder, script);
        loadSystem(folder, script);
        quorconfig::permitNullReturn(true);
        if (textOr(quorconfig::getProjectTemplatePath("\\x")) != "answer\\x") std::exit(4);
        if (textOr(quorconfig::escape_dbkey("key")) != "answer") std::exit(5);
    };
    EXPECT_EXIT(end(scripts), testing::ExitedWithCode(0),
                AllOf(HasSubstr("asks: nothing\nasks: nothing\nasks: nothing\nasks: nothing\n"),
                      Not(HasSubstr("answered"))));
}

} // namespace

// `quor config` with scripts that fail, and used wrongly.

#include "ConfigRun.h"

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

using ConfigFailures = ConfigRun;
using ConfigUsage = ConfigRun;

const Arguments askSpec = {"get", "projectSpec", "--module", "PIPE", "--name", "A1A"};
const Arguments askKey = {"get", "escape_dbkey", "--key", "k"};

TEST_F(ConfigFailures, ScriptThatIsMissingIsNamedAndNothingIsPrinted)
{
    const std::string missing = "there is no such file, or it cannot be examined\n";
    for (const Arguments& arguments : {askSpec, Arguments{"table", "--module", "PIPE"}}) {
        const CommandRun run = this->run(arguments);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(run.errors, "quor: " + systemPath(projectScript) + ": " + missing);
    }
    write(projectScript, "");
    std::filesystem::remove(path(systemScript));
    for (const Arguments& arguments : {askKey, Arguments{"table", "--module", "PIPE"}}) {
        const CommandRun run = this->run(arguments);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(run.errors, "quor: " + systemPath(systemScript) + ": " + missing);
    }
}

TEST_F(ConfigFailures, ScriptThatDoesNotRunToItsEndIsNamedWithItsReason)
{
    const struct {
        const char* script;
        const char* reason;
    } cases[] = {
        {"function getProjectSpec( return end", ":1: "},
        {"function getProjectSpec() return 'half' end\nerror('half-way')", ":2: half-way\n"},
        {"os.exit(0)", ":1: os.exit: a script cannot end the program that runs it\n"},
        {"error({})", "(error object is a table value)\n"},
        {"require('no.such.module')", ":1: module 'no.such.module' not found:"},
    };
    for (const auto& [script, reason] : cases) {
        for (const bool isSystem : {false, true}) {
            const char* name = isSystem ? systemScript : projectScript;
            write(name, script);
            const CommandRun run = this->run(isSystem ? askKey : askSpec);
            EXPECT_EQ(run.exitCode, 1) << script;
            EXPECT_EQ(run.output, "") << script;
            EXPECT_THAT(run.errors, AllOf(HasSubstr(reason),
                                          EndsWith("quor: " + systemPath(name) +
                                                   ": it cannot be read, compiled or run to its end\n")))
                << script;
        }
    }
}

TEST_F(ConfigFailures, FolderInTheScriptsPlaceIsNoScript)
{
    std::filesystem::create_directory(path(projectScript));
    const CommandRun folder = run(askSpec);
    EXPECT_EQ(folder.exitCode, 1);
    EXPECT_THAT(
        folder.errors,
        AllOf(StartsWith("cannot open " + systemPath(projectScript) + ": Is a directory\n"),
              EndsWith(systemPath(projectScript) + ": it cannot be read, compiled or run to its end\n")));
}

TEST_F(ConfigFailures, PipeInTheScriptsPlaceIsNoScript)
{
    if (testsystem::isWindows) GTEST_SKIP() << "pipes stand in no folder there";
    std::filesystem::remove(path(systemScript));
    const testsystem::Pipe pipe(scratch_, systemScript);
    const CommandRun blocked = run(askKey);
    EXPECT_EQ(blocked.exitCode, 1);
    EXPECT_THAT(blocked.errors,
                StartsWith("cannot open " + systemPath(systemScript) + ": not a regular file\n"));
}

TEST_F(ConfigFailures, OnlyTheScriptThatIsAskedIsLoaded)
{
    write(projectScript, "error('the project script')");
    EXPECT_EQ(run(askKey).exitCode, 0);
    write(projectScript, "function getProjectSpec() return 'x' end");
    write(systemScript, "error('the system script')");
    EXPECT_EQ(run(askSpec).exitCode, 0);
}

TEST_F(ConfigFailures, ErrorInAFunctionIsReportedBesideTheFallback)
{
    const CommandRun run = runSpec("\nfunction getProjectSpec()\n  error('no specification')\nend");
    EXPECT_EQ(run.exitCode, 1);
    const Json answer = Json::parse(run.output);
    EXPECT_EQ(answer["answer"], systemPath("project/projectSpec.quor"));
    EXPECT_EQ(answer["from"], "fallback");
    EXPECT_EQ(answer["raised"], true);
    ASSERT_EQ(answer["messages"].size(), 2u);
    EXPECT_THAT(answer["messages"][0].get<std::string>(),
                HasSubstr("quorModuleSystem.lua:3: no specification\nstack traceback:"));
    EXPECT_EQ(answer["messages"][1], "系统配置出错，请联系开发商，getProjectSpec: PIPE");
    EXPECT_THAT(run.errors, AllOf(HasSubstr("quorModuleSystem.lua:3: no specification\nstack traceback:"),
                                  HasSubstr("\n系统配置出错，请联系开发商，getProjectSpec: PIPE\n"),
                                  EndsWith("getProjectSpec: fallback; nothing is at the path\n"
                                           "quor: errors were raised by:\n  getProjectSpec for PIPE\n")));
}

TEST_F(ConfigFailures, FunctionsThatRaiseLeaveNoTraceInTheOtherAnswers)
{
    const std::string good = "function getProjectAttr() return 'attributes' end ";
    for (const char* error : {"error('no')", "error({})", "error()", "os.exit(3)", "local x = nil + 1",
                              "getProjectSpec()", "return (function() error('deep') end)()"}) {
        write(projectScript, good + "function getProjectSpec() " + error + " end");
        const CommandRun run = this->run({"table", "--module", "PIPE", "--json"});
        EXPECT_EQ(run.exitCode, 1) << error;
        EXPECT_THAT(run.errors, EndsWith("quor: errors were raised by:\n  getProjectSpec for PIPE\n"))
            << error;
        const Json table = Json::parse(run.output);
        for (const Json& answer : table["answers"])
            EXPECT_EQ(answer["raised"], answer["getter"] == "getProjectSpec") << error << answer;
        EXPECT_EQ(answerOf(table, "getProjectAttr")["answer"], "attributes") << error;
    }
}

TEST_F(ConfigFailures, ErrorsCountWhateverTheScriptDoesWithTheirReports)
{
    for (const char* hiding : {"_ALERT = nil", "_ALERT = function() end", "_ALERT = 'no function'"}) {
        const std::string script = std::string("function getProjectSpec() ") + hiding +
                                   " error('\xD6\xD0') end function isPropertyClass_full() return true end";
        const CommandRun run = runSpec(script);
        EXPECT_EQ(run.exitCode, 1) << hiding;
        EXPECT_EQ(Json::parse(run.output)["raised"], true) << hiding;

        const CommandRun inTable = this->run({"table", "--module", "PIPE", "--json"});
        EXPECT_THAT(inTable.errors, EndsWith("errors were raised by:\n  getProjectSpec for PIPE\n"))
            << hiding;
        const Json rows = Json::parse(inTable.output);
        EXPECT_EQ(answerOf(rows, "isPropertyClass_full")["from"], "script") << hiding;

        write(projectScript, std::string("function initConfig() ") + hiding + " error('hidden') end");
        const CommandRun setUp = this->run({"get", "projectStan", "--module", "PIPE", "--init-arg", "a"});
        EXPECT_EQ(setUp.exitCode, 1) << hiding;
    }
    const CommandRun shown = runSpec("function getProjectSpec() _ALERT = nil error('\xD6\xD0') end");
    EXPECT_THAT(shown.errors, HasSubstr("quorModuleSystem.lua:1: 中\nstack traceback:"));
}

TEST_F(ConfigFailures, TracebacksThatAScriptShowsItselfAreNoErrors)
{
    const CommandRun run = runSpec("function getProjectSpec() "
                                   "xpcall(function() error('mine') end, "
                                   "function(e) kxcom.errorMsg(debug.traceback(e)) end) return 'ok' end");
    EXPECT_EQ(run.exitCode, 0);
    const Json answer = Json::parse(run.output);
    EXPECT_EQ(answer["raised"], false);
    EXPECT_EQ(answer["answer"], "ok");
}

TEST_F(ConfigFailures, FalseOfAFunctionThatFailedIsNoAnswer)
{
    write(projectScript, "function isPropertyClass_full() error('full') end");
    const CommandRun run = this->run({"get", "isPropertyClass_full", "--module", "PIPE", "--json"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(Json::parse(run.output)["from"], "none");
    write(projectScript, "function isPropertyClass_full() return false end");
    const CommandRun answered = this->run({"get", "isPropertyClass_full", "--module", "PIPE", "--json"});
    EXPECT_EQ(Json::parse(answered.output)["from"], "script");
}

TEST_F(ConfigFailures, ErrorInTheSetUpIsOneOfTheConfiguration)
{
    write(projectScript, "function initConfig(text) error('set-up: ' .. text) end "
                         "function getProjectSpec() return 'x' end");
    const CommandRun project =
        run({"get", "projectSpec", "--module", "PIPE", "--name", "", "--init-arg", "管道"});
    EXPECT_EQ(project.exitCode, 1);
    EXPECT_EQ(project.output, "x\n");
    EXPECT_THAT(project.errors, AllOf(HasSubstr("quorModuleSystem.lua:1: set-up: 管道\nstack traceback:"),
                                      EndsWith("quor: errors were raised by:\n  the set-up of " +
                                               systemPath(projectScript) + "\n")));
    EXPECT_EQ(run({"get", "projectSpec", "--module", "PIPE", "--name", ""}).exitCode, 0);

    write(systemScript, "function initConfig() error('no') end");
    EXPECT_EQ(run({"table", "--module", "PIPE"}).exitCode, 1);
}

TEST_F(ConfigFailures, SetUpFunctionThatIsMissingIsReportedOnly)
{
    const CommandRun run = runSpec("function getProjectSpec() return 'x' end", {"--user-version", "1"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "attempt to call global `setUserVersion' (not a function)\n"
                          "getProjectSpec: script; nothing is at the path\n");
}

TEST_F(ConfigFailures, GlobalsThatAreNoFunctionsAreReported)
{
    const std::string report = "attempt to call global `getProjectSpec' (not a function)";
    for (const char* value : {"5", "{}", "true", "nil"}) {
        const CommandRun run = runSpec(std::string("getProjectSpec = ") + value);
        EXPECT_EQ(run.exitCode, 0) << value;
        const Json answer = Json::parse(run.output);
        EXPECT_EQ(answer["from"], "fallback") << value;
        EXPECT_EQ(answer["messages"],
                  Json::array({report, "系统配置出错，请联系开发商，getProjectSpec: PIPE"}))
            << value;
    }
    // A text in the function's place is taken for the answer.
    const Json answer = Json::parse(runSpec("getProjectSpec = 'text'").output);
    EXPECT_EQ(answer["answer"], "text");
    EXPECT_EQ(answer["from"], "script");
    EXPECT_EQ(answer["messages"], Json::array({report}));
}

TEST_F(ConfigFailures, AnswersThatAreNoTextsAreNone)
{
    for (const char* value : {"{}", "5", "true", "print", "''", "nil"}) {
        const CommandRun run = runSpec(std::string("function getProjectSpec() return ") + value + " end");
        EXPECT_EQ(run.exitCode, 0) << value;
        const Json answer = Json::parse(run.output);
        EXPECT_EQ(answer["from"], "fallback") << value;
        EXPECT_EQ(answer["messages"], Json::array({"系统配置出错，请联系开发商，getProjectSpec: PIPE"}))
            << value;
    }
}

TEST_F(ConfigFailures, ScriptThatTakesTheHostsNamesIsAskedAllTheSame)
{
    const CommandRun run = runSpec("kxcom = 'a text' _ALERT = 5 function getProjectSpec() return 'x' end");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(Json::parse(run.output)["answer"], "x");
}

TEST_F(ConfigUsage, IsWrongWithoutWhatIsNeededAndWithWhatIsNotTaken)
{
    const struct {
        Arguments arguments;
        std::string message;
    } cases[] = {
        {{"get", "projectSpec", "--name", "A1A"},
         "getProjectSpec: --module NAME is expected; it takes --module NAME --name TEXT\n"},
        {{"get", "projectSpec", "--module", "PIPE"},
         "getProjectSpec: --name TEXT is expected; it takes --module NAME --name TEXT\n"},
        {{"get", "projectStan", "--module", "PIPE", "--name", "x"},
         "getProjectStan: --name TEXT is not for this getter; it takes --module NAME\n"},
        {{"get", "projectUserDbPath", "--module", "PIPE"},
         "getProjectUserDbPath: --module NAME is not for this getter; it takes no option of its own\n"},
        {{"get", "projectTemplatePath", "--key", "k"},
         "getProjectTemplatePath: --key TEXT is not for this getter; it takes [--module NAME] [--sub "
         "TEXT]\n"},
        {{"get", "set_escape_dbengine"},
         "set_escape_dbengine: --engine sqlite|odbc is expected; it takes --engine sqlite|odbc\n"},
        {{"get", "projectStan", "--module", "pipe"},
         "--module pipe: one of these is expected: SYSTEM, PIPE, EQUIP, SUPPORT, ISO, STRUCT, HVAC, "
         "ELECTRIC, "
         "INSTRUMENT\n"},
        {{"table", "--module", ""},
         "--module : one of these is expected: SYSTEM, PIPE, EQUIP, SUPPORT, ISO, STRUCT, HVAC, ELECTRIC, "
         "INSTRUMENT\n"},
        {{"get", "objectSkeyBasicPath", "--kind", "1.5"},
         "--kind 1.5: a whole number of 32 bits is expected\n"},
        {{"get", "objectSkeyBasicPath", "--kind", "4294967296"},
         "--kind 4294967296: a whole number of 32 bits is expected\n"},
        {{"table", "--engine", "other"}, "--engine other: sqlite or odbc is expected\n"},
        {{"table", "--config", ""}, "--config: the name of a script is expected; it is empty\n"},
        {{"table", "--name", "a😀"},
         "--name a😀: text that GBK can write is expected; a character in it has no place there\n"},
        {{"table", "--init-arg", "😀"},
         "--init-arg 😀: text that GBK can write is expected; a character in it has no place there\n"},
    };
    write(projectScript, "error('nothing is loaded')");
    for (const auto& [arguments, message] : cases) {
        const CommandRun run = this->run(arguments);
        EXPECT_EQ(run.exitCode, 2) << message;
        EXPECT_EQ(run.output, "") << message;
        EXPECT_EQ(run.errors, "quor: " + message);
    }
}

TEST_F(ConfigUsage, UnknownGetterIsAnsweredByTheNamesThatThereAre)
{
    for (const char* name : {"projectSpecs", "getprojectSpec", "project", "", "escape_db", "dbkey"}) {
        const CommandRun run = this->run({"get", name, "--module", "PIPE"});
        EXPECT_EQ(run.exitCode, 2) << name;
        EXPECT_THAT(run.errors,
                    AllOf(StartsWith(std::string("quor: ") + name +
                                     ": there is no such getter; one of these, with "
                                     "or without its \"get\", is expected:\n"),
                          HasSubstr("\n  getProjectSpec\n"), HasSubstr("\n  set_escape_dbengine\n")))
            << name;
    }
}

TEST_F(ConfigUsage, UnknownOptionsAndWordsAreWrong)
{
    const Arguments cases[] = {{},
                               {"show"},
                               {"get"},
                               {"get", "projectStan", "projectSpec"},
                               {"table", "projectStan"},
                               {"table", "--modules", "PIPE"},
                               {"table", "--module"},
                               {"get", "projectStan", "--json=maybe"}};
    for (const Arguments& arguments : cases) {
        const CommandRun run = runSample(arguments);
        EXPECT_EQ(run.exitCode, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(run.output, "");
        EXPECT_THAT(run.errors, AllOf(StartsWith("quor: "), HasSubstr("--help")));
    }
}

TEST_F(ConfigUsage, FolderThatIsNoneIsNamed)
{
    const std::string file = write("file", "");
    for (const char* option : {"--installation", "--project"}) {
        const CommandRun run = runSample({"table", option, file});
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_EQ(run.errors,
                  std::string("quor: ") + option + " " + file + ": a folder is expected; there is none\n");
    }
}

TEST_F(ConfigUsage, HelpListsEveryGetterWithWhatItTakes)
{
    const CommandRun run = runSample({"get", "--help"});
    EXPECT_EQ(run.exitCode, 0);
    for (const char* line :
         {"\n  getProjectSpec            --module NAME --name TEXT\n", "\n  getProjectUserDbPath\n",
          "\n  getProjDatabaseClass      --module NAME [--given TEXT]\n"})
        EXPECT_THAT(run.output, HasSubstr(line));
}

} // namespace

// `quor config`: what the sample's configuration scripts answer, and what the command says of answers. After
// a change that is meant, QUOR_WRITE_GOLDEN=1 in the environment of this program writes the tables of golden/
// anew; the difference is then read before it is kept.

#include "ConfigRun.h"

#include <cstdlib>
#include <fstream>
#include <map>
#include <set>

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

using ConfigSample = ConfigRun;
using ConfigAnswers = ConfigRun;

/// What a table can be asked with beside the module.
const Arguments allOptions = {"--name",        "A1A",      "--part",         "drawing",    "--file",
                              "register.quor", "--sub",    "isometric.quor", "--given",    "given.lua",
                              "--kind",        "1",        "--db-name",      "spec",       "--key",
                              "PIPE:spec",     "--engine", "odbc",           "--function", "isDigitalStan",
                              "--arg",         "x",        "--default-file", "none"};

Arguments together(Arguments one, const Arguments& other)
{
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

TEST_F(ConfigSample, TableIsAsKept)
{
    const CommandRun run = runSample({"table", "--module", "PIPE"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors,
              "36 answers: 31 from scripts, 2 fallbacks, 0 arguments, 3 none; 0 paths lead nowhere; "
              "1 with messages\n");
    expectGolden("config_table.txt", withoutFolders(run.output));
}

TEST_F(ConfigSample, JsonOfTheTableIsAsKept)
{
    const CommandRun run = runSample(together({"table", "--json", "--module", "PIPE"}, allOptions));
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(Json::accept(run.output));
    expectGolden("config_table.json", withoutFolders(run.output));
}

TEST_F(ConfigSample, EveryGetterAnswersByItsName)
{
    const struct {
        const char* getter;
        Arguments arguments;
        const char* answer;
        const char* provenance;
    } cases[] = {
        {"modelingXml",
         {"--module", "EQUIP"},
         "INSTALLATION/sys/modelingEquip.xml",
         "script; the path exists"},
        {"modelingXml_meta",
         {"--module", "PIPE"},
         "INSTALLATION/sys/modelingMeta.xml",
         "script; the path exists"},
        {"propertyClass",
         {"--module", "PIPE"},
         "INSTALLATION/sys/propertyClass.xml",
         "script; the path exists"},
        {"isPropertyClass_full", {"--module", "ISO"}, "false", "script"},
        {"projectStan", {"--module", "PIPE"}, "PROJECT/standard/GB.quor", "script; the path exists"},
        {"projectSpec",
         {"--module", "PIPE", "--name", "B3A"},
         "PROJECT/spec/B3A.quor",
         "script; the path exists"},
        {"projectAttr",
         {"--module", "HVAC", "--name", ""},
         "PROJECT/attr/general.quor",
         "script; the path exists"},
        {"projectSupport",
         {"--module", "PIPE", "--name", "x"},
         "PROJECT/projectSupport.quor",
         "script; the path exists"},
        {"projectGlib",
         {"--module", "PIPE", "--name", "x"},
         "PROJECT/projectGlib.quor",
         "script; the path exists"},
        {"projectSyscommon",
         {"--module", "PIPE", "--name", "x"},
         "PROJECT/sysCommon.quor",
         "script; the path exists"},
        {"projectSysname", {"--module", "PIPE"}, "PROJECT/sysNaming.quor", "script; the path exists"},
        {"projectInsert",
         {"--module", "EQUIP", "--name", "x"},
         "PROJECT/insert/equip.quor",
         "script; the path exists"},
        {"projectTooltip", {"--module", "PIPE"}, "PROJECT/sys/quorToolTip.lua", "script; the path exists"},
        {"projectSkeyPath",
         {"--module", "SUPPORT", "--name", "shoe.skey"},
         "PROJECT/skey/support/shoe.skey",
         "script; the path exists"},
        {"projectSkeyPath_r",
         {"--module", "PIPE", "--name", "x"},
         "PROJECT/skey/component/x",
         "script; nothing is at the path"},
        {"projectStanpart",
         {"--module", "PIPE"},
         "PROJECT/projectStanpart.quor",
         "fallback; the path exists"},
        {"projectPath",
         {"--module", "PIPE", "--part", "report", "--file", "register.quor"},
         "PROJECT/reports/register.quor",
         "script; the path exists"},
        {"projectTemplatePath",
         {"--module", "PIPE", "--sub", "isometric.quor"},
         "PROJECT/template/pipe\\isometric.quor",
         "script; the path exists"},
        {"quorInt2Str", {"--module", "PIPE"}, "INSTALLATION/sys/quorInt2Str.lua", "script; the path exists"},
        {"quorInt2Str_key", {"--module", "PIPE"}, "sys:quorint2str", "fallback"},
        {"projDatabaseClass",
         {"--module", "PIPE"},
         "INSTALLATION/sys/projDatabaseClass.lua",
         "script; the path exists"},
        {"digitalFile",
         {"--module", "PIPE", "--name", "PUMP"},
         "PROJECT/digital/pump.quor",
         "script; the path exists"},
        {"isDigitalStan", {"--module", "EQUIP"}, "GB", "script"},
        {"projectStan_dbkey", {"--module", "PIPE"}, "PIPE:standard", "script"},
        {"projectSpec_dbkey", {"--module", "SUPPORT"}, "PIPE:spec", "script"},
        {"projectAttr_dbkey", {"--module", "EQUIP"}, "EQUIP:attr", "script"},
        {"projectSupport_dbkey", {"--module", "PIPE"}, "PIPE:support", "script"},
        {"projectGlib_dbkey", {"--module", "PIPE"}, "PIPE:glib", "script"},
        {"projectSyscommon_dbkey", {"--module", "PIPE"}, "PIPE:common", "script"},
        {"projectSysname_dbkey", {"--module", "PIPE"}, "PIPE:naming", "script"},
        {"projectStanpart_dbkey", {"--module", "PIPE"}, "PIPE:stanpart", "script"},
        {"project_general",
         {"--module", "PIPE", "--function", "getProjectPath", "--default-file", "d", "--arg", "drawing"},
         "PROJECT/drawings",
         "script"},
        {"projectDbSeed", {"--module", "EQUIP", "--db-name", "spec"}, "2000", "script"},
        {"projectUserDbPath", {}, "PROJECT/user/version2", "script; the path exists"},
        {"objectSkeyBasicPath", {"--kind", "1"}, "PROJECT/skey/support", "script; the path exists"},
        {"set_escape_dbengine", {"--engine", "odbc"}, "true", "script"},
        {"escape_dbkey", {"--key", "PIPE:spec"}, "PIPE_spec", "script"},
    };
    std::set<std::string> asked;
    for (const auto& [getter, arguments, answer, provenance] : cases) {
        const CommandRun run = runSample(together({"get", getter}, arguments));
        EXPECT_EQ(run.exitCode, 0) << getter;
        EXPECT_EQ(withoutFolders(run.output), expectedHere(answer) + "\n") << getter;
        EXPECT_THAT(run.errors, EndsWith(std::string(": ") + provenance + "\n")) << getter;
        asked.insert(
            run.errors.substr(run.errors.rfind('\n', run.errors.size() - 2) + 1,
                              run.errors.rfind(": ") - run.errors.rfind('\n', run.errors.size() - 2) - 1));
    }
    const Json table =
        Json::parse(runSample(together({"table", "--json", "--module", "PIPE"}, allOptions)).output);
    std::set<std::string> all;
    for (const Json& row : table["answers"])
        all.insert(row["getter"].get<std::string>());
    EXPECT_EQ(asked, all);
}

TEST_F(ConfigSample, GettersGoByTheirNameWithAndWithoutGet)
{
    for (const char* name : {"getProjectSpec", "projectSpec", "ProjectSpec"}) {
        const CommandRun run = runSample({"get", name, "--module", "PIPE", "--name", "A1A"});
        EXPECT_EQ(withoutFolders(run.output), "PROJECT/spec/A1A.quor\n") << name;
        EXPECT_EQ(run.errors, "getProjectSpec: script; the path exists\n") << name;
    }
}

TEST_F(ConfigSample, TableWithoutAModuleHasAllInTurnAndWhatTakesNoneOnce)
{
    const Json answers = Json::parse(runSample({"table", "--json"}).output)["answers"];
    std::vector<std::string> modules;
    std::map<std::string, std::vector<std::string>> getters;
    for (const Json& answer : answers) {
        const std::string module = answer["arguments"].value("module", "");
        if (getters[module].empty()) modules.push_back(module);
        getters[module].push_back(answer["getter"]);
    }
    EXPECT_THAT(modules, ElementsAre("SYSTEM", "PIPE", "EQUIP", "SUPPORT", "ISO", "STRUCT", "HVAC",
                                     "ELECTRIC", "INSTRUMENT", ""));
    for (std::size_t i = 0; i + 1 < modules.size(); ++i)
        EXPECT_EQ(getters[modules[i]], getters["PIPE"]) << modules[i];
    EXPECT_EQ(getters["PIPE"].size(), 32u);
    EXPECT_THAT(getters[""], ElementsAre("getProjectUserDbPath", "getObjectSkeyBasicPath",
                                         "set_escape_dbengine", "escape_dbkey"));
}

TEST_F(ConfigSample, OnlyTheGapIsComplainedOfAndEveryPathIsThere)
{
    const Json answers = Json::parse(runSample({"table", "--json"}).output)["answers"];
    for (const Json& answer : answers) {
        EXPECT_NE(answer["file"], "missing") << answer;
        const bool isGap =
            answer["getter"] == "getProjectStanpart" && answer["arguments"]["module"] == "PIPE";
        EXPECT_EQ(answer["from"] == "fallback", isGap || answer["getter"] == "getQuorInt2Str_key") << answer;
        EXPECT_EQ(answer["messages"],
                  isGap ? Json::array({"系统配置出错，请联系开发商，getProjectStanpart: PIPE"})
                        : Json::array())
            << answer;
    }
}

TEST_F(ConfigSample, SetUpFunctionsChangeTheAnswers)
{
    const struct {
        Arguments arguments;
        const char* answer;
    } cases[] = {
        {{"projectStan", "--module", "PIPE", "--init-arg", "ASME"}, "PROJECT/standard/ASME.quor"},
        {{"projectStan", "--module", "PIPE", "--init-arg", "GB"}, "PROJECT/standard/GB.quor"},
        {{"projectUserDbPath", "--user-version", "1"}, "PROJECT/user/version1"},
        {{"projectSpec_dbkey", "--module", "HVAC", "--design-db-module", "EQUIP"}, "EQUIP:spec"},
    };
    for (const auto& [arguments, answer] : cases) {
        const CommandRun run = runSample(together({"get"}, arguments));
        EXPECT_EQ(withoutFolders(run.output), std::string(answer) + "\n");
        EXPECT_EQ(run.exitCode, 0);
    }
}

TEST_F(ConfigSample, StandardThatIsUnknownIsSaid)
{
    const CommandRun run = runSample({"table", "--module", "PIPE", "--json", "--init-arg", "ISO"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.errors, StartsWith("no standard is called \"ISO\"; GB it is\n"));
    EXPECT_EQ(Json::parse(run.output)["messages"], Json::array({"no standard is called \"ISO\"; GB it is"}));
}

TEST_F(ConfigSample, KeyIsEscapedForTheEngineThatTheTableSets)
{
    const Json table = Json::parse(
        runSample({"table", "--module", "PIPE", "--json", "--engine", "odbc", "--key", "PIPE:spec"}).output);
    EXPECT_EQ(table["answers"].back()["answer"], R"("PIPE"."spec")");
}

TEST_F(ConfigSample, NamesFromTheHostMayHoldBackslashesOfBothKinds)
{
    const CommandRun run = runSample(
        {"get", "projectPath", "--module", "PIPE", "--part", "drawing", "--file", "a\\b/誠\\c", "--json"});
    // The second half of that character is a backslash in GBK, and stays.
    EXPECT_EQ(withoutFolders(Json::parse(run.output)["answer"]), "PROJECT/drawings/a/b/誠/c");
}

TEST_F(ConfigAnswers, OfEveryKindAreOnOneLine)
{
    const struct {
        const char* body;
        const char* line;
        Json json;
        const char* from;
    } cases[] = {
        {"return 'a text'", "a text\n", "a text", "script"},
        {"return ''", "\n", "", "script"},
        {"return nil", "", nullptr, "none"},
        {"return 5", "", nullptr, "none"},
        {"return 'two\\nlines'", "two\\x0Alines\n", "two\nlines", "script"},
    };
    for (const auto& [body, line, json, from] : cases) {
        write(projectScript, std::string("function isDigitalStan() ") + body + " end");
        const CommandRun run = this->run({"get", "isDigitalStan", "--module", "PIPE"});
        EXPECT_EQ(run.exitCode, 0) << body;
        EXPECT_EQ(run.output, line) << body;
        EXPECT_EQ(run.errors, std::string("isDigitalStan: ") + from + "\n") << body;
        EXPECT_EQ(Json::parse(this->run({"get", "isDigitalStan", "--module", "PIPE", "--json"}).output),
                  (Json{{"getter", "isDigitalStan"},
                        {"arguments", {{"module", "PIPE"}}},
                        {"answer", json},
                        {"from", from},
                        {"file", nullptr},
                        {"raised", false},
                        {"messages", Json::array()}}))
            << body;
    }
}

TEST_F(ConfigAnswers, PathsAreLookedForWithSeparatorsOfEitherKind)
{
    const struct {
        const char* answer;
        const char* file;
    } cases[] = {
        {"kxcom.projectPath() .. '/spec/A1A.quor'", "exists"},
        {"kxcom.projectPath() .. '\\\\spec\\\\A1A.quor'", "exists"},
        // Before a drive no separator can stand.
        {testsystem::isWindows ? "(kxcom.projectPath():gsub('\\\\', '/')) .. '\\\\spec'"
                               : "'\\\\' .. kxcom.projectPath() .. '\\\\spec'",
         "exists"},
        {"kxcom.projectPath() .. '/spec/'", "exists"},
        {"kxcom.projectPath() .. '/spec/B3A.quor'", "missing"},
        {"'spec\\\\A1A.quor'", "exists"},
        {"'A1A.quor'", "missing"},
        {"'C:\\\\plant\\\\A1A.quor'", "missing"},
    };
    for (const auto& [answer, file] : cases) {
        const CommandRun run = runSpec(std::string("function getProjectSpec() return ") + answer + " end");
        EXPECT_EQ(Json::parse(run.output)["file"], file) << answer;
    }
}

TEST_F(ConfigAnswers, TableShowsWhatIsMissing)
{
    write(projectScript, "function getProjectSpec() return kxcom.projectPath() .. '/nowhere' end");
    const CommandRun run = this->run({"table", "--module", "PIPE"});
    EXPECT_THAT(run.output, HasSubstr("\nPIPE    getProjectSpec             script    missing  " +
                                      systemPath("project") + "/nowhere\nPIPE "));
    EXPECT_THAT(run.output, HasSubstr("\nPIPE    getProjectAttr             fallback  missing  " +
                                      systemPath("project/projectAttr.quor") +
                                      "\n    attempt to call global `getProjectAttr' (not a function)\n    "
                                      "系统配置出错，请联系开发商，getProjectAttr: PIPE\nPIPE "));
}

TEST_F(ConfigAnswers, PermittedNullGivesNeitherMessageNorFallback)
{
    const std::string script = "function getProjectSpec() end";
    EXPECT_EQ(Json::parse(runSpec(script).output)["from"], "fallback");
    const Json quiet = Json::parse(runSpec(script, {"--permit-null"}).output);
    EXPECT_EQ(quiet["answer"], nullptr);
    EXPECT_EQ(quiet["from"], "none");
    EXPECT_EQ(quiet["messages"], Json::array());
}

TEST_F(ConfigAnswers, ArgumentThatComesBackIsSaidToBeOne)
{
    write(projectScript, "function getProjDatabaseClass() error('asked') end");
    write(systemScript, "function initConfig() end function escape_dbkey() return '' end");
    const struct {
        Arguments arguments;
        const char* answer;
    } cases[] = {
        {{"get", "projDatabaseClass", "--module", "PIPE", "--given", "own.lua"}, "own.lua"},
        {{"get", "escape_dbkey", "--key", "闸阀"}, "闸阀"},
    };
    for (const auto& [arguments, answer] : cases) {
        const Json json = Json::parse(run(together(arguments, {"--json"})).output);
        EXPECT_EQ(json["answer"], answer);
        EXPECT_EQ(json["from"], "argument");
    }
}

TEST_F(ConfigAnswers, ScriptGetsTheTextsInGbkAndNilForWhatIsNotGiven)
{
    write(projectScript,
          "function getProjectSpec(m, n) return m .. '/' .. tostring(n) .. '/' .. #tostring(n) end");
    const auto answer = [this](const Arguments& arguments) { return Json::parse(run(arguments).output); };
    EXPECT_EQ(answer({"get", "projectSpec", "--module", "HVAC", "--name", "闸阀", "--json"})["answer"],
              "HVAC/闸阀/4");
    EXPECT_EQ(answer({"get", "projectSpec", "--module", "HVAC", "--name", "", "--json"})["answer"],
              "HVAC//0");
    const Json table = answer({"table", "--module", "HVAC", "--json"});
    const Json row = answerOf(table, "getProjectSpec");
    EXPECT_EQ(row["answer"], "HVAC/nil/3");
    EXPECT_EQ(row["arguments"], (Json{{"module", "HVAC"}}));
}

TEST_F(ConfigAnswers, TemplatePathIsAskedWithoutAModuleToo)
{
    write(projectScript, "function getProjectTemplate(m) return '<' .. m .. '>' end");
    EXPECT_EQ(run({"get", "projectTemplatePath", "--sub", "x"}).output, "<>\\x\n");
    EXPECT_EQ(run({"get", "projectTemplatePath", "--module", "ISO"}).output, "<ISO>\n");
}

TEST_F(ConfigAnswers, AnotherProjectScriptIsTakenFromTheBinFolder)
{
    write(projectScript, "error('not this one')");
    write("installation/bin/other.lua", "function getProjectSpec() return 'of other' end");
    const CommandRun run =
        this->run({"get", "projectSpec", "--module", "PIPE", "--name", "", "--config", "other.lua"});
    EXPECT_EQ(run.output, "of other\n");
    EXPECT_EQ(run.exitCode, 0);
}

TEST_F(ConfigAnswers, FolderNamesAreTheSystemsBytesAndTheRestIsGbk)
{
    const std::string project = sys::inSystemForm(scratch_.makeFolder("项目"));
    // "管道" in GBK, behind the folder's name in the character set of file names.
    write(projectScript, "function getProjectSpec() return kxcom.projectPath() .. '/\xB9\xDC\xB5\xC0' end "
                         "function isDigitalStan() return '\xB9\xDC\xB5\xC0' end");
    const Arguments folders = {"--installation", path("installation"), "--project", project};
    const Arguments utf8 = {"LC_ALL=C.UTF-8"};
    const Json table = Json::parse(
        runQuor(together({"config", "table", "--module", "PIPE", "--json"}, folders), utf8).output);
    EXPECT_EQ(table["project"], project);
    EXPECT_EQ(answerOf(table, "getProjectSpec")["answer"], project + "/管道");
    EXPECT_EQ(answerOf(table, "isDigitalStan")["answer"], "管道");
    EXPECT_EQ(answerOf(table, "getProjectAttr")["answer"], project + sys::inSystemForm("/projectAttr.quor"));
}

TEST_F(ConfigAnswers, WhatScriptsPrintGoesToStandardError)
{
    write(projectScript,
          "print('\xB9\xDC\xB5\xC0', 12, nil) io.write('written\\n') io.stdout:write('again\\n') "
          "os.execute('echo from a shell') "
          "local proxy = newproxy(true) "
          "getmetatable(proxy).__gc = function() print('at the end') io.write('the end\\n') end "
          "kept = proxy function isDigitalStan() print() return 'GB' end");
    const CommandRun run = this->run({"get", "isDigitalStan", "--module", "PIPE"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, "GB\n");
    EXPECT_THAT(run.errors, AllOf(HasSubstr("管道\t12\tnil\n"), HasSubstr("written\nagain\n"),
                                  HasSubstr(testsystem::echoed("from a shell")), HasSubstr("at the end\n"),
                                  HasSubstr("the end\n"), EndsWith("isDigitalStan: script\n")));
}

TEST_F(ConfigAnswers, LinesAreInTheTerminalsCharacterSet)
{
    write(projectScript, "function isDigitalStan() return '\xB9\xDC\xB5\xC0\xFF' end");
    const CommandRun run = this->run({"get", "isDigitalStan", "--module", "PIPE"});
    EXPECT_EQ(run.output, "管道\\xFF\n");
    const CommandRun latin =
        this->run({"get", "isDigitalStan", "--module", "PIPE"}, {"LC_ALL=de_DE.ISO-8859-1"});
    EXPECT_EQ(latin.output, "\\u{7BA1}\\u{9053}\\xFF\n");
}

} // namespace

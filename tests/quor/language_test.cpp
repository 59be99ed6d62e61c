// The language of the library's messages, as --language and the environment choose it.

#include "CommandRun.h"
#include "MoFile.h"
#include "TestSystem.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* raisingScript = "function main() error('no', 0) end";
constexpr const char* inEnglish = "\nGraphic library call failed: main (error 2003)\n";
constexpr const char* inChinese = "\n图形库调用出错：main (error 2003)\n";
constexpr const char* inChineseGbk =
    "\n\xCD\xBC\xD0\xCE\xBF\xE2\xB5\xF7\xD3\xC3\xB3\xF6\xB4\xED\xA3\xBAmain (error 2003)\n";

/// Takes away what the environment of the tests says of languages; the terminal is one of UTF-8.
Arguments with(const Arguments& settings)
{
    Arguments all = {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG", "LOCPATH", "LC_CTYPE=C.UTF-8"};
    all.insert(all.end(), settings.begin(), settings.end());
    return all;
}

/// The Chinese message where the terminal's character set is named, be it UTF-8; on Windows a locale without
/// one leaves it to the system.
std::string chineseUnder(const Arguments& settings)
{
    for (const std::string& setting : settings) {
        const std::string_view name = "LC_ALL=";
        if (testsystem::isWindows && setting.starts_with(name) && setting.size() > name.size() &&
            setting.find(".UTF-8") == std::string::npos)
            return inChineseGbk;
    }
    return inChinese;
}

std::string shown(const Arguments& settings)
{
    std::string text;
    for (const std::string& setting : settings)
        text += setting + " ";
    return text;
}

class Language : public testing::Test {
protected:
    /// What a script that raises an error is told of.
    std::string failure(const Arguments& settings, const Arguments& before = {}, const Arguments& behind = {})
    {
        Arguments arguments = before;
        arguments.insert(arguments.end(), {"draw", "-q", raising_});
        arguments.insert(arguments.end(), behind.begin(), behind.end());
        const CommandRun run = runQuor(arguments, with(settings));
        EXPECT_EQ(run.exitCode, 1) << shown(settings) << run.errors;
        return run.errors;
    }

    const ScratchFolder scratch_;
    const std::string raising_ = scratch_.write("raising.lua", raisingScript);
};

TEST_F(Language, IsChineseWithoutAnyWordForIt)
{
    EXPECT_THAT(failure({}), EndsWith(inChinese));
}

TEST_F(Language, IsEnglishWhereTheLocaleIs)
{
    for (const char* variable : {"LANG", "LC_MESSAGES", "LC_ALL"}) {
        for (const char* locale : {"en", "en_US", "en_US.UTF-8", "en_GB.utf8", "en_US.ISO-8859-1",
                                   "en_IE@euro", "en_IE.UTF-8@euro", "en.UTF-8", "en_XX.nothing"}) {
            const std::string setting = std::string(variable) + "=" + locale;
            EXPECT_THAT(failure({setting}), EndsWith(inEnglish)) << setting;
        }
    }
}

TEST_F(Language, IsChineseWhereTheLocaleIsChineseOrPlainOrHasNoCatalogue)
{
    for (const char* variable : {"LANG", "LC_MESSAGES", "LC_ALL"}) {
        for (const char* locale : {"zh",
                                   "zh_CN",
                                   "zh_CN.UTF-8",
                                   "zh_TW.UTF-8",
                                   "zh_CN.UTF-8@stroke",
                                   "C",
                                   "POSIX",
                                   "C.UTF-8",
                                   "",
                                   "de_DE.UTF-8",
                                   "eng",
                                   "EN",
                                   "e",
                                   "_US",
                                   ".UTF-8",
                                   "@en",
                                   "/",
                                   "..",
                                   "../en",
                                   "en/../en",
                                   "."}) {
            const std::string setting = std::string(variable) + "=" + locale;
            const std::string errors = failure({setting});
            EXPECT_THAT(errors, EndsWith(chineseUnder({setting}))) << setting;
            EXPECT_THAT(errors, Not(HasSubstr("catalogue"))) << setting;
        }
    }
}

TEST_F(Language, FollowsTheVariablesInTheOrderOfGettext)
{
    const struct {
        Arguments settings;
        bool english;
    } cases[] = {
        {{"LC_ALL=en", "LC_MESSAGES=zh_CN", "LANG=zh_CN"}, true},
        {{"LC_ALL=zh_CN", "LC_MESSAGES=en", "LANG=en"}, false},
        {{"LC_ALL=C", "LC_MESSAGES=en", "LANG=en"}, false},
        {{"LC_ALL=de_DE", "LC_MESSAGES=en", "LANG=en"}, false},
        {{"LC_ALL=", "LC_MESSAGES=en", "LANG=zh_CN"}, true},
        {{"LC_MESSAGES=zh_CN", "LANG=en"}, false},
        {{"LC_MESSAGES=POSIX", "LANG=en"}, false},
        {{"LC_MESSAGES=", "LANG=en"}, true},
        {{"LC_CTYPE=en_US.UTF-8", "LANG=zh_CN"}, false},
        {{"LANGUAGE=en", "LANG=zh_CN"}, true},
        {{"LANGUAGE=en", "LC_ALL=zh_CN.UTF-8", "LANG=zh_CN"}, true},
        {{"LANGUAGE=zh", "LANG=en_US.UTF-8"}, false},
        {{"LANGUAGE=en_GB.UTF-8", "LANG=de"}, true},
        {{"LANGUAGE=de:en:zh", "LANG=zh"}, true},
        {{"LANGUAGE=de:zh_CN:en", "LANG=en"}, false},
        {{"LANGUAGE=::en", "LANG=de"}, true},
        {{"LANGUAGE=C:en", "LANG=de"}, false},
        {{"LANGUAGE=de:fr", "LANG=en"}, false},
        {{"LANGUAGE=:", "LANG=en"}, false},
        {{"LANGUAGE=", "LANG=en"}, true},
    };
    for (const auto& [settings, english] : cases)
        EXPECT_THAT(failure(settings), EndsWith(english ? inEnglish : chineseUnder(settings)))
            << shown(settings);
}

TEST_F(Language, ListIsNotReadWhereTheLocaleIsPlain)
{
    for (const char* locale :
         {"LC_ALL=C", "LC_ALL=POSIX", "LC_ALL=C.UTF-8", "LC_MESSAGES=C", "LANG=C", "LANG="})
        EXPECT_THAT(failure({"LANGUAGE=en", locale}), EndsWith(chineseUnder({locale}))) << locale;
}

TEST_F(Language, OptionStandsBeforeOrBehindTheSubcommand)
{
    EXPECT_THAT(failure({}, {"--language", "en"}), EndsWith(inEnglish));
    EXPECT_THAT(failure({}, {"--language=en"}), EndsWith(inEnglish));
    EXPECT_THAT(failure({}, {}, {"--language", "en"}), EndsWith(inEnglish));
    EXPECT_THAT(failure({}, {}, {"--language=en"}), EndsWith(inEnglish));
}

TEST_F(Language, OptionBeatsEveryVariable)
{
    EXPECT_THAT(
        failure({"LANGUAGE=zh", "LC_ALL=zh_CN.UTF-8", "LC_MESSAGES=zh", "LANG=zh"}, {"--language", "en"}),
        EndsWith(inEnglish));
    EXPECT_THAT(
        failure({"LANGUAGE=en", "LC_ALL=en_US.UTF-8", "LC_MESSAGES=en", "LANG=en"}, {"--language", "zh"}),
        EndsWith(inChinese));
}

TEST_F(Language, OptionGivenLastCounts)
{
    EXPECT_THAT(failure({}, {"--language", "zh", "--language", "en"}), EndsWith(inEnglish));
    EXPECT_THAT(failure({}, {"--language", "zh"}, {"--language", "en"}), EndsWith(inEnglish));
    EXPECT_THAT(failure({}, {"--language", "en"}, {"--language", "zh"}), EndsWith(inChinese));
}

TEST_F(Language, OptionNeedsNoLocale)
{
    for (const char* locale : {"LC_ALL=C", "LANG=C", "LANG", "LC_ALL=en_US.UTF-8"}) {
        EXPECT_THAT(failure({locale, "LOCPATH=" + scratch_.path("")}, {"--language", "en"}),
                    EndsWith(inEnglish))
            << locale;
    }
}

TEST_F(Language, OptionThatNamesNoneIsWrongUsageAndRunsNothing)
{
    const std::string output = scratch_.write("out.json", "of before");
    const fs::path prefix = fs::path(quorCommand()).parent_path().parent_path();
    for (const char* word : {"fr", "EN", "en_US", "en_US.UTF-8", "zh_CN", "C", "", "../en", "en/", "."}) {
        const CommandRun run =
            runQuor({"draw", raising_, "-o", output, "--language", word}, with({"LANG=en_US.UTF-8"}));
        EXPECT_EQ(run.exitCode, 2) << word;
        EXPECT_EQ(run.errors, std::string("quor: --language ") + word +
                                  ": one of these is expected: en, zh\nlooked for catalogues in:\n  " +
                                  sys::inSystemForm((prefix / "share/locale").string()) + "\n");
        EXPECT_EQ(readFile(output), "of before");
    }
}

TEST_F(Language, OptionWithoutAWordIsWrongUsage)
{
    const CommandRun run = runQuor({"draw", raising_, "--language"}, with({}));
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_THAT(run.errors, StartsWith("quor: --language"));
}

TEST_F(Language, HelpOfEverySubcommandNamesTheOption)
{
    const std::string help = runQuor({"--help"}, with({})).output;
    EXPECT_THAT(help, HasSubstr("--language LANGUAGE"));
    const std::size_t list = help.find("Subcommands:\n");
    ASSERT_NE(list, std::string::npos);
    const std::regex name("\n  ([a-z]+) ");
    Arguments names;
    for (std::sregex_iterator match(help.begin() + static_cast<std::ptrdiff_t>(list), help.end(), name), end;
         match != end; ++match)
        names.push_back((*match)[1].str());
    EXPECT_THAT(names, testing::Contains("draw"));
    for (const std::string& command : names)
        EXPECT_THAT(runQuor({command, "--help"}, with({})).output, HasSubstr("--language LANGUAGE"))
            << command;
}

TEST_F(Language, IsThatOfTheSegmentsFailures)
{
    const CommandRun run =
        runQuor({"draw", scratch_.write("a.lua", "function main() end"), "--language", "en"}, with({}));
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, EndsWith("\nThe graphic library script returned no result (error 2007)\n"));
}

TEST_F(Language, IsThatOfTheRecordsMessages)
{
    const struct {
        const char* record;
        const char* english;
        const char* chinese;
    } cases[] = {
        {"{41, 1, 2}", "A boolean operation must have 4 parameters; it has: 3\n",
         "布尔运算参数应该为4个，目前为: 3\n"},
        {"{41, {}, 2, 3}", "Parameter 2 of a boolean operation must be the type of the operation\n",
         "布尔计算第2个参数应该为布尔运算类型\n"},
        {"{41, 4, 2, {{0,0,0}}}", "Parameter 2 of the definition of a cutting plane must be a direction\n",
         "布尔切割平面定义第2个参数应该为方向\n"},
        {"{31}", "An ellipse must have 7 parameters; it has: 1\n", "椭圆参数应该为7个，目前为: 1\n"},
        {"{31, {0,0,0}, {0,0,1}, {1,0,0}, 1, {}, 6}", "Parameter 5 of an ellipse must be a number\n",
         "椭圆第5个参数应该为数\n"},
    };
    for (const auto& [record, english, chinese] : cases) {
        const std::string script =
            scratch_.write("a.lua", std::string("function main() return {") + record + "} end");
        for (const auto& [language, text] : {std::pair("en", english), std::pair("zh", chinese)}) {
            const CommandRun run = runQuor({"draw", "-q", script, "--language", language}, with({}));
            EXPECT_EQ(run.exitCode, 0) << record;
            EXPECT_EQ(run.errors, text) << record;
        }
    }
}

TEST_F(Language, IsThatOfTheConfigurationsMessages)
{
    scratch_.write("bin/quorModuleSystem.lua", "");
    const struct {
        Arguments getter;
        const char* place;
    } cases[] = {
        {{"projectSpec", "--module", "PIPE", "--name", "A1A"}, "getProjectSpec: PIPE\n"},
        {{"projectSpec_dbkey", "--module", "PIPE"}, "getProjectSpec_dbkey: PIPE\n"},
        {{"projectUserDbPath"}, "getProjectUser\n"},
    };
    for (const auto& [getter, place] : cases) {
        Arguments arguments = {"config", "get"};
        arguments.insert(arguments.end(), getter.begin(), getter.end());
        arguments.insert(arguments.end(), {"--installation", scratch_.path(""), "--project",
                                           scratch_.path(""), "--language", "en"});
        const std::string english = "\nSystem configuration error, please contact the developer: ";
        EXPECT_THAT(runQuor(arguments, with({})).errors, HasSubstr(english + place));
        arguments.back() = "zh";
        EXPECT_THAT(runQuor(arguments, with({})).errors,
                    HasSubstr(std::string("\n系统配置出错，请联系开发商，") + place));
    }
}

TEST_F(Language, ChangesNeitherTheCommandsWordsNorTheScripts)
{
    const std::string script =
        scratch_.write("a.lua", "print('\xCD\xBC') function main() return {{26, {1, 2, 3}, 4}} end");
    const CommandRun english = runQuor({"draw", script, "--language", "en"}, with({}));
    const CommandRun chinese = runQuor({"draw", script, "--language", "zh"}, with({}));
    EXPECT_EQ(english.errors, "图\na.lua main: 1 primitive\n");
    EXPECT_EQ(chinese.errors, english.errors);
    EXPECT_EQ(chinese.output, english.output);
}

TEST_F(Language, LeavesTheLocaleAlone)
{
    const ScratchFolder locales;
    const Arguments german = testsystem::terminalOf(locales, "de_DE", "UTF-8");
    if (german.empty()) GTEST_SKIP() << "localedef makes no de_DE.UTF-8 here (package locales)";
    const std::string script =
        scratch_.write("a.lua", "local before = os.setlocale()\n"
                                "function main()\n"
                                "  assert(before == 'C' and os.setlocale() == 'C', before)\n"
                                "  assert(tonumber('2.5') == 5 / 2)\n"
                                "  assert(not os.getenv('LANGUAGE'))\n"
                                "  return {}\nend\n");
    const CommandRun run = runQuor({"draw", "-q", script, "--language", "en"}, with(german));
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
}

TEST_F(Language, IsNoneOfTheTerminalsCharacterSet)
{
    const std::string valve = "\xD5\xA2\xB7\xA7";
    scratch_.write("raising.lua", "function main() error('" + valve + "', 0) end");
    EXPECT_THAT(failure({"LC_ALL=zh_CN.GBK"}), AllOf(StartsWith(valve + "\n"), EndsWith(inChineseGbk)));
    EXPECT_THAT(failure({"LC_ALL=zh_CN.GBK"}, {"--language", "en"}),
                AllOf(StartsWith(valve + "\n"), EndsWith(inEnglish)));
    EXPECT_THAT(failure({"LC_CTYPE=zh_CN.GBK", "LANG=en_US.UTF-8"}),
                AllOf(StartsWith(valve + "\n"), EndsWith(inEnglish)));
    EXPECT_THAT(failure({"LC_ALL=en_US.UTF-8"}, {"--language", "zh"}),
                AllOf(StartsWith("闸阀\n"), EndsWith(inChinese)));
}

/// The program in a folder of its own, whose catalogues the test chooses.
class MovedProgram : public Language {
protected:
    MovedProgram() { program_ = testsystem::copyCommand(prefix_.path("bin")); }

    static std::string place(const std::string& language)
    {
        return "share/locale/" + language + "/LC_MESSAGES/QuorScriptor.mo";
    }

    CommandRun draw(const Arguments& settings, const Arguments& arguments)
    {
        return drawBy(program_, settings, arguments);
    }
    CommandRun drawBy(const std::string& program, const Arguments& settings, const Arguments& arguments)
    {
        Arguments command = {program, "draw", "-q", raising_};
        command.insert(command.end(), arguments.begin(), arguments.end());
        Arguments all = with(settings);
        const Arguments own = testsystem::settingsOfCopy();
        all.insert(all.end(), own.begin(), own.end());
        return runProgram(command, all);
    }

    const ScratchFolder prefix_;
    std::string program_;
};

TEST_F(MovedProgram, TakesTheCataloguesBesideIt)
{
    prefix_.write(place("en"), moFile({moHead, {"图形库调用出错：%s", "no luck with %s"}}));
    Arguments programs = {program_};
    // The loader of Windows looks for libraries beside the link.
    if (!testsystem::isWindows && sys::makeLink(program_, prefix_.path("link")))
        programs.push_back(prefix_.path("link"));
    for (const std::string& program : programs) {
        EXPECT_THAT(drawBy(program, {"LANG=en_US.UTF-8"}, {}).errors,
                    EndsWith("\nno luck with main (error 2003)\n"))
            << program;
    }
}

TEST_F(MovedProgram, ShowsChineseAndSaysNothingWhenTheEnvironmentsCatalogueIsMissing)
{
    const std::string errors = draw({"LANG=zh_CN.UTF-8"}, {}).errors;
    EXPECT_THAT(errors, EndsWith(inChinese));
    EXPECT_EQ(draw({"LANG=en_US.UTF-8"}, {}).errors, errors);
    fs::create_directories(fs::path(prefix_.path(place("en"))).parent_path());
    EXPECT_EQ(draw({"LANG=en_US.UTF-8"}, {}).errors, errors);
}

TEST_F(MovedProgram, TakesALanguageWithoutACatalogueForWrongUsage)
{
    const CommandRun run = draw({}, {"--language", "en"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.errors, "quor: --language en: one of these is expected: zh\nlooked for catalogues in:\n  " +
                              sys::inSystemForm(prefix_.path("share/locale")) + "\n");
    EXPECT_THAT(draw({}, {"--language", "zh"}).errors, EndsWith(inChinese));
}

TEST_F(MovedProgram, ShowsChineseAndSaysWhyWhenACatalogueIsDamaged)
{
    const std::string whole = moFile({moHead, {"图形库调用出错：%s", "no luck with %s"}});
    const std::string path = prefix_.path(place("en"));
    const struct {
        std::string bytes;
        const char* found;
    } cases[] = {
        {"", "the file is too short"},
        {whole.substr(0, whole.size() - 1), "a text reaches beyond the file's end"},
        {"msgid \"not compiled\"\n", "the file begins otherwise"},
    };
    for (const auto& [bytes, found] : cases) {
        prefix_.write(place("en"), bytes);
        const std::string line = "quor: messages stay in Chinese: " + sys::inSystemForm(path) +
                                 ": a compiled catalogue of messages is expected; " + found + "\n";
        for (const CommandRun& run : {draw({"LANG=en"}, {}), draw({}, {"--language", "en"})}) {
            EXPECT_EQ(run.exitCode, 1);
            EXPECT_THAT(run.errors, AllOf(StartsWith(line), EndsWith(inChinese)));
        }
    }
}

TEST_F(MovedProgram, IsNotHeldUpByACatalogueThatIsNoFile)
{
    // Pipes stand in no folder of Windows.
    std::optional<testsystem::Pipe> pipe;
    if (testsystem::isWindows)
        fs::create_directories(prefix_.path(place("en")));
    else
        pipe.emplace(prefix_, place("en"));
    const std::string path = sys::inSystemForm(prefix_.path(place("en")));
    EXPECT_THAT(draw({"LANG=en"}, {}).errors,
                AllOf(StartsWith("quor: messages stay in Chinese: " + path + ": cannot be read: "),
                      EndsWith(inChinese)));
}

TEST_F(MovedProgram, TakesTheCatalogueThatSuitsTheLocaleBest)
{
    for (const char* language : {"de", "de_CH", "de@alt", "de_CH@alt"})
        prefix_.write(place(language),
                      moFile({moHead, {"图形库调用出错：%s", std::string(language) + " %s"}}));
    const struct {
        const char* locale;
        const char* language;
    } cases[] = {
        {"de", "de"},
        {"de_AT.UTF-8", "de"},
        {"de_CH.UTF-8", "de_CH"},
        {"de_CH.UTF-8@alt", "de_CH@alt"},
        {"de_AT@alt", "de@alt"},
        {"de_CH@other", "de_CH"},
        {"de@other", "de"},
    };
    for (const auto& [locale, language] : cases) {
        EXPECT_THAT(draw({std::string("LANG=") + locale}, {}).errors,
                    EndsWith(std::string("\n") + language + " main (error 2003)\n"))
            << locale;
    }
    fs::remove(prefix_.path(place("de_CH@alt")));
    EXPECT_THAT(draw({"LANG=de_CH@alt"}, {}).errors, EndsWith("\nde@alt main (error 2003)\n"));
    EXPECT_THAT(draw({}, {"--language", "de_CH"}).errors, EndsWith("\nde_CH main (error 2003)\n"));
    EXPECT_THAT(draw({}, {"--language", "en"}).errors,
                HasSubstr("one of these is expected: de, de@alt, de_CH, zh\n"));
}

TEST_F(MovedProgram, LeavesOutATranslationThatGbkCannotWrite)
{
    prefix_.write(place("de"), moFile({moHead, {"图形库调用出错：%s", "%s läßt sich nicht rufen"}}));
    EXPECT_THAT(draw({"LANG=de"}, {}).errors, EndsWith(inChinese));
    prefix_.write(place("de"), moFile({moHead, {"图形库调用出错：%s", "%s gilt nüt"}}));
    EXPECT_THAT(draw({"LANG=de"}, {}).errors, EndsWith("\nmain gilt nüt (error 2003)\n"));
}

TEST_F(MovedProgram, ShowsATextWithoutATranslationInChinese)
{
    prefix_.write(place("en"), moFile({moHead, {"图形库脚本未返回结果", "nothing"}}));
    EXPECT_THAT(draw({"LANG=en"}, {}).errors, EndsWith(inChinese));
}

TEST_F(MovedProgram, ReadsNoTranslationAsMoreThanItsArguments)
{
    prefix_.write(place("en"), moFile({moHead, {"图形库调用出错：%s", "%s %s %n %d"}}));
    EXPECT_THAT(draw({"LANG=en"}, {}).errors, EndsWith("\nmain %s %n %d (error 2003)\n"));
}

} // namespace

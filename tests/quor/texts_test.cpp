// Chinese texts: GBK in scripts, UTF-8 in JSON, the terminal's character set in messages and lines.

#include "CommandRun.h"
#include "TestSystem.h"

#include <cstdint>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

// The same words in both character sets.
constexpr const char* valveGbk = "\xD5\xA2\xB7\xA7";
constexpr const char* valveUtf8 = "闸阀";
constexpr const char* failedGbk = "\xCD\xBC\xD0\xCE\xBF\xE2\xB5\xF7\xD3\xC3\xB3\xF6\xB4\xED\xA3\xBA";

const Arguments utf8Terminal = {"LC_ALL=C.UTF-8"};

/// A GBK locale, made in a folder of its own.
class GbkLocale {
public:
    bool isThere() const { return !settings_.empty(); }
    const Arguments& environment() const { return settings_; }

private:
    const ScratchFolder folder_;
    const Arguments settings_ = testsystem::terminalOf(folder_, "zh_CN", "GBK");
};

/// What a text is in a terminal that no variable tells of: UTF-8, or on Windows in the ANSI code page, 936.
std::string untold(const std::string& utf8, const std::string& gbk)
{
    return testsystem::isWindows ? gbk : utf8;
}

std::string textScript(const std::string& text)
{
    return "function main() return {{19, 0, {0,0,0}, '" + text + "', 0}} end";
}

class Texts : public testing::Test {
protected:
    CommandRun draw(const std::string& script, const Arguments& arguments, const Arguments& environment)
    {
        Arguments all = {"draw", "-q", scratch_.write("t.lua", script)};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return runQuor(all, environment);
    }

    const ScratchFolder scratch_;
};

TEST_F(Texts, JsonIsUtf8WhateverTheTerminalIs)
{
    const GbkLocale gbk;
    if (!gbk.isThere()) GTEST_SKIP() << "localedef makes no zh_CN.GBK here (package locales)";
    for (const Arguments& terminal :
         {utf8Terminal, gbk.environment(), Arguments{"LC_ALL=C"}, Arguments{"LC_ALL"}}) {
        const CommandRun run = draw(textScript(valveGbk), {}, terminal);
        EXPECT_EQ(Json::parse(run.output)["primitives"][0]["args"][2], valveUtf8);
    }
}

TEST_F(Texts, LinesAndMessagesAreInTheTerminalsCharacterSet)
{
    const GbkLocale gbk;
    if (!gbk.isThere()) GTEST_SKIP() << "localedef makes no zh_CN.GBK here (package locales)";
    const struct {
        const char* what;
        Arguments terminal;
        std::string valve;
        std::string failed;
    } cases[] = {
        {"UTF-8", utf8Terminal, valveUtf8, "图形库调用出错："},
        {"GBK", gbk.environment(), valveGbk, failedGbk},
        {"unknown", {"LC_ALL=C"}, untold(valveUtf8, valveGbk), untold("图形库调用出错：", failedGbk)},
    };
    for (const auto& [what, terminal, valve, failed] : cases) {
        const CommandRun lines = draw(textScript(valveGbk), {"--format", "text"}, terminal);
        EXPECT_THAT(lines.output,
                    StartsWith(std::string("0 createQuorText(0, (0, 0, 0), \"") + valve + "\", 0)"))
            << what;
        const CommandRun error =
            draw(std::string("function main() error('") + valveGbk + "', 0) end", {}, terminal);
        EXPECT_THAT(error.errors, StartsWith(std::string(valve) + "\n")) << what;
        EXPECT_THAT(error.errors, HasSubstr(std::string(failed) + "main (error 2003)\n")) << what;
        const CommandRun printed =
            draw(std::string("print('") + valveGbk + "') function main() return {} end", {}, terminal);
        EXPECT_EQ(printed.errors, std::string(valve) + "\n") << what;
    }
}

TEST_F(Texts, LocaleThatIsNotGeneratedNamesTheCharacterSetAllTheSame)
{
    const struct {
        Arguments locale;
        std::string valve;
    } cases[] = {
        {{"LC_ALL=zh_CN.GBK"}, valveGbk},
        {{"LC_ALL=xx_YY.gbk@stroke"}, valveGbk},
        {{"LC_ALL=", "LC_CTYPE=zh_CN.GBK", "LANG=xx_YY.UTF-8"}, valveGbk},
        {{"LC_ALL", "LC_CTYPE", "LANG=zh_CN.GBK"}, valveGbk},
        {{"LC_ALL=xx_YY.utf8", "LANG=zh_CN.GBK"}, valveUtf8},
        {{"LC_ALL=xx_YY", "LANG=zh_CN.GBK"}, untold(valveUtf8, valveGbk)},
        {{"LC_ALL=xx_YY.nothing"}, untold(valveUtf8, valveGbk)},
        {{"LC_ALL=xx_YY."}, untold(valveUtf8, valveGbk)},
    };
    for (const auto& [locale, valve] : cases) {
        Arguments environment = {"LOCPATH"};
        environment.insert(environment.end(), locale.begin(), locale.end());
        const CommandRun run = draw(textScript(valveGbk), {"--format", "text"}, environment);
        EXPECT_THAT(run.output, HasSubstr(std::string("\"") + valve + "\"")) << locale.back();
    }
}

TEST_F(Texts, ArgumentsReachTheScriptAsGbk)
{
    const GbkLocale gbk;
    if (!gbk.isThere()) GTEST_SKIP() << "localedef makes no zh_CN.GBK here (package locales)";
    const std::string script = std::string("param = {} function main() assert(param['") + valveGbk +
                               "'] == '" + valveGbk + "') return {} end _G['" + valveGbk + "'] = main";
    const struct {
        Arguments terminal;
        std::string valve;
    } cases[] = {{utf8Terminal, valveUtf8},
                 {gbk.environment(), testsystem::argumentInGbk(valveUtf8, valveGbk)}};
    for (const auto& [terminal, valve] : cases) {
        const CommandRun run = draw(script, {"--set", valve + "=" + valve, "--segment", valve}, terminal);
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        EXPECT_EQ(Json::parse(run.output)["segment"], valveUtf8);
    }
}

TEST_F(Texts, ArgumentsThatGbkCannotWriteAreWrongUsage)
{
    const CommandRun run =
        draw("param = {} function main() return {} end", {"--set", "a=\U0001F600"}, utf8Terminal);
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.errors,
              "quor: --set a=\U0001F600: text that GBK can write is expected; a character in it has no "
              "place there\n");
}

TEST_F(Texts, ArgumentsThatAreNoTextAreWrongUsage)
{
    if (testsystem::isWindows) GTEST_SKIP() << "arguments are no bytes there";
    const CommandRun run =
        draw("param = {} function main() return {} end", {"--set", "a=\xFF\xFE"}, utf8Terminal);
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.errors, "quor: --set a=\xFF\xFE: text in UTF-8 is expected; 2 bytes of it are none\n");
}

TEST_F(Texts, BackslashAsSecondByteSurvives)
{
    // In quotes the author doubles it, in long brackets it stands as it is.
    for (const char* quoted : {"'\xD5\x5C\x5C\x41'", "[[\xD5\x5C\x41]]"}) {
        const CommandRun run =
            draw(std::string("function main() return {{19, 0, {0,0,0}, ") + quoted + ", 0}} end",
                 {"--format", "text"}, utf8Terminal);
        EXPECT_THAT(run.output, HasSubstr("\"\u8AA0A\"")) << quoted;
    }
}

TEST_F(Texts, BytesThatAreNoGbkAreKeptAndTold)
{
    const std::string script = textScript("a\\255\\129b\\254");
    const CommandRun json = draw(script, {}, utf8Terminal);
    EXPECT_EQ(json.exitCode, 0);
    EXPECT_EQ(Json::parse(json.output)["primitives"][0]["args"][2], "a\uF7FF\u4E65\uF7FE");
    EXPECT_THAT(json.errors,
                EndsWith("t.lua: 2 bytes in its texts are no GBK and stand as U+F780 to U+F7FF\n"));
    const CommandRun lines = draw(script, {"--format", "text"}, utf8Terminal);
    EXPECT_THAT(lines.output, HasSubstr("\"a\\xFF\u4E65\\xFE\""));
    EXPECT_THAT(lines.errors,
                EndsWith("t.lua: 2 bytes in its texts are no GBK and stand as \\x80 to \\xFF\n"));
}

TEST_F(Texts, EveryByteGivesValidJson)
{
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte)
        bytes += "\\" + std::to_string(byte) + "\\255";
    const CommandRun run = draw(textScript(bytes), {}, utf8Terminal);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(Json::parse(run.output)["primitives"].size(), 1u);
}

TEST_F(Texts, EveryPairOfBytesMeansTheSameOnEverySystem)
{
    const CommandRun run = draw(R"(
function main()
    local lines = {}
    for lead = 0x80, 0xFF do
        local pairs = {}
        for trail = 0x40, 0xFF do pairs[#pairs + 1] = string.char(lead, trail) .. ";" end
        lines[#lines + 1] = { 19, 0, { 0, 0, 0 }, table.concat(pairs), 0 }
    end
    return lines
end)",
                                {}, utf8Terminal);
    EXPECT_THAT(run.errors,
                EndsWith("t.lua: 4621 bytes in its texts are no GBK and stand as U+F780 to U+F7FF\n"));
    // Fowler, Noll and Vo's hash of the texts.
    std::uint64_t hash = 0xCBF29CE484222325;
    const Json drawing = Json::parse(run.output);
    for (const Json& primitive : drawing.at("primitives")) {
        for (const char byte : primitive.at("args").at(2).get_ref<const std::string&>())
            hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
    }
    EXPECT_EQ(hash, std::uint64_t{0xA71E12FA2936D7CF});
}

TEST_F(Texts, CharactersThatTheTerminalLacksAreWrittenByNumber)
{
    const ScratchFolder locales;
    const Arguments latin = testsystem::terminalOf(locales, "de_DE", "ISO-8859-1");
    if (latin.empty()) GTEST_SKIP() << "localedef makes no de_DE.ISO-8859-1 here (package locales)";
    const CommandRun run = draw(textScript(valveGbk), {"--format", "text"}, latin);
    EXPECT_THAT(run.output, HasSubstr("\"\\u{95F8}\\u{9600}\""));
}

TEST_F(Texts, PathsInMessagesStandAsTheSystemHasThem)
{
    const std::string error = std::string("function main()\n error('") + valveGbk + "')\nend";
    for (const char* folder :
         {"阀门", "很深的文件夹/一二三四五六七八九十一二三四五六七八九十一二三四五六七八九十"}) {
        const std::string path = scratch_.write(std::string(folder) + "/阀.lua", error);
        const CommandRun run = runQuor({"draw", path}, utf8Terminal);
        EXPECT_THAT(run.errors, HasSubstr("/阀.lua:2: 闸阀\n")) << folder;
        EXPECT_THAT(run.errors, HasSubstr("/阀.lua:2: in function <")) << folder;
        EXPECT_THAT(run.errors, HasSubstr("/阀.lua:1>\n")) << folder;
        EXPECT_THAT(run.errors, HasSubstr("\nquor: " + path + ":1: segment main")) << folder;
    }
    const std::string folder = scratch_.path("阀门");
    EXPECT_THAT(runQuor({"draw", folder}, utf8Terminal).errors, StartsWith("cannot open " + folder + ": "));
}

TEST_F(Texts, ScriptsNameIsUtf8InJson)
{
    const std::string path = scratch_.write("阀.lua", "function main() return {} end");
    const CommandRun run = runQuor({"draw", path}, utf8Terminal);
    EXPECT_EQ(Json::parse(run.output)["script"], "阀.lua");
    EXPECT_EQ(run.errors, "阀.lua main: 0 primitives\n");
}

TEST_F(Texts, LocaleDecidesNoNumber)
{
    const ScratchFolder locales;
    const Arguments german = testsystem::terminalOf(locales, "de_DE", "UTF-8");
    if (german.empty()) GTEST_SKIP() << "localedef makes no de_DE.UTF-8 here (package locales)";
    const std::string script =
        "param = {P1 = 1} function main() return {{26, {param.P1, tonumber('2.5'), 0}, 1}} end";
    const CommandRun run = draw(script, {"--set", "P1=0.5"}, german);
    EXPECT_EQ(Json::parse(run.output)["primitives"][0]["args"][0], Json::parse("[0.5, 2.5, 0]"));
    EXPECT_THAT(draw(script, {"--set", "P1=0.5", "--format", "text"}, german).output,
                HasSubstr("((0.5, 2.5, 0), 1)"));
}

} // namespace

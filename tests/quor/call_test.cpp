// The calling itself: how a function is found, what a failing call says, where the results go.

#include "CallRun.h"
#include "TestSystem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Json = nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

// The same words in both character sets.
constexpr const char* valveGbk = "\xD5\xA2\xB7\xA7";
constexpr const char* valveUtf8 = "闸阀";

class Call : public testing::Test {
protected:
    CommandRun call(const std::string& script, const Arguments& arguments)
    {
        return run_.call(script, arguments);
    }

    /// The same with an output of before, which a failing call removes.
    CommandRun failed(const std::string& script, const Arguments& arguments)
    {
        const std::string output = run_.folder().write("out.txt", "of before");
        Arguments all = arguments;
        all.insert(all.end(), {"-o", output});
        CommandRun run = call(script, all);
        EXPECT_EQ(run.exitCode, 1) << script;
        EXPECT_EQ(run.output, "") << script;
        EXPECT_EQ(run_.folder().names(), std::vector<std::string>{"s.lua"}) << script;
        return run;
    }

    const CallRun run_;
};

TEST_F(Call, PrintsTheResultsByLetter)
{
    const CommandRun run = call("function f(module, name) return #module, { 1, 2, 3 }, name .. '!' end",
                                {"ss>ips", "PIPE", "DN50"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, "i 4\np (1, 2, 3)\ns \"DN50!\"\n");
    EXPECT_EQ(run.errors, "s.lua f: 3 results\n");
}

TEST_F(Call, LetsAScriptKeepWhatStoodInTheFunctionsPlace)
{
    // A finalizer sees it there, keeps it, and calls it when the state is closed.
    const char* script = R"(
        collectgarbage('setpause', 0) collectgarbage('setstepmul', 100000) collectgarbage()
        local own, saved = function(x) return 1 end
        f = own
        local function arm()
            local p = newproxy(true)
            getmetatable(p).__gc = function()
                local there = rawget(_G, 'f')
                if there ~= own then saved = there else arm() end
            end
        end
        keep = newproxy(true)
        getmetatable(keep).__gc = function()
            if not saved then return io.stderr:write('never seen\n') end
            f = nil
            io.stderr:write('kept ', saved(1), ' ', type(rawget(_G, 'f')), '\n')
        end
        arm())";
    const CommandRun run = call(script, {"P>i", "[[1,2,3],[4,5,6]]"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, "i 1\n");
    if (run.errors.find("never seen") != std::string::npos) GTEST_SKIP() << "no collector ran meanwhile";
    EXPECT_THAT(run.errors, HasSubstr("kept 1 nil\n"));
}

TEST_F(Call, PrintsTheResultsAsJson)
{
    const CommandRun run = call("function f(x) return x / 3, true end", {"d>dn", "1", "--format", "json"});
    EXPECT_EQ(run.output, "{\"script\":\"s.lua\",\"function\":\"f\",\"format\":\"d>dn\",\n\"results\":[\n"
                          "{\"letter\":\"d\",\"value\":0.3333333333333333},\n"
                          "{\"letter\":\"n\",\"value\":true}]}\n");
    EXPECT_EQ(Json::parse(run.output)["results"][0]["value"].get<double>(), 1.0 / 3);
}

TEST_F(Call, NeedsNoResults)
{
    for (const char* format : {"", ">"}) {
        const CommandRun run = call("function f(...) print(select('#', ...)) end", {format});
        EXPECT_EQ(run.exitCode, 0) << format;
        EXPECT_EQ(run.output, "") << format;
        EXPECT_EQ(run.errors, "0\ns.lua f: 0 results\n") << format;
    }
    EXPECT_EQ(call("function f() end", {">", "--format", "json", "-q"}).output,
              "{\"script\":\"s.lua\",\"function\":\"f\",\"format\":\">\",\n\"results\":[]}\n");
}

TEST_F(Call, WritesAFile)
{
    const std::string output = run_.folder().path("out.txt");
    const CommandRun run = call("function f() return 5 end", {">i", "-o", output, "-q"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output + run.errors, "");
    EXPECT_EQ(readFile(output), "i 5\n");
}

TEST_F(Call, SeesTheParametersAndTheScene)
{
    EXPECT_EQ(
        call("param = {P1 = 1} glb = {} function f() return param.P1, glb.factor, glib.getPsView()[3] end",
             {">ddd", "--set", "P1=2.5", "--factor", "2", "--scene", "isometric.json", "-q"})
            .output,
        "d 5\nd 2\nd " + [this] {
            return call("function f() return glib.getPsView()[3] end",
                        {">d", "--scene", "isometric.json", "-q"})
                .output.substr(2);
        }());
}

TEST_F(Call, WhatTheFunctionPrintsIsNoResult)
{
    const CommandRun run =
        call("function f() print('printed') io.write('written\\n') os.execute('echo run') return 1 end",
             {">i", "-q"});
    EXPECT_EQ(run.output, "i 1\n");
    EXPECT_EQ(run.errors, "printed\nwritten\n" + testsystem::echoed("run"));
}

TEST_F(Call, FunctionMayBeOfAModuleOrOfLua)
{
    EXPECT_EQ(call("f = math.sqrt", {"d>d", "2.25", "-q"}).output, "d 1.5\n");
    EXPECT_EQ(call("f = require('drawing').new", {">c", "-q"}).exitCode, 0);
}

TEST_F(Call, FunctionSeesItsGlobalsAsTheyAre)
{
    EXPECT_EQ(call("function f() return rawget(_G, 'f') == g, f == g end g = f", {">nn", "-q"}).output,
              "n true\nn true\n");
    EXPECT_EQ(call("function f(n) if n == 0 then return 0 end return 1 + f(n - 1) end", {"i>i", "100", "-q"})
                  .output,
              "i 100\n");
    EXPECT_EQ(
        call("local hidden = function() return rawget(_G, 'f') == nil end "
             "setmetatable(_G, {__index = function(_, name) if name == 'f' then return hidden end end})",
             {">n", "-q"})
            .output,
        "n true\n");
    EXPECT_EQ(call("function f() end setmetatable(_G, {__newindex = error, __index = error}) "
                   "function f() return true end",
                   {">n", "-q"})
                  .output,
              "n true\n");
    EXPECT_EQ(call("function f() f = 5 end", {">"}).exitCode, 0);
}

TEST_F(Call, MissingFunctionListsThoseThatAreThere)
{
    const struct {
        const char* script;
        const char* list;
    } cases[] = {
        {"function symbol() end function main() end", "its functions are:\n  main\n  symbol\n"},
        {"f = 5 function main() end", "its functions are:\n  main\n"},
        {"f = setmetatable({}, {__call = print})", "it defines no global function\n"},
        {"setmetatable(_G, {__index = function(_, name) error('no ' .. name) end})",
         "it defines no global function\n"},
    };
    for (const auto& [script, list] : cases) {
        const CommandRun run = failed(script, {">i"});
        EXPECT_EQ(run.errors, "quor: " + run_.script() +
                                  ": function f: the script has no global function of that name\n" + list);
    }
}

TEST_F(Call, ErrorNamesFileLineAndFunction)
{
    const CommandRun run = failed("param = {}\nfunction f(x)\n  return x + nil\nend\n", {"i>i", "1"});
    EXPECT_THAT(run.errors, StartsWith(run_.script() + ":3: attempt to perform arithmetic on a nil value\n"));
    EXPECT_THAT(run.errors,
                EndsWith("quor: " + run_.script() + ":2: function f: the function raised an error\n"));
}

TEST_F(Call, ResultsThatAreAllNilAreAFailure)
{
    for (const char* body : {"", "return nil", "return nil, nil, 5"}) {
        const CommandRun run = failed(std::string("function f() ") + body + " end", {">is"});
        EXPECT_EQ(run.errors,
                  "quor: " + run_.script() + ":1: function f: the function returned nothing, or only nil\n")
            << body;
    }
}

TEST_F(Call, ScriptThatDoesNotLoadIsAFailure)
{
    EXPECT_THAT(failed("function f( end", {">i"}).errors, HasSubstr("it cannot be read, compiled or run"));
    EXPECT_THAT(failed("error('no')", {">i"}).errors, HasSubstr("s.lua:1: no\n"));
    EXPECT_EQ(runQuor({"call", run_.folder().path("none.lua"), "f", ">i"}).exitCode, 1);
}

TEST_F(Call, ExitEndsTheCallAlone)
{
    EXPECT_THAT(failed("function f() os.exit(0) end", {">i"}).errors,
                HasSubstr("the function raised an error"));
}

TEST_F(Call, RaisingCollectorIsNoCrash)
{
    // A just-in-time compiler's code cannot be unwound everywhere: that is the engine's own affair.
    const std::string garbage =
        "if jit then jit.off() end "
        "local p = newproxy(true) getmetatable(p).__gc = function() error('gc') end p = nil\n";
    const CommandRun run = call(
        garbage + "function f(t) local list = {} for i = 1, 20000 do list[i] = {i} end return list, t end",
        {"c>ct", "[[1],[2]]", "-q"});
    EXPECT_TRUE(run.exitCode == 0 || run.exitCode == 1) << run.exitCode;
    EXPECT_THAT(run.errors, testing::Not(HasSubstr("PANIC")));
}

TEST_F(Call, ManyArgumentsAndResults)
{
    Arguments arguments = {std::string(99, 'i') + ">" + std::string(100, 'i'), "-q"};
    for (int i = 1; i < 100; ++i)
        arguments.push_back(std::to_string(i));
    const CommandRun run = call("function f(...) return select('#', ...), ... end", arguments);
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_THAT(run.output, StartsWith("i 99\ni 1\ni 2\n"));
    EXPECT_THAT(run.output, EndsWith("i 98\ni 99\n"));
}

TEST_F(Call, TextsAreGbkForTheScript)
{
    const std::string script =
        std::string("function f(a, list) assert(a == '") + valveGbk +
        "' and list[1] == a and param[a] == a) return a, list, {[a] = a}, {[a] = a} end "
        "param = {['" +
        valveGbk + "'] = 'x'} _G['" + valveGbk + "'] = f";
    const Arguments arguments = {"call",    run_.folder().write("t.lua", script),
                                 valveUtf8, "sS>rSmc",
                                 valveUtf8, std::string("[\"") + valveUtf8 + "\"]",
                                 "--set",   std::string(valveUtf8) + "=" + valveUtf8};
    const CommandRun run = runQuor(arguments, {"LC_ALL=C.UTF-8"});
    const std::string word = std::string("\"") + valveUtf8 + "\"";
    EXPECT_EQ(run.output, "r " + word + "\nS [" + word + "]\nm [" + word + "=" + word + "]\nc {[" + word +
                              "] = " + word + "}\n");
    EXPECT_EQ(run.errors, std::string("t.lua ") + valveUtf8 + ": 4 results\n");
}

TEST_F(Call, TerminalOfGbkIsSpokenToInGbk)
{
    const std::string path = run_.folder().write("t.lua", std::string("function f(a, b) assert(a == '") +
                                                              valveGbk + "' and b[1] == a) return a end");
    const std::string word = testsystem::argumentInGbk(valveUtf8, valveGbk);
    const Arguments arguments = {"call", path, "f", "sS>s", word, "[\"" + word + "\"]", "-q"};
    const CommandRun lines = runQuor(arguments, {"LC_ALL=zh_CN.GBK", "LOCPATH"});
    EXPECT_EQ(lines.output, std::string("s \"") + valveGbk + "\"\n") << lines.errors;
    Arguments json = arguments;
    json.insert(json.end(), {"--format", "json"});
    EXPECT_EQ(Json::parse(runQuor(json, {"LC_ALL=zh_CN.GBK", "LOCPATH"}).output)["results"][0]["value"],
              valveUtf8);
}

TEST_F(Call, BytesThatAreNoGbkAreKeptAndTold)
{
    const std::string script = "function f() return 'a\\255', {['\\254'] = 1} end";
    const CommandRun lines = call(script, {">rc"});
    EXPECT_EQ(lines.output, "r \"a\\xFF\"\nc {[\"\\xFE\"] = 1}\n");
    EXPECT_THAT(lines.errors,
                StartsWith(run_.script() + ": 2 bytes in its texts are no GBK and stand as \\x80 to "));
    const CommandRun json = call(script, {">rc", "--format", "json"});
    EXPECT_EQ(Json::parse(json.output)["results"][0]["value"], "a\uF7FF");
    EXPECT_THAT(json.errors, HasSubstr(": 2 bytes in its texts are no GBK and stand as U+F780 to U+F7FF\n"));
}

TEST_F(Call, TextsThatGbkCannotWriteAreWrongUsage)
{
    const struct {
        Arguments arguments;
        const char* message;
    } cases[] = {
        {{"s>s", "\U0001F600"},
         "ARG 1 (s) \U0001F600: text that GBK can write is expected; a character in it has no place there\n"},
        {{"S>S", "[\"\U0001F600\"]"},
         "ARG 1 (S): [0]: text that GBK can write is expected; a character in it has no place there\n"},
        {{"c>c", "{\"\U0001F600\":1}"},
         "ARG 1 (c): [\"\U0001F600\"]: text that GBK can write is expected; a character in it has no place "
         "there\n"},
        {{"m>m", "{\"\U0001F600\":1}"},
         "ARG 1 (m): [\"\U0001F600\"]: a name that GBK can write is expected\n"},
    };
    for (const auto& [arguments, message] : cases) {
        const CommandRun run = call("function f() end", arguments);
        EXPECT_EQ(run.exitCode, 2) << message;
        EXPECT_EQ(run.errors, std::string("quor: ") + message);
    }
}

TEST_F(Call, BytesThatAreNoTextAreWrongUsage)
{
    if (testsystem::isWindows) GTEST_SKIP() << "arguments are no bytes there";
    const struct {
        Arguments arguments;
        const char* message;
    } cases[] = {
        {{"r>r", "\xFF"}, "ARG 1 (r) \xFF: text in UTF-8 is expected; 1 byte of it is none\n"},
        {{"S>S", "[\"\xFF\xFE\"]"}, "ARG 1 (S): text in UTF-8 is expected; 2 bytes of it are none\n"},
    };
    for (const auto& [arguments, message] : cases) {
        const CommandRun run = call("function f() end", arguments);
        EXPECT_EQ(run.exitCode, 2) << message;
        EXPECT_EQ(run.errors, std::string("quor: ") + message);
    }
}

TEST_F(Call, LocaleDecidesNoNumber)
{
    const ScratchFolder locales;
    const Arguments german = testsystem::terminalOf(locales, "de_DE", "UTF-8");
    if (german.empty()) GTEST_SKIP() << "localedef makes no de_DE.UTF-8 here (package locales)";
    const std::string path = run_.folder().write(
        "t.lua", "function f(...) os.setlocale('de_DE.UTF-8') return ... end function g() "
                 "os.setlocale('de_DE.UTF-8') return '2.5', '2,5' end");
    const CommandRun run = runQuor({"call", path, "f", "dpc>dpc", "2.5", "1.5,2,3", "[0.5]", "-q"}, german);
    EXPECT_EQ(run.output, "d 2.5\np (1.5, 2, 3)\nc {0.5}\n");
    EXPECT_EQ(runQuor({"call", path, "g", ">dd", "-q"}, german).output, "d 2.5\nd not given\n");
}

TEST_F(Call, WrongUsageSaysWhatIsExpected)
{
    const std::string path = run_.folder().write("s.lua", "function f() return 1 end");
    const struct {
        Arguments arguments;
        const char* message;
    } cases[] = {
        {{}, "SCRIPT is required\n"},
        {{path}, "FUNCTION is required\n"},
        {{path, "f"}, "FORMAT is required\n"},
        {{path, "", ">i"}, "FUNCTION: the name of a global function is expected; it is empty\n"},
        {{"", "f", ">i"}, "SCRIPT: the path of a script is expected; it is empty\n"},
        {{path, "f", ">i", "--format", "xml"}, "--format xml: json or text is expected\n"},
        {{path, "f", ">i", "-o", ""}, "-o: a file, or - for standard output, is expected\n"},
        {{path, "f", ">i", "--bogus"}, "The following argument was not expected: --bogus\n"},
        {{path, "f", "s>i", "-x"}, "The following argument was not expected: -x\n"},
        {{path, "f", "s>i", "++"}, "ARG: 1 is expected, one for each letter before '>'; 0 are there\n"},
        {{path, "f", ">i", "--segment", "f"}, "The following argument"},
        {{path, "\U0001F600", ">i"}, "FUNCTION \U0001F600: text that GBK can write is expected; "},
    };
    for (const auto& [arguments, message] : cases) {
        Arguments all = {"call"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const CommandRun run = runQuor(all, {"LC_ALL=C.UTF-8"});
        EXPECT_EQ(run.exitCode, 2) << message;
        EXPECT_THAT(run.errors, StartsWith(std::string("quor: ") + message));
        EXPECT_EQ(run.output, "");
    }
    const CommandRun script = runQuor({"call", path, "f", ">i", "-o", path});
    EXPECT_EQ(script.exitCode, 2);
    EXPECT_EQ(script.errors, "quor: -o " + path + ": a file other than the script is expected\n");
    EXPECT_EQ(readFile(path), "function f() return 1 end");
}

TEST_F(Call, HelpNamesEveryLetter)
{
    const CommandRun run = runQuor({"call", "--help"});
    EXPECT_EQ(run.exitCode, 0);
    for (const char letter : std::string("idnIsryuopvXPOSglmMaBbkTctx"))
        EXPECT_THAT(run.output, HasSubstr(std::string("\n  ") + letter + "  "));
    for (const char* words : {"[ARG...]", "'--'", "text (the default)", "Exit codes"})
        EXPECT_THAT(run.output, HasSubstr(words));
}

} // namespace

#include "CommandRun.h"
#include "TestSystem.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

namespace {

using Json = nlohmann::json;

constexpr const char* oneLine = "function main() return {{16, {0, 0, 0}, {1, 0, 0}}} end";

class Draw : public testing::Test {
protected:
    /// The primitives of a script's table of records.
    Json primitivesOf(const std::string& records)
    {
        const std::string script =
            scratch_.write("records.lua", "function main() return " + records + " end");
        const CommandRun run = runQuor({"draw", "--quiet", script});
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        return Json::parse(run.output).at("primitives");
    }

    const ScratchFolder scratch_;
};

TEST_F(Draw, WritesTheHeadAndOnePrimitivePerLine)
{
    const std::string script = scratch_.write(
        "line.lua", "function main() return {{16, {0, 0, 0}, {1, 0, 0}}, {10, {0, 0, 5}, 2.5}} end");
    const CommandRun run = runQuor({"draw", script});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, R"({"script":"line.lua","segment":"main","status":0,
"primitives":[
{"factory":"createQuorLine","args":[[0,0,0],[1,0,0]],"color":257,"thick":0,"ltScale":1,"lineType":null},
{"factory":"createQuorGraphy3DSphere","args":[[0,0,5],2.5,12,false],"color":257,"material":null}]}
)");
    EXPECT_EQ(run.errors, "line.lua main: 2 primitives\n");
}

TEST_F(Draw, ListWithoutPrimitivesIsAnEmptyArray)
{
    const std::string script = scratch_.write("none.lua", "function main() return {} end");
    const CommandRun run = runQuor({"draw", script});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output,
              "{\"script\":\"none.lua\",\"segment\":\"main\",\"status\":0,\n\"primitives\":[]}\n");
    EXPECT_EQ(run.errors, "none.lua main: 0 primitives\n");
}

TEST_F(Draw, RandomNumbersAreTheSameInEveryRunOnEverySystem)
{
    const std::string script = scratch_.write("s.lua", R"(function main()
    local points = { { 26, { math.random(), math.random(1000000), math.random(-5, 5) }, 1 } }
    math.randomseed(7)
    points[2] = { 26, { math.random(1000000), 0, 0 }, 1 }
    return points
end)");
    const CommandRun run = runQuor({"draw", "--quiet", script});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    const Json primitives = Json::parse(run.output).at("primitives");
    EXPECT_EQ(primitives.at(0).at("args").at(0), Json::parse("[0.5665615751722809, 745782, 5]"));
    EXPECT_EQ(primitives.at(1).at("args").at(0), Json::parse("[389830, 0, 0]"));
}

TEST_F(Draw, RandomNumbersLieWithinTheirBounds)
{
    const std::string script = scratch_.write("s.lua", R"(function main()
    for _ = 1, 5000 do
        local share, third, whole = math.random(), math.random(3), math.random(-2, 2)
        assert(share >= 0 and share < 1)
        assert(third == 1 or third == 2 or third == 3)
        assert(whole >= -2 and whole <= 2 and whole % 1 == 0)
    end
    local far = math.random(-2 ^ 31, 2 ^ 31 - 1)
    assert(far >= -2 ^ 31 and far < 2 ^ 31)
    for _, bad in ipairs { { 0 }, { 2, 1 }, { 1, 2, 3 }, { "x" } } do
        assert(not pcall(math.random, unpack(bad)))
    end
    return {}
end)");
    const CommandRun run = runQuor({"draw", "--quiet", script});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
}

TEST_F(Draw, ExampleOfTheContract)
{
    EXPECT_EQ(primitivesOf(R"({{2, {0,0,0}, {0,0,100}, 25, true},
                               {300, 3}, {500, 0.7}, {16, {0,0,0}, {1,0,0}, "DASHED", 2.5}})"),
              Json::parse(R"([
        {"factory": "createQuorGraphy3DCylinder", "args": [[0,0,0],[0,0,100],25,32,false],
         "color": 257, "material": null, "gsFlag": 2},
        {"factory": "createQuorLine", "args": [[0,0,0],[1,0,0]], "color": 3, "thick": 0.7, "ltScale": 2.5,
         "lineType": "DASHED"}])"));
}

TEST_F(Draw, ShapesOfArguments)
{
    const struct {
        const char* record;
        const char* args;
    } cases[] = {
        {"{25, {{1, {1, 2, 3}, 30, 10, 20}, {0, {4, 5, 6}}}, 0.5}",
         "[[[1,10,20,30,[1,2,3]],[0,0,0,0,[4,5,6]]],0.5]"},
        {"{27, {{0, 0, 0}, {1, 2, 3}}}", "[[[0,0,0],[1,2,3]],true]"},
        {"{24, {0,0,0}, {1,0,0}, {0,1,0}, {0,0,1}, 5, {{0, {1,1,0}}}, {{{0, {2,2,0}}}, {}}}",
         "[[0,0,0],[1,0,0],[0,1,0],[0,0,1],5,[[0,0,0,0,[1,1,0]]],[[[0,0,0,0,[2,2,0]]],[]],32,false,1]"},
        {"{26, {1, 2, 3}, 70000}", "[[1,2,3],4464]"},
        {"{32, 'blocks.dwg', 'TAG', {0,0,0}, {1,0,0}, {0,1,0}}",
         R"(["blocks.dwg","TAG",[0,0,0],[1,0,0],[0,1,0]])"},
        {"{28, 'ANSI31', {{0, {0,0,0}}}}", R"(["ANSI31",[[0,0,0,0,[0,0,0]]],[],0,1])"},
        {"{41, 2, 0, 1}", "[2,0,1]"},
        {"{41, 4, 0, {{0, 0, 5}, {0, 0, 1}}}", "[0,[0,0,5],[0,0,1]]"},
    };
    for (const auto& [record, args] : cases) {
        const Json primitives = primitivesOf(std::string("{") + record + "}");
        ASSERT_EQ(primitives.size(), 1u) << record;
        EXPECT_EQ(primitives[0].at("args"), Json::parse(args)) << record;
    }
}

TEST_F(Draw, MembersStandInTheOrderOfTheContract)
{
    const std::string script = scratch_.write(
        "text.lua", "function main() return {{19, 1, {0,0,0}, 'A', 0, 0.8, 12, {0,0,1}, 7}} end");
    const CommandRun run = runQuor({"draw", "-q", script});
    EXPECT_NE(run.output.find(
                  R"({"factory":"createQuorText","args":[1,[0,0,0],"A",0],"color":257,"thick":0,)"
                  R"("ltScale":1,"lineType":null,"scale":0.8,"height":12,"normal":[0,0,1],"txtFlag":7})"),
              std::string::npos)
        << run.output;
}

TEST_F(Draw, OperationsCarryNoAttributes)
{
    const Json primitives = primitivesOf("{{41, 1, 0, 1}, {200, {A = 1}}}");
    ASSERT_EQ(primitives.size(), 2u);
    for (const Json& primitive : primitives)
        EXPECT_EQ(primitive.size(), 2u) << primitive;
}

TEST_F(Draw, ParameterRecordsKeepEveryKindOfValue)
{
    const struct {
        const char* value;
        const char* json;
    } cases[] = {{"100", "100"},         {"2.5", "2.5"}, {"true", "true"},        {"'x'", R"("x")"},
                 {"{1,2,3}", "[1,2,3]"}, {"{}", "null"}, {"1/0", R"("Infinity")"}};
    for (const auto& [value, json] : cases) {
        const Json primitives = primitivesOf(std::string("{{200, {K = ") + value + "}}}");
        EXPECT_EQ(primitives, Json::parse(std::string(R"([{"factory":"QuorOprKVParamArray","args":[[)"
                                                      R"({"key":"K","note":"","value":)") +
                                          json + "}]]}]"));
    }
}

TEST_F(Draw, NumbersReadBackAsTheSame)
{
    const struct {
        const char* lua;
        double number;
    } cases[] = {
        {"0.1", 0.1},
        {"0.1 + 0.2", 0.1 + 0.2},
        {"1/3", 1.0 / 3},
        {"2^53", 9007199254740992.0},
        {"2^53 + 2", 9007199254740994.0},
        {"1e300", 1e300},
        {"-123456.789e-20", -123456.789e-20},
        {"5e-324", 5e-324},
        {"1.7976931348623157e308", 1.7976931348623157e308},
    };
    for (const auto& [lua, number] : cases) {
        const Json primitives = primitivesOf(std::string("{{26, {") + lua + ", -(" + lua + "), 0}, 1}}");
        ASSERT_EQ(primitives.size(), 1u) << lua;
        EXPECT_EQ(primitives[0]["args"][0][0].get<double>(), number) << lua;
        EXPECT_EQ(primitives[0]["args"][0][1].get<double>(), -number) << lua;
    }
}

TEST_F(Draw, MinusZeroKeepsItsSign)
{
    const Json primitives = primitivesOf("{{26, {-math.abs(0), 0, 0}, 1}}");
    EXPECT_TRUE(std::signbit(primitives[0]["args"][0][0].get<double>()));
    EXPECT_FALSE(std::signbit(primitives[0]["args"][0][1].get<double>()));
}

TEST_F(Draw, AttributesThatAreNoNumbersAreWords)
{
    EXPECT_EQ(primitivesOf("{{500, 1/0}, {16, {0,0,0}, {1,0,0}}}")[0]["thick"], "Infinity");
    EXPECT_EQ(primitivesOf("{{16, {0,0,0}, {1,0,0}, 'A', -1/0}}")[0]["ltScale"], "-Infinity");
    EXPECT_EQ(primitivesOf("{{16, {0,0,0}, {1,0,0}, 'A', 0/0}}")[0]["ltScale"], "NaN");
}

TEST_F(Draw, ScriptOfTheReadmeDraws)
{
    const std::string readme = readFile(QUOR_SOURCE_DIR "/README.md");
    std::istringstream lines(readme.substr(readme.find("## Write a script")));
    std::string script;
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line) && (line.empty() || line.starts_with("    ")))
        script += line + "\n";
    const std::string path = scratch_.write("readme.lua", script);
    EXPECT_EQ(runQuor({"draw", path}).errors, "readme.lua main: 7 primitives\n");
    EXPECT_EQ(runQuor({"draw", path, "--segment", "keypoint"}).exitCode, 0);
}

TEST_F(Draw, TextFormatIsOneLineForEachPrimitive)
{
    const std::string script =
        scratch_.write("two.lua", "function main() return {{2, {0,0,0}, {0,0,100}, 25.5, true}, {19, 0, "
                                  "{0,0,0}, 'a\"b\\n\\\\', 0}} end");
    const CommandRun run = runQuor({"draw", "--format", "text", "-q", script});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(
        run.output,
        "0 createQuorGraphy3DCylinder((0, 0, 0), (0, 0, 100), 25.5, 32, false) color=257 material=null "
        "gsFlag=2\n"
        "1 createQuorText(0, (0, 0, 0), \"a\\\"b\\n\\\\\", 0) color=257 thick=0 ltScale=1 lineType=null\n");
}

TEST_F(Draw, SegmentIsMainElseTheOnlyFunction)
{
    const struct {
        const char* script;
        const char* segment;
    } cases[] = {
        {"function main() return {} end function other() return {} end", "main"},
        {"function only() return {} end", "only"},
        {"local function hidden() end function shown() return {} end", "shown"},
        {"only = function() return {} end param = {} copied = print", "only"},
        {"function print() return {} end", "print"},
        {"require('drawing') function only() return {} end", "only"},
        {"main = setmetatable({}, {__call = function() return {} end}) function other() end", "main"},
    };
    for (const auto& [text, segment] : cases) {
        const CommandRun run = runQuor({"draw", scratch_.write("segment.lua", text)});
        EXPECT_EQ(run.errors, std::string("segment.lua ") + segment + ": 0 primitives\n") << text;
    }
}

TEST_F(Draw, FunctionsOfAModuleAreNotTheScripts)
{
    scratch_.write("installation/bin/helper.lua", "function help() end function assist() end");
    const std::string script = scratch_.write("own.lua", "require('helper') function own() return {} end");
    const CommandRun run = runQuor({"draw", "--installation", scratch_.path("installation"), script});
    EXPECT_EQ(run.errors, "own.lua own: 0 primitives\n");
}

TEST_F(Draw, OnlyFunctionOfAPrecompiledScriptIsFound)
{
    const std::string compiler =
        "local f = io.open(arg_out, 'wb') f:write(string.dump(loadfile(arg_in))) f:close() ";
    const std::string source = scratch_.write("source.lua", "function only() return {} end");
    const std::string chunk = scratch_.path("chunk.luac");
    const std::string script =
        scratch_.write("compile.lua", "arg_in = '" + source + "' arg_out = '" + chunk + "' " + compiler +
                                          " function main() return {} end");
    ASSERT_EQ(runQuor({"draw", script}).exitCode, 0);
    EXPECT_EQ(runQuor({"draw", chunk}).errors, "chunk.luac only: 0 primitives\n");
}

TEST_F(Draw, ScriptIsLookedForInWorkingFolderProjectComponentsAndInstallation)
{
    const std::string main = "function main() return {} end";
    scratch_.write("project/inProject.lua", main);
    scratch_.write("project/components/component.lua", main);
    scratch_.write("installation/bin/shared.lua", main);
    const Arguments folders = {"draw", "--installation", scratch_.path("installation"), "--project",
                               scratch_.path("project")};
    for (const char* name :
         {"inProject.lua", "component.lua", "components/component.lua", "bin/shared.lua"}) {
        Arguments arguments = folders;
        arguments.emplace_back(name);
        EXPECT_EQ(runQuor(arguments).exitCode, 0) << name;
    }
}

TEST_F(Draw, WritesAFileAndNothingElse)
{
    const std::string script = scratch_.write("line.lua", oneLine);
    const CommandRun shown = runQuor({"draw", script, "-o", "-"});
    const CommandRun run = runQuor({"draw", script, "-o", scratch_.path("out.json")});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "line.lua main: 1 primitive\n");
    EXPECT_EQ(readFile(scratch_.path("out.json")), shown.output);
    EXPECT_EQ(scratch_.names(), (std::vector<std::string>{"line.lua", "out.json"}));
}

TEST_F(Draw, ReplacesAnEarlierFileAndKeepsItsPermissions)
{
    const std::string script = scratch_.write("line.lua", oneLine);
    const std::string output = scratch_.write("out.json", std::string(100000, 'x'));
    testsystem::mark(output);
    EXPECT_EQ(runQuor({"draw", script, "-o", output}).exitCode, 0);
    EXPECT_EQ(readFile(output), runQuor({"draw", script}).output);
    EXPECT_TRUE(testsystem::isMarked(output));
}

TEST_F(Draw, LinkStaysALink)
{
    const std::string script = scratch_.write("line.lua", oneLine);
    const std::string target = scratch_.write("target.json", "");
    if (!sys::makeLink(target, scratch_.path("link.json"))) GTEST_SKIP() << "no links can be made here";
    EXPECT_EQ(runQuor({"draw", script, "-o", scratch_.path("link.json")}).exitCode, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(scratch_.path("link.json")));
    EXPECT_NE(readFile(target), "");
}

TEST_F(Draw, FileIsMadeWhereADanglingLinkLeads)
{
    const std::string script = scratch_.write("line.lua", oneLine);
    if (testsystem::isWindows) GTEST_SKIP() << "there a link that leads nowhere is refused";
    std::filesystem::create_directory(scratch_.path("results"));
    if (!sys::makeLink("results/new.json", scratch_.path("inner.json")))
        GTEST_SKIP() << "no links can be made here";
    ASSERT_TRUE(sys::makeLink(scratch_.path("inner.json"), scratch_.path("link.json")));
    EXPECT_EQ(runQuor({"draw", script, "-o", scratch_.path("link.json")}).exitCode, 0);
    EXPECT_TRUE(std::filesystem::is_symlink(scratch_.path("link.json")));
    EXPECT_TRUE(std::filesystem::is_symlink(scratch_.path("inner.json")));
    EXPECT_EQ(readFile(scratch_.path("results/new.json")), runQuor({"draw", script}).output);
}

TEST_F(Draw, DeviceIsWrittenAsItIs)
{
    const std::string script = scratch_.write("line.lua", oneLine);
    const CommandRun run = runQuor({"draw", script, "-o", testsystem::nullDevice()});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "line.lua main: 1 primitive\n");
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(scratch_.names(), std::vector<std::string>{"line.lua"});
    EXPECT_EQ(std::filesystem::is_character_file(testsystem::nullDevice()), !testsystem::isWindows);
}

TEST_F(Draw, QuietLeavesTheSummaryOut)
{
    const CommandRun run = runQuor({"draw", scratch_.write("line.lua", oneLine), "--quiet"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "");
}

TEST_F(Draw, WhatAScriptPrintsDoesNotDisturbTheResult)
{
    const std::string script = scratch_.write(
        "noisy.lua",
        "print('loading', 1, nil) io.write('written\\n') function main() print('drawing') return {} end");
    const CommandRun run = runQuor({"draw", script});
    EXPECT_EQ(Json::parse(run.output).at("primitives"), Json::array());
    EXPECT_EQ(run.errors, "loading\t1\tnil\nwritten\ndrawing\nnoisy.lua main: 0 primitives\n");
}

TEST_F(Draw, StandardOutputHoldsTheResultAlone)
{
    const struct {
        const char* writer;
        std::string stray;
    } cases[] = {
        {"io.stdout:write('stray\\n')", "stray\n"},
        {"os.execute('echo stray')", testsystem::echoed("stray")},
        {"local p = newproxy(true) getmetatable(p).__gc = function() os.execute('echo stray') end",
         testsystem::echoed("stray")},
    };
    for (const auto& [writer, stray] : cases) {
        const std::string script =
            scratch_.write("stray.lua", std::string("function main() ") + writer + " return {} end");
        const CommandRun run = runQuor({"draw", "-q", script});
        EXPECT_EQ(run.output,
                  "{\"script\":\"stray.lua\",\"segment\":\"main\",\"status\":0,\n\"primitives\":[]}\n")
            << writer;
        EXPECT_EQ(run.errors, stray) << writer;
    }
}

TEST_F(Draw, MessagesOfTheParserAreShown)
{
    const std::string script = scratch_.write("bad.lua", "function main() return {{41, 1, 0}} end");
    const CommandRun run = runQuor({"draw", script}, {"LC_ALL=C.UTF-8"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, "布尔运算参数应该为4个，目前为: 3\nbad.lua main: 0 primitives\n");
}

TEST_F(Draw, HundredThousandPrimitivesComeOutWhole)
{
    const std::string script = scratch_.write(
        "many.lua",
        "function main() local t = {} for i = 1, 100000 do t[i] = {10, {i, 0, 0}, 1} end return t end");
    const CommandRun run = runQuor({"draw", "-q", script});
    const Json primitives = Json::parse(run.output).at("primitives");
    ASSERT_EQ(primitives.size(), 100000u);
    EXPECT_EQ(primitives[99999]["args"][0], Json::parse("[100000,0,0]"));
}

TEST_F(Draw, HelpNamesUnitsAndDefaults)
{
    const CommandRun run = runQuor({"draw", "--help"});
    EXPECT_EQ(run.exitCode, 0);
    for (const char* words :
         {"millimetres", "degrees", "default 1", "default main", "default -", "json (the default)"})
        EXPECT_NE(run.output.find(words), std::string::npos) << words;
    EXPECT_EQ(runQuor({"--help"}).exitCode, 0);
}

TEST_F(Draw, IsOfACommandThatTellsItsVersion)
{
    const CommandRun run = runQuor({"--version"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.output, "quor " QUOR_PROJECT_VERSION "\n");
    EXPECT_EQ(run.errors, "");
}

} // namespace

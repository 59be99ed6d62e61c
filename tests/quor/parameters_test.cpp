// What --set and --factor write: every script here draws a parameter record or answers with an error.

#include "CommandRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;

class Parameters : public testing::Test {
protected:
    static constexpr const char* script = R"(
        param = {P1 = 150, P2 = 4, P3 = 90, flag = false, place = {1, 2, 3}, name = "A", list = {5}}
        glb = {factor = 7}
        skey = {quantumUnit = {"P2"}, angleUnit = {"P3"}}
        function main()
            local value = wanted == "factor" and glb.factor or param[wanted]
            return {{200, {type = type(value)}}, {200, {value = value}}}
        end)";

    CommandRun run(const std::string& wanted, const Arguments& arguments)
    {
        Arguments all = {"draw", "-q", scratch_.write("p.lua", "wanted = '" + wanted + "'\n" + script)};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return runQuor(all);
    }

    /// What the parameter is for the script: [type, value].
    Json held(const std::string& wanted, const Arguments& arguments)
    {
        const CommandRun done = run(wanted, arguments);
        EXPECT_EQ(done.exitCode, 0) << done.errors;
        if (done.exitCode != 0) return {};
        const Json primitives = Json::parse(done.output)["primitives"];
        const Json& value = primitives[1]["args"][0];
        return {primitives[0]["args"][0][0]["value"], value.empty() ? Json() : value[0]["value"]};
    }

    const ScratchFolder scratch_;
};

TEST_F(Parameters, TypeFollowsWhatTheScriptHolds)
{
    const struct {
        const char* name;
        const char* setting;
        const char* held;
    } cases[] = {
        {"P1", "P1=200", R"(["number", 200])"},
        {"P1", "P1=-12.5", R"(["number", -12.5])"},
        {"P1", "P1=+1e-3", R"(["number", 0.001])"},
        {"flag", "flag=true", R"(["boolean", true])"},
        {"place", "place=4,5.5,-6", R"(["table", [4, 5.5, -6]])"},
        {"place", "place=4, 5 ,6", R"(["table", [4, 5, 6]])"},
        {"name", "name=12", R"(["string", "12"])"},
        {"name", "name=true", R"(["string", "true"])"},
        {"name", "name=1,2,3", R"(["string", "1,2,3"])"},
        {"name", "name=", R"(["string", ""])"},
        {"name", "name=a=b", R"(["string", "a=b"])"},
        {"list", "list=8", R"(["number", 8])"},
    };
    for (const auto& [name, setting, held_] : cases)
        EXPECT_EQ(held(name, {"--set", setting}), Json::parse(held_)) << setting;
}

TEST_F(Parameters, NewNamesTakeTheFirstTypeThatFits)
{
    const struct {
        const char* setting;
        const char* held;
    } cases[] = {
        {"new=2.5", R"(["number", 2.5])"},      {"new=true", R"(["boolean", true])"},
        {"new=false", R"(["boolean", false])"}, {"new=1,2,3", R"(["table", [1, 2, 3]])"},
        {"new=DN50", R"(["string", "DN50"])"},  {"new=", R"(["string", ""])"},
        {"new=1,2", R"(["string", "1,2"])"},    {"new=1,2,3,4", R"(["string", "1,2,3,4"])"},
        {"new=inf", R"(["string", "inf"])"},    {"new=nan", R"(["string", "nan"])"},
        {"new=0x10", R"(["string", "0x10"])"},  {"new=True", R"(["string", "True"])"},
        {"new= 1", R"(["string", " 1"])"},      {"new=1,5", R"(["string", "1,5"])"},
    };
    for (const auto& [setting, held_] : cases)
        EXPECT_EQ(held("new", {"--set", setting}), Json::parse(held_)) << setting;
}

TEST_F(Parameters, LastOfAnyNumberOfSettingsCounts)
{
    const Arguments settings = {"--set", "P1=1", "--set", "P3=2", "--set", "P1=3"};
    EXPECT_EQ(held("P1", settings), Json::parse(R"(["number", 3])"));
    EXPECT_EQ(held("P3", settings), Json::parse(R"(["number", 2])"));
}

TEST_F(Parameters, SettingMayStandBeforeTheScript)
{
    const std::string path = scratch_.write("p.lua", std::string("wanted = 'P1'\n") + script);
    EXPECT_EQ(runQuor({"draw", "--set", "P1=5", path}).exitCode, 0);
}

TEST_F(Parameters, FactorScalesGivenLengthsOnly)
{
    const struct {
        const char* what;
        const char* name;
        Arguments arguments;
        const char* held;
    } cases[] = {
        {"a length", "P1", {"--set", "P1=200"}, R"(["number", 200000])"},
        {"a length not given", "P1", {}, R"(["number", 150])"},
        {"a quantity", "P2", {"--set", "P2=8"}, R"(["number", 8])"},
        {"an angle", "P3", {"--set", "P3=45"}, R"(["number", 45])"},
        {"a point", "place", {"--set", "place=1,2,3"}, R"(["table", [1, 2, 3]])"},
        {"a new number", "new", {"--set", "new=2"}, R"(["number", 2000])"},
    };
    for (const auto& [what, name, arguments, held_] : cases) {
        Arguments all = {"--factor", "1000"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        EXPECT_EQ(held(name, all), Json::parse(held_)) << what;
    }
}

TEST_F(Parameters, FactorIsToldToTheScriptWhenItIsGiven)
{
    EXPECT_EQ(held("factor", {"--factor", "0.001"}), Json::parse(R"(["number", 0.001])"));
    EXPECT_EQ(held("factor", {"--factor", "1"}), Json::parse(R"(["number", 1])"));
    EXPECT_EQ(held("factor", {}), Json::parse(R"(["number", 7])"));
    EXPECT_EQ(held("P1", {"--set", "P1=200"}), Json::parse(R"(["number", 200])"));
}

TEST_F(Parameters, ScriptWithoutGlbIsNotToldTheFactor)
{
    const std::string path = scratch_.write("noglb.lua", "function main() return {} end");
    EXPECT_EQ(runQuor({"draw", "-q", path}).errors, "");
    const CommandRun run = runQuor({"draw", "-q", path, "--factor", "2"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.errors, path + ": the script has no table \"glb\", so it is not told the factor\n");
}

TEST_F(Parameters, ValuesOfAnotherTypeAreWrongUsage)
{
    const struct {
        const char* setting;
        const char* message;
    } cases[] = {
        {"P1=abc",
         "quor: --set P1=abc: a number, as the script has there, is expected, and this is not one\n"},
        {"P1=", "quor: --set P1=: a number, as the script has there, is expected, and this is not one\n"},
        {"P1=1x", "quor: --set P1=1x: a number, as the script has there, is expected, and this is not one\n"},
        {"P1=inf",
         "quor: --set P1=inf: a number, as the script has there, is expected, and this is not one\n"},
        {"P1=1,5",
         "quor: --set P1=1,5: a number, as the script has there, is expected, and this is not one\n"},
        {"P1=1e999", "quor: --set P1=1e999: a number of usual size is expected, and this is not one\n"},
        {"new=1e999", "quor: --set new=1e999: a number of usual size is expected, and this is not one\n"},
        {"flag=1", "quor: --set flag=1: true or false, as the script has there, is expected, and this is not "
                   "one of them\n"},
        {"place=1,2",
         "quor: --set place=1,2: a point x,y,z, as the script has there, is expected, and this is not one\n"},
        {"place=1,2,x", "quor: --set place=1,2,x: a point x,y,z, as the script has there, is expected, and "
                        "this is not one\n"},
    };
    for (const auto& [setting, message] : cases) {
        const CommandRun done = run("P1", {"--set", setting});
        EXPECT_EQ(done.exitCode, 2) << setting;
        EXPECT_EQ(done.errors, message);
        EXPECT_EQ(done.output, "");
    }
}

TEST_F(Parameters, SettingsWithoutNameOrValueAreWrongUsage)
{
    for (const char* setting : {"P1", "", "=5", "="}) {
        const CommandRun done = run("P1", {"--set", setting});
        EXPECT_EQ(done.exitCode, 2) << setting;
        EXPECT_EQ(done.errors, std::string("quor: --set ") + setting +
                                   ": NAME=VALUE is expected, and this is not of that form\n");
    }
    EXPECT_EQ(run("P1", {"--set"}).exitCode, 2);
}

TEST_F(Parameters, FactorsThatAreNoPositiveNumbersAreWrongUsage)
{
    for (const char* factor : {"0", "-1", "abc", "", "1,5", "inf", "nan", "1e999", "1 "}) {
        const CommandRun done = run("P1", {"--factor", factor});
        EXPECT_EQ(done.exitCode, 2) << factor;
        EXPECT_EQ(done.errors, std::string("quor: --factor ") + factor + ": a number above 0 is expected\n");
    }
}

TEST_F(Parameters, ScriptWithoutParametersTakesNone)
{
    const std::string path = scratch_.write("bare.lua", "function main() return {} end");
    const CommandRun done = runQuor({"draw", path, "--set", "P1=5"});
    EXPECT_EQ(done.exitCode, 1);
    EXPECT_EQ(done.errors,
              "quor: " + path +
                  ": \"param\" cannot be written: status 12: the script has no table of that name\n");
}

} // namespace

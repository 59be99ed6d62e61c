// What the command makes of the sample's components, byte for byte, as the files in golden/ have it. After a
// change that is meant, QUOR_WRITE_GOLDEN=1 in the environment of this program writes the files anew; the
// difference is then read before it is kept.

#include "CommandRun.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>

namespace {

struct Drawing {
    const char* name;
    Arguments arguments;
};

const Drawing drawings[] = {
    {"gate_valve_main", {"gate_valve.lua"}},
    {"gate_valve_symbol", {"gate_valve.lua", "--segment", "symbol"}},
    {"gate_valve_dn80_turned", {"gate_valve.lua", "--set", "P1=180",  "--set",  "P2=200", "--set", "P4=160",
                                "--set",          "P6=8",  "--set",   "P7=138", "--set",  "P8=80", "--set",
                                "P9=420",         "--set", "P10=200", "--set",  "P11=90", "--set", "DN=80"}},
    {"elbow_90_main", {"elbow_90.lua"}},
    {"elbow_90_symbol", {"elbow_90.lua", "--segment", "symbol"}},
    {"elbow_90_insulated", {"elbow_90.lua", "--set", "P4=30", "--set", "P5=270"}},
    {"reducer_main", {"reducer.lua"}},
    {"reducer_symbol", {"reducer.lua", "--segment", "symbol"}},
    {"tee_main", {"tee.lua"}},
    {"tee_symbol", {"tee.lua", "--segment", "symbol"}},
    {"tee_in_metres",
     {"tee.lua", "--factor", "0.001", "--set", "P1=88.9", "--set", "P2=3.2", "--set", "P3=60.3", "--set",
      "P4=2.9", "--set", "P5=86", "--set", "P6=76", "--set", "P7=180"}},
    {"support_main", {"support.lua"}},
    {"support_symbol", {"support.lua", "--segment", "symbol"}},
    {"control_valve_iso_main", {"control_valve_iso.lua"}},
    {"control_valve_iso_scene", {"control_valve_iso.lua", "--scene", "isometric.json"}},
};

void PrintTo(const Drawing& drawing, std::ostream* out)
{
    *out << drawing.name;
}

void compareWithFile(const std::string& output, const std::string& name)
{
    const std::string file = QUOR_SOURCE_DIR "/tests/quor/golden/" + name;
    if (std::getenv("QUOR_WRITE_GOLDEN")) std::ofstream(file, std::ios::binary) << output;
    EXPECT_EQ(output, readFile(file));
}

class Golden : public testing::TestWithParam<Drawing> {};

TEST_P(Golden, DrawingIsAsKept)
{
    Arguments arguments = {"draw", "--quiet"};
    arguments.insert(arguments.end(), GetParam().arguments.begin(), GetParam().arguments.end());
    const CommandRun run = runQuor(arguments);
    EXPECT_EQ(run.errors, "");
    ASSERT_EQ(run.exitCode, 0);
    compareWithFile(run.output, GetParam().name + std::string(".json"));
}

INSTANTIATE_TEST_SUITE_P(Sample, Golden, testing::ValuesIn(drawings),
                         [](const auto& drawing) { return drawing.param.name; });

struct Output {
    const char* name;
    const char* file;
    Arguments arguments;
};

const Output outputs[] = {
    {"call_primitives", "call_primitives.json", {"call", "elbow_90.lua", "main", ">T", "--format", "json"}},
    {"call_primitives_as_lines", "call_primitives.txt", {"call", "elbow_90.lua", "main", ">T"}},
    {"call_table", "call_table.json", {"call", "gate_valve.lua", "main", ">c", "--format", "json"}},
    {"call_table_as_a_line", "call_table.txt", {"call", "gate_valve.lua", "main", ">c"}},
    {"keypoints", "keypoints.json", {"keypoints", "tee.lua", "--set", "P5=100"}},
    {"ask_ui",
     "ask_ui.json",
     {"ask", "gate_valve.lua", "--kind", "ui", "--first", "1,2,3", "--format", "json"}},
};

void PrintTo(const Output& output, std::ostream* out)
{
    *out << output.name;
}

class GoldenOutput : public testing::TestWithParam<Output> {};

TEST_P(GoldenOutput, IsAsKept)
{
    Arguments arguments = GetParam().arguments;
    arguments.emplace_back("--quiet");
    const CommandRun run = runQuor(arguments, {"LC_ALL=C.UTF-8"});
    EXPECT_EQ(run.errors, "");
    ASSERT_EQ(run.exitCode, 0);
    compareWithFile(run.output, GetParam().file);
}

INSTANTIATE_TEST_SUITE_P(Sample, GoldenOutput, testing::ValuesIn(outputs),
                         [](const auto& output) { return output.param.name; });

} // namespace

// The drawings of the sample's components, byte for byte, as the files in golden/ have them. After a change
// that is meant, QUOR_WRITE_GOLDEN=1 in the environment of this program writes the files anew; the difference
// is then read before it is kept.

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
};

void PrintTo(const Drawing& drawing, std::ostream* out)
{
    *out << drawing.name;
}

class Golden : public testing::TestWithParam<Drawing> {};

TEST_P(Golden, DrawingIsAsKept)
{
    const std::string file = std::string(QUOR_SOURCE_DIR "/tests/quor/golden/") + GetParam().name + ".json";
    Arguments arguments = {"draw", "--quiet"};
    arguments.insert(arguments.end(), GetParam().arguments.begin(), GetParam().arguments.end());
    const CommandRun run = runQuor(arguments);
    EXPECT_EQ(run.errors, "");
    ASSERT_EQ(run.exitCode, 0);
    if (std::getenv("QUOR_WRITE_GOLDEN")) std::ofstream(file, std::ios::binary) << run.output;
    EXPECT_EQ(run.output, readFile(file));
}

INSTANTIATE_TEST_SUITE_P(Sample, Golden, testing::ValuesIn(drawings),
                         [](const auto& drawing) { return drawing.param.name; });

} // namespace

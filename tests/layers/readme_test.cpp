#include "../system.h"

#include <cstdlib>
#include <fstream>
#include <gmock/gmock.h>
#include <sstream>
#include <string>

namespace {

std::string textOf(const std::string& path)
{
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

/// A text as a block of code in the README: four spaces before every line that is not empty.
std::string asBlock(const std::string& text)
{
    std::istringstream lines(text);
    std::string block;
    for (std::string line; std::getline(lines, line);)
        block += (line.empty() ? "" : "    ") + line + "\n";
    return block;
}

TEST(Readme, ShowsTheSampleHostAsItIs)
{
    const std::string program = textOf(QUOR_SOURCE_DIR "/sample/host/draw.cpp");
    ASSERT_FALSE(program.empty());
    EXPECT_THAT(textOf(QUOR_SOURCE_DIR "/README.md"), testing::HasSubstr(asBlock(program)));
}

TEST(Readme, SampleHostDrawsTheSampleValve)
{
    sys::setEnvironment("QUOR_INSTALLATION", QUOR_SOURCE_DIR "/sample/installation");
    sys::setEnvironment("QUOR_PROJECT", QUOR_SOURCE_DIR "/sample/project");
    const std::string output = testing::TempDir() + "sample_host.txt";
    std::string command =
        QUOR_SAMPLE_HOST " \"" QUOR_SOURCE_DIR "/sample/project/components/gate_valve.lua\" > \"";
    command.append(output).append("\"");
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_THAT(textOf(output), testing::HasSubstr("createQuorGraphy3DCylinder"));
}

} // namespace

#include "SceneRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

SceneRun::SceneRun() = default;

CommandRun SceneRun::draw(const std::string& scene, const std::string& body) const
{
    folder_.write("scene.json", scene);
    const std::string script = folder_.write("s.lua", "function main()\n" + body + "\nend\n");
    return runQuor({"draw", "--quiet", script, "--scene", scenePath()}, {"LC_ALL=C.UTF-8"});
}

std::vector<double> SceneRun::numbers(const std::string& scene, const std::string& expression) const
{
    // Numbers travel as points, which the drawing's JSON has exactly.
    const CommandRun run = draw(scene, R"(
local points = {}
local function take(value)
    if type(value) == "table" then
        for _, inner in ipairs(value) do take(inner) end
    else
        points[#points + 1] = { 26, { value, 0, 0 }, 1 }
    end
end
local function takeAll(...)
    for i = 1, select("#", ...) do take((select(i, ...))) end
end
takeAll()" + expression + ")\nreturn points");
    EXPECT_EQ(run.errors, "") << expression;
    EXPECT_EQ(run.exitCode, 0) << expression;
    std::vector<double> numbers;
    if (run.exitCode != 0) return numbers;
    const auto drawing = nlohmann::json::parse(run.output);
    for (const auto& point : drawing.at("primitives"))
        numbers.push_back(point.at("args").at(0).at(0).get<double>());
    return numbers;
}

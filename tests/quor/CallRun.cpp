#include "CallRun.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* describing = R"(
local function describe(value)
    if type(value) == "number" then return string.format("%.17g", value) end
    if type(value) == "string" then return "'" .. value .. "'" end
    if type(value) ~= "table" then return type(value) .. " " .. tostring(value) end
    local keys, parts = {}, {}
    for key in pairs(value) do keys[#keys + 1] = key end
    table.sort(keys, function(one, other) return tostring(one) < tostring(other) end)
    for i, key in ipairs(keys) do parts[i] = tostring(key) .. "=" .. describe(value[key]) end
    return "{" .. table.concat(parts, " ") .. "}"
end
function f(...)
    local parts = {}
    for i = 1, select("#", ...) do parts[i] = describe((select(i, ...))) end
    return table.concat(parts, "|")
end
)";

} // namespace

CallRun::CallRun() = default;

CommandRun CallRun::call(const std::string& script, const Arguments& arguments) const
{
    Arguments all = {"call", folder_.write("s.lua", script), "f"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return runQuor(all, {"LC_ALL=C.UTF-8"});
}

std::string CallRun::seen(const std::string& letters, const Arguments& texts, const Arguments& options) const
{
    Arguments arguments = {letters + ">r", "--quiet", "--format", "json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.emplace_back("--");
    arguments.insert(arguments.end(), texts.begin(), texts.end());
    const CommandRun run = call(describing, arguments);
    EXPECT_EQ(run.exitCode, 0) << letters;
    EXPECT_EQ(run.errors, "") << letters;
    if (run.exitCode != 0) return {};
    return nlohmann::json::parse(run.output)["results"][0]["value"].get<std::string>();
}

std::string CallRun::lines(const std::string& letters, const std::string& expressions) const
{
    const CommandRun run = call("function f() return " + expressions + " end", {">" + letters, "--quiet"});
    EXPECT_EQ(run.exitCode, 0) << expressions;
    EXPECT_EQ(run.errors, "") << expressions;
    return run.output;
}

nlohmann::json CallRun::values(const std::string& letters, const std::string& expressions) const
{
    const CommandRun run =
        call("function f() return " + expressions + " end", {">" + letters, "--quiet", "--format", "json"});
    EXPECT_EQ(run.exitCode, 0) << expressions;
    EXPECT_EQ(run.errors, "") << expressions;
    nlohmann::json values = nlohmann::json::array();
    if (run.exitCode != 0) return values;
    const auto called = nlohmann::json::parse(run.output);
    for (const auto& result : called.at("results")) {
        EXPECT_NE(result.contains("value"), result.contains("given")) << result;
        values.push_back(result.value("value", nlohmann::json()));
    }
    return values;
}

#include "Job.h"

#include "Failure.h"
#include "JsonFile.h"
#include "ScriptFiles.h"
#include "Terminal.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <map>
#include <string_view>
#include <unordered_map>

namespace quor {
namespace {

namespace fs = std::filesystem;

constexpr const char* standardInput = "-";

/// A path from the file, as an argument would name it.
std::string pathIn(const JsonNode& node, std::string_view expected)
{
    const std::string utf8 = node.text(expected);
    if (utf8.empty()) node.fail(expected);
    std::string path = terminal::fromUtf8(utf8);
    terminal::systemName(path, fmt::format("{}: {}", node.place(), path));
    return path;
}

/// What --set would be given for the same.
std::string settingOf(const std::string& name, const JsonNode& node)
{
    constexpr std::string_view form = "a number, true or false, a text, or a point, three numbers, is";
    if (name.empty() || name.find('=') != std::string::npos)
        throw Failure(WrongUsage,
                      fmt::format("{}: a name that is not empty and has no \"=\" is expected", node.place()));
    terminal::gbkFromUtf8(name, node.place() + " (the name)");
    if (node.isNumber()) return fmt::format("{}={}", name, node.number());
    if (node.isBoolean()) return name + (node.boolean() ? "=true" : "=false");
    if (node.isText()) {
        const std::string text = node.text();
        terminal::gbkFromUtf8(text, node.place());
        return name + "=" + text;
    }
    if (!node.isArray()) node.fail(form);
    const auto numbers = node.elements(3, form);
    return fmt::format("{}={},{},{}", name, numbers[0].number(), numbers[1].number(), numbers[2].number());
}

void readParameters(const JsonNode& section, ScriptOptions& script)
{
    for (const auto& [name, node] : section.members())
        script.settings.push_back(settingOf(name, node));
}

void readFactor(const JsonNode& node, ScriptOptions& script)
{
    constexpr std::string_view form = "a number above 0 is";
    const double factor = node.number(form);
    if (factor <= 0) node.fail(form);
    script.factor = fmt::format("{}", factor);
    script.factorGiven = true;
}

std::string readFormat(const JsonNode& node)
{
    constexpr std::string_view form = "\"json\" or \"text\" is";
    std::string format = node.text(form);
    if (format != "json" && format != "text") node.fail(form);
    return format;
}

std::string readSegment(const JsonNode& node)
{
    constexpr std::string_view form = "the name of a segment is";
    std::string name = node.text(form);
    if (name.empty()) node.fail(form);
    terminal::gbkFromUtf8(name, node.place());
    return name;
}

std::string readOutput(const JsonNode& node)
{
    constexpr std::string_view form = "the path of a file is";
    std::string path = pathIn(node, form);
    const fs::path name = system::pathOf(path).filename();
    if (path == "-" || name.empty() || name == "." || name == "..") node.fail(form);
    return path;
}

Job readJob(const JsonNode& root, const LimitOptions& limits)
{
    Job job;
    job.place = root.place();
    DrawOptions& draw = job.draw;
    draw.script.limits = limits;
    draw.script.set = ArgumentSet::Utf8;
    draw.result.format = "json";
    const auto members =
        root.members({"script", "parameters", "factor", "segment", "scene", "format", "output"});
    draw.script.script = pathIn(root.member("script", "the path of a script is"), "the path of a script is");
    draw.result.output = readOutput(root.member("output", "the path of a file is"));
    for (const auto& [key, node] : members) {
        if (key == "parameters") readParameters(node, draw.script);
        if (key == "factor") readFactor(node, draw.script);
        if (key == "segment") draw.segment = readSegment(node);
        if (key == "format") draw.result.format = readFormat(node);
        if (key != "scene") continue;
        draw.script.scene = pathIn(node, "the path of a scene is");
        draw.script.sceneGiven = true;
    }
    return job;
}

/// Which paths lead to the same place, be something there or not.
class Places {
public:
    std::string of(const std::string& path)
    {
        const fs::path given = system::pathOf(path);
        std::error_code error;
        if (fs::is_symlink(fs::symlink_status(given, error))) return textOf(canonical(given));
        std::string& folder = folders_[system::textOf(given.parent_path())];
        if (folder.empty()) folder = system::textOf(canonical(given.parent_path()));
        return textOf(system::pathOf(folder) / given.filename());
    }

private:
    static fs::path canonical(const fs::path& path)
    {
        std::error_code error;
        const fs::path whole = fs::absolute(path.empty() ? "." : path, error);
        fs::path place = fs::weakly_canonical(whole, error);
        return error ? whole : place;
    }

    static std::string textOf(const fs::path& path)
    {
        std::string text = system::textOf(path);
        const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
        if (system::ignoresCase) std::transform(text.begin(), text.end(), text.begin(), lower);
        return text;
    }

    std::map<std::string, std::string> folders_;
};

/// What is read, and how messages call it.
using Inputs = std::unordered_map<std::string, const char*>;

Inputs inputsOf(const std::vector<Job>& jobs, const std::string& path, Places& places)
{
    Inputs inputs;
    if (path != standardInput) inputs.emplace(places.of(path), "the file of jobs");
    std::unordered_map<std::string, int> known;
    for (const Job& job : jobs) {
        const ScriptOptions& script = job.draw.script;
        if (known[script.script]++ == 0)
            inputs.emplace(places.of(findScript(script.script).path), "a script");
        if (script.sceneGiven && known["\n" + script.scene]++ == 0)
            inputs.emplace(places.of(findScene(script.scene).path), "a scene");
    }
    return inputs;
}

/// Finds the places of the results, and that none is in the way of anything.
void place(std::vector<Job>& jobs, const std::string& path)
{
    Places places;
    const Inputs inputs = inputsOf(jobs, path, places);
    std::unordered_map<std::string_view, const Job*> outputs;
    for (Job& job : jobs) {
        job.target = places.of(job.draw.result.output);
        const auto input = inputs.find(job.target);
        if (input != inputs.end())
            throw Failure(WrongUsage, fmt::format("{}: output: a file other than {} is expected; {} is there",
                                                  job.place, input->second, job.draw.result.output));
        const auto [other, isNew] = outputs.emplace(job.target, &job);
        if (!isNew)
            throw Failure(WrongUsage,
                          fmt::format("{}: output: a file of its own is expected; {} is that of {}",
                                      job.place, job.draw.result.output, other->second->place));
    }
}

std::string readAll(const std::string& path)
{
    if (path != standardInput) return readTextFile(path);
    std::string text;
    char buffer[1 << 16];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, stdin))
        text.append(buffer, count);
    return text;
}

} // namespace

std::vector<Job> readJobs(const std::string& path, const LimitOptions& limits)
{
    const std::string text = readAll(path);
    const std::string name = path == standardInput ? "standard input" : path;
    std::vector<Job> jobs;
    std::size_t number = 0;
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        const std::string_view line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        ++number;
        if (line.find_first_not_of(" \t\r") == std::string_view::npos) continue;
        const nlohmann::json json = readJsonLine(line, name, number);
        jobs.push_back(readJob(JsonNode(json, placeOfLine(name, number)), limits));
    }
    place(jobs, path);
    return jobs;
}

} // namespace quor

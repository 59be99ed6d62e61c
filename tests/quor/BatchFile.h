#pragma once

#include "CommandRun.h"

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

/// Jobs for `quor batch`, with a folder of their own for the file and the results.
class BatchFile {
public:
    using Json = nlohmann::json;

    /// Adds a job whose result goes to "out/OUTPUT".
    void add(Json job, const std::string& output)
    {
        job["output"] = result(output);
        jobs_.push_back(std::move(job));
    }

    /// Writes the jobs, one on each line.
    std::string write(const std::string& name = "jobs.jsonl") const
    {
        std::string lines;
        for (const Json& job : jobs_)
            lines += job.dump() + "\n";
        return folder_.write(name, lines);
    }

    CommandRun run(const Arguments& options = {}, const Arguments& environment = {}) const
    {
        Arguments arguments = {"batch", write()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return runQuor(arguments, environment);
    }

    /// The job as `quor draw` takes it, its result in a file of another folder.
    CommandRun drawAlone(const Json& job, const std::string& output) const
    {
        Arguments arguments = {"draw", job.at("script").get<std::string>(), "-o", output, "--quiet"};
        for (const char* option : {"segment", "scene", "format"}) {
            if (!job.contains(option)) continue;
            arguments.push_back(std::string("--") + option);
            arguments.push_back(job.at(option).get<std::string>());
        }
        if (job.contains("factor")) arguments.insert(arguments.end(), {"--factor", job.at("factor").dump()});
        const Json parameters = job.value("parameters", Json::object());
        for (const auto& [name, value] : parameters.items()) {
            arguments.push_back("--set");
            arguments.push_back(name + "=" + settingOf(value));
        }
        return runQuor(arguments, {"LC_ALL=C.UTF-8"});
    }

    const ScratchFolder& folder() const { return folder_; }
    std::string result(const std::string& output) const { return folder_.path("out/" + output); }
    std::vector<Json>& jobs() { return jobs_; }

private:
    static std::string settingOf(const Json& value)
    {
        if (value.is_string()) return value.get<std::string>();
        std::string text = value.dump();
        if (value.is_array()) text = text.substr(1, text.size() - 2);
        return text;
    }

    ScratchFolder folder_;
    std::vector<Json> jobs_;
};

#pragma once

#include "CommandRun.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

/// `quor config` with configuration scripts of a test's own, in a terminal of UTF-8, or with the sample's.
class ConfigRun : public testing::Test {
protected:
    using Json = nlohmann::json;

    static constexpr const char* projectScript = "installation/bin/quorModuleSystem.lua";
    static constexpr const char* systemScript = "installation/bin/mirtSystemConfig.lua";

    ConfigRun()
    {
        write("project/spec/A1A.quor", "");
        write(systemScript, "function initConfig() end");
    }

    /// With the sample's scripts.
    static CommandRun runSample(const Arguments& arguments)
    {
        Arguments all = {"config"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return runQuor(all, {"LC_ALL=C.UTF-8"});
    }
    /// With those of the test.
    CommandRun run(const Arguments& arguments, const Arguments& environment = {"LC_ALL=C.UTF-8"}) const
    {
        Arguments all = {"config"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        for (const char* folder : {"installation", "project"})
            all.insert(all.end(), {std::string("--") + folder, path(folder)});
        return runQuor(all, environment);
    }
    /// A project script asked for the pipe module's specification, in JSON.
    CommandRun runSpec(const std::string& script, const Arguments& arguments = {}) const
    {
        write(projectScript, script);
        Arguments all = {"get", "projectSpec", "--module", "PIPE", "--name", "A1A", "--json"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return run(all);
    }

    /// The answer of a getter in a table; null when it is not there.
    static Json answerOf(const Json& table, const char* getter)
    {
        const auto found = std::find_if(table["answers"].begin(), table["answers"].end(),
                                        [getter](const Json& answer) { return answer["getter"] == getter; });
        return found == table["answers"].end() ? Json() : *found;
    }

    /// Without the folders, which every machine has elsewhere.
    static std::string withoutFolders(std::string text)
    {
        const std::pair<const char*, const char*> folders[] = {
            {QUOR_SOURCE_DIR "/sample/installation", "INSTALLATION"},
            {QUOR_SOURCE_DIR "/sample/project", "PROJECT"}};
        for (const auto& [folder, name] : folders) {
            for (std::size_t at = text.find(folder); at != std::string::npos; at = text.find(folder, at))
                text.replace(at, std::string_view(folder).size(), name);
        }
        return text;
    }

    std::string write(const std::string& name, const std::string& text) const
    {
        return scratch_.write(name, text);
    }
    std::string path(const std::string& name) const { return scratch_.path(name); }

    const ScratchFolder scratch_;
};

#pragma once

#include "CommandRun.h"
#include "TestSystem.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
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

    /// Without the folders, which every machine has elsewhere, and with '/' in the paths behind them. The
    /// text may be JSON.
    static std::string withoutFolders(std::string text)
    {
        for (const std::string separator : {"/", "\\\\", "\\"}) {
            text = withoutFolder(std::move(text), separator, QUOR_SOURCE_DIR "/sample/installation",
                                 "INSTALLATION");
            text = withoutFolder(std::move(text), separator, QUOR_SOURCE_DIR "/sample/project", "PROJECT");
        }
        return text;
    }

    /// What is expected of such a text: on Windows all separators of the paths are the system's, also those
    /// that a script wrote as '\\'.
    static std::string expectedHere(std::string text)
    {
        if (!testsystem::isWindows) return text;
        for (const std::string separator : {"\\\\", "\\"}) {
            for (const char* name : {"INSTALLATION", "PROJECT"})
                text = withoutFolder(std::move(text), separator, name, name);
        }
        return text;
    }

    static void expectGolden(const std::string& name, const std::string& text)
    {
        const std::string file = QUOR_SOURCE_DIR "/tests/quor/golden/" + name;
        if (std::getenv("QUOR_WRITE_GOLDEN")) std::ofstream(file, std::ios::binary) << text;
        EXPECT_EQ(text, expectedHere(readFile(file)));
    }

    std::string write(const std::string& name, const std::string& text) const
    {
        return scratch_.write(name, text);
    }
    std::string path(const std::string& name) const { return scratch_.path(name); }
    /// As the path service gives it.
    std::string systemPath(const std::string& name) const { return sys::inSystemForm(path(name)); }

    const ScratchFolder scratch_;

private:
    static std::string withSeparators(std::string path, const std::string& old, const std::string& separator)
    {
        for (std::size_t at = path.find(old); at != std::string::npos;
             at = path.find(old, at + separator.size()))
            path.replace(at, old.size(), separator);
        return path;
    }

    static std::string withoutFolder(std::string text, const std::string& separator,
                                     const std::string& folder, const std::string& name)
    {
        const std::string there = withSeparators(folder, "/", separator);
        for (std::size_t at = text.find(there); at != std::string::npos;
             at = text.find(there, at + name.size())) {
            const std::size_t end = std::min(text.find_first_of("\"\n", at), text.size());
            const std::string behind = text.substr(at + there.size(), end - at - there.size());
            text.replace(at, end - at, name + withSeparators(behind, separator, "/"));
        }
        return text;
    }
};

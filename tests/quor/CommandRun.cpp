#include "CommandRun.h"

#include "TestSystem.h"

#include <algorithm>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

/// As char8_t they are the system's own bytes, or on Windows UTF-8, whatever the locale.
fs::path pathOf(std::string_view text)
{
    return std::u8string(text.begin(), text.end());
}

std::string textOf(const fs::path& path)
{
    const std::u8string text = path.generic_u8string();
    return {text.begin(), text.end()};
}

} // namespace

CommandRun runProgram(const Arguments& command, const Arguments& environment)
{
    const ScratchFolder results;
    const std::string output = results.path("output");
    const std::string errors = results.path("errors");
    CommandRun run;
    run.exitCode = testsystem::runProgram(command, environment, output, errors);
    run.output = readFile(output);
    run.errors = readFile(errors);
    return run;
}

std::string quorCommand()
{
    return QUOR_COMMAND;
}

CommandRun runQuor(const Arguments& arguments, const Arguments& environment)
{
    Arguments command = {quorCommand()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    Arguments settings = {"QUOR_INSTALLATION=" QUOR_SOURCE_DIR "/sample/installation",
                          "QUOR_PROJECT=" QUOR_SOURCE_DIR "/sample/project", "LANGUAGE=zh"};
    settings.insert(settings.end(), environment.begin(), environment.end());
    return runProgram(command, settings);
}

ScratchFolder::ScratchFolder()
{
    constexpr int mostTries = 100;
    std::random_device random;
    for (int tries = 0; tries < mostTries; ++tries) {
        folder_ = fs::temp_directory_path() / ("quor_test." + std::to_string(random()));
        if (fs::create_directory(folder_)) return;
    }
    throw std::runtime_error("no scratch folder");
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

std::string ScratchFolder::path(std::string_view name) const
{
    return textOf(folder_ / pathOf(name));
}

std::string ScratchFolder::makeFolder(std::string_view name) const
{
    fs::create_directories(folder_ / pathOf(name));
    return path(name);
}

std::string ScratchFolder::write(std::string_view name, std::string_view bytes) const
{
    const fs::path path = folder_ / pathOf(name);
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) throw std::runtime_error("cannot write " + textOf(path));
    return textOf(path);
}

std::vector<std::string> ScratchFolder::names() const
{
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder_))
        names.push_back(textOf(entry.path().filename()));
    std::sort(names.begin(), names.end());
    return names;
}

std::string readFile(const std::string& path)
{
    std::ifstream file(pathOf(path), std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

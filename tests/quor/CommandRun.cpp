#include "CommandRun.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

[[noreturn]] void become(const Arguments& command, const Arguments& environment, const std::string& output,
                         const std::string& errors)
{
    for (const std::string& setting : environment) {
        const std::size_t equals = setting.find('=');
        if (equals == std::string::npos)
            unsetenv(setting.c_str());
        else
            setenv(setting.substr(0, equals).c_str(), setting.c_str() + equals + 1, 1);
    }
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    if (std::freopen(output.c_str(), "wb", stdout) && std::freopen(errors.c_str(), "wb", stderr))
        execvp(arguments.front(), arguments.data());
    _exit(127);
}

} // namespace

CommandRun runProgram(const Arguments& command, const Arguments& environment)
{
    const ScratchFolder results;
    const std::string output = results.path("output");
    const std::string errors = results.path("errors");
    const pid_t child = fork();
    if (child == 0) become(command, environment, output, errors);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) throw std::runtime_error("no child process");
    constexpr int signalBase = 128;
    CommandRun run;
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : signalBase + WTERMSIG(status);
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
    std::string name = (fs::temp_directory_path() / "quor_test.XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no scratch folder");
    folder_ = name;
}

ScratchFolder::~ScratchFolder()
{
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

std::string ScratchFolder::write(std::string_view name, std::string_view bytes) const
{
    const fs::path path = folder_ / name;
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
    return path.string();
}

std::vector<std::string> ScratchFolder::names() const
{
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder_))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string readFile(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

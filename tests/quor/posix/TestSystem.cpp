#include "../TestSystem.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace testsystem {
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

constexpr mode_t unusual = 0640;

} // namespace

const bool isWindows = false;

int runProgram(const Arguments& command, const Arguments& environment, const std::string& output,
               const std::string& errors)
{
    const pid_t child = fork();
    if (child == 0) become(command, environment, output, errors);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) throw std::runtime_error("no child process");
    constexpr int signalBase = 128;
    return WIFEXITED(status) ? WEXITSTATUS(status) : signalBase + WTERMSIG(status);
}

std::vector<std::string> waysTo(const std::string& path)
{
    const std::size_t name = path.rfind('/') + 1;
    return {path, "/." + path, path.substr(0, name) + "/" + path.substr(name)};
}

bool protect(const std::string& path)
{
    return geteuid() != 0 && chmod(path.c_str(), 0400) == 0;
}

void mark(const std::string& path)
{
    if (chmod(path.c_str(), unusual) != 0) throw std::runtime_error("no permissions for " + path);
}

bool isMarked(const std::string& path)
{
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && (status.st_mode & 0777) == unusual;
}

Unreadable::Unreadable(const std::string& path) : path_(path)
{
    isSo_ = geteuid() != 0 && chmod(path.c_str(), 0) == 0;
}

Unreadable::~Unreadable()
{
    if (isSo_) chmod(path_.c_str(), 0600);
}

Pipe::Pipe(const ScratchFolder& folder, const std::string& name) : path_(folder.path(name))
{
    fs::create_directories(fs::path(path_).parent_path());
    if (mkfifo(path_.c_str(), 0600) != 0) throw std::runtime_error("no pipe " + path_);
}

Pipe::~Pipe() = default;

Arguments terminalOf(const ScratchFolder& folder, const std::string& locale, const std::string& set)
{
    const std::string name = locale + "." + set;
    if (::runProgram({"localedef", "-i", locale, "-f", set, folder.path(name)}).exitCode != 0) return {};
    return {"LOCPATH=" + folder.path(""), "LC_ALL=" + name};
}

std::string argumentInGbk(const std::string&, const std::string& gbk)
{
    return gbk;
}

std::string echoed(const std::string& word)
{
    return word + "\n";
}

std::string nullDevice()
{
    return "/dev/null";
}

std::string copyCommand(const std::string& folder)
{
    fs::create_directories(folder);
    fs::copy_file(quorCommand(), folder + "/quor");
    return folder + "/quor";
}

Arguments settingsOfCopy()
{
    return {"LD_LIBRARY_PATH=" + (fs::path(quorCommand()).parent_path().parent_path() / "lib").string()};
}

} // namespace testsystem

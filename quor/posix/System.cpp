#include "../System.h"

#include "../CharacterSet.h"

#include <clocale>
#include <cstdlib>
#include <fcntl.h>
#include <langinfo.h>
#include <unistd.h>

namespace quor::system {

const char* const separators = "/";

/// One set for all. Goes back to the locale "C" at once.
CharacterSets readCharacterSets()
{
    const bool known = std::setlocale(LC_CTYPE, "") != nullptr;
    // A system that has not generated the locale still shows its characters.
    std::string set = known ? nl_langinfo(CODESET) : charset::namedByEnvironment();
    std::setlocale(LC_CTYPE, "C");
    // A bare locale says nothing about the terminal.
    if (set.empty() || set == "ANSI_X3.4-1968") set = "UTF-8";
    return {set, set, set, set, set};
}

std::vector<std::string> arguments(int count, char** given)
{
    return {given, given + count};
}

std::optional<std::string> environment(const char* variable)
{
    const char* value = std::getenv(variable);
    if (!value) return std::nullopt;
    return value;
}

std::filesystem::path programFile()
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error);
}

void makeStreamsBinary() {}

bool isErrorsTerminal()
{
    return isatty(STDERR_FILENO) != 0;
}

void emptyInput()
{
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (nothing < 0) return;
    dup2(nothing, STDIN_FILENO);
    close(nothing);
}

const bool ignoresCase = false;

} // namespace quor::system

#include "../SystemFolders.h"

#include "../PathText.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace folders {
namespace {

/// Drops "." and empty parts. ".." stays: behind a link it leads elsewhere than the text says.
std::string tidy(std::string_view path)
{
    std::string result;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string_view part = path.substr(begin, end - begin);
        if (!part.empty() && part != ".") {
            if (!result.empty() || path.front() == '/') result += '/';
            result += part;
        }
        begin = end + 1;
    }
    if (result.empty()) return path.starts_with('/') ? "/" : ".";
    return result;
}

} // namespace

std::string absolute(std::string_view folder)
{
    std::string given = pathtext::fromName(folder);
    if (given.starts_with('/')) return tidy(given);
    std::error_code error;
    const std::filesystem::path working = std::filesystem::current_path(error);
    return tidy(error ? given : working.native() + '/' + given);
}

std::string programFolder()
{
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? absolute(".") : withoutLastPart(program.native());
}

bool isBin(std::string_view name)
{
    return name == "bin";
}

} // namespace folders

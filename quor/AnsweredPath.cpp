#include "AnsweredPath.h"

#include "CharacterSet.h"
#include "Terminal.h"

#include <QuorCommon/QuorSystem.h>
#include <filesystem>

namespace quor {
namespace {

namespace fs = std::filesystem;

fs::path pathOf(const std::string& systemName)
{
    return system::pathOf(terminal::fromSystemName(systemName));
}

bool exists(const std::string& path)
{
    std::error_code error;
    return fs::exists(pathOf(path), error);
}

/// Whether two bytes are one character of GBK.
bool isPair(char lead, char trail)
{
    const auto first = static_cast<unsigned char>(lead);
    const auto second = static_cast<unsigned char>(trail);
    return first >= 0x81 && first <= 0xFE && second >= 0x40 && second <= 0xFE && second != 0x7F;
}

/// With '/' in the place of each backslash. As in the path service's names, one that ends a character of GBK
/// stays, where the text is not UTF-8.
std::string withoutBackslashes(std::string path)
{
    const bool isGbk = !charset::isUtf8(path);
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (isGbk && i + 1 < path.size() && isPair(path[i], path[i + 1]))
            ++i;
        else if (path[i] == '\\')
            path[i] = '/';
    }
    return path;
}

} // namespace

bool leadsSomewhere(const std::string& path)
{
    const std::string plain = withoutBackslashes(path);
    if (pathOf(plain).has_root_directory()) return exists(path) || exists(plain);
    return exists(QuorSystem::getProjectFileFullPath(path.c_str()));
}

std::string utf8FromAnsweredPath(const std::string& path)
{
    const bool isSystems = terminal::namesAreUtf8() && charset::isUtf8(path);
    return isSystems ? path : terminal::utf8FromMessage(path);
}

} // namespace quor

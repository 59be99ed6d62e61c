#include "ScriptFiles.h"

#include "Terminal.h"

#include <QuorCommon/QuorSystem.h>
#include <algorithm>
#include <filesystem>

namespace quor {
namespace {

bool exists(const std::string& path)
{
    std::error_code error;
    return std::filesystem::exists(system::pathOf(path), error);
}

/// In `folder` of the project the files of the kind lie.
FoundFile find(const std::string& given, const std::string& place, const char* folder, bool inInstallation)
{
    FoundFile file;
    file.searched = {given};
    const std::string name = terminal::systemName(given, place);
    if (system::pathOf(given).is_relative()) {
        for (const char* path : {QuorSystem::getProjectFileFullPath(name.c_str()),
                                 QuorSystem::getProjectFileFullPath(folder, name.c_str())})
            file.searched.push_back(terminal::fromSystemName(path));
        if (inInstallation)
            file.searched.push_back(terminal::fromSystemName(QuorSystem::getFullQuorName(name.c_str())));
    }
    const auto found = std::find_if(file.searched.begin(), file.searched.end(), exists);
    file.isThere = found != file.searched.end();
    file.path = file.isThere ? *found : given;
    return file;
}

} // namespace

FoundFile findScript(const std::string& given)
{
    return find(given, "SCRIPT " + given, "components", true);
}

FoundFile findScene(const std::string& given)
{
    return find(given, "--scene " + given, "scenes", false);
}

std::string listOfPlaces(const FoundFile& file)
{
    if (file.searched.size() < 2) return {};
    std::string list = "\nlooked for:";
    for (const std::string& path : file.searched)
        list += "\n  " + path;
    return list;
}

} // namespace quor

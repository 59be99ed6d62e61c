#include <QuorCommon/QuorSystem.h>

#include "../../private/PerThread.h"
#include "Folders.h"
#include "PathText.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <exception>
#include <string>
#include <string_view>

namespace QuorSystem {
namespace {

constexpr std::string_view binFolder = "bin";
constexpr std::string_view utilsFolder = "bin/utils";
constexpr std::string_view platformFolder = "bin/x64";

std::string_view viewOf(const char* text)
{
    return text == nullptr ? std::string_view() : std::string_view(text);
}

/// The texts handed out on one thread. One more than eight, so that a text still stands while the eighth
/// later call reads it as its argument.
struct RecentTexts {
    std::array<std::string, 9> texts;
    std::size_t next = 0;

    std::string& oldest()
    {
        std::string& text = texts[next];
        next = (next + 1) % texts.size();
        return text;
    }
};

void compose(std::string& path, const std::string& base, std::string_view folder, std::string_view name)
{
    path = base;
    pathtext::append(path, folder);
    pathtext::append(path, name);
    pathtext::toSystemForm(path);
}

using Base = const std::string& (*)();

const char* resolve(Base base, std::string_view folder, std::string_view name)
{
    RecentTexts* const recent = platform::perThread<RecentTexts>();
    if (recent == nullptr) return "";
    try {
        std::string& path = recent->oldest();
        compose(path, base(), folder, name);
        return path.c_str();
    } catch (const std::exception&) {
        return "";
    }
}

} // namespace

void setInstallationFolder(const char* folder)
{
    folders::setInstallation(folder);
}

void setProjectFolder(const char* folder)
{
    folders::setProject(folder);
}

const char* quorEnv()
{
    return resolve(folders::installation, {}, {});
}

const char* getCurrentProjPath()
{
    return resolve(folders::project, {}, {});
}

const char* getFullQuorName(const char* name)
{
    return resolve(folders::installation, {}, viewOf(name));
}

const char* getFullQuorName(const char* folder, const char* name)
{
    return resolve(folders::installation, viewOf(folder), viewOf(name));
}

bool getFullQuorName(const char* name, char* buffer, int size)
{
    if (buffer == nullptr || size < 1) return false;
    try {
        std::string path;
        compose(path, folders::installation(), {}, viewOf(name));
        if (path.size() < static_cast<std::size_t>(size)) {
            std::memcpy(buffer, path.c_str(), path.size() + 1);
            return true;
        }
    } catch (const std::exception&) {
        // Told by the empty text below.
    }
    *buffer = '\0';
    return false;
}

const char* quorFullPlatformPath()
{
    return resolve(folders::installation, platformFolder, {});
}

const char* quorFullPlatformPath(const char* name)
{
    return resolve(folders::installation, platformFolder, viewOf(name));
}

const char* getBinRuntimeFullName(const char* name)
{
    return resolve(folders::installation, binFolder, viewOf(name));
}

const char* getBinUtilsRuntimeFullName(const char* name)
{
    return resolve(folders::installation, utilsFolder, viewOf(name));
}

const char* getProjectFileFullPath(const char* name)
{
    return resolve(folders::project, {}, viewOf(name));
}

const char* getProjectFileFullPath(const char* folder, const char* name)
{
    return resolve(folders::project, viewOf(folder), viewOf(name));
}

} // namespace QuorSystem

// What files are to the system: how their names are written, who may open them, how native modules are found.

#include "scriptor_fixture.h"

#include <QuorCommon/QuorSystem.h>
#include <algorithm>
#include <cctype>

namespace {

class SystemFiles : public Scriptor {
protected:
    int load(const std::string& path) { return scriptor.loadFile(path.c_str(), false); }

    ScriptFolder folder;
};

TEST_F(SystemFiles, ThatSomebodyHoldsDuringAReloadLeaveWhatWasThere)
{
    const std::string path = folder.write("held.lua", "runs = (runs or 0) + 1", 1000);
    EXPECT_EQ(load(path), Quor::Ok);
    folder.setTime("held.lua", 2000);
    {
        const sys::FileLock lock(path);
        EXPECT_EQ(load(path), sys::FileLock::excludesOthers ? Quor::ScriptFailed : Quor::Ok);
        EXPECT_EQ(shown("runs"), sys::FileLock::excludesOthers ? "1" : "2");
    }
    folder.setTime("held.lua", 3000);
    EXPECT_EQ(load(path), Quor::Ok) << "it is free again";
    EXPECT_EQ(shown("runs"), sys::FileLock::excludesOthers ? "2" : "3");
}

TEST_F(SystemFiles, HaveNamesInTheCodePageWhoseSecondByteMayBeABackslash)
{
    for (const char* name : {"\x81\x5C.lua", "\xC4\xA3\xBF\xE9.lua", "a b.lua"}) {
        const std::string path = folder.write(name, "loaded = 'yes'");
        EXPECT_EQ(load(path), Quor::Ok) << name;
        EXPECT_EQ(shown("loaded"), "yes") << name;
        EXPECT_EQ(scriptor.getFileName(), path);
        run("loaded = nil");
    }
}

TEST_F(SystemFiles, WithNamesOutsideTheCodePageAreNotThere)
{
    // A Thai letter, which GBK does not have; here a name is any bytes.
    const std::filesystem::path file = std::filesystem::path(folder.path()) / u8"\u0E01.lua";
    std::ofstream(file) << "loaded = 'yes'";
    ASSERT_TRUE(std::filesystem::exists(file));
#if defined(_WIN32)
    EXPECT_EQ(load(folder.path("?.lua")), Quor::FileNotExamined) << "as the code page shows it";
    EXPECT_EQ(load(folder.path("\xE0\xB8\x81.lua")), Quor::FileNotExamined) << "its bytes in UTF-8";
    EXPECT_EQ(shown("loaded"), "nil");
#else
    EXPECT_EQ(load(file.string()), Quor::Ok);
    EXPECT_EQ(shown("loaded"), "yes");
#endif
}

TEST_F(SystemFiles, AreFoundHoweverTheSystemLetsTheirPathBeWritten)
{
    const std::string path = folder.write("inner/file.lua", "loads = (loads or 0) + 1");
#if defined(_WIN32)
    std::string slashes = path;
    std::replace(slashes.begin(), slashes.end(), '\\', '/');
    std::string drive = path;
    drive[0] = static_cast<char>(std::tolower(drive[0]));
    const std::vector<std::string> ways = {path, slashes, drive, R"(\\?\)" + path,
                                           folder.path("INNER/FILE.LUA")};
#else
    const std::vector<std::string> ways = {path, folder.path(".//inner/file.lua"),
                                           folder.path("inner/../inner/file.lua")};
#endif
    int loads = 0;
    for (const std::string& way : ways) {
        EXPECT_EQ(load(way), Quor::Ok) << way;
        EXPECT_EQ(shown("loads"), std::to_string(++loads)) << way << ": another name is another file";
    }
}

TEST_F(SystemFiles, OfNativeModulesAreFoundInThePlatformFolder)
{
    const std::string module = std::string("native_module") + sys::nativeModuleSuffix;
    QuorSystem::setInstallationFolder(folder.path("inst").c_str());
    folder.write("inst/bin/x64/" + module, "");
    std::filesystem::copy_file(QUOR_NATIVE_MODULE, folder.path("inst/bin/x64/" + module),
                               std::filesystem::copy_options::overwrite_existing);
    scriptor.initLua();
    EXPECT_EQ(shown("require('native_module')"), "native");
    // Or the module is still open when its folder is to go.
    scriptor.initLua();
    QuorSystem::setInstallationFolder(nullptr);
}

} // namespace

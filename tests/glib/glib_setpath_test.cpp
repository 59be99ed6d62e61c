#include "glib_functions.h"

#include <QuorCommon/QuorSystem.h>

namespace {

/// What "glib.setpath" adds to the places where a script's `require` looks.
class GlibSetpath : public GlibFunctions {
protected:
    GlibSetpath() { QuorSystem::setInstallationFolder(folder.path("installation").c_str()); }
    ~GlibSetpath() override { QuorSystem::setInstallationFolder(nullptr); }
    GlibSetpath(const GlibSetpath&) = delete;
    GlibSetpath& operator=(const GlibSetpath&) = delete;

    std::string installed(const std::string& name) const { return folder.path("installation/" + name); }
    /// What one call adds to the path of scripts, and to that of native modules.
    std::string scripts() const
    {
        return installed("bin/?.lua") + ";" + installed("bin/utils/?.lua") + ";" +
               installed("bin/utils/?.lua") + ";" + installed("bin/?.lua") + ";" + installed("sys/?.lua");
    }
    std::string natives() const { return installed("bin/x64/?") + sys::nativeModuleSuffix; }

    ScriptFolder folder;
};

TEST_F(GlibSetpath, AddsSixPlacesInOrder)
{
    const std::string path = shown("package.path");
    const std::string cpath = shown("package.cpath");
    EXPECT_EQ(answer("setpath()"), noAnswer);
    EXPECT_EQ(shown("package.path"), path + ";" + scripts());
    EXPECT_EQ(shown("package.cpath"), cpath + ";" + natives());
}

TEST_F(GlibSetpath, AddsThemAgainAtEachCall)
{
    const std::string path = shown("package.path");
    const std::string cpath = shown("package.cpath");
    EXPECT_EQ(answer("setpath(1, 'x')"), noAnswer) << "it looks at no argument";
    EXPECT_EQ(answer("setpath()"), noAnswer);
    EXPECT_EQ(shown("package.path"), path + ";" + scripts() + ";" + scripts());
    EXPECT_EQ(shown("package.cpath"), cpath + ";" + natives() + ";" + natives());
}

TEST_F(GlibSetpath, BeginsAPathThatIsNoText)
{
    for (const char* value : {"nil", "5", "false", "{}", "print"}) {
        run(std::string("package.path, package.cpath = ") + value + ", " + value);
        EXPECT_EQ(answer("setpath()"), noAnswer);
        EXPECT_EQ(shown("package.path"), scripts()) << value;
        EXPECT_EQ(shown("package.cpath"), natives()) << value;
    }
}

TEST_F(GlibSetpath, DoesNothingWithoutTheTableOfPackages)
{
    for (const char* value : {"nil", "'text'", "5", "print", "newproxy()"}) {
        run(std::string("package = ") + value);
        EXPECT_EQ(answer("setpath()"), noAnswer) << value;
        EXPECT_EQ(shown(std::string("type(package) == type(") + value + ")"), "true");
    }
    makeGlobalsStrict();
    run("rawset(_G, 'package', nil)");
    EXPECT_EQ(answer("setpath()"), noAnswer);
    EXPECT_EQ(shown("rawget(_G, 'package')"), "nil");
}

TEST_F(GlibSetpath, PassesByMetatablesOfTheTableOfPackages)
{
    run("package = setmetatable({}, {__index = function() error('read') end,"
        " __newindex = function() error('written') end})");
    EXPECT_EQ(answer("setpath()"), noAnswer);
    EXPECT_EQ(shown("rawget(package, 'path')"), scripts());
}

TEST_F(GlibSetpath, LetsAScriptRequireWhatLiesInSys)
{
    folder.write("installation/sys/only_in_sys.lua", "return 'found'");
    EXPECT_EQ(shown("pcall(require, 'only_in_sys')"), "false");
    EXPECT_EQ(answer("setpath()"), noAnswer);
    EXPECT_EQ(shown("require('only_in_sys')"), "found");
}

TEST_F(GlibSetpath, NeedsNoObjectOfTheHost)
{
    const std::string path = shown("package.path");
    scriptor.setFunction(nullptr);
    scriptor.setGlibTextstyle(nullptr);
    EXPECT_EQ(answer("setpath()"), noAnswer);
    EXPECT_EQ(shown("package.path"), path + ";" + scripts());
}

} // namespace

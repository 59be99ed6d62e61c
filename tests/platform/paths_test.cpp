#include <QuorCommon/QuorSystem.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// An installation "/inst" and a project "/proj", in a working folder of known name; all returns afterwards.
class Paths : public testing::Test {
protected:
    void SetUp() override
    {
        fs::current_path("/usr");
        QuorSystem::setInstallationFolder("/inst");
        QuorSystem::setProjectFolder("/proj");
    }

    void TearDown() override
    {
        unsetenv("QUOR_INSTALLATION");
        unsetenv("QUOR_PROJECT");
        QuorSystem::setInstallationFolder(nullptr);
        QuorSystem::setProjectFolder(nullptr);
        fs::current_path(workingFolder_);
    }

    const fs::path workingFolder_ = fs::current_path();
};

TEST_F(Paths, NamesBecomePathsInTheInstallation)
{
    const struct {
        const char* name;
        const char* path;
    } cases[] = {
        {nullptr, "/inst"},
        {"", "/inst"},
        {"\\", "/inst"},
        {"/\\/", "/inst"},
        {"bin\\?.lua", "/inst/bin/?.lua"},
        {"bin\\utils\\?.lua", "/inst/bin/utils/?.lua"},
        {"\\sys\\modeling.xml", "/inst/sys/modeling.xml"},
        {"\\\\/sys/modeling.xml", "/inst/sys/modeling.xml"},
        {"sys\\\\a.xml", "/inst/sys//a.xml"},
        {"sys\\", "/inst/sys/"},
        {"..\\a", "/inst/../a"},
        {"C:\\a", "/inst/C:/a"},
        {"a b.lua", "/inst/a b.lua"},
    };
    for (const auto& [name, path] : cases) {
        EXPECT_STREQ(QuorSystem::getFullQuorName(name), path) << (name == nullptr ? "null" : name);
    }
}

TEST_F(Paths, BackslashInsideADoubleByteCharacterStays)
{
    const struct {
        const char* what;
        const char* name;
        const char* path;
    } cases[] = {
        {"second byte of a character", "sys\\\x95\x5C.lua", "/inst/sys/\x95\x5C.lua"},
        {"two such characters", "\x95\x5C\x81\x5C\\a", "/inst/\x95\x5C\x81\x5C/a"},
        {"at the end", "sys\\\xFE\x5C", "/inst/sys/\xFE\x5C"},
        {"after a whole character", "\xC4\xE3\\a", "/inst/\xC4\xE3/a"},
        {"after a first byte that the end cuts off", "a\\\xC4", "/inst/a/\xC4"},
        {"after a byte that cannot follow", "\xC4\x7F\\a", "/inst/\xC4\x7F/a"},
        {"after bytes that begin no character", "\xFF\\\x80\\a", "/inst/\xFF/\x80/a"},
        {"slash after a first byte", "\xC4/a", "/inst/\xC4/a"},
    };
    for (const auto& [what, name, path] : cases)
        EXPECT_STREQ(QuorSystem::getFullQuorName(name), path) << what;
}

TEST_F(Paths, EveryBackslashOfUtf8IsASeparator)
{
    const struct {
        const char* what;
        const char* name;
        const char* path;
    } cases[] = {
        {"two bytes", "\xC3\xA9\\a", "/inst/\xC3\xA9/a"},
        {"three bytes", "\xE4\xBD\xA0\\a", "/inst/\xE4\xBD\xA0/a"},
        {"four bytes", "\xF0\x9F\x98\x80\\a", "/inst/\xF0\x9F\x98\x80/a"},
        {"overlong, so not UTF-8", "\xE0\x81\x81\\a", "/inst/\xE0\x81\x81\\a"},
        {"overlong in four bytes", "\xF0\x80\x80\x81\\a", "/inst/\xF0\x80\x80\x81\\a"},
        {"a surrogate, so not UTF-8", "\xED\xBF\xBF\\a", "/inst/\xED\xBF\xBF\\a"},
        {"beyond Unicode, so not UTF-8", "\xF4\x90\x80\x81\\a", "/inst/\xF4\x90\x80\x81\\a"},
        {"cut short, so not UTF-8", "\xE4\xBD\\a\xE4", "/inst/\xE4\xBD/a\xE4"},
    };
    for (const auto& [what, name, path] : cases)
        EXPECT_STREQ(QuorSystem::getFullQuorName(name), path) << what;
}

TEST_F(Paths, FolderAndNameMeetWithOneSeparator)
{
    const struct {
        const char* folder;
        const char* name;
        const char* inFolder;
    } cases[] = {
        {"bin", "a.lua", "/bin/a.lua"},
        {"\\bin\\", "\\a.lua", "/bin/a.lua"},
        {"bin//", "//a.lua", "/bin/a.lua"},
        {"a\\b", "c\\d", "/a/b/c/d"},
        {nullptr, "a.lua", "/a.lua"},
        {"", "a.lua", "/a.lua"},
        {"\\", "a.lua", "/a.lua"},
        {"bin", nullptr, "/bin"},
        {"bin", "", "/bin"},
        {nullptr, nullptr, ""},
    };
    for (const auto& [folder, name, inFolder] : cases) {
        EXPECT_EQ(QuorSystem::getFullQuorName(folder, name), std::string("/inst") + inFolder);
        EXPECT_EQ(QuorSystem::getProjectFileFullPath(folder, name), std::string("/proj") + inFolder);
    }
}

TEST_F(Paths, EveryServiceHasItsFolder)
{
    EXPECT_STREQ(QuorSystem::quorEnv(), "/inst");
    EXPECT_STREQ(QuorSystem::getCurrentProjPath(), "/proj");
    EXPECT_STREQ(QuorSystem::quorFullPlatformPath(), "/inst/bin/x64");
    EXPECT_STREQ(QuorSystem::quorFullPlatformPath(nullptr), "/inst/bin/x64");
    EXPECT_STREQ(QuorSystem::quorFullPlatformPath("?.dll"), "/inst/bin/x64/?.dll");
    EXPECT_STREQ(QuorSystem::getBinRuntimeFullName("\\?.lua"), "/inst/bin/?.lua");
    EXPECT_STREQ(QuorSystem::getBinRuntimeFullName(""), "/inst/bin");
    EXPECT_STREQ(QuorSystem::getBinUtilsRuntimeFullName("?.lua"), "/inst/bin/utils/?.lua");
    EXPECT_STREQ(QuorSystem::getBinUtilsRuntimeFullName(nullptr), "/inst/bin/utils");
    EXPECT_STREQ(QuorSystem::getProjectFileFullPath("sys\\quorToolTip.lua"), "/proj/sys/quorToolTip.lua");
    EXPECT_STREQ(QuorSystem::getProjectFileFullPath(nullptr), "/proj");
}

TEST_F(Paths, BufferTakesAPathThatFitsWithItsEnd)
{
    char buffer[16];
    std::memset(buffer, '#', sizeof(buffer));
    EXPECT_TRUE(QuorSystem::getFullQuorName("bin\\a", buffer, 12));
    EXPECT_STREQ(buffer, "/inst/bin/a");
    EXPECT_EQ(buffer[12], '#');
}

TEST_F(Paths, BufferIsEmptyWhenThePathDoesNotFit)
{
    for (const int size : {1, 2, 11}) {
        char buffer[16];
        std::memset(buffer, '#', sizeof(buffer));
        EXPECT_FALSE(QuorSystem::getFullQuorName("bin\\a", buffer, size)) << size;
        EXPECT_STREQ(buffer, "") << size;
        EXPECT_EQ(buffer[size], '#') << size;
    }
}

TEST_F(Paths, BufferOfNoSizeIsLeftAlone)
{
    char buffer[2] = {'#', '\0'};
    EXPECT_FALSE(QuorSystem::getFullQuorName("a", buffer, 0));
    EXPECT_FALSE(QuorSystem::getFullQuorName("a", buffer, -1));
    EXPECT_FALSE(QuorSystem::getFullQuorName("a", nullptr, 255));
    EXPECT_STREQ(buffer, "#");
}

TEST_F(Paths, BufferMayHoldTheNameItself)
{
    char buffer[32] = "bin\\a";
    EXPECT_TRUE(QuorSystem::getFullQuorName(buffer, buffer, sizeof(buffer)));
    EXPECT_STREQ(buffer, "/inst/bin/a");
}

TEST_F(Paths, TextStandsUntilTheEighthLaterCallAndMayBeItsArgument)
{
    const char* text = QuorSystem::getFullQuorName("a text that is longer than any short one");
    for (int later = 1; later < 8; ++later) {
        EXPECT_STRNE(QuorSystem::getProjectFileFullPath(std::to_string(later).c_str()), text);
        EXPECT_STREQ(text, "/inst/a text that is longer than any short one") << later;
    }
    EXPECT_STREQ(QuorSystem::getFullQuorName("bin", text),
                 "/inst/bin/inst/a text that is longer than any short one");
}

TEST_F(Paths, LongNamesAreNotCut)
{
    const std::string name(100'000, 'n');
    EXPECT_EQ(QuorSystem::getFullQuorName(name.c_str()), "/inst/" + name);
}

TEST_F(Paths, ThreadsKeepTheirOwnTexts)
{
    std::vector<std::thread> threads;
    std::vector<int> wrong(8, 0);
    for (std::size_t t = 0; t < wrong.size(); ++t) {
        threads.emplace_back([t, &wrong] {
            for (int i = 0; i < 2000; ++i) {
                const std::string name = std::to_string(t) + "\\a name of some length\\" + std::to_string(i);
                const std::string expected =
                    "/inst/" + std::to_string(t) + "/a name of some length/" + std::to_string(i);
                if (QuorSystem::getFullQuorName(name.c_str()) != expected) ++wrong[t];
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, std::vector<int>(8, 0));
}

TEST_F(Paths, NamedFoldersAreMadeAbsoluteAndTidy)
{
    const struct {
        const char* given;
        const char* folder;
    } cases[] = {
        {"/a/b/", "/a/b"},    {"/a//b/./c", "/a/b/c"}, {"/a/../b", "/a/../b"}, {"\\a\\b", "/a/b"},
        {"a\\b", "/usr/a/b"}, {".", "/usr"},           {"..", "/usr/.."},      {"/", "/"},
    };
    for (const auto& [given, folder] : cases) {
        QuorSystem::setInstallationFolder(given);
        QuorSystem::setProjectFolder(given);
        EXPECT_STREQ(QuorSystem::quorEnv(), folder) << given;
        EXPECT_STREQ(QuorSystem::getCurrentProjPath(), folder) << given;
    }
}

TEST_F(Paths, RelativeFolderKeepsTheWorkingFolderOfItsNaming)
{
    QuorSystem::setInstallationFolder("inst");
    fs::current_path("/");
    QuorSystem::setProjectFolder("proj");
    EXPECT_STREQ(QuorSystem::quorEnv(), "/usr/inst");
    EXPECT_STREQ(QuorSystem::getCurrentProjPath(), "/proj");
}

TEST_F(Paths, RootAsFolderGetsNoSecondSeparator)
{
    QuorSystem::setInstallationFolder("/");
    EXPECT_STREQ(QuorSystem::getFullQuorName("\\bin\\a"), "/bin/a");
    EXPECT_STREQ(QuorSystem::getFullQuorName(""), "/");
    EXPECT_STREQ(QuorSystem::quorFullPlatformPath(), "/bin/x64");
}

TEST_F(Paths, EnvironmentNamesTheFoldersThatNobodySet)
{
    setenv("QUOR_INSTALLATION", "/env\\inst/", 1);
    setenv("QUOR_PROJECT", "/env/proj", 1);
    QuorSystem::setInstallationFolder(nullptr);
    EXPECT_STREQ(QuorSystem::quorEnv(), "/env/inst");
    EXPECT_STREQ(QuorSystem::getCurrentProjPath(), "/proj");
    QuorSystem::setProjectFolder("");
    EXPECT_STREQ(QuorSystem::getCurrentProjPath(), "/env/proj");
}

TEST_F(Paths, EnvironmentIsReadOnlyWhenASetUpFunctionIsCalled)
{
    setenv("QUOR_INSTALLATION", "/first", 1);
    QuorSystem::setInstallationFolder(nullptr);
    setenv("QUOR_INSTALLATION", "/second", 1);
    EXPECT_STREQ(QuorSystem::quorEnv(), "/first");
    QuorSystem::setProjectFolder("/other");
    EXPECT_STREQ(QuorSystem::quorEnv(), "/second");
}

TEST_F(Paths, EmptyVariableCountsAsNone)
{
    QuorSystem::setInstallationFolder(nullptr);
    const std::string beside = QuorSystem::quorEnv();
    setenv("QUOR_INSTALLATION", "", 1);
    setenv("QUOR_PROJECT", "", 1);
    QuorSystem::setInstallationFolder(nullptr);
    QuorSystem::setProjectFolder(nullptr);
    EXPECT_EQ(QuorSystem::quorEnv(), beside);
    EXPECT_EQ(QuorSystem::getCurrentProjPath(), beside + "/project");
}

TEST_F(Paths, ProjectLiesInTheInstallationUnlessNamed)
{
    QuorSystem::setProjectFolder(nullptr);
    EXPECT_STREQ(QuorSystem::getCurrentProjPath(), "/inst/project");
    QuorSystem::setInstallationFolder("/moved");
    EXPECT_STREQ(QuorSystem::getCurrentProjPath(), "/moved/project");
}

/// Copies of a program that prints its folders, in a temporary folder of their own.
class ProgramPlace : public testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/quor_paths_XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        root_ = fs::canonical(pattern);
    }

    void TearDown() override { fs::remove_all(root_); }

    fs::path place(const std::string& name)
    {
        const fs::path program = root_ / name;
        fs::create_directories(program.parent_path());
        fs::copy_file(QUOR_PRINT_FOLDERS, program);
        return program;
    }

    std::string output(const fs::path& program, const std::string& environment = "")
    {
        const std::string command = "cd '" + root_.string() +
                                    "' && env -u QUOR_INSTALLATION -u QUOR_PROJECT LD_LIBRARY_PATH='" +
                                    QUOR_LIBRARY_FOLDER "' " + environment + " '" + program.string() + "'";
        FILE* pipe = popen(command.c_str(), "r");
        if (pipe == nullptr) return "no pipe";
        std::string text;
        for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
            text += static_cast<char>(c);
        return pclose(pipe) == 0 ? text : "failed: " + text;
    }

    std::string lines(const std::string& installation, const std::string& project)
    {
        return installation + "\n" + project + "\n";
    }

    fs::path root_;
};

TEST_F(ProgramPlace, ABinFolderStandsInTheInstallation)
{
    const std::string inst = root_.string() + "/product";
    EXPECT_EQ(output(place("product/bin/p")), lines(inst, inst + "/project"));
}

TEST_F(ProgramPlace, AnyOtherFolderIsTheInstallation)
{
    for (const char* folder : {"/tools", "/robin", "/Bin"}) {
        const std::string inst = root_.string() + folder;
        EXPECT_EQ(output(place(std::string(folder).substr(1) + "/p")), lines(inst, inst + "/project"));
    }
}

TEST_F(ProgramPlace, LinksToTheProgramAreFollowed)
{
    const fs::path program = place("product/bin/p");
    fs::create_symlink(program, root_ / "link");
    const std::string inst = root_.string() + "/product";
    EXPECT_EQ(output(root_ / "link"), lines(inst, inst + "/project"));
}

TEST_F(ProgramPlace, FoldersOfTheSystemKeepTheirBackslashes)
{
    const std::string inst = root_.string() + "/odd\\name";
    EXPECT_EQ(output(place("odd\\name/bin/p")), lines(inst, inst + "/project"));
}

TEST_F(ProgramPlace, EnvironmentComesBeforeThePlaceAtTheFirstUse)
{
    const fs::path program = place("product/bin/p");
    EXPECT_EQ(output(program, "QUOR_INSTALLATION=inst"),
              lines(root_.string() + "/inst", root_.string() + "/inst/project"));
    EXPECT_EQ(output(program, "QUOR_PROJECT=/proj"), lines(root_.string() + "/product", "/proj"));
}

} // namespace

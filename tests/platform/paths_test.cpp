#include "../system.h"

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
        sys::setEnvironment("QUOR_INSTALLATION", nullptr);
        sys::setEnvironment("QUOR_PROJECT", nullptr);
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
        EXPECT_EQ(QuorSystem::getFullQuorName(name), sys::pathOf(path)) << (name == nullptr ? "null" : name);
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
        EXPECT_EQ(QuorSystem::getFullQuorName(name), sys::pathOf(path)) << what;
}

TEST_F(Paths, EveryBackslashOfUtf8IsASeparatorWhereTextMayBeUtf8)
{
    const struct {
        const char* what;
        const char* name;
        const char* path;
    } cases[] = {
#if defined(_WIN32)
        // Here text is in the code page alone, which is GBK, whatever else its bytes could mean.
        {"two bytes", "\xC3\xA9\\a", "/inst/\xC3\xA9/a"},
        {"three bytes", "\xE4\xBD\xA0\\a", "/inst/\xE4\xBD\xA0\\a"},
        {"four bytes", "\xF0\x9F\x98\x80\\a", "/inst/\xF0\x9F\x98\x80/a"},
#else
        {"two bytes", "\xC3\xA9\\a", "/inst/\xC3\xA9/a"},
        {"three bytes", "\xE4\xBD\xA0\\a", "/inst/\xE4\xBD\xA0/a"},
        {"four bytes", "\xF0\x9F\x98\x80\\a", "/inst/\xF0\x9F\x98\x80/a"},
        {"overlong, so not UTF-8", "\xE0\x81\x81\\a", "/inst/\xE0\x81\x81\\a"},
        {"overlong in four bytes", "\xF0\x80\x80\x81\\a", "/inst/\xF0\x80\x80\x81\\a"},
        {"a surrogate, so not UTF-8", "\xED\xBF\xBF\\a", "/inst/\xED\xBF\xBF\\a"},
        {"beyond Unicode, so not UTF-8", "\xF4\x90\x80\x81\\a", "/inst/\xF4\x90\x80\x81\\a"},
        {"cut short, so not UTF-8", "\xE4\xBD\\a\xE4", "/inst/\xE4\xBD/a\xE4"},
#endif
    };
    for (const auto& [what, name, path] : cases)
        EXPECT_EQ(QuorSystem::getFullQuorName(name), sys::pathOf(path)) << what;
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
        EXPECT_EQ(QuorSystem::getFullQuorName(folder, name), sys::pathOf(std::string("/inst") + inFolder));
        EXPECT_EQ(QuorSystem::getProjectFileFullPath(folder, name),
                  sys::pathOf(std::string("/proj") + inFolder));
    }
}

TEST_F(Paths, EveryServiceHasItsFolder)
{
    EXPECT_EQ(QuorSystem::quorEnv(), sys::pathOf("/inst"));
    EXPECT_EQ(QuorSystem::getCurrentProjPath(), sys::pathOf("/proj"));
    EXPECT_EQ(QuorSystem::quorFullPlatformPath(), sys::pathOf("/inst/bin/x64"));
    EXPECT_EQ(QuorSystem::quorFullPlatformPath(nullptr), sys::pathOf("/inst/bin/x64"));
    EXPECT_EQ(QuorSystem::quorFullPlatformPath("?.dll"), sys::pathOf("/inst/bin/x64/?.dll"));
    EXPECT_EQ(QuorSystem::getBinRuntimeFullName("\\?.lua"), sys::pathOf("/inst/bin/?.lua"));
    EXPECT_EQ(QuorSystem::getBinRuntimeFullName(""), sys::pathOf("/inst/bin"));
    EXPECT_EQ(QuorSystem::getBinUtilsRuntimeFullName("?.lua"), sys::pathOf("/inst/bin/utils/?.lua"));
    EXPECT_EQ(QuorSystem::getBinUtilsRuntimeFullName(nullptr), sys::pathOf("/inst/bin/utils"));
    EXPECT_EQ(QuorSystem::getProjectFileFullPath("sys\\quorToolTip.lua"),
              sys::pathOf("/proj/sys/quorToolTip.lua"));
    EXPECT_EQ(QuorSystem::getProjectFileFullPath(nullptr), sys::pathOf("/proj"));
}

TEST_F(Paths, BufferTakesAPathThatFitsWithItsEnd)
{
    char buffer[16];
    std::memset(buffer, '#', sizeof(buffer));
    const std::string path = sys::pathOf("/inst/bin/a");
    EXPECT_TRUE(QuorSystem::getFullQuorName("bin\\a", buffer, static_cast<int>(path.size() + 1)));
    EXPECT_EQ(buffer, path);
    EXPECT_EQ(buffer[path.size() + 1], '#');
}

TEST_F(Paths, BufferIsEmptyWhenThePathDoesNotFit)
{
    for (const int size : {1, 2, static_cast<int>(sys::pathOf("/inst/bin/a").size())}) {
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
    EXPECT_EQ(buffer, sys::pathOf("/inst/bin/a"));
}

std::string withoutFirstSeparator(const std::string& path)
{
    return path.substr(path.find_first_not_of("/\\"));
}

TEST_F(Paths, TextStandsUntilTheEighthLaterCallAndMayBeItsArgument)
{
    const char* text = QuorSystem::getFullQuorName("a text that is longer than any short one");
    for (int later = 1; later < 8; ++later) {
        EXPECT_STRNE(QuorSystem::getProjectFileFullPath(std::to_string(later).c_str()), text);
        EXPECT_EQ(text, sys::pathOf("/inst/a text that is longer than any short one")) << later;
    }
    const std::string before = text;
    EXPECT_EQ(QuorSystem::getFullQuorName("bin", text),
              sys::pathOf("/inst/bin/") + withoutFirstSeparator(before));
}

TEST_F(Paths, LongNamesAreNotCut)
{
    const std::string name(100'000, 'n');
    EXPECT_EQ(QuorSystem::getFullQuorName(name.c_str()), sys::pathOf("/inst/") + name);
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
                    sys::pathOf("/inst/" + std::to_string(t) + "/a name of some length/" + std::to_string(i));
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
        {"/a/b/", "/a/b"},
        {"/a//b/./c", "/a/b/c"},
        {"\\a\\b", "/a/b"},
        {"a\\b", "/usr/a/b"},
        {".", "/usr"},
        {"/", "/"},
#if defined(_WIN32)
        {"/a/../b", "/b"},
        {"..", "/"},
#else
        // Behind a link ".." leads elsewhere than the text says.
        {"/a/../b", "/a/../b"},
        {"..", "/usr/.."},
#endif
    };
    for (const auto& [given, folder] : cases) {
        QuorSystem::setInstallationFolder(given);
        QuorSystem::setProjectFolder(given);
        EXPECT_EQ(QuorSystem::quorEnv(), sys::pathOf(folder)) << given;
        EXPECT_EQ(QuorSystem::getCurrentProjPath(), sys::pathOf(folder)) << given;
    }
}

TEST_F(Paths, RelativeFolderKeepsTheWorkingFolderOfItsNaming)
{
    QuorSystem::setInstallationFolder("inst");
    fs::current_path("/");
    QuorSystem::setProjectFolder("proj");
    EXPECT_EQ(QuorSystem::quorEnv(), sys::pathOf("/usr/inst"));
    EXPECT_EQ(QuorSystem::getCurrentProjPath(), sys::pathOf("/proj"));
}

TEST_F(Paths, RootAsFolderGetsNoSecondSeparator)
{
    QuorSystem::setInstallationFolder("/");
    EXPECT_EQ(QuorSystem::getFullQuorName("\\bin\\a"), sys::pathOf("/bin/a"));
    EXPECT_EQ(QuorSystem::getFullQuorName(""), sys::pathOf("/"));
    EXPECT_EQ(QuorSystem::quorFullPlatformPath(), sys::pathOf("/bin/x64"));
}

TEST_F(Paths, EnvironmentNamesTheFoldersThatNobodySet)
{
    sys::setEnvironment("QUOR_INSTALLATION", "/env\\inst/");
    sys::setEnvironment("QUOR_PROJECT", "/env/proj");
    QuorSystem::setInstallationFolder(nullptr);
    EXPECT_EQ(QuorSystem::quorEnv(), sys::pathOf("/env/inst"));
    EXPECT_EQ(QuorSystem::getCurrentProjPath(), sys::pathOf("/proj"));
    QuorSystem::setProjectFolder("");
    EXPECT_EQ(QuorSystem::getCurrentProjPath(), sys::pathOf("/env/proj"));
}

TEST_F(Paths, EnvironmentIsReadOnlyWhenASetUpFunctionIsCalled)
{
    sys::setEnvironment("QUOR_INSTALLATION", "/first");
    QuorSystem::setInstallationFolder(nullptr);
    sys::setEnvironment("QUOR_INSTALLATION", "/second");
    EXPECT_EQ(QuorSystem::quorEnv(), sys::pathOf("/first"));
    QuorSystem::setProjectFolder("/other");
    EXPECT_EQ(QuorSystem::quorEnv(), sys::pathOf("/second"));
}

TEST_F(Paths, EmptyVariableCountsAsNone)
{
    QuorSystem::setInstallationFolder(nullptr);
    const std::string beside = QuorSystem::quorEnv();
    sys::setEnvironment("QUOR_INSTALLATION", "");
    sys::setEnvironment("QUOR_PROJECT", "");
    QuorSystem::setInstallationFolder(nullptr);
    QuorSystem::setProjectFolder(nullptr);
    EXPECT_EQ(QuorSystem::quorEnv(), beside);
    EXPECT_EQ(QuorSystem::getCurrentProjPath(),
              beside + sys::pathOf("/project").substr(sys::pathOf("/").size() - 1));
}

TEST_F(Paths, ProjectLiesInTheInstallationUnlessNamed)
{
    QuorSystem::setProjectFolder(nullptr);
    EXPECT_EQ(QuorSystem::getCurrentProjPath(), sys::pathOf("/inst/project"));
    QuorSystem::setInstallationFolder("/moved");
    EXPECT_EQ(QuorSystem::getCurrentProjPath(), sys::pathOf("/moved/project"));
}

/// Copies of a program that prints its folders, in a temporary folder of their own.
class ProgramPlace : public testing::Test {
protected:
    void SetUp() override
    {
        root_ = sys::makeFolder("quor-paths");
        sys::setEnvironment(loaderPath, QUOR_LIBRARY_FOLDER);
    }

    void TearDown() override
    {
        fs::remove_all(root_);
        sys::setEnvironment("QUOR_INSTALLATION", nullptr);
        sys::setEnvironment("QUOR_PROJECT", nullptr);
        sys::setEnvironment(loaderPath, before_ ? before_->c_str() : nullptr);
    }

    fs::path place(const std::string& name)
    {
        const fs::path program = root_ / (name + programSuffix);
        fs::create_directories(program.parent_path());
        fs::copy_file(QUOR_PRINT_FOLDERS, program);
        return program;
    }

    std::string output(const fs::path& program) { return sys::outputOf(program.string(), root_); }

    /// What is printed where these are the folders, given as they lie in the folder of this test.
    std::string lines(const std::string& installation, const std::string& project)
    {
        return inRoot(installation) + "\n" + inRoot(project) + "\n";
    }
    std::string inRoot(const std::string& name) { return (root_ / name).make_preferred().string(); }

    /// Where programs look for libraries that do not lie beside them, and how the name of a program ends.
#if defined(_WIN32)
    static constexpr const char* loaderPath = "PATH";
    static constexpr const char* programSuffix = ".exe";
#else
    static constexpr const char* loaderPath = "LD_LIBRARY_PATH";
    static constexpr const char* programSuffix = "";
#endif

    fs::path root_;
    const std::optional<std::string> before_ =
        std::getenv(loaderPath) ? std::optional<std::string>(std::getenv(loaderPath)) : std::nullopt;
};

TEST_F(ProgramPlace, ABinFolderStandsInTheInstallation)
{
    EXPECT_EQ(output(place("product/bin/p")), lines("product", "product/project"));
}

TEST_F(ProgramPlace, AnyOtherFolderIsTheInstallation)
{
    for (const std::string folder : {"tools", "robin"})
        EXPECT_EQ(output(place(folder + "/p")), lines(folder, folder + "/project"));
}

TEST_F(ProgramPlace, LetterCaseOfABinFolderCountsWhereTheSystemsFoldersHaveOne)
{
#if defined(_WIN32)
    EXPECT_EQ(output(place("product/Bin/p")), lines("product", "product/project"));
#else
    EXPECT_EQ(output(place("product/Bin/p")), lines("product/Bin", "product/Bin/project"));
#endif
}

TEST_F(ProgramPlace, LinksToTheProgramAreFollowed)
{
    const fs::path program = place("product/bin/p");
    const std::string link = (root_ / "link").string() + programSuffix;
    if (!sys::makeLink(program.string(), link)) GTEST_SKIP() << "this system makes no links";
    EXPECT_EQ(output(link), lines("product", "product/project"));
}

TEST_F(ProgramPlace, FoldersOfTheSystemKeepTheirBackslashes)
{
#if defined(_WIN32)
    // Here they separate names, but for those that are the second byte of a character: U+4E57 is 81 5C.
    const std::string inst = root_.string() + "\\odd\x81\x5C" + "name";
    const fs::path bin = root_ / L"odd\u4E57name" / "bin";
    fs::create_directories(bin);
    fs::copy_file(QUOR_PRINT_FOLDERS, bin / "p.exe");
    EXPECT_EQ(sys::outputOf(inst + "\\bin\\p.exe", root_), inst + "\n" + inst + "\\project\n");
#else
    EXPECT_EQ(output(place("odd\\name/bin/p")), lines("odd\\name", "odd\\name/project"));
#endif
}

TEST_F(ProgramPlace, EnvironmentComesBeforeThePlaceAtTheFirstUse)
{
    const fs::path program = place("product/bin/p");
    sys::setEnvironment("QUOR_INSTALLATION", "inst");
    EXPECT_EQ(output(program), lines("inst", "inst/project"));
    sys::setEnvironment("QUOR_INSTALLATION", nullptr);
    const std::string project = inRoot("proj");
    sys::setEnvironment("QUOR_PROJECT", project.c_str());
    EXPECT_EQ(output(program), lines("product", "proj"));
}

} // namespace

#include <QuorCommon/QuorCommon.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using QuorAuth::Module;

TEST(Modules, EachNumberHasItsName)
{
    const struct {
        int number;
        const char* name;
    } cases[] = {
        {0, ""},    {1, "SYSTEM"}, {2, "PIPE"},   {3, "EQUIP"},    {4, "SUPPORT"},
        {5, "ISO"}, {6, "STRUCT"}, {7, "HVAC"},   {8, "ELECTRIC"}, {9, "INSTRUMENT"},
        {10, ""},   {-1, ""},      {INT_MAX, ""}, {INT_MIN, ""},
    };
    for (const auto& [number, name] : cases) {
        EXPECT_STREQ(kxcom::getModuleName(static_cast<Module>(number)), name) << number;
    }
}

TEST(Modules, NameIsOneConstant)
{
    const Module pipe = Module::Pipe;
    EXPECT_EQ(kxcom::getModuleName(pipe), kxcom::getModuleName(Module::Pipe));
}

TEST(Modules, EachNameFindsItsModule)
{
    for (const Module module : QuorAuth::allModules) {
        Module found = Module::None;
        EXPECT_TRUE(kxcom::findModule(kxcom::getModuleName(module), found));
        EXPECT_EQ(found, module);
    }
    EXPECT_EQ(std::size(QuorAuth::allModules), 9u);
    EXPECT_TRUE(std::is_sorted(std::begin(QuorAuth::allModules), std::end(QuorAuth::allModules)));
}

TEST(Modules, UnknownNamesFindNothing)
{
    for (const char* name :
         {static_cast<const char*>(nullptr), "", "pipe", "PIP", "PIPES", " PIPE", "NONE"}) {
        Module found = Module::Iso;
        EXPECT_FALSE(kxcom::findModule(name, found)) << (name == nullptr ? "null" : name);
        EXPECT_EQ(found, Module::Iso);
    }
}

TEST(Modules, CurrentOneIsNoneUntilSetAndSharedByThreads)
{
    EXPECT_EQ(kxcom::getCurrentModule(), Module::None);
    kxcom::setCurrentModule(Module::Equip);
    Module seen = Module::None;
    std::thread([&seen] { seen = kxcom::getCurrentModule(); }).join();
    EXPECT_EQ(seen, Module::Equip);
    kxcom::setCurrentModule(static_cast<Module>(99));
    EXPECT_EQ(static_cast<int>(kxcom::getCurrentModule()), 99);
    kxcom::setCurrentModule(Module::None);
}

unsigned int systemsThreadId()
{
    return static_cast<unsigned int>(syscall(SYS_gettid));
}

TEST(ThreadId, IsTheSystemsOwnOnEveryThread)
{
    EXPECT_EQ(quorsys::currentThreadId(), systemsThreadId());
    EXPECT_EQ(quorsys::currentThreadId(), systemsThreadId());
    unsigned int given = 0;
    unsigned int expected = 1;
    std::thread([&] {
        given = quorsys::currentThreadId();
        expected = systemsThreadId();
    }).join();
    EXPECT_EQ(given, expected);
    EXPECT_NE(given, quorsys::currentThreadId());
}

TEST(ThreadId, IsNewInAForkedChild)
{
    EXPECT_NE(quorsys::currentThreadId(), 0u);
    const pid_t child = fork();
    if (child == 0) _exit(quorsys::currentThreadId() == systemsThreadId() ? 0 : 1);
    ASSERT_GT(child, 0);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

class FileTime : public testing::Test {
protected:
    void SetUp() override
    {
        char pattern[] = "/tmp/quor_filetime_XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        root_ = pattern;
        std::ofstream(path("file")) << "text";
        fs::create_directory(path("folder"));
        fs::create_symlink(path("file"), path("link"));
        fs::create_symlink(path("nowhere"), path("dangling"));
        fs::create_symlink(path("circle"), path("circle"));
        ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    }

    void TearDown() override { fs::remove_all(root_); }

    std::string path(const char* name) const { return root_ + "/" + name; }

    void setTime(const char* name, time_t seconds, long nanoseconds)
    {
        const timespec times[2] = {{0, 0}, {seconds, nanoseconds}};
        ASSERT_EQ(utimensat(AT_FDCWD, path(name).c_str(), times, 0), 0);
    }

    std::string root_;
};

TEST_F(FileTime, TellsWholeSecondsOfWhateverExists)
{
    for (const char* name : {"file", "folder", "pipe"}) {
        setTime(name, 1'600'000'000, 999'999'999);
        long long seconds = -1;
        EXPECT_TRUE(quorsys::fileModificationTime(path(name).c_str(), seconds)) << name;
        EXPECT_EQ(seconds, 1'600'000'000) << name;
    }
}

TEST_F(FileTime, FollowsLinks)
{
    setTime("file", 1'234'567'890, 0);
    long long seconds = -1;
    EXPECT_TRUE(quorsys::fileModificationTime(path("link").c_str(), seconds));
    EXPECT_EQ(seconds, 1'234'567'890);
}

TEST_F(FileTime, IsCutDownwardsBeforeTheEpoch)
{
    setTime("file", -2, 500'000'000);
    long long seconds = 0;
    EXPECT_TRUE(quorsys::fileModificationTime(path("file").c_str(), seconds));
    EXPECT_EQ(seconds, -2);
}

TEST_F(FileTime, GoesBeyondThirtyTwoBits)
{
    setTime("file", 5'000'000'000, 0);
    long long seconds = 0;
    EXPECT_TRUE(quorsys::fileModificationTime(path("file").c_str(), seconds));
    EXPECT_EQ(seconds, 5'000'000'000);
}

TEST_F(FileTime, IsNotToldForWhatIsNotThere)
{
    for (const char* name : {"missing", "dangling", "circle", "file/below", "file/", "missing/below"}) {
        long long seconds = -1;
        EXPECT_FALSE(quorsys::fileModificationTime(path(name).c_str(), seconds)) << name;
        EXPECT_EQ(seconds, 0) << name;
    }
    const std::string tooLong(100'000, 'n');
    for (const char* name : {static_cast<const char*>(nullptr), "", tooLong.c_str()}) {
        long long seconds = -1;
        EXPECT_FALSE(quorsys::fileModificationTime(name, seconds));
        EXPECT_EQ(seconds, 0);
    }
}

} // namespace

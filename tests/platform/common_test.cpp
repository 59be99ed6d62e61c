#include "../system.h"

#include <QuorCommon/QuorCommon.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

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

TEST(ThreadId, IsTheSystemsOwnOnEveryThread)
{
    EXPECT_EQ(quorsys::currentThreadId(), sys::threadId());
    EXPECT_EQ(quorsys::currentThreadId(), sys::threadId());
    unsigned int given = 0;
    unsigned int expected = 1;
    std::thread([&] {
        given = quorsys::currentThreadId();
        expected = sys::threadId();
    }).join();
    EXPECT_EQ(given, expected);
    EXPECT_NE(given, quorsys::currentThreadId());
}

TEST(ThreadId, IsNewInAForkedChild)
{
    EXPECT_NE(quorsys::currentThreadId(), 0u);
#if defined(_WIN32)
    GTEST_SKIP() << "Windows does not copy processes";
#else
    const pid_t child = fork();
    if (child == 0) _exit(quorsys::currentThreadId() == sys::threadId() ? 0 : 1);
    ASSERT_GT(child, 0);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
#endif
}

class FileTime : public testing::Test {
protected:
    void SetUp() override
    {
        root_ = sys::makeFolder("quor-filetime").string();
        std::ofstream(path("file")) << "text";
        fs::create_directory(path("folder"));
        hasLinks_ = sys::makeLink(path("file"), path("link")) &&
                    sys::makeLink(path("nowhere"), path("dangling")) &&
                    sys::makeLink(path("circle"), path("circle"));
    }

    void TearDown() override { fs::remove_all(root_); }

    std::string path(const char* name) const { return root_ + "/" + name; }

    void setTime(const char* name, long long seconds, long nanoseconds)
    {
        ASSERT_TRUE(sys::setFileTime(path(name), seconds, nanoseconds));
    }

    std::string root_;
    bool hasLinks_ = false;
};

TEST_F(FileTime, TellsWholeSecondsOfWhateverExists)
{
    const sys::Obstacle obstacle(path("obstacle"));
    for (const char* name : {"file", "folder", "obstacle"}) {
#if defined(_WIN32)
        if (name == std::string_view("obstacle")) {
            // Whoever holds it, its time is told; the test itself cannot set it.
            long long seconds = 0;
            EXPECT_TRUE(quorsys::fileModificationTime(path(name).c_str(), seconds));
            EXPECT_GT(seconds, 1'600'000'000);
            continue;
        }
#endif
        setTime(name, 1'600'000'000, 999'999'999);
        long long seconds = -1;
        EXPECT_TRUE(quorsys::fileModificationTime(path(name).c_str(), seconds)) << name;
        EXPECT_EQ(seconds, 1'600'000'000) << name;
    }
}

TEST_F(FileTime, FollowsLinks)
{
    if (!hasLinks_) GTEST_SKIP() << "this system makes no links";
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

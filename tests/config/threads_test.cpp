#include "config_fixture.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

using quorconfig::allocThreadConfig;
using quorconfig::freeThreadConfig;
using quorconfig::getProjectUserDbPath;
using testing::ElementsAre;
using testing::IsEmpty;

/// Where several threads wait for each other, once.
class MeetingPoint {
public:
    explicit MeetingPoint(int count) : missing_(count) {}
    void wait()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        if (--missing_ == 0) complete_.notify_all();
        complete_.wait(lock, [this] { return missing_ <= 0; });
    }

private:
    std::mutex mutex_;
    std::condition_variable complete_;
    int missing_;
};

class Threads : public Config {};

TEST_F(Threads, WithoutSlotsShareTheDefaultOnes)
{
    useDefaultSlot("count = 0 function getProjectUser() count = count + 1 return 'count ' .. count end");
    for (int count = 1; count <= 6; count += 2) {
        const std::string here = "count " + std::to_string(count);
        EXPECT_EQ(getProjectUserDbPath(), here);
        onThread([count](unsigned int) {
            EXPECT_EQ(getProjectUserDbPath(), "count " + std::to_string(count + 1));
        });
    }
}

TEST_F(Threads, ComeAndGoWithSlotsOfTheirOwn)
{
    write(projectScript, "count = 0 function getProjectUser() count = count + 1 return 'count ' .. count end "
                         "last = newproxy(true) getmetatable(last).__gc = function() _ALERT('closed') end");
    write(systemScript, "function initConfig() end function escape_dbkey(key) return key .. '!' end");
    for (int i = 0; i < 20; ++i) {
        onThread([](unsigned int id) {
            allocThreadConfig(id);
            EXPECT_STREQ(getProjectUserDbPath(), "count 1");
            EXPECT_STREQ(getProjectUserDbPath(), "count 2");
            EXPECT_STREQ(quorconfig::escape_dbkey("key"), "key!");
            freeThreadConfig(id);
        });
    }
    EXPECT_EQ(messages(), std::vector<std::string>(20, "closed"));
}

TEST_F(Threads, ThatEndLeaveTheirSlotsToBeFreed)
{
    write(projectScript, "function getProjectUser() return 'own' end "
                         "last = newproxy(true) getmetatable(last).__gc = function() _ALERT('closed') end");
    unsigned int gone = 0;
    onThread([&gone](unsigned int id) {
        gone = id;
        allocThreadConfig(id);
        EXPECT_STREQ(getProjectUserDbPath(), "own");
    });
    EXPECT_THAT(messages(), IsEmpty());
    freeThreadConfig(gone);
    EXPECT_THAT(messages(), ElementsAre("closed"));
}

TEST_F(Threads, FreeOnlyTheirOwnSlots)
{
    write(projectScript,
          "count = 0 function getProjectUser() count = count + 1 return 'count ' .. count end");
    EXPECT_STREQ(getProjectUserDbPath(), "count 1");
    onThread([](unsigned int outer) {
        allocThreadConfig(outer);
        EXPECT_STREQ(getProjectUserDbPath(), "count 1");
        onThread([](unsigned int inner) {
            allocThreadConfig(inner);
            EXPECT_STREQ(getProjectUserDbPath(), "count 1");
            freeThreadConfig(inner);
        });
        EXPECT_STREQ(getProjectUserDbPath(), "count 2");
        freeThreadConfig(outer);
    });
    EXPECT_STREQ(getProjectUserDbPath(), "count 2");
}

TEST_F(Threads, KnowWhereTheirOwnLastAnswerCameFrom)
{
    EXPECT_TRUE(loadProject("function getProjectUser() return 'answer' end"));
    getProjectUserDbPath();
    EXPECT_EQ(quorconfig::lastAnswerOrigin(), quorconfig::AnswerOrigin::Script);
    onThread([](unsigned int) {
        EXPECT_EQ(quorconfig::lastAnswerOrigin(), quorconfig::AnswerOrigin::None) << "no getter ran here";
        quorconfig::getProjDatabaseClass(pipe, "given");
        EXPECT_EQ(quorconfig::lastAnswerOrigin(), quorconfig::AnswerOrigin::Argument);
    });
    EXPECT_EQ(quorconfig::lastAnswerOrigin(), quorconfig::AnswerOrigin::Script);
}

TEST_F(Threads, WithSlotsAskAtOnce)
{
    write(projectScript, "local n = 0 function getProjectSpec(m, name) n = n + 1 "
                         "return m .. '/' .. name .. '/' .. n .. '/' .. #kxcom.projectPath() end "
                         "function getProjectDbSeed() return 70000 + n end");
    write(systemScript, "function initConfig() end function escape_dbkey(key) return key .. '!' end");
    constexpr int count = 8;
    constexpr int rounds = 200;
    MeetingPoint allocated(count);
    MeetingPoint done(count);
    std::mutex slots;
    std::atomic<int> right{0};
    std::atomic<int> shownAtOnce{0};
    kxcom::setMessageSink([](const char*, void* counter) { ++*static_cast<std::atomic<int>*>(counter); },
                          &shownAtOnce);
    const std::string length = std::to_string(folder.path("project").size());
    std::vector<std::thread> threads;
    for (int number = 0; number < count; ++number) {
        threads.emplace_back([&, number] {
            const unsigned int id = quorsys::currentThreadId();
            {
                const std::lock_guard<std::mutex> lock(slots);
                allocThreadConfig(id);
            }
            allocated.wait();
            const std::string name = "thread " + std::to_string(number);
            for (int round = 1; round <= rounds; ++round) {
                short seed = 0;
                const std::string expected = "PIPE/" + name + "/" + std::to_string(round) + "/" + length;
                if (textOr(quorconfig::getProjectSpec(pipe, name.c_str())) == expected &&
                    textOr(quorconfig::escape_dbkey(name.c_str())) == name + "!" &&
                    quorconfig::getProjectDbSeed("db", pipe, seed) && seed == 4464 + round &&
                    textOr(quorconfig::getQuorInt2Str(pipe)) == installed("sys/quorInt2Str.lua"))
                    ++right;
            }
            done.wait();
            const std::lock_guard<std::mutex> lock(slots);
            freeThreadConfig(id);
        });
    }
    for (std::thread& one : threads)
        one.join();
    EXPECT_EQ(right, count * rounds);
    EXPECT_EQ(shownAtOnce, 0);
}

} // namespace

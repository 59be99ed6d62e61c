#include <QuorMsgHandle/QuorMsgHandle.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <climits>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;

const char* german(const char* text)
{
    return std::strcmp(text, "yes") == 0 ? "ja" : nullptr;
}

TEST(Translation, IsTheTextItselfWithoutAFunction)
{
    const char* text = "yes";
    EXPECT_EQ(quorGetText_callbk(text), text);
    EXPECT_STREQ(quorGetText_callbk(nullptr), "");
}

TEST(Translation, AsksTheFunctionAndKeepsWhatItDoesNotKnow)
{
    setQuorGetText_callbk(german);
    const char* unknown = "no";
    EXPECT_STREQ(quorGetText_callbk("yes"), "ja");
    EXPECT_EQ(quorGetText_callbk(unknown), unknown);
    EXPECT_STREQ(quorGetText_callbk(nullptr), "");
    setQuorGetText_callbk(nullptr);
    EXPECT_STREQ(quorGetText_callbk("yes"), "yes");
}

/// Collects the messages that are shown while it lives.
class Shown : public testing::Test {
protected:
    void SetUp() override { kxcom::setMessageSink(add, &messages_); }
    void TearDown() override { kxcom::setMessageSink(nullptr, nullptr); }

    static void add(const char* text, void* user)
    {
        static_cast<std::vector<std::string>*>(user)->push_back(text);
    }

    std::vector<std::string> messages_;
};

TEST_F(Shown, TextAloneIsShownAsItStands)
{
    kxcom::errorMsg("100%s %d%%");
    kxcom::errorMsg("");
    EXPECT_THAT(messages_, ElementsAre("100%s %d%%", ""));
}

TEST_F(Shown, NullTextShowsNothing)
{
    kxcom::errorMsg(nullptr);
    kxcom::errorMsg(nullptr, 1);
    kxcom::showMessage(nullptr, nullptr, 0);
    EXPECT_TRUE(messages_.empty());
}

TEST_F(Shown, ArgumentsFillTheText)
{
    kxcom::errorMsg("getProjectSpec: %s", "PIPE");
    kxcom::errorMsg("getProjectSpec: %s", 2);
    kxcom::errorMsg("getProjectSpec: %s", static_cast<const char*>(nullptr));
    kxcom::errorMsg("%s: %s", std::string("f"), "100%s");
    EXPECT_THAT(messages_, ElementsAre("getProjectSpec: PIPE", "getProjectSpec: 2", "getProjectSpec: (null)",
                                       "f: 100%s"));
}

TEST_F(Shown, MessageEndsAtAnArgumentsNulByte)
{
    kxcom::errorMsg("<%s>", std::string("a\0b", 3));
    EXPECT_THAT(messages_, ElementsAre("<a"));
}

TEST_F(Shown, PlainFormCanBeHandedOnAsAFunction)
{
    void (*show)(const char*) = kxcom::errorMsg;
    show("%s");
    EXPECT_THAT(messages_, ElementsAre("%s"));
}

TEST(Messages, GoToStandardErrorAsLinesWithoutASink)
{
    kxcom::setMessageSink(nullptr, nullptr);
    testing::internal::CaptureStderr();
    kxcom::errorMsg("\xD6\xD0%s");
    kxcom::errorMsg("%d", 5);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "\xD6\xD0%s\n5\n");
}

TEST(LastError, IsEmptyAtTheStartOfAThread)
{
    kxcom::setQuorLastError(1, "main");
    int code = -1;
    std::string text = "?";
    std::thread([&] {
        code = kxcom::getQuorLastErrorCode();
        text = kxcom::getQuorLastErrorText();
        kxcom::setQuorLastError(2, "other");
    }).join();
    EXPECT_EQ(code, 0);
    EXPECT_EQ(text, "");
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 1);
    EXPECT_STREQ(kxcom::getQuorLastErrorText(), "main");
    kxcom::clearQuorLastError();
}

TEST(LastError, KeepsTheLatestAsACopy)
{
    std::string text = "first";
    kxcom::setQuorLastError(2003, text.c_str());
    text = "changed";
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 2003);
    EXPECT_STREQ(kxcom::getQuorLastErrorText(), "first");
    kxcom::setQuorLastError(INT_MIN, "100%s");
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), INT_MIN);
    EXPECT_STREQ(kxcom::getQuorLastErrorText(), "100%s");
    kxcom::setQuorLastError(7, nullptr);
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 7);
    EXPECT_STREQ(kxcom::getQuorLastErrorText(), "");
    kxcom::clearQuorLastError();
}

TEST(LastError, MayBeSetAgainFromItsOwnText)
{
    kxcom::setQuorLastError(1, "a text that does not fit into a short string");
    kxcom::setQuorLastError(2, kxcom::getQuorLastErrorText() + 2);
    EXPECT_STREQ(kxcom::getQuorLastErrorText(), "text that does not fit into a short string");
    kxcom::clearQuorLastError();
}

TEST(LastError, IsForgottenWhenCleared)
{
    kxcom::setQuorLastError(1, "text");
    kxcom::clearQuorLastError();
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 0);
    EXPECT_STREQ(kxcom::getQuorLastErrorText(), "");
}

class DebugTime : public testing::Test {
protected:
    void SetUp() override { kxcom::quorDebugTimeReset(); }
    void TearDown() override
    {
        kxcom::quorDebugTimeEnable(false);
        kxcom::quorDebugTimeReset();
    }

    static void measure(short slot)
    {
        kxcom::quorDebugTimeBegin(slot);
        kxcom::quorDebugTimeEnd(slot);
    }

    static void spend(std::chrono::milliseconds time)
    {
        const auto end = std::chrono::steady_clock::now() + time;
        while (std::chrono::steady_clock::now() < end) {
        }
    }
};

TEST_F(DebugTime, CountsEachSlotByItself)
{
    measure(0);
    measure(25);
    measure(25);
    measure(63);
    EXPECT_EQ(kxcom::quorDebugTimeCount(0), 1u);
    EXPECT_EQ(kxcom::quorDebugTimeCount(25), 2u);
    EXPECT_EQ(kxcom::quorDebugTimeCount(63), 1u);
    EXPECT_EQ(kxcom::quorDebugTimeCount(1), 0u);
}

TEST_F(DebugTime, IgnoresSlotsThatDoNotExist)
{
    for (const short slot : {short{-1}, short{64}, short{SHRT_MIN}, short{SHRT_MAX}}) {
        measure(slot);
        EXPECT_EQ(kxcom::quorDebugTimeCount(slot), 0u) << slot;
        EXPECT_EQ(kxcom::quorDebugTimeTotal(slot), 0.0) << slot;
    }
}

TEST_F(DebugTime, CountsOnlyTheOutermostPair)
{
    kxcom::quorDebugTimeBegin(25);
    measure(25);
    measure(25);
    EXPECT_EQ(kxcom::quorDebugTimeCount(25), 0u);
    kxcom::quorDebugTimeEnd(25);
    EXPECT_EQ(kxcom::quorDebugTimeCount(25), 1u);
}

TEST_F(DebugTime, IgnoresAnEndWithoutABegin)
{
    kxcom::quorDebugTimeEnd(25);
    EXPECT_EQ(kxcom::quorDebugTimeCount(25), 0u);
    measure(25);
    kxcom::quorDebugTimeEnd(25);
    EXPECT_EQ(kxcom::quorDebugTimeCount(25), 1u);
}

TEST_F(DebugTime, ReadsNoClockWhileSwitchedOff)
{
    kxcom::quorDebugTimeBegin(3);
    spend(std::chrono::milliseconds(2));
    kxcom::quorDebugTimeEnd(3);
    EXPECT_EQ(kxcom::quorDebugTimeCount(3), 1u);
    EXPECT_EQ(kxcom::quorDebugTimeTotal(3), 0.0);
}

TEST_F(DebugTime, AddsTheTimesInSecondsWhileSwitchedOn)
{
    kxcom::quorDebugTimeEnable(true);
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 2; ++i) {
        kxcom::quorDebugTimeBegin(3);
        measure(3);
        spend(std::chrono::milliseconds(5));
        kxcom::quorDebugTimeEnd(3);
    }
    const double passed = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_EQ(kxcom::quorDebugTimeCount(3), 2u);
    EXPECT_GE(kxcom::quorDebugTimeTotal(3), 0.010);
    EXPECT_LE(kxcom::quorDebugTimeTotal(3), passed);
}

TEST_F(DebugTime, TimesWhatBeganWhileSwitchedOn)
{
    kxcom::quorDebugTimeBegin(4);
    kxcom::quorDebugTimeEnable(true);
    spend(std::chrono::milliseconds(1));
    kxcom::quorDebugTimeEnd(4);
    EXPECT_EQ(kxcom::quorDebugTimeTotal(4), 0.0);
    kxcom::quorDebugTimeBegin(4);
    kxcom::quorDebugTimeEnable(false);
    spend(std::chrono::milliseconds(1));
    kxcom::quorDebugTimeEnd(4);
    EXPECT_GE(kxcom::quorDebugTimeTotal(4), 0.001);
}

TEST_F(DebugTime, ResetClosesWhatIsOpen)
{
    kxcom::quorDebugTimeBegin(25);
    measure(1);
    kxcom::quorDebugTimeReset();
    EXPECT_EQ(kxcom::quorDebugTimeCount(1), 0u);
    kxcom::quorDebugTimeEnd(25);
    EXPECT_EQ(kxcom::quorDebugTimeCount(25), 0u);
    measure(25);
    EXPECT_EQ(kxcom::quorDebugTimeCount(25), 1u);
}

TEST_F(DebugTime, EachThreadHasItsOwn)
{
    kxcom::quorDebugTimeBegin(25);
    unsigned long long other = 0;
    std::thread([&other] {
        for (int i = 0; i < 10; ++i)
            measure(25);
        other = kxcom::quorDebugTimeCount(25);
    }).join();
    EXPECT_EQ(other, 10u);
    EXPECT_EQ(kxcom::quorDebugTimeCount(25), 0u);
    kxcom::quorDebugTimeEnd(25);
    EXPECT_EQ(kxcom::quorDebugTimeCount(25), 1u);
}

/// Uses a timer when its thread's later objects are gone already, the timers among them.
struct LateUser {
    unsigned long long* seen = nullptr;

    ~LateUser()
    {
        kxcom::quorDebugTimeBegin(25);
        kxcom::quorDebugTimeEnd(25);
        *seen = kxcom::quorDebugTimeCount(25);
    }
};

TEST_F(DebugTime, EndsWithItsThread)
{
    unsigned long long before = 0;
    unsigned long long after = 99;
    std::thread([&] {
        thread_local LateUser user;
        user.seen = &after;
        measure(25);
        before = kxcom::quorDebugTimeCount(25);
    }).join();
    EXPECT_EQ(before, 1u);
#if defined(_WIN32)
    EXPECT_EQ(after, 2u) << "a thread's own variables end before what libraries keep for it";
#else
    EXPECT_EQ(after, 0u);
#endif
}

} // namespace

#include "../rationed_memory.h"
#include "../system.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorMsgHandle/QuorMsgHandle.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <new>
#include <string>
#include <string_view>
#include <thread>

namespace {

/// Calls `action` with 0, 1, 2, ... blocks of memory, and `check` after each, until the action says that
/// it succeeded. Gives the number of failures.
template<class Action, class Check>
int walkFailures(Action action, Check check)
{
    for (int grants = 0; grants < 100; ++grants) {
        rationed::allowed = grants;
        const bool done = action();
        rationed::allowed = -1;
        if (done) return grants;
        check();
    }
    ADD_FAILURE() << "never succeeded";
    return -1;
}

/// Longer than what a string holds in itself.
const std::string longText(60, 'n');
const char* const longName = longText.c_str();

/// What a thread's first use of a library takes is not what is rationed: on Windows it must be there.
class ExhaustedMemory : public testing::Test {
protected:
    ExhaustedMemory()
    {
        QuorSystem::quorEnv();
        kxcom::getQuorLastErrorText();
        kxcom::getQuorLastErrorCode();
    }
};

} // namespace

TEST_F(ExhaustedMemory, PathsAreEmptyTexts)
{
    QuorSystem::setInstallationFolder("/inst");
    const std::string expected = sys::pathOf("/inst/" + longText);
    const char* text = nullptr;
    const int failures = walkFailures(
        [&] {
            text = QuorSystem::getFullQuorName(longName);
            return *text != '\0';
        },
        [&] { EXPECT_STREQ(text, ""); });
    EXPECT_EQ(text, expected);
    EXPECT_GT(failures, 0);
}

TEST_F(ExhaustedMemory, BufferOfAPathIsEmptied)
{
    QuorSystem::setInstallationFolder("/inst");
    char buffer[255];
    const int failures = walkFailures(
        [&] {
            buffer[0] = '#';
            return QuorSystem::getFullQuorName(longName, buffer, sizeof(buffer));
        },
        [&] { EXPECT_STREQ(buffer, ""); });
    EXPECT_EQ(buffer, sys::pathOf("/inst/" + longText));
    EXPECT_GT(failures, 0);
}

TEST_F(ExhaustedMemory, FoldersStayWhenASetUpFunctionThrows)
{
    QuorSystem::setInstallationFolder("/before");
    const std::string after = "/" + longText;
    const int failures = walkFailures(
        [&] {
            try {
                QuorSystem::setInstallationFolder(after.c_str());
                return true;
            } catch (const std::bad_alloc&) {
                return false;
            }
        },
        [&] {
            EXPECT_EQ(QuorSystem::quorEnv(), sys::pathOf("/before"));
            EXPECT_EQ(QuorSystem::getCurrentProjPath(), sys::pathOf("/before/project"));
        });
    EXPECT_GT(failures, 0);
    EXPECT_EQ(QuorSystem::quorEnv(), sys::pathOf(after));
    QuorSystem::setInstallationFolder(nullptr);
}

TEST_F(ExhaustedMemory, MessageIsShownUnformatted)
{
    static char shown[255];
    kxcom::setMessageSink([](const char* text, void*) { std::snprintf(shown, sizeof(shown), "%s", text); },
                          nullptr);
    const int failures = walkFailures(
        [&] {
            kxcom::errorMsg("<%s>", longName);
            return std::string_view(shown) != "<%s>";
        },
        [&] { EXPECT_STREQ(shown, "<%s>"); });
    EXPECT_GT(failures, 0);
    EXPECT_EQ(shown, "<" + longText + ">");
    kxcom::setMessageSink(nullptr, nullptr);
}

TEST_F(ExhaustedMemory, LastErrorKeepsItsCodeAndNoText)
{
    const int failures = walkFailures(
        [&] {
            kxcom::setQuorLastError(1, "before");
            kxcom::setQuorLastError(2, longName);
            return *kxcom::getQuorLastErrorText() != '\0';
        },
        [&] { EXPECT_EQ(kxcom::getQuorLastErrorCode(), 2); });
    EXPECT_GT(failures, 0);
    EXPECT_STREQ(kxcom::getQuorLastErrorText(), longName);
    kxcom::clearQuorLastError();
}

TEST_F(ExhaustedMemory, TimersAreIgnoredUntilThereIsSome)
{
    unsigned long long without = 1;
    unsigned long long with = 0;
    std::thread([&] {
        rationed::allowed = 0;
        kxcom::quorDebugTimeBegin(3);
        kxcom::quorDebugTimeEnd(3);
        without = kxcom::quorDebugTimeCount(3);
        rationed::allowed = -1;
        kxcom::quorDebugTimeBegin(3);
        kxcom::quorDebugTimeEnd(3);
        with = kxcom::quorDebugTimeCount(3);
    }).join();
    EXPECT_EQ(without, 0u);
    EXPECT_EQ(with, 1u);
}

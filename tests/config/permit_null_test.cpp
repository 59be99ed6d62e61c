#include "config_fixture.h"

#include <type_traits>

namespace {

using quorconfig::getProjectSpec;
using quorconfig::permitNullReturn;
using quorconfig::TempPermitNull;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

static_assert(std::is_empty_v<TempPermitNull>);
static_assert(std::is_copy_assignable_v<TempPermitNull>);

class PermitNull : public Config {
protected:
    PermitNull() { loadProject("function getProjectSpec() return '' end"); }

    /// What the flag is, by what a getter without an answer does.
    bool isPermitted()
    {
        const bool permitted = getProjectSpec("M", "n") == nullptr;
        EXPECT_THAT(messages(), SizeIs(permitted ? 0 : 1));
        return permitted;
    }
};

TEST_F(PermitNull, IsSwitchedOnAndOff)
{
    EXPECT_FALSE(isPermitted());
    permitNullReturn(true);
    EXPECT_TRUE(isPermitted());
    permitNullReturn(true);
    EXPECT_TRUE(isPermitted());
    permitNullReturn(false);
    EXPECT_FALSE(isPermitted());
}

TEST_F(PermitNull, HoldsWhileAGuardLives)
{
    {
        const TempPermitNull guard;
        EXPECT_TRUE(isPermitted());
    }
    EXPECT_FALSE(isPermitted());
}

TEST_F(PermitNull, EndsWithAGuardAlthoughItWasOnBefore)
{
    permitNullReturn(true);
    {
        const TempPermitNull guard;
        EXPECT_TRUE(isPermitted());
    }
    EXPECT_FALSE(isPermitted());
}

TEST_F(PermitNull, EndsWithTheInnerOfTwoGuards)
{
    const TempPermitNull outer;
    {
        const TempPermitNull inner;
        EXPECT_TRUE(isPermitted());
    }
    EXPECT_FALSE(isPermitted());
}

TEST_F(PermitNull, IsLeftAloneByTheCopyOfAGuard)
{
    TempPermitNull one;
    TempPermitNull other;
    permitNullReturn(false);
    EXPECT_EQ(&(one = other), &one);
    EXPECT_FALSE(isPermitted());
    permitNullReturn(true);
    EXPECT_EQ(&(one = *&one), &one);
    EXPECT_TRUE(isPermitted());
}

TEST_F(PermitNull, IsOneForAllThreads)
{
    const TempPermitNull guard;
    onThread([&](unsigned int id) {
        quorconfig::allocThreadConfig(id);
        EXPECT_TRUE(isPermitted());
        quorconfig::freeThreadConfig(id);
    });
}

TEST_F(PermitNull, IsAskedAfterTheScript)
{
    write("again.lua", "function getProjectSpec() probe.again() end");
    EXPECT_TRUE(quorconfig::initConfig("again.lua", nullptr, nullptr, nullptr));
    Probe::again = [] {
        permitNullReturn(true);
        return "";
    };
    EXPECT_TRUE(isPermitted());
    Probe::again = [] {
        permitNullReturn(false);
        return "";
    };
    EXPECT_FALSE(isPermitted());
}

TEST_F(PermitNull, SilencesNoReportOfTheBindingLayer)
{
    write("raising.lua", "function getProjectSpec() error('broken', 0) end");
    EXPECT_TRUE(quorconfig::initConfig("raising.lua", nullptr, nullptr, nullptr));
    const TempPermitNull guard;
    EXPECT_EQ(getProjectSpec("M", "n"), nullptr);
    EXPECT_THAT(messages(), ElementsAre("broken"));
}

TEST_F(PermitNull, LeavesGettersWithoutAMessageAlone)
{
    const TempPermitNull guard;
    EXPECT_EQ(getProjectSpec(pipe, "n"), nullptr);
    EXPECT_EQ(quorconfig::getQuorInt2Str(pipe), installed("sys/quorInt2Str.lua"));
    EXPECT_THAT(messages(), IsEmpty());
}

} // namespace

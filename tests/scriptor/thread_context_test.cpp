#include "scriptor_fixture.h"

#include <QuorCommon/quorsys.h>
#include <functional>
#include <thread>

namespace {

/// What a thread stamps on a line and on a sphere that it draws.
struct Stamp {
    int colour = 0;
    double thickness = 0;
    double scale = 0;
    std::string lineType;
    std::string material;

    friend bool operator==(const Stamp&, const Stamp&) = default;
};

std::ostream& operator<<(std::ostream& out, const Stamp& stamp)
{
    return out << stamp.colour << ' ' << stamp.thickness << ' ' << stamp.scale << ' ' << stamp.lineType << ' '
               << stamp.material;
}

const Stamp plain{257, 0.0, 1.0, "none", "none"};
const Stamp marked{7, 0.5, 3.0, "DASHED", "STEEL"};
constexpr const char* marking = "{{300, 7}, {400, 'STEEL'}, {500, 0.5}, {600, 'DASHED'}, {700, 3}}";

std::string textOf(const char* text)
{
    return text ? text : "none";
}

class ThreadContext : public Scriptor {
protected:
    Stamp currentStamp()
    {
        Primitives drawn;
        draw("{{16, {0, 0, 0}, {1, 0, 0}}, {10, {0, 0, 0}, 5}}", drawn);
        if (drawn.size() != 2) return {};
        const QuorPrimary2D* line = drawn[0]->toPrimary2D();
        const QuorPrimary3D* sphere = drawn[1]->toPrimary3D();
        EXPECT_EQ(sphere->getColor(), line->getColor());
        return {line->getColor(), line->getThick(), line->getLTScale(), textOf(line->getLineType()),
                textOf(sphere->getMaterial())};
    }
    void mark()
    {
        Primitives none;
        draw(marking, none);
        EXPECT_TRUE(none.empty());
    }

    /// Runs work on another thread while this one waits, so that it may use this thread's state.
    static void onThread(const std::function<void(unsigned int id)>& work)
    {
        std::thread thread([&] { work(quorsys::currentThreadId()); });
        thread.join();
    }

    void TearDown() override
    {
        EXPECT_EQ(scriptor.reloadLua(0), Quor::ScriptFailed);
        std::string nothing = " ";
        EXPECT_EQ(scriptor.loadBuffer(bufferOf(nothing), 0, false), Quor::Ok) << "resets the shared context";
        Scriptor::TearDown();
    }
};

TEST_F(ThreadContext, StartsWithTheValuesOfAReset)
{
    EXPECT_EQ(currentStamp(), plain);
    mark();
    EXPECT_EQ(currentStamp(), marked);
    std::string nothing = " ";
    ASSERT_EQ(scriptor.loadBuffer(bufferOf(nothing), 0, false), Quor::Ok);
    EXPECT_EQ(currentStamp(), plain);
}

TEST_F(ThreadContext, IsSharedByThreadsWithoutOneOfTheirOwn)
{
    mark();
    onThread([&](unsigned int) {
        EXPECT_EQ(currentStamp(), marked);
        Primitives none;
        draw("{{300, 9}}", none);
    });
    EXPECT_EQ(currentColour(), 9);
}

TEST_F(ThreadContext, OfItsOwnIsApartFromTheShared)
{
    mark();
    onThread([&](unsigned int id) {
        quorlua::allocThreadVars(id);
        EXPECT_EQ(currentStamp(), plain) << "a new context starts with the values of a reset";
        Primitives none;
        draw("{{300, 9}}", none);
        EXPECT_EQ(currentColour(), 9);
        quorlua::freeThreadVars(id);
        EXPECT_EQ(currentStamp(), marked) << "without its own the thread shares again";
    });
    EXPECT_EQ(currentStamp(), marked);
}

TEST_F(ThreadContext, IsKeptWhenAskedForTwice)
{
    onThread([&](unsigned int id) {
        quorlua::allocThreadVars(id);
        mark();
        quorlua::allocThreadVars(id);
        EXPECT_EQ(currentStamp(), marked);
        quorlua::freeThreadVars(id);
        EXPECT_EQ(currentStamp(), plain);
    });
}

TEST_F(ThreadContext, OfOneThreadIsNotThatOfAnother)
{
    onThread([&](unsigned int first) {
        quorlua::allocThreadVars(first);
        mark();
        onThread([&](unsigned int second) {
            quorlua::allocThreadVars(second);
            EXPECT_EQ(currentStamp(), plain);
            quorlua::freeThreadVars(second);
        });
        EXPECT_EQ(currentStamp(), marked);
        quorlua::freeThreadVars(first);
    });
}

TEST_F(ThreadContext, FreeingWhatIsNotThereDoesNothing)
{
    mark();
    quorlua::freeThreadVars(quorsys::currentThreadId());
    quorlua::freeThreadVars(0);
    quorlua::freeThreadVars(~0UL);
    EXPECT_EQ(currentStamp(), marked);
}

TEST_F(ThreadContext, IsKnownByThirtyTwoBitsOfTheId)
{
    if constexpr (sizeof(unsigned long) > 4) {
        mark();
        const unsigned long id = quorsys::currentThreadId();
        quorlua::allocThreadVars(id | (1UL << 32));
        EXPECT_EQ(currentStamp(), plain);
        quorlua::freeThreadVars(id | (5UL << 32));
        EXPECT_EQ(currentStamp(), marked);
    }
}

TEST_F(ThreadContext, OfTheCallingThreadIsResetByASegmentCall)
{
    mark();
    run("function plain() end");
    onThread([&](unsigned int id) {
        quorlua::allocThreadVars(id);
        mark();
        EXPECT_EQ(scriptor.callSeg("plain"), Quor::Ok);
        EXPECT_EQ(currentStamp(), plain);
        quorlua::freeThreadVars(id);
    });
    EXPECT_EQ(currentStamp(), marked);
}

} // namespace

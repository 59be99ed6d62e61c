#include "Threads.h"

#include <QuorCommon/QuorCommon.h>
#include <optional>
#include <thread>

namespace {

using testing::Contains;

constexpr int threadCount = 100;
constexpr QuorAuth::Module pipe = QuorAuth::Module::Pipe;

std::string textOr(const char* text)
{
    return text ? text : "(null)";
}

/// Threads that come and go, one after the other.
class InTurn : public Threads {
protected:
    template<class Work>
    static void onThread(bool withOwnData, Work work)
    {
        std::thread thread([&] {
            std::optional<OwnData> data;
            if (withOwnData) data.emplace();
            work();
        });
        thread.join();
    }

    /// Draws with a record that sets the colour, in such a way that it stays set, and tells the one before.
    static int colourBefore(int colour)
    {
        QuorGlibScriptor scriptor;
        std::string script = "main = {{16, {0, 0, 0}, {1, 0, 0}}, {300, " + std::to_string(colour) + "}}";
        Primitives drawn;
        // Past the scriptor's own loading, which resets the context.
        lua_State* L = scriptor.getLua(false);
        EXPECT_EQ(luaL_dostring(L, script.c_str()), 0);
        lua_getglobal(L, "main");
        EXPECT_EQ(scriptor.justParsePrimary(drawn), Quor::Ok);
        lua_pop(L, 1);
        return drawn.size() == 1 ? drawn[0]->getColor() : -1;
    }
};

TEST_F(InTurn, ThreadsWithAndWithoutOwnDataDrawAndAsk)
{
    std::string keptByTheLastWithout = "(null)";
    for (int number = 0; number < threadCount; ++number) {
        const bool withOwnData = number % 2 == 1;
        const std::string name = "thread " + std::to_string(number);
        Lines drawn;
        std::string kept;
        std::string spec;
        onThread(withOwnData, [&] {
            const Listening listening(number);
            drawn = drawing(number, folder, 1);
            EXPECT_TRUE(quorconfig::initConfig(nullptr, name.c_str(), "1", "db"));
            kept = textOr(quorconfig::getProjectPath(pipe, "keep", name.c_str()));
            spec = textOr(quorconfig::getProjectSpec(pipe, "x"));
            EXPECT_STREQ(quorconfig::escape_dbkey("key"), "<key>");
        });
        EXPECT_THAT(drawn, Contains("style " + name));
        EXPECT_THAT(drawn, Contains("last error 2003 [" + name + "] 图形库调用出错：failing"));
        const std::string fallback = folder.path("project/" + name);
        if (withOwnData) {
            EXPECT_EQ(kept, fallback) << "its own state is new";
            EXPECT_EQ(spec, name + "/1/db/PIPE/x");
        } else {
            EXPECT_EQ(kept, number == 0 ? fallback : keptByTheLastWithout) << "the shared state goes on";
            EXPECT_EQ(spec, "the test/none/none/PIPE/x") << "the shared state was set up before";
            keptByTheLastWithout = name;
        }
    }
}

TEST_F(InTurn, ThreadsWithoutOwnDataGoOnWithTheSharedAttributes)
{
    int before = 500;
    onThread(false, [&] { colourBefore(before); });
    for (int number = 0; number < threadCount; ++number) {
        const bool withOwnData = number % 3 == 1;
        int found = -1;
        onThread(withOwnData, [&] { found = colourBefore(number); });
        EXPECT_EQ(found, withOwnData ? 257 : before) << number;
        if (!withOwnData) before = number;
    }
}

TEST_F(InTurn, DataOfThreadsThatEndedAreFreedLater)
{
    std::vector<unsigned int> gone;
    for (int number = 0; number < threadCount; ++number) {
        onThread(false, [&] {
            const unsigned int id = quorsys::currentThreadId();
            gone.push_back(id);
            quorlua::allocThreadVars(id);
            quorconfig::allocThreadConfig(id);
            EXPECT_EQ(quorconfig::getProjectSpec(pipe, "x"), std::string("nobody/none/none/PIPE/x"));
            EXPECT_EQ(colourBefore(number), 257);
        });
        if (number % 10 != 9) continue;
        for (const unsigned int id : gone) {
            quorlua::freeThreadVars(id);
            quorconfig::freeThreadConfig(id);
        }
        gone.clear();
    }
    EXPECT_EQ(quorconfig::getProjectSpec(pipe, "x"), std::string("the test/none/none/PIPE/x"));
}

TEST_F(InTurn, AThreadThatIsGivenItsOwnDataLeavesTheSharedAndComesBack)
{
    onThread(false, [&] {
        colourBefore(5);
        EXPECT_STREQ(quorconfig::getProjectSpec(pipe, "x"), "the test/none/none/PIPE/x");
        {
            const OwnData data;
            EXPECT_EQ(colourBefore(6), 257);
            EXPECT_STREQ(quorconfig::getProjectSpec(pipe, "x"), "nobody/none/none/PIPE/x");
        }
        EXPECT_EQ(colourBefore(7), 5);
        EXPECT_STREQ(quorconfig::getProjectSpec(pipe, "x"), "the test/none/none/PIPE/x");
    });
}

} // namespace

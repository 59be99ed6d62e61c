#include "scriptor_fixture.h"

#include <climits>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class LoadBuffer : public Scriptor {
protected:
    LoadBuffer() { scriptor.setLoadFileCallbk(&counter); }

    int load(std::string chunk, long long stamp, bool recreate = false)
    {
        const int status = scriptor.loadBuffer(bufferOf(chunk), stamp, recreate);
        if (state()) {
            EXPECT_EQ(height(), 1);
        }
        return status;
    }

    LoadCounter counter;
    const std::string counting = "runs = (runs or 0) + 1";
};

TEST_F(LoadBuffer, RunsTheBytesAndTellsTheCallback)
{
    EXPECT_EQ(load(counting, 1000), Quor::Ok);
    EXPECT_EQ(shown("runs"), "1");
    EXPECT_EQ(counter.count, 1);
    EXPECT_EQ(counter.state, state());
    EXPECT_EQ(scriptor.get_mtime(), 1000);
    EXPECT_EQ(scriptor.getFileName(), nullptr);
}

TEST_F(LoadBuffer, TakesNoMoreThanTheGivenLength)
{
    std::string chunk = "runs = 1 garbage";
    EXPECT_EQ(scriptor.loadBuffer({8, chunk.data()}, 1000, false), Quor::Ok);
    EXPECT_EQ(shown("runs"), "1");
}

TEST_F(LoadBuffer, RefusesABufferWithoutBytes)
{
    std::string chunk = counting;
    for (const quor_binary& buffer :
         {quor_binary{8, nullptr}, quor_binary{0, chunk.data()}, quor_binary{-1, chunk.data()},
          quor_binary{INT_MIN, chunk.data()}, quor_binary{0, nullptr}})
        EXPECT_EQ(scriptor.loadBuffer(buffer, 1000, true), Quor::InvalidArgument) << buffer.length;
    EXPECT_EQ(shown("runs"), "nil");
    EXPECT_EQ(scriptor.get_mtime(), 0);
    EXPECT_EQ(counter.count, 0);
}

TEST_F(LoadBuffer, IsRefusedByAScriptorThatHoldsAFile)
{
    ScriptFolder folder;
    EXPECT_EQ(scriptor.loadFile(folder.path("missing.lua").c_str(), false), Quor::FileNotExamined);
    EXPECT_EQ(load(counting, 1000), Quor::Ok) << "a file that was not there is not held";
    EXPECT_EQ(scriptor.loadFile(folder.write("bad.lua", "=").c_str(), false), Quor::ScriptFailed);
    EXPECT_EQ(load(counting, 2000), Quor::BufferRefused) << "one that failed is";
    EXPECT_EQ(scriptor.loadFile(folder.write("good.lua", "").c_str(), false), Quor::Ok);
    EXPECT_EQ(load(counting, 3000, true), Quor::BufferRefused);
    EXPECT_EQ(scriptor.loadBuffer({}, 3000, true), Quor::InvalidArgument) << "no bytes are looked for first";
    EXPECT_EQ(shown("runs"), "1");
    scriptor.initLua();
    EXPECT_EQ(load(counting, 4000), Quor::BufferRefused) << "for its whole life";
}

TEST_F(LoadBuffer, RunsOnlyWhenTheStampMovedByFiveSecondsOrMore)
{
    struct Case {
        long long before;
        long long now;
        bool runs;
    };
    const Case cases[] = {
        {1000, 1000, false},
        {1000, 1004, false},
        {1000, 1005, true},
        {1000, 996, false},
        {1000, 995, true},
        {1000, -1000, true},
        {1000, LLONG_MAX, true},
        {1000, LLONG_MIN, true},
        {-5, -1, false},
        {LLONG_MAX, LLONG_MIN, true},
        {LLONG_MIN, LLONG_MAX, true},
        {LLONG_MAX, LLONG_MAX - 4, false},
    };
    for (const Case& stamps : cases) {
        QuorGlibScriptor own;
        own.setLoadFileCallbk(&counter);
        counter.count = 0;
        std::string chunk = counting;
        ASSERT_EQ(own.loadBuffer(bufferOf(chunk), stamps.before, false), Quor::Ok);
        ASSERT_EQ(counter.count, 1) << stamps.before;
        EXPECT_EQ(own.loadBuffer(bufferOf(chunk), stamps.now, false), Quor::Ok);
        EXPECT_EQ(counter.count, stamps.runs ? 2 : 1) << stamps.before << " " << stamps.now;
        EXPECT_EQ(own.get_mtime(), stamps.runs ? stamps.now : stamps.before);
    }
}

TEST_F(LoadBuffer, TakesAStampNearZeroForLoadedInANewScriptor)
{
    for (const long long stamp : {0, 4, -4}) {
        EXPECT_EQ(load(counting, stamp), Quor::Ok) << stamp;
        EXPECT_EQ(counter.count, 0) << stamp;
    }
    EXPECT_EQ(load(counting, 5), Quor::Ok);
    EXPECT_EQ(counter.count, 1);
}

TEST_F(LoadBuffer, KeepsOrRecreatesTheStateAsAsked)
{
    EXPECT_EQ(load(counting, 1000), Quor::Ok);
    EXPECT_EQ(load(counting, 2000), Quor::Ok);
    EXPECT_EQ(shown("runs"), "2");
    EXPECT_EQ(load(counting, 2001, true), Quor::Ok);
    EXPECT_EQ(shown("runs"), "2") << "unchanged: no new state";
    EXPECT_EQ(load(counting, 3000, true), Quor::Ok);
    EXPECT_EQ(shown("runs"), "1");
    EXPECT_EQ(counter.count, 3);
}

TEST_F(LoadBuffer, RunsPrecompiledCode)
{
    run("return string.dump(loadstring('ran = 7'))", 1);
    std::size_t size = 0;
    const char* bytes = lua_tolstring(state(), -1, &size);
    const std::string code(bytes, size);
    lua_pop(state(), 1);
    EXPECT_EQ(load(code, 1000), Quor::Ok);
    EXPECT_EQ(shown("ran"), "7");
}

TEST_F(LoadBuffer, LeavesNoStateWhenItFails)
{
    for (const char* bad : {"error('x')", "= 1", "error()", "error({})", "\x1BLua broken"}) {
        EXPECT_EQ(load(counting, 5000, true), Quor::Ok);
        alerts.clear();
        noteAlerts();
        counter.count = 0;
        EXPECT_EQ(load(bad, 6000), Quor::ScriptFailed) << bad;
        EXPECT_EQ(scriptor.getLua(false), nullptr) << bad;
        EXPECT_EQ(scriptor.get_mtime(), 5000) << "the stamp is that of the last run";
        EXPECT_EQ(counter.count, 0);
        EXPECT_EQ(alerts.size(), 1u) << bad;
        EXPECT_EQ(load(counting, 9000, true), Quor::Ok);
        EXPECT_EQ(load(counting, 1, true), Quor::Ok);
    }
}

TEST_F(LoadBuffer, ComesBackOnlyThroughANewState)
{
    loseState();
    EXPECT_EQ(load(counting, 7000, false), Quor::ScriptFailed) << "there is nothing to run it in";
    EXPECT_EQ(scriptor.getLua(false), nullptr);
    EXPECT_EQ(load(counting, 0, false), Quor::Ok) << "an unchanged stamp: nothing is to do";
    EXPECT_EQ(load(counting, 7000, true), Quor::Ok);
    EXPECT_EQ(shown("runs"), "1");
    loseState();
    scriptor.initLua();
    EXPECT_EQ(shown("runs"), "nil");
    EXPECT_EQ(load(counting, 8000), Quor::Ok);
}

TEST_F(LoadBuffer, ResetsTheThreadsContextUnlessItIsRefused)
{
    Primitives none;
    draw("{{300, 7}}", none);
    EXPECT_EQ(scriptor.loadBuffer({}, 1000, false), Quor::InvalidArgument);
    EXPECT_EQ(currentColour(), 7);
    EXPECT_EQ(load(counting, 0), Quor::Ok);
    EXPECT_EQ(currentColour(), 257) << "unchanged, but a load all the same";
    ScriptFolder folder;
    EXPECT_EQ(scriptor.loadFile(folder.write("f.lua", "").c_str(), false), Quor::Ok);
    draw("{{300, 7}}", none);
    EXPECT_EQ(load(counting, 1000), Quor::BufferRefused);
    EXPECT_EQ(currentColour(), 7);
    EXPECT_EQ(scriptor.reloadLua(0), Quor::Ok);
    EXPECT_EQ(currentColour(), 257);
}

TEST_F(LoadBuffer, ReportsWhereTheChunkFailed)
{
    EXPECT_EQ(load("\n\nerror('broken')", 1000), Quor::ScriptFailed);
    EXPECT_THAT(alerts, ElementsAre(HasSubstr(":3: broken")));
}

} // namespace

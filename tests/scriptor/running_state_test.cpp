// A script that calls back into its own scriptor, which is asked for another state meanwhile.

#include "scriptor_fixture.h"

namespace {

class RunningState : public Scriptor {
protected:
    /// Makes "again" a function for the script that calls `work`, and runs a segment that calls it. What the
    /// segment sees afterwards is in the globals "marked" and "old".
    void runWith(Quor::GlibStatus (*work)(QuorGlibScriptor&))
    {
        work_ = work;
        lua_pushlightuserdata(state(), this);
        lua_pushcclosure(state(), again, 1);
        lua_setglobal(state(), "again");
        run("old = true function seg() status = again() marked = old end");
        lua_State* before = state();
        EXPECT_EQ(scriptor.callSeg("seg"), Quor::Ok);
        ASSERT_EQ(state(), before);
        EXPECT_EQ(shown("marked"), "true");
    }

    const ScriptFolder folder_;

private:
    static int again(lua_State* L)
    {
        auto* self = static_cast<RunningState*>(lua_touserdata(L, lua_upvalueindex(1)));
        lua_pushnumber(L, self->work_(self->scriptor));
        return 1;
    }

    Quor::GlibStatus (*work_)(QuorGlibScriptor&) = nullptr;
};

TEST_F(RunningState, IsNotMadeAnew)
{
    runWith([](QuorGlibScriptor& own) {
        own.initLua();
        return Quor::Ok;
    });
    EXPECT_EQ(shown("status"), "0");
}

TEST_F(RunningState, FailsAFileThatWantsANewOne)
{
    const std::string file = folder_.write("script.lua", "new = true", 1000);
    ASSERT_EQ(scriptor.loadFile(file.c_str(), false), Quor::Ok);
    run("new = nil");
    folder_.setTime("script.lua", 2000);
    const long long time = scriptor.get_mtime();
    runWith([](QuorGlibScriptor& own) { return own.reloadLua(1); });
    EXPECT_EQ(shown("status"), "4");
    runWith([](QuorGlibScriptor& own) { return own.loadFile(own.getFileName(), true); });
    EXPECT_EQ(shown("status"), "4");
    EXPECT_EQ(shown("new"), "nil") << "the file has not run";
    EXPECT_EQ(scriptor.get_mtime(), time);
    runWith([](QuorGlibScriptor& own) { return own.loadFile(own.getFileName(), false); });
    EXPECT_EQ(shown("status"), "0") << "in the same state it may run";
    EXPECT_EQ(shown("new"), "true");
}

TEST_F(RunningState, StaysWhenABufferFails)
{
    runWith([](QuorGlibScriptor& own) {
        std::string bad = "error('bad')";
        return own.loadBuffer(bufferOf(bad), 1000, false);
    });
    EXPECT_EQ(shown("status"), "4");
    runWith([](QuorGlibScriptor& own) {
        std::string good = "old = false";
        return own.loadBuffer(bufferOf(good), 1000, true);
    });
    EXPECT_EQ(shown("status"), "4");
    EXPECT_EQ(shown("old"), "true");
    alerts.clear();
}

} // namespace

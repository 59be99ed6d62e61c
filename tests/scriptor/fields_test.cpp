#include "scriptor_fixture.h"

#include <cstring>

namespace {

/// The fields of a scriptor as hosts rely on them, in order.
struct Layout {
    lua_State* state;
    int baseTop;
    char* fileName;
    long long modificationTime;
    Quor::GlibStatus lastStatus;
    const GlibScriptFunctor* functor;
    FunctionRightAfterLoadFile* loadFileCallback;
    int flags;
};

class Fields : public Scriptor {
protected:
    Layout fields() const
    {
        Layout seen;
        static_assert(sizeof seen == sizeof scriptor && std::is_standard_layout_v<QuorGlibScriptor>);
        std::memcpy(&seen, &scriptor, sizeof seen);
        return seen;
    }
    int lastStatus() const { return fields().lastStatus; }
    /// Loads a buffer; its status is what is left in the field, or not.
    int loadBuffer(std::string chunk, long long stamp)
    {
        return scriptor.loadBuffer(bufferOf(chunk), stamp, true);
    }

    ScriptFolder folder;
};

TEST_F(Fields, StartEmptyAroundANewState)
{
    const Layout start = fields();
    EXPECT_EQ(start.state, state());
    EXPECT_EQ(start.baseTop, 1);
    EXPECT_EQ(start.fileName, nullptr);
    EXPECT_EQ(start.modificationTime, 0);
    EXPECT_EQ(start.functor, nullptr);
    EXPECT_EQ(start.loadFileCallback, nullptr);
    EXPECT_EQ(start.flags, 0);
}

TEST_F(Fields, HoldWhatTheHostSets)
{
    int something = 0;
    const auto* functor = reinterpret_cast<const GlibScriptFunctor*>(&something);
    LoadCounter counter;
    scriptor.setFunction(functor);
    scriptor.setLoadFileCallbk(&counter);
    scriptor.setFlag(0x7FFF0001);
    ASSERT_EQ(scriptor.loadFile(folder.write("a.lua", "", 1000).c_str(), false), Quor::Ok);
    const Layout held = fields();
    EXPECT_EQ(held.functor, functor);
    EXPECT_EQ(held.loadFileCallback, &counter);
    EXPECT_EQ(held.flags, 0x7FFF0001);
    EXPECT_EQ(held.fileName, scriptor.getFileName());
    EXPECT_EQ(held.modificationTime, 1000);
    scriptor.initLua();
    EXPECT_EQ(fields().functor, functor) << "a new state leaves the other fields";
    scriptor.setFunction(nullptr);
    EXPECT_EQ(fields().functor, nullptr);
}

TEST_F(Fields, KeepTheStatusOfTheLastLoadOfAFile)
{
    const std::string good = folder.write("good.lua", "", 1000);
    const std::string bad = folder.write("bad.lua", "=", 1000);
    EXPECT_EQ(scriptor.loadFile(nullptr, false), Quor::InvalidArgument);
    EXPECT_EQ(lastStatus(), Quor::InvalidArgument);
    EXPECT_EQ(scriptor.reloadLua(0), Quor::ScriptFailed);
    EXPECT_EQ(lastStatus(), Quor::InvalidArgument) << "no file is loaded: left as it was";
    EXPECT_EQ(scriptor.loadFile(folder.path("missing.lua").c_str(), false), Quor::FileNotExamined);
    EXPECT_EQ(lastStatus(), Quor::FileNotExamined);
    EXPECT_EQ(scriptor.loadFile(good.c_str(), false), Quor::Ok);
    EXPECT_EQ(lastStatus(), Quor::Ok);
    EXPECT_EQ(scriptor.loadFile(bad.c_str(), false), Quor::ScriptFailed);
    EXPECT_EQ(lastStatus(), Quor::ScriptFailed);
    EXPECT_EQ(scriptor.loadFile(bad.c_str(), false), Quor::Ok) << "unchanged";
    EXPECT_EQ(lastStatus(), Quor::Ok);
    EXPECT_EQ(scriptor.reloadLua(0), Quor::ScriptFailed);
    EXPECT_EQ(lastStatus(), Quor::ScriptFailed);
    folder.write("bad.lua", "", 1000);
    EXPECT_EQ(scriptor.reloadLua(1), Quor::Ok);
    EXPECT_EQ(lastStatus(), Quor::Ok);
    std::filesystem::remove(bad);
    EXPECT_EQ(scriptor.reloadLua(0), Quor::FileNotExamined);
    EXPECT_EQ(lastStatus(), Quor::FileNotExamined);
    EXPECT_EQ(scriptor.loadBuffer({}, 1000, false), Quor::InvalidArgument);
    EXPECT_EQ(loadBuffer("x = 1", 1000), Quor::BufferRefused);
    EXPECT_EQ(lastStatus(), Quor::FileNotExamined) << "a buffer that is refused leaves it";
}

TEST_F(Fields, KeepTheStatusOfTheLastLoadOfABuffer)
{
    EXPECT_EQ(loadBuffer("=", 1000), Quor::ScriptFailed);
    EXPECT_EQ(lastStatus(), Quor::ScriptFailed);
    EXPECT_EQ(fields().state, nullptr);
    EXPECT_EQ(loadBuffer("", 1000), Quor::InvalidArgument);
    EXPECT_EQ(lastStatus(), Quor::ScriptFailed);
    EXPECT_EQ(loadBuffer("x = 1", 1000), Quor::Ok);
    EXPECT_EQ(lastStatus(), Quor::Ok);
}

} // namespace

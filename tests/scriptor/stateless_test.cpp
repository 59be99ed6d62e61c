#include "scriptor_fixture.h"

#include <QuorPureScriptor/lua_tinker.h>

namespace {

using testing::IsEmpty;

/// A scriptor whose buffer failed: it has no state.
class Stateless : public Scriptor {
protected:
    Stateless() { loseState(); }

    StyleOfTest style;
    const std::vector<KVParams> records{{"k", "", KVValue::ofInt(1)}};
};

TEST_F(Stateless, LibrariesAreNotOpened)
{
    const luaL_Reg list[] = {{nullptr, nullptr}};
    scriptor.addLib("x", list);
    scriptor.addLibFuncLua("x", "f", [](lua_State*) { return 0; });
    scriptor.setPackagePath();
    EXPECT_EQ(scriptor.getLua(true), nullptr);
    EXPECT_EQ(scriptor.getLua(false), nullptr);
}

TEST_F(Stateless, ParametersAreNotWritten)
{
    const double values[23] = {};
    const geolib::paramt cut;
    EXPECT_FALSE(scriptor.setParams(values, 1));
    EXPECT_FALSE(scriptor.setParams(&cut));
    EXPECT_FALSE(scriptor.setParams(static_cast<const geolib::paramt*>(nullptr)));
    EXPECT_FALSE(scriptor.setDoubleParam("param", "k", 1));
    EXPECT_FALSE(scriptor.setKeyValues(records, 1));
    EXPECT_FALSE(scriptor.setParam("param", records));
    EXPECT_FALSE(scriptor.clearParam("param"));
    EXPECT_FALSE(scriptor.setConstFactor(1));
    EXPECT_FALSE(scriptor.setObjectId(1));
}

TEST_F(Stateless, ParametersAreNotRead)
{
    std::vector<KVParams> read;
    EXPECT_EQ(scriptor.getParams(read), Quor::TableMissing);
    EXPECT_EQ(scriptor.getParams_note("param", read), Quor::TableMissing);
    EXPECT_EQ(scriptor.getParams_note("", read), Quor::InvalidArgument);
    EXPECT_EQ(scriptor.getParams_std("param", read), Quor::TableMissing);
    EXPECT_THAT(read, IsEmpty());
}

TEST_F(Stateless, SegmentsAreNotCalled)
{
    int needxdir = 5;
    std::string text = "old";
    std::vector<Keypoint> keypoints(1);
    Primitives primitives;
    EXPECT_EQ(scriptor.callSeg("main"), Quor::NoState);
    EXPECT_EQ(scriptor.callSeg(nullptr), Quor::NoState) << "the state is asked for first";
    EXPECT_EQ(scriptor.callSeg("main", needxdir, text), Quor::NoState);
    EXPECT_EQ(scriptor.callSeg("main", keypoints), Quor::NoState);
    EXPECT_EQ(scriptor.getKeypoints(keypoints), Quor::NoState);
    EXPECT_EQ(scriptor.callSeg("main", primitives), Quor::NoState);
    EXPECT_EQ(scriptor.callSeg3D("main", primitives), Quor::NoState);
    EXPECT_EQ(scriptor.callSeg("main", records), Quor::NoState);
    EXPECT_EQ(scriptor.callSeg("main", records, style), Quor::NoState);
    EXPECT_EQ(scriptor.callSeg("main", records, KxGeMatrix3D()), Quor::NoState);
    EXPECT_EQ(scriptor.callSeg("main", style), Quor::NoState);
    EXPECT_EQ(scriptor.callSeg("main", lua_tinker::table()), Quor::NoState);
    EXPECT_EQ(scriptor.callSeg("main", lua_tinker::table(), style), Quor::NoState);
    EXPECT_EQ(needxdir, 5);
    EXPECT_EQ(text, "old");
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 0);
}

TEST_F(Stateless, ResultsAreNotRead)
{
    bool yes = true;
    int number = 5;
    std::string type = "old";
    std::vector<Keypoint> keypoints(1);
    Primitives primitives;
    primitives.push_back(nullptr);
    EXPECT_EQ(scriptor.justParsePrimary(primitives), Quor::InvalidArgument);
    EXPECT_EQ(primitives.size(), 1u);
    EXPECT_EQ(scriptor.parsePrimary(primitives), Quor::NoState);
    EXPECT_THAT(primitives, IsEmpty()) << "cleared first";
    EXPECT_EQ(scriptor.parseKeypoint(keypoints, -1), Quor::ScriptFailed);
    EXPECT_THAT(keypoints, IsEmpty());
    EXPECT_EQ(scriptor.parseRtn(yes), Quor::NoState);
    EXPECT_EQ(scriptor.parseRtn(number), Quor::NoState);
    EXPECT_EQ(scriptor.getSmrtlnType(type), Quor::InvalidArgument);
    EXPECT_TRUE(yes);
    EXPECT_EQ(number, 5);
    EXPECT_EQ(type, "old");
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 0);
}

TEST_F(Stateless, ExchangeSaysSo)
{
    KxGePoint3D first(1, 2, 3);
    KxGePoint3D second(4, 5, 6);
    std::vector<KVParams> read;
    EXPECT_EQ(scriptor.exeLuaUI(first, second, read), Quor::CadReturn::StateMissing);
    EXPECT_EQ(first, KxGePoint3D(1, 2, 3));
    EXPECT_EQ(second, KxGePoint3D(4, 5, 6));
}

TEST_F(Stateless, HostObjectsAreStillTaken)
{
    scriptor.setFunction(nullptr);
    scriptor.setGlibTextstyle(&style);
    scriptor.setGlibTextstyle(nullptr);
    scriptor.setFlag(1);
    EXPECT_TRUE(scriptor.checkFlag(ScriptorBit1));
    EXPECT_EQ(scriptor.getFileName(), nullptr);
    EXPECT_EQ(scriptor.get_mtime(), 0);
}

TEST_F(Stateless, FilesRunOnlyInANewState)
{
    ScriptFolder folder;
    const std::string path = folder.write("a.lua", "a = 1", 1000);
    EXPECT_EQ(scriptor.reloadLua(1), Quor::ScriptFailed) << "no file";
    EXPECT_EQ(scriptor.loadFile(path.c_str(), true), Quor::ScriptFailed) << "a first load makes no state";
    EXPECT_EQ(scriptor.getLua(false), nullptr);
    EXPECT_EQ(scriptor.getFileName(), path);
    EXPECT_EQ(scriptor.loadFile(path.c_str(), true), Quor::Ok) << "unchanged: nothing is to do";
    EXPECT_EQ(scriptor.getLua(false), nullptr);
    EXPECT_EQ(scriptor.reloadLua(0), Quor::ScriptFailed);
    EXPECT_EQ(scriptor.reloadLua(1), Quor::Ok);
    ASSERT_NE(scriptor.getLua(false), nullptr);
    EXPECT_EQ(shown("a"), "1");
}

} // namespace

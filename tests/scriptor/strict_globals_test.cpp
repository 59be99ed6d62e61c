#include "scriptor_fixture.h"

#include <QuorPureScriptor/lua_tinker.h>

namespace {

using testing::IsEmpty;

/// A script that lets no unknown global be read or written: such a global counts as missing, in silence.
class StrictGlobals : public Scriptor {
protected:
    StrictGlobals() { makeGlobalsStrict(); }
    void TearDown() override
    {
        EXPECT_THAT(alerts, IsEmpty());
        EXPECT_EQ(kxcom::getQuorLastErrorCode(), 0);
        Scriptor::TearDown();
    }

    StyleOfTest style;
    const std::vector<KVParams> records{{"k", "", KVValue::ofInt(1)}};
};

TEST_F(StrictGlobals, HideTablesOfParameters)
{
    const double values[23] = {};
    const geolib::paramt cut;
    std::vector<KVParams> read;
    EXPECT_FALSE(kept([&] { return scriptor.setParams(values, 1); }));
    EXPECT_FALSE(kept([&] { return scriptor.setParams(&cut); }));
    EXPECT_FALSE(kept([&] { return scriptor.setDoubleParam("param", "k", 1); }));
    EXPECT_FALSE(kept([&] { return scriptor.setKeyValues(records, 1); }));
    EXPECT_FALSE(kept([&] { return scriptor.setParam("param", records); }));
    EXPECT_FALSE(kept([&] { return scriptor.clearParam("param"); }));
    EXPECT_FALSE(kept([&] { return scriptor.setConstFactor(1); }));
    EXPECT_FALSE(kept([&] { return scriptor.setObjectId(1); }));
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.getParams(read)); }), Quor::TableMissing);
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.getParams_std("param", read)); }),
              Quor::TableMissing);
}

TEST_F(StrictGlobals, WithoutADeclarationMakeEveryParameterALength)
{
    run("rawset(_G, 'param', {})");
    double values[23] = {1};
    EXPECT_TRUE(kept([&] { return scriptor.setParams(values, 10); }));
    EXPECT_EQ(shown("param.P1"), "10");
    EXPECT_TRUE(kept([&] { return scriptor.setKeyValues({{"k", "", KVValue::ofDouble(2)}}, 10); }));
    EXPECT_EQ(shown("param.k"), "20");
}

TEST_F(StrictGlobals, HideSegments)
{
    int needxdir = 0;
    std::string text;
    std::vector<Keypoint> keypoints;
    Primitives primitives;
    const auto status = [](Quor::GlibStatus value) { return static_cast<int>(value); };
    EXPECT_EQ(kept([&] { return status(scriptor.callSeg("main")); }), Quor::SegmentMissing);
    EXPECT_EQ(kept([&] { return status(scriptor.callSeg("main", needxdir, text)); }), Quor::SegmentMissing);
    EXPECT_EQ(kept([&] { return status(scriptor.callSeg("main", keypoints)); }), Quor::SegmentMissing);
    EXPECT_EQ(kept([&] { return status(scriptor.callSeg("main", primitives)); }), Quor::SegmentMissing);
    EXPECT_EQ(kept([&] { return status(scriptor.callSeg("main", records)); }), Quor::SegmentMissing);
    EXPECT_EQ(kept([&] { return status(scriptor.callSeg("main", records, style)); }), Quor::SegmentMissing);
    EXPECT_EQ(kept([&] { return status(scriptor.callSeg("main", records, KxGeMatrix3D())); }),
              Quor::SegmentMissing);
    EXPECT_EQ(kept([&] { return status(scriptor.callSeg("main", style)); }), Quor::SegmentMissing);
    const lua_tinker::table table(state(), 1);
    EXPECT_EQ(kept([&] { return status(scriptor.callSeg("main", table)); }), Quor::SegmentMissing);
    EXPECT_EQ(kept([&] { return status(scriptor.callSeg("main", table, style)); }), Quor::SegmentMissing);
    EXPECT_EQ(kept([&] { return status(scriptor.getSmrtlnType(text)); }), Quor::ValueMissing);
    KxGePoint3D first;
    KxGePoint3D second;
    std::vector<KVParams> read;
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.exeLuaUI(first, second, read)); }),
              Quor::CadReturn::CallFailed);
}

TEST_F(StrictGlobals, LetKnownSegmentsBeCalled)
{
    run("rawset(_G, 'main', function() return {{16, {0, 0, 0}, {1, 0, 0}}} end)");
    Primitives primitives;
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.callSeg("main", primitives)); }), Quor::Ok);
    EXPECT_EQ(primitives.size(), 1u);
}

TEST_F(StrictGlobals, KeepHostObjectsOut)
{
    EXPECT_EQ(kept([&] { return scriptor.setGlibTextstyle(&style), 0; }), 0);
    EXPECT_EQ(shown("rawget(_G, '_glib_pass_txtstyle_pointer')"), "nil");
    EXPECT_EQ(kept([&] { return scriptor.setFunction(nullptr), 0; }), 0);
    scriptor.setGlibTextstyle(nullptr);
    run("rawset(_G, '_glib_pass_txtstyle_pointer', false)");
    scriptor.setGlibTextstyle(&style);
    EXPECT_EQ(shown("type(_glib_pass_txtstyle_pointer)"), "userdata");
    scriptor.setGlibTextstyle(nullptr);
}

TEST_F(StrictGlobals, StopOnlyTheFunctionsThatTheyRefuse)
{
    const auto function = [](lua_State* L) {
        lua_pushnumber(L, 1);
        return 1;
    };
    EXPECT_EQ(kept([&] { return scriptor.addLibFuncLua("tools", "f", function), 0; }), 0);
    EXPECT_EQ(shown("rawget(_G, 'tools')"), "nil");
    EXPECT_EQ(kept([&] { return scriptor.addLibFuncLua("glib", "f", function), 0; }), 0);
    EXPECT_EQ(shown("glib.f()"), "1");
    run("rawset(_G, 'package', nil)");
    EXPECT_EQ(kept([&] { return scriptor.setPackagePath(), 0; }), 0);
    EXPECT_EQ(shown("rawget(_G, 'package')"), "nil");
    const luaL_Reg list[] = {{"f", function}, {nullptr, nullptr}};
    EXPECT_EQ(kept([&] { return scriptor.addLib("added", list), 0; }), 0);
    EXPECT_EQ(shown("rawget(_G, 'added')"), "nil");
    EXPECT_EQ(kept([&] { return scriptor.addLib("glib", list), 0; }), 0);
    EXPECT_EQ(shown("glib.f()"), "1");
}

TEST_F(StrictGlobals, EndWithANewState)
{
    scriptor.initLua();
    EXPECT_EQ(shown("anything"), "nil");
}

} // namespace

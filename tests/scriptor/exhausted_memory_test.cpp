#include "../rationed_memory.h"
#include "../rationed_states.h"
#include "scriptor_fixture.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/ScriptLimits.h>
#include <functional>

namespace {

using rationed::requestsOfLibraries;
using rationed::statesLeft;
constexpr const char* script =
    "param = {}; glb = {smrtlntype = 'PIPE'}; notes = {P1 = {'n', 1}}; skey = {angleUnit = {'P4'}}\n"
    "function plain() local t = {} for i = 1, 20 do t[i] = {'x' .. i} end end\n"
    "function wants() return {needxdir = {true, 'x' .. 'y'}} end\n"
    "function keypoint() return {{1, 5, {1, 2, 3}}} end\n"
    "function main() return {{300, 7}, {16, {0, 0, 0}, {1, 0, 0}}} end\n"
    "function quorgetparam_ui(p) return 0, {p[1] + 1, 0, 0}, {0, 0, 1}, {k = 'v'} end\n"
    "function echo(...) return {...} end\n";

class ExhaustedMemory : public testing::Test {
protected:
    void SetUp() override
    {
        QuorGlibScriptor probe;
        if (!probe.getLua(false)) GTEST_SKIP() << "this engine takes no allocator";
    }
    void TearDown() override { statesLeft = -1; }

    static int load(QuorGlibScriptor& scriptor, std::string chunk)
    {
        return scriptor.loadBuffer({static_cast<int>(chunk.size()), chunk.data()}, 1000, false);
    }

    /// Grants the operation 0, 1, 2, ... requests until it succeeds. Whenever it does not, the stack is as it
    /// was.
    static void walk(const char* name, const std::function<bool(QuorGlibScriptor&)>& operation)
    {
        constexpr int mostRequests = 2000;
        for (int granted = 0; granted <= mostRequests; ++granted) {
            QuorGlibScriptor scriptor;
            ASSERT_EQ(load(scriptor, script), Quor::Ok);
            lua_State* L = scriptor.getLua(false);
            testing::internal::CaptureStderr();
            statesLeft = granted;
            const bool done = operation(scriptor);
            statesLeft = -1;
            testing::internal::GetCapturedStderr();
            if (done) return;
            EXPECT_EQ(lua_gettop(L), 1) << name << " with " << granted;
            EXPECT_TRUE(operation(scriptor)) << name << ": usable again after " << granted;
        }
        FAIL() << name << " never succeeded";
    }
};

TEST_F(ExhaustedMemory, LeavesANewScriptorWithoutAState)
{
    const int libraries = requestsOfLibraries();
    int granted = 0;
    for (bool made = false; !made; granted = granted == 0 ? libraries : granted + 1) {
        ASSERT_LT(granted, libraries + 1000);
        statesLeft = granted;
        QuorGlibScriptor scriptor;
        statesLeft = -1;
        made = scriptor.getLua(false) != nullptr;
        if (made) {
            EXPECT_EQ(lua_gettop(scriptor.getLua(false)), 1);
        } else {
            EXPECT_EQ(scriptor.callSeg("main"), Quor::NoState);
        }
        scriptor.initLua();
        EXPECT_EQ(load(scriptor, script), Quor::Ok) << "after " << granted;
    }
    EXPECT_GT(granted, libraries + 50);
}

TEST_F(ExhaustedMemory, LeavesANewScriptorUnderLimitsWithoutAState)
{
    quorlua::limitNewStates({100.0, std::size_t{1} << 30, false});
    const int libraries = requestsOfLibraries();
    int granted = 0;
    for (bool made = false; !made; granted = granted == 0 ? libraries : granted + 1) {
        ASSERT_LT(granted, libraries + 1000);
        statesLeft = granted;
        QuorGlibScriptor scriptor;
        statesLeft = -1;
        made = scriptor.getLua(false) != nullptr;
        if (!made) {
            EXPECT_EQ(scriptor.callSeg("main"), Quor::NoState) << granted;
        }
    }
    EXPECT_GT(granted, libraries + 50);
    // That of the library.
    long blocks = 0;
    for (bool made = false; !made; ++blocks) {
        ASSERT_LT(blocks, 1000);
        rationed::allowed = blocks;
        QuorGlibScriptor scriptor;
        rationed::allowed = -1;
        made = scriptor.getLua(false) != nullptr;
        if (!made) {
            EXPECT_EQ(scriptor.callSeg("main"), Quor::NoState) << blocks;
        }
    }
    EXPECT_GT(blocks, 1);
    quorlua::limitNewStates({});
}

TEST_F(ExhaustedMemory, KeepsTheNameOfAFileThatTakesNoOthersPlace)
{
    ScriptFolder folder;
    const std::string first = folder.write("a.lua", script);
    const std::string second = folder.write("b.lua", script);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(scriptor.loadFile(first.c_str(), false), Quor::Ok);
    const char* name = scriptor.getFileName();
    ASSERT_EQ(scriptor.loadFile(second.c_str(), false), Quor::Ok);
    long blocks = 0;
    for (Quor::GlibStatus status = Quor::ScriptFailed; status != Quor::Ok; ++blocks) {
        ASSERT_LT(blocks, 1000);
        rationed::allowed = blocks;
        status = scriptor.loadFile(first.c_str(), false);
        rationed::allowed = -1;
        const char* now = scriptor.getFileName();
        EXPECT_TRUE(now == name || (now == second && status != Quor::Ok)) << now;
    }
    EXPECT_EQ(scriptor.getFileName(), name);
    EXPECT_GT(blocks, 1);
}

TEST_F(ExhaustedMemory, LeavesNoRegisteredModuleOutOfAState)
{
    static const luaL_Reg list[] = {{"f", [](lua_State*) { return 0; }}, {nullptr, nullptr}};
    quorlua::addRegLuaModule("module_of_this_test", list);
    for (const bool once : {false, true}) {
        rationed::statesRefuseOnce = once;
        const int libraries = requestsOfLibraries();
        int granted = libraries;
        for (bool isRefused = true; isRefused; ++granted) {
            const long before = rationed::statesRefused;
            statesLeft = granted;
            QuorGlibScriptor scriptor;
            statesLeft = -1;
            isRefused = rationed::statesRefused != before;
            lua_State* L = scriptor.getLua(false);
            if (!L) continue;
            lua_getglobal(L, "module_of_this_test");
            EXPECT_TRUE(lua_istable(L, -1)) << "with " << granted << " granted";
        }
        EXPECT_GT(granted, libraries + 50);
    }
    rationed::statesRefuseOnce = false;
}

TEST_F(ExhaustedMemory, LeavesAHelperWithoutAScriptor)
{
    ScriptFolder folder;
    const std::string path = folder.write("a.lua", script);
    const int libraries = requestsOfLibraries();
    int granted = libraries;
    for (bool done = false; !done; ++granted) {
        ASSERT_LT(granted, libraries + 1000);
        QuorGlibScriptorHelper helper;
        testing::internal::CaptureStderr();
        statesLeft = granted;
        done = helper.init(path.c_str(), [](const char*) {});
        statesLeft = -1;
        testing::internal::GetCapturedStderr();
        EXPECT_EQ(helper.getScriptor() != nullptr, done);
        EXPECT_EQ(helper.getL() != nullptr, done);
    }
    EXPECT_GT(granted, libraries + 50);
}

TEST_F(ExhaustedMemory, FailsParametersCleanly)
{
    const std::vector<KVParams> records = {{"a", "", KVValue::ofDouble(1)},
                                           {"b", "", KVValue::ofString("text")},
                                           {"c", "", KVValue::ofPoint({1, 2, 3})}};
    static constexpr double values[23] = {};
    geolib::paramt last;
    const geolib::paramt cut{&last, 1, 2};
    walk("setParams", [](QuorGlibScriptor& scriptor) { return scriptor.setParams(values, 2); });
    walk("setParams, list", [&](QuorGlibScriptor& scriptor) { return scriptor.setParams(&cut); });
    walk("setDoubleParam",
         [](QuorGlibScriptor& scriptor) { return scriptor.setDoubleParam("param", "new", 1); });
    walk("setKeyValues", [&](QuorGlibScriptor& scriptor) { return scriptor.setKeyValues(records, 2); });
    walk("setParam", [&](QuorGlibScriptor& scriptor) { return scriptor.setParam("param", records); });
    walk("clearParam", [](QuorGlibScriptor& scriptor) { return scriptor.clearParam("glb"); });
    walk("setConstFactor", [](QuorGlibScriptor& scriptor) { return scriptor.setConstFactor(1); });
    walk("setObjectId", [](QuorGlibScriptor& scriptor) { return scriptor.setObjectId(1); });
    walk("getParams_note", [](QuorGlibScriptor& scriptor) {
        std::vector<KVParams> read;
        return scriptor.getParams_note("notes", read) == Quor::Ok && read.size() == 1;
    });
    walk("getParams_std", [](QuorGlibScriptor& scriptor) {
        std::vector<KVParams> read;
        return scriptor.getParams_std("glb", read) == Quor::Ok && read.size() == 1;
    });
}

TEST_F(ExhaustedMemory, FailsSegmentsCleanly)
{
    const std::vector<KVParams> records = {{"a", "", KVValue::ofDouble(1)},
                                           {"b", "", KVValue::ofString("text")}};
    const StyleOfTest style;
    walk("plain", [](QuorGlibScriptor& scriptor) { return scriptor.callSeg("plain") == Quor::Ok; });
    walk("needxdir", [](QuorGlibScriptor& scriptor) {
        int needxdir = 0;
        std::string text;
        return scriptor.callSeg("wants", needxdir, text) == Quor::Ok && text == "xy";
    });
    walk("keypoints", [](QuorGlibScriptor& scriptor) {
        std::vector<Keypoint> keypoints;
        return scriptor.getKeypoints(keypoints) == Quor::Ok && keypoints.size() == 1;
    });
    walk("primitives", [](QuorGlibScriptor& scriptor) {
        Primitives primitives;
        return scriptor.callSeg("main", primitives) == Quor::Ok && primitives.size() == 1;
    });
    walk("exchange", [](QuorGlibScriptor& scriptor) {
        KxGePoint3D first;
        KxGePoint3D second;
        std::vector<KVParams> read;
        return scriptor.exeLuaUI(first, second, read) == 0 && first == KxGePoint3D(1, 0, 0) &&
               read.size() == 1;
    });
    const auto left1 = [](QuorGlibScriptor& scriptor, Quor::GlibStatus status) {
        if (status != Quor::Ok) return false;
        EXPECT_EQ(lua_gettop(scriptor.getLua(false)), 2);
        scriptor.getLua(true);
        return true;
    };
    walk("records", [&](QuorGlibScriptor& s) { return left1(s, s.callSeg("echo", records)); });
    walk("records, style", [&](QuorGlibScriptor& s) { return left1(s, s.callSeg("echo", records, style)); });
    walk("records, matrix",
         [&](QuorGlibScriptor& s) { return left1(s, s.callSeg("echo", records, KxGeMatrix3D())); });
    walk("style", [&](QuorGlibScriptor& s) { return left1(s, s.callSeg("echo", style)); });
    walk("table", [&](QuorGlibScriptor& s) {
        const lua_tinker::table glib(s.getLua(false), 1);
        return left1(s, s.callSeg("echo", glib, style));
    });
    walk("smart-line type", [](QuorGlibScriptor& scriptor) {
        std::string type;
        return scriptor.getSmrtlnType(type) == Quor::Ok && type == "PIPE";
    });
}

TEST_F(ExhaustedMemory, LosesNoStateToHostObjectsAndLibraries)
{
    StyleOfTest style;
    const luaL_Reg list[] = {{"f", [](lua_State*) { return 0; }}, {nullptr, nullptr}};
    const auto isGlobal = [](QuorGlibScriptor& scriptor, const char* name) {
        lua_State* L = scriptor.getLua(false);
        statesLeft = -1;
        lua_getglobal(L, name);
        const bool there = !lua_isnil(L, -1);
        lua_pop(L, 1);
        return there;
    };
    walk("setGlibTextstyle", [&](QuorGlibScriptor& scriptor) {
        scriptor.setGlibTextstyle(&style);
        return isGlobal(scriptor, "_glib_pass_txtstyle_pointer");
    });
    walk("addLib", [&](QuorGlibScriptor& scriptor) {
        scriptor.addLib("added", list);
        return isGlobal(scriptor, "added");
    });
    walk("addLibFuncLua", [&](QuorGlibScriptor& scriptor) {
        scriptor.addLibFuncLua("tools", "f", list[0].func);
        return isGlobal(scriptor, "tools");
    });
    walk("push_txtstyle", [&](QuorGlibScriptor& scriptor) {
        lua_State* L = scriptor.getLua(false);
        quorlua::push_txtstyle(L, &style);
        const bool pushed = lua_gettop(L) == 2;
        lua_settop(L, 1);
        return pushed;
    });
    QuorGlibScriptor().setGlibTextstyle(nullptr);
}

} // namespace

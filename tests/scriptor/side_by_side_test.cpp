// Two copies of the sample that differ in little, each with a scriptor of its own, in one process and on one
// thread.

#include "../glib/SilentFunctor.h"
#include "scriptor_fixture.h"

#include <QuorCommon/QuorCommon.h>
#include <sstream>

namespace {

namespace fs = std::filesystem;

std::string bytesOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

/// Copies the sample to a folder of the test's.
void copySample(const ScriptFolder& folder, const std::string& name)
{
    fs::create_directories(folder.path(name));
    fs::copy(QUOR_SOURCE_DIR "/sample/installation", folder.path(name + "/installation"),
             fs::copy_options::recursive);
    fs::copy(QUOR_SOURCE_DIR "/sample/project/components", folder.path(name + "/components"),
             fs::copy_options::recursive);
}

/// Gives a text in a copied file another form; it stands there once. The file's time moves on to `seconds`.
void change(const ScriptFolder& folder, const std::string& name, const std::string& from,
            const std::string& to, long seconds)
{
    std::string bytes = bytesOf(folder.path(name));
    const std::size_t at = bytes.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    ASSERT_EQ(bytes.find(from, at + 1), std::string::npos) << from;
    folder.write(name, bytes.replace(at, from.size(), to), seconds);
}

/// One copy of the sample and the scriptor that runs its valve.
class Copy {
public:
    Copy(const ScriptFolder& folder, const std::string& name)
        : component_(folder.path(name + "/components/gate_valve.lua"))
    {
        QuorSystem::setInstallationFolder(folder.path(name + "/installation").c_str());
        scriptor.initLua(); // takes the module paths of that installation
        EXPECT_EQ(scriptor.loadFile(component_.c_str(), false), Quor::Ok);
    }

    /// What a segment draws, a line for each primitive.
    std::string draw(const char* segment = "main")
    {
        Primitives primitives;
        EXPECT_EQ(scriptor.callSeg3D(segment, primitives), Quor::Ok);
        std::ostringstream text;
        for (const QuorPrimary* primitive : primitives)
            text << *primitive << '\n';
        return text.str();
    }
    /// The value of a Lua expression as text.
    std::string ask(const std::string& expression)
    {
        const std::string chunk = "return tostring(" + expression + ")";
        lua_State* L = scriptor.getLua(false);
        EXPECT_EQ(luaL_loadbuffer(L, chunk.data(), chunk.size(), "ask"), 0);
        EXPECT_EQ(lua_pcall(L, 0, 1, 0), 0);
        std::string text = lua_tostring(L, -1);
        lua_pop(L, 1);
        return text;
    }
    void run(const std::string& chunk) { ASSERT_EQ(luaL_dostring(scriptor.getLua(false), chunk.c_str()), 0); }

    QuorGlibScriptor scriptor;

private:
    std::string component_;
};

class SideBySide : public testing::Test {
protected:
    SideBySide()
    {
        copySample(folder, "first");
        copySample(folder, "second");
        change(folder, "second/components/gate_valve.lua", "P2 = 165,", "P2 = 265,", 1000);
        change(folder, "second/installation/bin/flange.lua", "1.5 * bolt, 0.8 * bolt",
               "3.0 * bolt, 0.4 * bolt", 1000);
        first = std::make_unique<Copy>(folder, "first");
        firstAlone = first->draw();
        second = std::make_unique<Copy>(folder, "second");
    }
    ~SideBySide() override { QuorSystem::setInstallationFolder(nullptr); }

    ScriptFolder folder;
    std::unique_ptr<Copy> first;
    std::unique_ptr<Copy> second;
    std::string firstAlone;
};

TEST_F(SideBySide, EachDrawsByItsOwnScriptsAndModules)
{
    const std::string secondsOwn = second->draw();
    EXPECT_NE(secondsOwn, firstAlone);
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(first->draw(), firstAlone);
        EXPECT_EQ(second->draw(), secondsOwn);
    }
    EXPECT_EQ(first->ask("param.P2"), "165");
    EXPECT_EQ(second->ask("param.P2"), "265");
}

TEST_F(SideBySide, ParametersReachOneOnly)
{
    const std::string secondsOwn = second->draw();
    ASSERT_TRUE(first->scriptor.setKeyValues({{"P1", "", KVValue::ofDouble(203.0)}}, 2.0));
    ASSERT_TRUE(first->scriptor.setConstFactor(2.0));
    const std::string changed = first->draw();
    EXPECT_NE(changed, firstAlone);
    EXPECT_EQ(second->draw(), secondsOwn);
    EXPECT_EQ(second->ask("param.P1 .. ' ' .. glb.factor"), "150 1");
    ASSERT_TRUE(second->scriptor.clearParam("glb"));
    EXPECT_EQ(first->draw(), changed);
}

TEST_F(SideBySide, GlobalsAndModulesAreEachOnesOwn)
{
    second->run("marker = 'second'; require('kind').CYLINDER = 3; string.format = nil");
    EXPECT_EQ(first->ask("marker"), "nil");
    EXPECT_EQ(first->ask("require('kind').CYLINDER"), "2");
    EXPECT_EQ(first->ask("type(string.format)"), "function");
    EXPECT_EQ(first->draw(), firstAlone);
}

TEST_F(SideBySide, ReloadOfOneLeavesTheOtherAsItIs)
{
    const std::string secondsOwn = second->draw();
    const long long secondsTime = second->scriptor.get_mtime();
    second->run("param.P1 = 400");
    const std::string changed = second->draw();
    ASSERT_NE(changed, secondsOwn);

    change(folder, "first/components/gate_valve.lua", "P9 = 320,", "P9 = 640,", 2000);
    ASSERT_EQ(first->scriptor.reloadLua(2), Quor::Ok);
    EXPECT_EQ(first->scriptor.get_mtime(), 2000);
    EXPECT_NE(first->draw(), firstAlone);
    EXPECT_EQ(first->ask("param.P9"), "640");

    EXPECT_EQ(second->scriptor.reloadLua(2), Quor::Ok) << "unchanged: not run again";
    EXPECT_EQ(second->scriptor.get_mtime(), secondsTime);
    EXPECT_EQ(second->draw(), changed);
}

TEST_F(SideBySide, DrawingAttributesOfOneDoNotColourTheOther)
{
    // No colour, thickness or line type of its own.
    second->run("function plain() return { { 16, { 0, 0, 0 }, { 1, 0, 0 } } } end");
    const std::string uncoloured = second->draw("plain");
    const std::string symbol = first->draw("symbol");
    EXPECT_THAT(symbol, testing::HasSubstr("color=2"));
    EXPECT_EQ(second->draw("plain"), uncoloured);
    EXPECT_EQ(first->draw("symbol"), symbol);
}

/// Answers a view direction.
class ViewFunctor final : public SilentFunctor {
public:
    explicit ViewFunctor(double x) : x_(x) {}

    bool getPsView(KxGeVector3D& direction) const override
    {
        direction.set(x_, 0, 0);
        return true;
    }

private:
    double x_;
};

TEST_F(SideBySide, EachAsksTheFunctorThatItWasGiven)
{
    const ViewFunctor one(1);
    const ViewFunctor two(2);
    first->scriptor.setFunction(&one);
    EXPECT_EQ(second->ask("(glib.getPsView())"), "nil") << "it was given none";
    second->scriptor.setFunction(&two);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(first->ask("glib.getPsView()[1]"), "1");
        EXPECT_EQ(second->ask("glib.getPsView()[1]"), "2");
    }
    first->scriptor.setFunction(nullptr);
    EXPECT_EQ(first->ask("(glib.getPsView())"), "nil");
    EXPECT_EQ(second->ask("glib.getPsView()[1]"), "2");
    second->scriptor.setFunction(nullptr);
}

TEST_F(SideBySide, OneStaysWhenTheOtherIsGone)
{
    second.reset();
    EXPECT_EQ(first->draw(), firstAlone);
    second = std::make_unique<Copy>(folder, "second");
    EXPECT_NE(second->draw(), firstAlone);
    EXPECT_EQ(first->draw(), firstAlone);
}

} // namespace

// Scripts that were not written to their end, as a first load and as a reload. With QUOR_FULL_SWEEPS set
// every prefix has its turn, else every eleventh.

#include "../scriptor/scriptor_fixture.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <cstdlib>
#include <set>

namespace {

/// A component, one with texts in GBK, and a configuration script.
constexpr const char* scripts[] = {"sample/project/components/reducer.lua",
                                   "sample/project/components/gate_valve.lua",
                                   "sample/installation/bin/quorModuleSystem.lua"};

std::string bytesOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class Prefix : public testing::TestWithParam<const char*> {
protected:
    Prefix() : whole(bytesOf(std::string(QUOR_SOURCE_DIR "/") + GetParam())), path(folder.path("script.lua"))
    {
        lua_tinker::set_error_outlet([](const char*, std::size_t, void*) {}, nullptr);
        QuorSystem::setInstallationFolder(QUOR_SOURCE_DIR "/sample/installation");
    }
    ~Prefix() override
    {
        QuorSystem::setInstallationFolder(nullptr);
        lua_tinker::set_error_outlet(nullptr, nullptr);
    }

    /// From all of the script down to nothing.
    template<class Look>
    void forEachPrefix(Look look)
    {
        ASSERT_GT(whole.size(), 1000u);
        folder.write("script.lua", whole);
        const std::size_t step = std::getenv("QUOR_FULL_SWEEPS") ? 1 : 11;
        int runs = 0;
        for (std::size_t length = whole.size();; length -= step, ++runs) {
            std::filesystem::resize_file(path, length);
            look(length);
            if (length < step || HasFailure()) break;
        }
        RecordProperty("prefixes", runs);
    }

    bool isComplete(std::size_t length) const
    {
        lua_State* L = luaL_newstate();
        const bool compiles = luaL_loadbuffer(L, whole.data(), length, "prefix") == 0;
        lua_close(L);
        return compiles;
    }

    /// The names of the globals of which an expression of `name` and `value` is true.
    static std::set<std::string> globals(lua_State* L, const std::string& expression)
    {
        std::set<std::string> names;
        const std::string chunk = "local found = {} for name, value in pairs(_G) do if " + expression +
                                  " then found[#found + 1] = name end end return found";
        EXPECT_EQ(luaL_dostring(L, chunk.c_str()), 0) << lua_tostring(L, -1);
        std::vector<std::string> list;
        quorlua::getStringArray(L, -1, list);
        lua_pop(L, 1);
        return {list.begin(), list.end()};
    }

    ScriptFolder folder;
    const std::string whole;
    const std::string path;
};

constexpr const char* saveGlobals = "before = {} for name, value in pairs(_G) do before[name] = value end";
constexpr const char* isNew = "name ~= 'before' and not rawequal(value, before[name])";

/// The globals that a prefix defines in a new scriptor, and the status of its load.
std::pair<Quor::GlibStatus, std::set<std::string>>
firstLoad(const std::string& path, std::set<std::string> (*globals)(lua_State*, const std::string&))
{
    QuorGlibScriptor scriptor;
    lua_State* L = scriptor.getLua(false);
    EXPECT_EQ(luaL_dostring(L, saveGlobals), 0);
    const Quor::GlibStatus status = scriptor.loadFile(path.c_str(), false);
    EXPECT_EQ(lua_gettop(L), 1);
    return {status, globals(L, isNew)};
}

TEST_P(Prefix, IsLoadedOrFailsAndDefinesWhatRan)
{
    std::set<std::string> defined = {"everything"};
    int failures = 0;
    forEachPrefix([&](std::size_t length) {
        const auto [status, names] = firstLoad(path, globals);
        EXPECT_TRUE(status == Quor::Ok || status == Quor::ScriptFailed) << length;
        failures += status != Quor::Ok;
        if (!isComplete(length)) {
            EXPECT_EQ(status, Quor::ScriptFailed) << length;
            EXPECT_THAT(names, testing::IsEmpty()) << length << ": what is no script runs nothing";
        }
        if (length == whole.size()) {
            EXPECT_EQ(status, Quor::Ok);
            defined = names;
            EXPECT_GT(defined.size(), 2u);
        }
        EXPECT_TRUE(std::includes(defined.begin(), defined.end(), names.begin(), names.end())) << length;
    });
    EXPECT_GT(failures, 20);
}

TEST_P(Prefix, ReloadedLeavesWhatItDoesNotDefineAsItWas)
{
    folder.write("script.lua", whole);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(scriptor.loadFile(path.c_str(), false), Quor::Ok);
    lua_State* L = scriptor.getLua(false);
    forEachPrefix([&](std::size_t length) {
        const auto [firstStatus, redefined] = firstLoad(path, globals);
        ASSERT_EQ(luaL_dostring(L, saveGlobals), 0);
        EXPECT_EQ(scriptor.reloadLua(0), firstStatus) << length;
        EXPECT_EQ(lua_gettop(L), 1);
        EXPECT_EQ(scriptor.getLua(false), L) << "the state is kept";
        for (const std::string& name : globals(L, isNew))
            EXPECT_TRUE(redefined.count(name)) << name << " at " << length;
        EXPECT_EQ(globals(L, "type(value) == 'function' and rawequal(value, before[name])").count("main"),
                  redefined.count("main") ? 0u : globals(L, "name == 'main'").size())
            << length;
    });
    // What is whole again runs whole.
    folder.write("script.lua", whole);
    EXPECT_EQ(scriptor.reloadLua(0), Quor::Ok);
}

TEST_P(Prefix, ReloadedIntoANewStateLeavesNothingOfTheOld)
{
    folder.write("script.lua", whole);
    QuorGlibScriptor scriptor;
    ASSERT_EQ(scriptor.loadFile(path.c_str(), false), Quor::Ok);
    forEachPrefix([&](std::size_t length) {
        const auto [firstStatus, defined] = firstLoad(path, globals);
        ASSERT_EQ(luaL_dostring(scriptor.getLua(false), "old = true"), 0);
        EXPECT_EQ(scriptor.reloadLua(1), firstStatus) << length;
        lua_State* L = scriptor.getLua(false);
        ASSERT_NE(L, nullptr);
        EXPECT_THAT(globals(L, "name == 'old'"), testing::IsEmpty()) << length;
        for (const std::string& name : defined)
            EXPECT_EQ(globals(L, "name == '" + name + "'").size(), 1u) << name << " at " << length;
    });
}

INSTANTIATE_TEST_SUITE_P(Of, Prefix, testing::ValuesIn(scripts), [](const auto& script) {
    const std::string name = std::filesystem::path(script.param).stem().string();
    return name;
});

} // namespace

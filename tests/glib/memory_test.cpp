#include "../rationed_memory.h"
#include "primary_state.h"

#include <QuorCommon/QuorSystem.h>
#include <thread>

namespace {

constexpr const char* everything = R"(
    local a, b, x, y, z = {1, 2, 3}, {4, 5, 7}, {1, 0, 0}, {0, 2, 0}, {0, 0, 3}
    local line = {{0, {0, 0, 0}, 0.5, 10, 20}, {1, {4, 5, 6}}}
    return {
        {400, 'a material with a name too long to be kept within a string object'},
        {600, 'a line type with a name too long to be kept within a string object'},
        {10, a, 5}, {16, a, b, 'another line type with a name that is too long for that', 2.5},
        {40, {{24, a, x, y, z, 5, line, {line, line}}, {27, {a, b, a}}, {28, 'NET', line, line}}},
        {41, 1}, {31, a}, {32, 'lib', 'block', a, x, y}, {19, 1, a, 'text', 30},
        {200, {name = 'a text too long to be kept within a string object'}}, {2, a, b, 25, true},
        {31, a, z, x, 0.5, 0, 90, 2.5}}
)";

constexpr std::size_t whole = 10;

class Exhausted : public PrimaryState {};

TEST_F(Exhausted, MemoryOfTheHostEndsTheWalkWithWhatWasBuilt)
{
    run(everything, 1);
    run("_ALERT = nil");
    std::size_t made = 0;
    int failures = 0;
    bool isRefused = true;
    for (long blocks = 0; isRefused; ++blocks) {
        ASSERT_LT(blocks, 1000);
        const long refusedBefore = rationed::refused;
        std::vector<QuorPrimary*> list;
        testing::internal::CaptureStderr();
        rationed::allowed = blocks;
        const Quor::GlibStatus status = quorlua::parse_primary_byidx(L, 1, list);
        rationed::allowed = -1;
        testing::internal::GetCapturedStderr();
        EXPECT_EQ(status, Quor::Ok);
        EXPECT_EQ(lua_gettop(L), 1);
        isRefused = rationed::refused != refusedBefore;
        made = list.size();
        EXPECT_LE(made, whole);
        failures += isRefused;
        for (const QuorPrimary* primitive : list)
            EXPECT_FALSE(printed(*primitive).empty());
        for (const QuorPrimary* primitive : list)
            delete primitive;
    }
    EXPECT_EQ(made, whole);
    EXPECT_GT(failures, 20);
    lua_pop(L, 1);
}

/// Parses everything in states that refuse every request for memory from a given one on; the last number of
/// primitives.
std::size_t parseRationed(bool parsedBefore)
{
    std::size_t made = 0;
    for (int left = 0; left < 40; ++left) {
        RationedState state;
        if (!state.L) return whole; // the engine takes no allocator
        EXPECT_EQ(luaL_loadstring(state.L, everything), 0);
        EXPECT_EQ(lua_pcall(state.L, 0, 1, 0), 0);
        std::vector<QuorPrimary*> list;
        testing::internal::CaptureStderr();
        if (parsedBefore) {
            EXPECT_EQ(quorlua::parse_primary_byidx(state.L, 1, list), Quor::Ok);
            for (const QuorPrimary* primitive : list)
                delete primitive;
            list.clear();
        }
        state.left = left;
        const Quor::GlibStatus status = quorlua::parse_primary_byidx(state.L, 1, list);
        state.left = -1;
        testing::internal::GetCapturedStderr();
        EXPECT_EQ(status, Quor::Ok);
        EXPECT_EQ(lua_gettop(state.L), 1);
        EXPECT_LE(list.size(), whole);
        made = list.size();
        for (const QuorPrimary* primitive : list)
            delete primitive;
    }
    return made;
}

TEST(ExhaustedState, RaisesNothingWithEveryRequestRefused)
{
    EXPECT_EQ(parseRationed(true), whole);
}

TEST(ExhaustedState, RaisesNothingInAStateThatParsesForTheFirstTime)
{
    EXPECT_EQ(parseRationed(false), whole);
}

/// A path's places, with the first ones left out that it had before.
Texts placesAfter(const std::string& before, const std::string& path)
{
    Texts places;
    std::istringstream added(path.substr(std::min(before.size(), path.size())));
    for (std::string place; std::getline(added, place, ';');)
        if (!place.empty()) places.push_back(place);
    return places;
}

TEST(ExhaustedHost, LeavesPlacesOutOfTheSearchPath)
{
    // Too long to be kept within a string object.
    QuorSystem::setInstallationFolder("/an/installation/folder/with/a/long/name");
    int failures = 0;
    long refused = 1;
    for (long blocks = 0; refused != 0; ++blocks) {
        ASSERT_LT(blocks, 100);
        QuorGlibScriptor scriptor;
        lua_State* L = scriptor.getLua(false);
        const std::string before = luatext::shown(L, "package.path");
        lua_getglobal(L, "glib");
        lua_getfield(L, -1, "setpath");
        int status = -1;
        // The path service keeps a thread's texts and their memory: so a thread that never asked.
        std::thread thread([&] {
            rationed::allowed = blocks;
            status = lua_pcall(L, 0, LUA_MULTRET, 0);
            rationed::allowed = -1;
            refused = rationed::refused; // on this thread
        });
        thread.join();
        EXPECT_EQ(status, 0) << blocks;
        EXPECT_EQ(lua_gettop(L), 2) << "the results of " << blocks;
        const Texts places = placesAfter(before, luatext::shown(L, "package.path"));
        if (refused == 0) {
            EXPECT_EQ(places.size(), 5u);
        }
        failures += places.size() < 5;
        for (const std::string& place : places)
            EXPECT_THAT(place, testing::StartsWith(sys::pathOf("/an/installation/folder/with/a/long/name/")))
                << blocks;
    }
    EXPECT_GE(failures, 5);
    QuorSystem::setInstallationFolder(nullptr);
}

} // namespace

// Every bound of the library one below it, at it, and one above.

#include "../config/config_fixture.h"
#include "operations.h"

namespace {

using namespace failures;

std::string with(const char* chunk, int number)
{
    return "local n = " + std::to_string(number) + " " + chunk;
}

/// How many primitives a table gives.
std::size_t primitivesOf(Setting& setting, const std::string& chunk)
{
    setting.begin();
    EXPECT_EQ(luaL_dostring(setting.L, chunk.c_str()), 0) << lua_tostring(setting.L, -1);
    EXPECT_EQ(quorlua::parse_primary_byidx(setting.L, -1, setting.primitives), Quor::Ok);
    return setting.primitives.size();
}

TEST(Bounds, OfTheDepthOfGroups)
{
    Setting setting;
    const char* deep = "local t = {{10, {1, 2, 3}, 5}} for i = 1, n do t = {{40, t}} end return t";
    EXPECT_EQ(primitivesOf(setting, with(deep, 1023)), 1u);
    EXPECT_EQ(primitivesOf(setting, with(deep, 1024)), 1u);
    EXPECT_EQ(primitivesOf(setting, with(deep, 1025)), 0u);
}

TEST(Bounds, OfTheRecordsInGroups)
{
    constexpr int most = 2 * 1024 * 1024;
    Setting setting;
    EXPECT_EQ(luaL_dostring(setting.L,
                            with("many = {} local r = {} for i = 1, n do many[i] = r end", most - 2).c_str()),
              0);
    const char* add = "many[#many + 1] = {10, {1, 2, 3}, 5} return {{40, many}}";
    EXPECT_EQ(primitivesOf(setting, add), 1u) << "one below the bound";
    EXPECT_EQ(primitivesOf(setting, add), 2u) << "at the bound";
    EXPECT_EQ(primitivesOf(setting, add), 2u) << "the one above it is skipped";
}

TEST(Bounds, OfLengthsThatAreCountedThrough)
{
    Setting setting;
    for (const int length : {65535, 65536, 65537}) {
        const std::string chunk =
            with("local t = {} for i = 1, n do t[i] = 'x' end t[5] = 5 return t", length);
        setting.begin();
        ASSERT_EQ(luaL_dostring(setting.L, chunk.c_str()), 0);
        EXPECT_TRUE(quorlua::getStringArray(setting.L, -1, setting.texts));
        EXPECT_EQ(setting.texts.size(), static_cast<std::size_t>(length - 1)) << "the number is skipped";
    }
}

TEST(Bounds, OfTheEntriesOfAModule)
{
    for (const int count : {9999, 10000, 10001}) {
        quorlua::LuaLRegHelper lists;
        std::vector<luaL_Reg> many(static_cast<std::size_t>(count),
                                   luaL_Reg{"f", [](lua_State*) { return 0; }});
        many.push_back({nullptr, nullptr});
        const luaL_Reg none[] = {{nullptr, nullptr}};
        lists.addLuaRegFunc("module", many.data());
        lists.addLuaRegFunc("module", none);
        const luaL_Reg* merged = lists.get_reg().at("module");
        int merges = 0;
        while (merged[merges].name)
            ++merges;
        EXPECT_EQ(merges, std::min(count, 10000));
    }
}

using BoundsOfConfig = Config;

TEST_F(BoundsOfConfig, OfQuestionsWithinQuestions)
{
    // By turns in two states: in one alone the interpreter's own bound may come first.
    ASSERT_TRUE(loadProject("function getProjectUser() return probe.again() end"));
    ASSERT_TRUE(loadSystem("function initConfig() end function escape_dbkey() return probe.again() end"));
    static int depth = 0;
    static int wanted = 0;
    Probe::again = []() -> const char* {
        if (++depth == wanted) return "the last";
        return depth % 2 == 1 ? quorconfig::escape_dbkey("key") : quorconfig::getProjectUserDbPath();
    };
    const auto answerAt = [](int questions) {
        depth = 0;
        wanted = questions;
        return textOr(quorconfig::getProjectUserDbPath());
    };
    quorconfig::permitNullReturn(true);
    EXPECT_EQ(answerAt(99), "the last");
    EXPECT_EQ(answerAt(100), "the last");
    EXPECT_NE(answerAt(101), "the last");
    EXPECT_EQ(answerAt(100), "the last") << "again";
}

} // namespace

#include "scriptor_fixture.h"

#include <cstring>

namespace {

using quorlua::addRegLuaModule;
using quorlua::LuaLRegHelper;
using testing::ElementsAre;

template<int number>
int answer(lua_State* L)
{
    lua_pushnumber(L, number);
    return 1;
}

std::vector<std::string> namesOf(const luaL_Reg* list)
{
    std::vector<std::string> names;
    for (; list->name; ++list)
        names.emplace_back(list->name);
    return names;
}

TEST(Registry, KeepsTheFirstListByPointer)
{
    LuaLRegHelper registry;
    const luaL_Reg list[] = {{"one", answer<1>}, {nullptr, nullptr}};
    EXPECT_TRUE(registry.get_reg().empty());
    registry.addLuaRegFunc("module", list);
    ASSERT_EQ(registry.get_reg().size(), 1u);
    EXPECT_EQ(registry.get_reg().at("module"), list);
}

TEST(Registry, IgnoresNullAndEmptyArguments)
{
    LuaLRegHelper registry;
    const luaL_Reg list[] = {{"one", answer<1>}, {nullptr, nullptr}};
    registry.addLuaRegFunc(nullptr, list);
    registry.addLuaRegFunc("", list);
    registry.addLuaRegFunc("module", nullptr);
    EXPECT_TRUE(registry.get_reg().empty());
    registry.addLuaRegFunc("module", list);
    registry.addLuaRegFunc("module", nullptr);
    EXPECT_EQ(registry.get_reg().at("module"), list);
}

TEST(Registry, MergesALaterListBehindTheFirst)
{
    LuaLRegHelper registry;
    const luaL_Reg first[] = {{"a", answer<1>}, {"b", answer<2>}, {nullptr, nullptr}};
    const luaL_Reg second[] = {{"b", answer<3>}, {"c", answer<4>}, {nullptr, nullptr}};
    registry.addLuaRegFunc("module", first);
    registry.addLuaRegFunc("module", second);
    const luaL_Reg* merged = registry.get_reg().at("module");
    EXPECT_THAT(namesOf(merged), ElementsAre("a", "b", "b", "c"));
    EXPECT_EQ(merged[0].func, answer<1>);
    EXPECT_EQ(merged[2].func, answer<3>);
    EXPECT_EQ(merged[4].func, nullptr);
    EXPECT_NE(merged[0].name, first[0].name) << "names are copies";
    registry.addLuaRegFunc("module", first);
    EXPECT_THAT(namesOf(registry.get_reg().at("module")), ElementsAre("a", "b", "b", "c", "a", "b"));
    EXPECT_THAT(namesOf(first), ElementsAre("a", "b")) << "the caller's lists are left alone";
}

TEST(Registry, MergesUpToTheFirstEntryWithoutNameOrFunction)
{
    LuaLRegHelper registry;
    const luaL_Reg first[] = {
        {"a", answer<1>}, {"no function", nullptr}, {"b", answer<2>}, {nullptr, nullptr}};
    const luaL_Reg second[] = {{"c", answer<3>}, {nullptr, answer<4>}, {"d", answer<4>}, {nullptr, nullptr}};
    registry.addLuaRegFunc("module", first);
    registry.addLuaRegFunc("module", second);
    EXPECT_THAT(namesOf(registry.get_reg().at("module")), ElementsAre("a", "c"));
}

TEST(Registry, MergesEmptyLists)
{
    LuaLRegHelper registry;
    const luaL_Reg empty[] = {{nullptr, nullptr}};
    const luaL_Reg list[] = {{"a", answer<1>}, {nullptr, nullptr}};
    registry.addLuaRegFunc("none", empty);
    registry.addLuaRegFunc("none", empty);
    EXPECT_THAT(namesOf(registry.get_reg().at("none")), ElementsAre());
    registry.addLuaRegFunc("none", list);
    EXPECT_THAT(namesOf(registry.get_reg().at("none")), ElementsAre("a"));
}

TEST(Registry, MergesAtMostTenThousandEntriesOfEachList)
{
    LuaLRegHelper registry;
    std::vector<luaL_Reg> many(10001, luaL_Reg{"f", answer<1>});
    many.push_back({nullptr, nullptr});
    const luaL_Reg last[] = {{"last", answer<2>}, {nullptr, nullptr}};
    registry.addLuaRegFunc("module", many.data());
    registry.addLuaRegFunc("module", last);
    const luaL_Reg* merged = registry.get_reg().at("module");
    EXPECT_STREQ(merged[9999].name, "f");
    EXPECT_STREQ(merged[10000].name, "last");
    EXPECT_EQ(merged[10001].name, nullptr);
}

TEST(Registry, OrdersModulesByName)
{
    LuaLRegHelper registry;
    const luaL_Reg list[] = {{nullptr, nullptr}};
    for (const char* name : {"b", "a.b", "a", "B"})
        registry.addLuaRegFunc(name, list);
    std::vector<std::string> names;
    for (const auto& entry : registry.get_reg())
        names.push_back(entry.first);
    EXPECT_THAT(names, ElementsAre("B", "a", "a.b", "b"));
}

class Modules : public Scriptor {};

TEST_F(Modules, AreInStatesMadeAfterwards)
{
    static const luaL_Reg list[] = {{"one", answer<1>}, {"two", answer<2>}, {nullptr, nullptr}};
    static const luaL_Reg later[] = {{"two", answer<22>}, {nullptr, nullptr}};
    addRegLuaModule("quortest_modules", list);
    addRegLuaModule("quortest_modules", later);
    EXPECT_EQ(shown("quortest_modules"), "nil") << "this state was made before";
    QuorGlibScriptor fresh;
    lua_getglobal(fresh.getLua(false), "quortest_modules");
    EXPECT_TRUE(lua_istable(fresh.getLua(false), -1));
    scriptor.initLua();
    EXPECT_EQ(shown("quortest_modules.one()"), "1");
    EXPECT_EQ(shown("quortest_modules.two()"), "22") << "the newer module's function wins";
    EXPECT_EQ(height(), 1);
}

TEST_F(Modules, AreOpenedInTheOrderOfTheirNames)
{
    // Opened first, the shorter name's function is in the way of the longer name's table.
    static const luaL_Reg inner[] = {{"f", answer<1>}, {nullptr, nullptr}};
    static const luaL_Reg outer[] = {{"sub", answer<2>}, {nullptr, nullptr}};
    addRegLuaModule("quortest_order.sub", inner);
    addRegLuaModule("quortest_order", outer);
    scriptor.initLua();
    EXPECT_EQ(shown("quortest_order.sub()"), "2");
    EXPECT_EQ(shown("package.loaded['quortest_order.sub']"), "nil");
    EXPECT_EQ(shown("type(mirt_get_luafile)"), "function") << "a module that cannot be opened stops nothing";
}

TEST_F(Modules, AreNotAddedToAStateWhoseStackIsFull)
{
    static const luaL_Reg list[] = {{"one", answer<1>}, {nullptr, nullptr}};
    lua_State* L = scriptor.getLua(false);
    while (lua_gettop(L) < LUAI_MAXCSTACK && lua_checkstack(L, 1))
        lua_pushnil(L);
    ASSERT_EQ(lua_gettop(L), LUAI_MAXCSTACK);
    scriptor.addLib("quortest_added", list);
    EXPECT_EQ(lua_gettop(L), LUAI_MAXCSTACK);
    lua_settop(L, 1);
    EXPECT_EQ(shown("quortest_added"), "nil");
    scriptor.addLib("quortest_added", list);
    EXPECT_EQ(shown("quortest_added.one()"), "1");
}

TEST_F(Modules, FirstPrintfOfAcaduiBecomesAlert)
{
    static const luaL_Reg without[] = {{"print", answer<1>}, {nullptr, nullptr}};
    static const luaL_Reg with[] = {
        {"other", answer<2>}, {"printf", answer<3>}, {"printf", answer<4>}, {nullptr, nullptr}};
    addRegLuaModule("acaduix", with);
    addRegLuaModule("acadui", without);
    scriptor.initLua();
    EXPECT_EQ(shown("_ALERT"), "nil");
    EXPECT_EQ(shown("acadui.print()"), "1");
    addRegLuaModule("acadui", with);
    scriptor.initLua();
    EXPECT_EQ(shown("_ALERT()"), "3") << "the first entry of that name";
    EXPECT_EQ(shown("acadui.printf()"), "4") << "the last entry of that name";
    EXPECT_EQ(height(), 1);
}

} // namespace

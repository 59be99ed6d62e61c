// What the sample's "bin\serialObject.lua" refuses to write, and what it is without the host.

#include "serializer_fixture.h"

namespace {

using testing::ElementsAre;

/// What cannot be written, and the message's end, which tells where it is.
class Unwritable : public Serializer {};

TEST_F(Unwritable, IsNamedWithItsPlace)
{
    const struct {
        const char* expression;
        const char* message;
    } cases[] = {
        {"nil", "nil cannot be written: value"},
        {"print", "a function cannot be written: value"},
        {"coroutine.create(function() end)", "a thread cannot be written: value"},
        {"newproxy()", "a userdata cannot be written: value"},
        {"io.stdout", "a userdata cannot be written: value"},
        {"{f = print}", "a function cannot be written: value.f"},
        {"{1, {2, print}}", "a function cannot be written: value[2][2]"},
        {"{a = {['b c'] = {[true] = {[int64(5)] = {[1.5] = print}}}}}",
         "a function cannot be written: value.a[\"b c\"][true][#5][1.5]"},
        {"{['\\n\"'] = {print}}", "a function cannot be written: value[\"\\0A\\22\"][1]"},
        {"{a = {[print] = 1}}", "a function cannot be written: value.a{key}"},
        {"{[{x = {print}}] = 1}", "a function cannot be written: value{key}.x[1]"},
        {"{[newproxy()] = 1}", "a userdata cannot be written: value{key}"},
        {"{[{1}] = newproxy()}", "a userdata cannot be written: value[table]"},
        {"{[int64(1)] = 1, [newproxy()] = 1, [int64(2)] = 2}", "a userdata cannot be written: value{key}"},
        {"{[('k'):rep(100)] = print}",
         "a function cannot be written: value[\"kkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkk\"...]"},
    };
    for (const auto& [expression, message] : cases) {
        alerts.clear();
        EXPECT_EQ(written(expression), "(null)") << expression;
        EXPECT_THAT(alerts, ElementsAre(std::string("serializeTable: ") + message)) << expression;
    }
}

TEST_F(Unwritable, AndDeepHasAPathWithAGap)
{
    EXPECT_EQ(written("(function() local t = {f = print} for i = 30, 1, -1 do t = {['k' .. i] = t} end "
                      "return t end)()"),
              "(null)");
    EXPECT_THAT(alerts, ElementsAre(testing::EndsWith(
                            "value.k1.k2.k3.k4.k5....k22.k23.k24.k25.k26.k27.k28.k29.k30.f")));
    alerts.clear();
    EXPECT_EQ(written("(function() local t = {print} for i = 1, 100000 do t = {t} end return t end)()"),
              "(null)");
    EXPECT_THAT(alerts,
                ElementsAre(testing::EndsWith("value[1][1][1][1][1]...[1][1][1][1][1][1][1][1][1][1]")));
}

TEST_F(Unwritable, LeavesTheSerializerAsItWas)
{
    EXPECT_EQ(written("{print}"), "(null)");
    EXPECT_EQ(written("{1}"), headed("{1}"));
}

TEST(SerialScript, AddsTwoGlobalsAlone)
{
    lua_State* L = luaL_newstate();
    luaL_openlibs(L);
    ASSERT_EQ(luaL_dostring(L, "before = {} for name in pairs(_G) do before[name] = true end"), 0);
    ASSERT_EQ(luaL_dofile(L, QUOR_SOURCE_DIR "/sample/installation/bin/serialObject.lua"), 0)
        << lua_tostring(L, -1);
    ASSERT_EQ(luaL_dostring(L,
                            "local added = {} for name in pairs(_G) do"
                            " if not before[name] and name ~= 'before' then added[#added + 1] = name end end"
                            " table.sort(added) return table.concat(added, ' ')"),
              0);
    EXPECT_STREQ(lua_tostring(L, -1), "serializeTable unSerializeTable");
    lua_close(L);
}

TEST(SerialScript, RunsInAnyStateButThenHasNoIds)
{
    lua_State* L = luaL_newstate();
    luaL_openlibs(L);
    ASSERT_EQ(luaL_dofile(L, QUOR_SOURCE_DIR "/sample/installation/bin/serialObject.lua"), 0)
        << lua_tostring(L, -1);
    ASSERT_EQ(luaL_dostring(L, "return serializeTable(unSerializeTable('quor-table 1 {1,\"a\"={2.5}}'))"), 0)
        << lua_tostring(L, -1);
    EXPECT_STREQ(lua_tostring(L, -1), "quor-table 1 {1,\"a\"={2.5}}");
    EXPECT_NE(luaL_dostring(L, "return unSerializeTable('quor-table 1 {#5}')"), 0);
    EXPECT_STREQ(lua_tostring(L, -1), "unSerializeTable: a 64-bit integer is expected at byte 15");
    EXPECT_NE(luaL_dostring(L, "return serializeTable({io.stdout})"), 0);
    EXPECT_STREQ(lua_tostring(L, -1), "serializeTable: a userdata cannot be written: value[1]");
    lua_close(L);
}

} // namespace

#include "marshal_state.h"

#include <QuorScriptor/geometry.h>
#include <chrono>

namespace {

using namespace quorlua;
using namespace std::chrono_literals;
using std::chrono::steady_clock;

class Arrays : public MarshalState {
protected:
    std::vector<KxGePoint3D> points{{7, 8, 9}};
    std::vector<KxDbObjectId> ids{KxDbObjectId(7)};
    std::vector<std::string> texts{"before"};
};

TEST_F(Arrays, AreSequencesInOrder)
{
    push("{}");
    const std::vector<KxGePoint3D> somePoints = {{1, 2, 3}, {4, 5, 6}};
    const std::vector<KxDbObjectId> someIds = {KxDbObjectId(5), KxDbObjectId(-6), KxDbObjectId(1LL << 60)};
    const std::vector<std::string> someTexts = {"one", "", "\xD6\xD0"};
    {
        const SameHeight same(L);
        setKxGePointArray(L, 1, somePoints);
        EXPECT_TRUE(getKxGePointArray(L, -1, points));
        EXPECT_EQ(points, somePoints);
    }
    EXPECT_EQ(popDescribed(), "{{1,2,3},{4,5,6}}");
    push("{}");
    {
        const SameHeight same(L);
        setKxDbObjectIdArray(L, -1, someIds);
        EXPECT_TRUE(getKxDbObjectIdArray(L, 1, ids));
        EXPECT_EQ(ids, someIds);
    }
    EXPECT_EQ(popDescribed(), "{userdata 5,userdata -6,userdata 1152921504606846976}");
    push("{}");
    {
        const SameHeight same(L);
        setStringArray(L, -1, someTexts);
        EXPECT_TRUE(getStringArray(L, -1, texts));
        EXPECT_EQ(texts, someTexts);
    }
    EXPECT_EQ(popDescribed(), "{\"one\",\"\",\"\\214\\208\"}");
}

TEST_F(Arrays, SkipWhatCannotBeRead)
{
    push("{{1,2,3}, 'bad', {4,5,6}}");
    EXPECT_TRUE(getKxGePointArray(L, 1, points));
    EXPECT_EQ(points, (std::vector<KxGePoint3D>{{1, 2, 3}, {4, 5, 6}}));

    push("{'5', int64(5), {}, 6, true, newproxy(), print}");
    EXPECT_TRUE(getKxDbObjectIdArray(L, 2, ids));
    EXPECT_EQ(ids, (std::vector<KxDbObjectId>{KxDbObjectId(5), KxDbObjectId(6), KxDbObjectId(0)}));

    push("{'one', 2, true, {}, 'three', print}");
    EXPECT_TRUE(getStringArray(L, 3, texts));
    EXPECT_EQ(texts, (std::vector<std::string>{"one", "three"}));
    EXPECT_EQ(lua_gettop(L), 3);
}

TEST_F(Arrays, OfNothingReadableAreEmptyAndFalse)
{
    for (const char* table : {"{}", "{true, true}", "{name = {1,2,3}}", "nil", "12", "'text'", "print",
                              "light", "newproxy()", "true"}) {
        points = {{7, 8, 9}};
        ids = {KxDbObjectId(7)};
        texts = {"before"};
        push(table);
        const SameHeight same(L);
        EXPECT_FALSE(getKxGePointArray(L, -1, points)) << table;
        EXPECT_FALSE(getKxDbObjectIdArray(L, -1, ids)) << table;
        EXPECT_FALSE(getStringArray(L, -1, texts)) << table;
        EXPECT_TRUE(points.empty()) << table;
        EXPECT_TRUE(ids.empty()) << table;
        EXPECT_TRUE(texts.empty()) << table;
    }
}

TEST_F(Arrays, AreClearedWithoutASlotOrAState)
{
    EXPECT_FALSE(getKxGePointArray(L, 1, points));
    EXPECT_FALSE(getKxDbObjectIdArray(L, -3, ids));
    EXPECT_FALSE(getStringArray(nullptr, 1, texts));
    EXPECT_TRUE(points.empty());
    EXPECT_TRUE(ids.empty());
    EXPECT_TRUE(texts.empty());
}

TEST_F(Arrays, TextsEndAtTheirFirstNul)
{
    push("{'a\\0b'}");
    EXPECT_TRUE(getStringArray(L, 1, texts));
    EXPECT_EQ(texts, (std::vector<std::string>{"a"}));
    setStringArray(L, 1, {std::string("c\0d", 3)});
    EXPECT_EQ(popDescribed(), "{\"c\"}");
}

TEST_F(Arrays, OverwriteWhatTheTableHolds)
{
    push("{'a', 'b', 'c', name = 'kept'}");
    setStringArray(L, 1, {"x", "y"});
    setKxGePointArray(L, 1, {});
    setKxDbObjectIdArray(L, 1, {});
    EXPECT_EQ(popDescribed(), "{\"x\",\"y\",\"c\",name=\"kept\"}");
}

TEST_F(Arrays, AreReadAndWrittenPastMetamethods)
{
    push("setmetatable({}, {__index = error, __newindex = error, __len = error})");
    setStringArray(L, 1, {"x"});
    setKxGePointArray(L, 1, {{1, 2, 3}});
    EXPECT_TRUE(getKxGePointArray(L, 1, points));
    EXPECT_EQ(points.size(), 1u);
    EXPECT_TRUE(alerts.empty());
}

TEST_F(Arrays, NeedATableToBeWritten)
{
    for (const char* value : {"nil", "12", "'text'", "newproxy()", "print"}) {
        push(value);
        const SameHeight same(L);
        setKxGePointArray(L, -1, {{1, 2, 3}});
        setKxDbObjectIdArray(L, -1, {KxDbObjectId(1)});
        setStringArray(L, -1, {"x"});
        setStringArray(L, 90, {"x"});
        setStringArray(L, 0, {"x"});
    }
    setKxGePointArray(nullptr, 1, {{1, 2, 3}});
    setKxDbObjectIdArray(nullptr, 1, {KxDbObjectId(1)});
    setStringArray(nullptr, 1, {"x"});
    EXPECT_TRUE(alerts.empty());
}

TEST_F(Arrays, OfManyEntriesAreWhole)
{
    push("{}");
    std::vector<KxGePoint3D> many;
    for (int i = 0; i < 100000; ++i)
        many.emplace_back(i, i + 1, i + 2);
    setKxGePointArray(L, 1, many);
    EXPECT_TRUE(getKxGePointArray(L, 1, points));
    EXPECT_EQ(points, many);
}

// Tables whose length is claimed to be millions of times their entries.
const char* const lyingTable = R"(
    local t = {}
    for i = 0, 30 do t[2^i] = value end
    t[2^24 + 1] = value
    t.name = value
    t[-1] = value
    t[2.5] = value
    t[0] = value
    return t
)";

TEST_F(Arrays, WithALyingLengthEndFast)
{
    const auto start = steady_clock::now();
    for (const char* value : {"value = {1,2,3}", "value = 7", "value = 'text'"}) {
        run(value);
        run(lyingTable, 1);
        const SameHeight same(L);
        getKxGePointArray(L, -1, points);
        getKxDbObjectIdArray(L, -1, ids);
        getStringArray(L, -1, texts);
    }
    EXPECT_LT(steady_clock::now() - start, 2s);
    EXPECT_EQ(lua_gettop(L), 3);
}

TEST_F(Arrays, WithHolesKeepTheOrderOfTheirKeys)
{
    // An array part of 2^17 slots, filled but for holes: its length is its size on every engine.
    run("sparse = {}; for i = 1, 131072 do sparse[i] = 'x' end\n"
        "for i = 1, 131071 do if i ~= 5 and i ~= 70000 and i ~= 100000 then sparse[i] = nil end end\n"
        "sparse[5], sparse[70000], sparse[100000], sparse[131072] = 'a', 'b', 'c', 'd'");
    push("sparse");
    ASSERT_EQ(lua_objlen(L, 1), 131072u);
    EXPECT_TRUE(getStringArray(L, 1, texts));
    EXPECT_EQ(texts, (std::vector<std::string>{"a", "b", "c", "d"}));
}

TEST_F(Arrays, OfManyEntriesAreReadBesideKeysThatAreNoneOfTheirs)
{
    run("crowded = {name = 'no', [0] = 'no', [-1] = 'no', [1.5] = 'no', [70000.5] = 'no'}\n"
        "for i = 1, 70000 do crowded[i] = 'x' end");
    push("crowded");
    ASSERT_EQ(lua_objlen(L, 1), 70000u);
    EXPECT_TRUE(getStringArray(L, 1, texts));
    EXPECT_EQ(texts, std::vector<std::string>(70000, "x"));
}

} // namespace

#include "lua_state.h"

#include <QuorPureScriptor/quorlua_helpers.h>
#include <cmath>
#include <limits>

namespace {

using namespace quorlua;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

const std::string binary("a\0b", 3);

std::vector<KVParams> everyTag()
{
    return {
        {"short", "n1", KVValue::ofShort(-7)},
        {"double", "n2", KVValue::ofDouble(0.1)},
        {"point", "n3", KVValue::ofPoint({1, 2.5, -3})},
        {"string", binary, KVValue::ofString(binary)},
        {"int", "", KVValue::ofInt(70000)},
        {"six", "n6", KVValue::ofTag(6)},
        {"seven", "n7", KVValue::ofTag(7)},
        {"none", "n0", KVValue()},
        {"nine", "n9", KVValue::ofTag(9)},
        {"yes", "n8", KVValue::ofBool(true)},
        {binary, "n8", KVValue::ofBool(false)},
    };
}

/// What comes back of a list: integers as doubles, unknown tags not at all.
std::vector<KVParams> read(std::vector<KVParams> records, bool notes)
{
    std::vector<KVParams> kept;
    for (KVParams& record : records) {
        const short tag = static_cast<short>(record.value.tag());
        if (tag < 1 || tag == 6 || tag == 7 || tag > 8) continue;
        if (record.value.tag() == KVTag::Short) record.value = KVValue::ofDouble(record.value.asShort());
        if (record.value.tag() == KVTag::Int) record.value = KVValue::ofDouble(record.value.asInt());
        if (!notes) record.note.clear();
        kept.push_back(record);
    }
    return kept;
}

std::vector<KVData> asData(const std::vector<KVParams>& records)
{
    std::vector<KVData> data;
    for (const KVParams& record : records)
        data.push_back({record.key, record.value});
    return data;
}

class Params : public LuaState {};

TEST_F(Params, OfAMapComeBack)
{
    lua_newtable(L);
    EXPECT_TRUE(setParams(L, -1, everyTag()));
    std::vector<KVParams> records;
    EXPECT_TRUE(getParams(L, -1, records, false));
    EXPECT_THAT(records, UnorderedElementsAreArray(read(everyTag(), false)));
    EXPECT_EQ(lua_gettop(L), 1);
    lua_settop(L, 0);
}

TEST_F(Params, WithNotesComeBack)
{
    lua_newtable(L);
    EXPECT_TRUE(setParams_note(L, -1, everyTag()));
    std::vector<KVParams> records;
    EXPECT_TRUE(getParams_note(L, -1, records, false));
    EXPECT_THAT(records, UnorderedElementsAreArray(read(everyTag(), true)));
    EXPECT_EQ(lua_gettop(L), 1);
    lua_settop(L, 0);
}

TEST_F(Params, OfAnArrayComeBackInOrder)
{
    lua_newtable(L);
    EXPECT_TRUE(setArrayParams(L, -1, everyTag()));
    std::vector<KVParams> records;
    EXPECT_TRUE(getArrayParams(L, -1, records, false));
    EXPECT_EQ(records, read(everyTag(), true));
    lua_newtable(L);
    const std::vector<std::vector<KVParams>> lists = {everyTag(), {}, {{"x", "n", KVValue::ofDouble(1)}}};
    EXPECT_TRUE(setArrayParams(L, -1, lists));
    std::vector<std::vector<KVParams>> back;
    EXPECT_TRUE(getArrayParams(L, -1, back, false));
    EXPECT_THAT(back, ElementsAre(read(lists[0], true), IsEmpty(), lists[2]));
    EXPECT_EQ(lua_gettop(L), 2);
    lua_settop(L, 0);
}

TEST_F(Params, OfADataArrayComeBackInOrder)
{
    lua_newtable(L);
    EXPECT_TRUE(setKVdataArray(L, -1, asData(everyTag())));
    std::vector<KVData> records;
    EXPECT_TRUE(getKVdataArray(L, -1, records, false));
    EXPECT_EQ(records, asData(read(everyTag(), false)));
    EXPECT_EQ(lua_gettop(L), 1);
    lua_settop(L, 0);
}

TEST_F(Params, KeepEveryDouble)
{
    std::vector<KVParams> records;
    for (const double number :
         {0.0, -0.0, 0.1, 1e300, 5e-324, std::numeric_limits<double>::infinity(), 1.0 / 3})
        records.push_back({"k" + std::to_string(records.size()), "", KVValue::ofDouble(number)});
    lua_newtable(L);
    setArrayParams(L, 1, records);
    std::vector<KVParams> back;
    getArrayParams(L, 1, back, false);
    EXPECT_EQ(back, records);
    EXPECT_TRUE(std::signbit(back[1].value.asDouble()));
    lua_settop(L, 0);
}

TEST_F(Params, HaveTheLayoutsOfScripts)
{
    const std::vector<KVParams> one = {{"P1", "length", KVValue::ofDouble(100)}};
    run("map, note, array, nested, data = {}, {}, {}, {}, {}; return map, note, array, nested, data", 5);
    setParams(L, 1, one);
    setParams_note(L, 2, one);
    setArrayParams(L, 3, one);
    setArrayParams(L, 4, std::vector<std::vector<KVParams>>{one});
    setKVdataArray(L, 5, asData(one));
    lua_settop(L, 0);
    EXPECT_EQ(shown("map.P1"), "100");
    EXPECT_EQ(shown("table.concat(note.P1, '|')"), "length|100");
    EXPECT_EQ(shown("table.concat(array[1], '|')"), "P1|100|length");
    EXPECT_EQ(shown("table.concat(nested[1][1], '|')"), "P1|100|length");
    EXPECT_EQ(shown("table.concat(data[1], '|')"), "P1|100");
}

TEST_F(Params, AreAppendedUnlessTheListIsCleared)
{
    run("return {x = 1}, {x = {'n', 1}}, {{'x', 1}}, {{{'x', 1}}}", 4);
    std::vector<KVParams> records(1);
    EXPECT_TRUE(getParams(L, 1, records, false));
    EXPECT_TRUE(getParams_note(L, 2, records, false));
    EXPECT_TRUE(getArrayParams(L, 3, records, false));
    EXPECT_EQ(records.size(), 4u);
    EXPECT_TRUE(getParams(L, 1, records, true));
    EXPECT_EQ(records.size(), 1u);
    EXPECT_TRUE(getParams_note(L, 2, records, true));
    EXPECT_EQ(records.size(), 1u);
    EXPECT_TRUE(getArrayParams(L, 3, records, true));
    EXPECT_EQ(records.size(), 1u);
    std::vector<std::vector<KVParams>> lists(1);
    EXPECT_TRUE(getArrayParams(L, 4, lists, false));
    EXPECT_EQ(lists.size(), 2u);
    EXPECT_TRUE(getArrayParams(L, 4, lists, true));
    EXPECT_EQ(lists.size(), 1u);
    std::vector<KVData> data(1);
    EXPECT_TRUE(getKVdataArray(L, 3, data, false));
    EXPECT_EQ(data.size(), 2u);
    EXPECT_TRUE(getKVdataArray(L, 3, data, true));
    EXPECT_EQ(data.size(), 1u);
    lua_settop(L, 0);
}

TEST_F(Params, NeedATable)
{
    run("return 'text'", 1);
    std::vector<KVParams> records(1);
    std::vector<std::vector<KVParams>> lists(1);
    std::vector<KVData> data(1);
    for (const int index : {1, -1, 2, 0, -5}) {
        EXPECT_FALSE(setParams(L, index, records)) << index;
        EXPECT_FALSE(setParams_note(L, index, records)) << index;
        EXPECT_FALSE(setArrayParams(L, index, records)) << index;
        EXPECT_FALSE(setArrayParams(L, index, lists)) << index;
        EXPECT_FALSE(setKVdataArray(L, index, data)) << index;
        setTableKv(L, index, records[0]);
        EXPECT_FALSE(getParams(L, index, records, false)) << index;
        EXPECT_FALSE(getParams_note(L, index, records, false)) << index;
        EXPECT_FALSE(getArrayParams(L, index, records, false)) << index;
        EXPECT_FALSE(getArrayParams(L, index, lists, false)) << index;
        EXPECT_FALSE(getKVdataArray(L, index, data, false)) << index;
        EXPECT_EQ(records.size() + lists.size() + data.size(), 3u) << index;
        EXPECT_EQ(lua_gettop(L), 1);
    }
    EXPECT_FALSE(getParams(nullptr, 1, records, false));
    EXPECT_FALSE(setParams(nullptr, 1, records));
    EXPECT_FALSE(getParams(L, 1, records, true));
    EXPECT_THAT(records, IsEmpty());
    lua_settop(L, 0);
}

TEST_F(Params, OfAMapTakeEveryKeyThatHasAText)
{
    run("return {[1] = 'one', [2.5] = 'half', [1e15] = 'big', name = print, list = {1, 2}, [true] = 'flag', "
        "[print] = 'function', [{}] = 'table'}",
        1);
    std::vector<KVParams> records;
    EXPECT_TRUE(getParams(L, 1, records, false));
    const std::vector<KVParams> expected = {{"1", "", KVValue::ofString("one")},
                                            {"2.5", "", KVValue::ofString("half")},
                                            {"1e+15", "", KVValue::ofString("big")},
                                            {"name", "", KVValue()},
                                            {"list", "", KVValue()}};
    EXPECT_THAT(records, UnorderedElementsAreArray(expected));
    lua_settop(L, 0);
}

TEST_F(Params, WithNotesPassOverOtherShapes)
{
    run("return {angle = 30, P1 = {'note', 100}, P2 = {5, 'text'}, P3 = {}, P4 = 'x', [7] = {'n', true}, "
        "[true] = {'n', 1}, P5 = {'n', {1, 2, 3}}, P6 = {'n', {}}}",
        1);
    std::vector<KVParams> records;
    EXPECT_TRUE(getParams_note(L, 1, records, false));
    const std::vector<KVParams> expected = {{"P1", "note", KVValue::ofDouble(100)},
                                            {"P2", "", KVValue::ofString("text")},
                                            {"P3", "", KVValue()},
                                            {"7", "n", KVValue::ofBool(true)},
                                            {"P5", "n", KVValue::ofPoint({1, 2, 3})},
                                            {"P6", "n", KVValue()}};
    EXPECT_THAT(records, UnorderedElementsAreArray(expected));
    lua_settop(L, 0);
}

TEST_F(Params, OfAnArrayPassOverOtherShapesAndEndAtNil)
{
    run("return {{'a', 1, 'n'}, 'text', {}, {7, 2}, {true, 3}, {'b'}, {'c', nil, 5}, nil, {'after', 1}}", 1);
    std::vector<KVParams> records;
    EXPECT_TRUE(getArrayParams(L, 1, records, false));
    EXPECT_THAT(records,
                ElementsAre(KVParams{"a", "n", KVValue::ofDouble(1)}, KVParams{"7", "", KVValue::ofDouble(2)},
                            KVParams{"b", "", KVValue()}, KVParams{"c", "", KVValue()}));
    std::vector<KVData> data;
    EXPECT_TRUE(getKVdataArray(L, 1, data, false));
    EXPECT_THAT(data, ElementsAre(KVData{"a", KVValue::ofDouble(1)}, KVData{"7", KVValue::ofDouble(2)},
                                  KVData{"b", KVValue()}, KVData{"c", KVValue()}));
    std::vector<std::vector<KVParams>> lists;
    EXPECT_TRUE(getArrayParams(L, 1, lists, false));
    EXPECT_EQ(lists.size(), 6u) << "one list for each table";
    lua_settop(L, 0);
}

TEST_F(Params, AreReadPastMetamethods)
{
    run("local strict = {__index = error, __newindex = error, __len = error}\n"
        "return setmetatable({setmetatable({'a', setmetatable({1, 2, 3}, strict)}, strict)}, strict)",
        1);
    std::vector<KVParams> records;
    EXPECT_TRUE(getArrayParams(L, 1, records, false));
    EXPECT_THAT(records, ElementsAre(KVParams{"a", "", KVValue::ofPoint({1, 2, 3})}));
    EXPECT_TRUE(getParams(L, 1, records, true));
    EXPECT_TRUE(getParams_note(L, 1, records, true));
    lua_settop(L, 0);
}

TEST_F(Params, AreWrittenThroughMetamethods)
{
    run("seen = {}; return setmetatable({}, {__newindex = function(_, key, value) seen[key] = value end})",
        1);
    setParams(L, 1, {{"x", "", KVValue::ofDouble(3)}});
    setTableKv(L, 1, {"y", "", KVValue::ofDouble(4)});
    setTableKv(L, 1, {"z", "", KVValue::ofTag(6)});
    lua_settop(L, 0);
    EXPECT_EQ(shown("seen.x .. seen.y .. tostring(seen.z)"), "34nil");
}

TEST_F(Params, ALaterRecordOfAKeyWins)
{
    run("t = {}; return t", 1);
    setParams(L, 1, {{"x", "", KVValue::ofDouble(1)}, {"x", "", KVValue::ofString("two")}});
    EXPECT_EQ(lua_gettop(L), 1);
    lua_settop(L, 0);
    EXPECT_EQ(shown("t.x"), "two");
}

TEST_F(Params, AreNotReadIntoAFullFrame)
{
    run("return {x = 1}", 1);
    fillFrame();
    const int top = lua_gettop(L);
    std::vector<KVParams> records;
    EXPECT_FALSE(getParams(L, 1, records, false));
    EXPECT_THAT(records, IsEmpty());
    EXPECT_EQ(lua_gettop(L), top);
    lua_settop(L, 100);
    lua_pushvalue(L, 1);
    EXPECT_TRUE(getParams(L, -1, records, false));
    EXPECT_EQ(records.size(), 1u);
    lua_settop(L, 0);
}

} // namespace

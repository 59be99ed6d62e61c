// How much the readers of lists read: one below what a list takes, at it, and one above.

#include "ListBounds.h"
#include "lua_state.h"

#include <QuorPureScriptor/quorlua_helpers.h>
#include <ostream>

namespace {

using namespace quorlua;

constexpr std::size_t many = 1000000;

struct List {
    const char* name;
    const char* expression;
    bool (*read)(lua_State* L, std::vector<KVParams>& records);
    std::size_t entries;
    std::size_t bytes;
};

/// The nested form, its lists one behind the other.
bool readNested(lua_State* L, std::vector<KVParams>& records)
{
    std::vector<std::vector<KVParams>> lists;
    const bool read = getArrayParams(L, -1, lists, false);
    for (const std::vector<KVParams>& list : lists)
        records.insert(records.end(), list.begin(), list.end());
    return read;
}

bool readPairs(lua_State* L, std::vector<KVParams>& records)
{
    std::vector<KVData> pairs;
    const bool read = getKVdataArray(L, -1, pairs, false);
    for (const KVData& pair : pairs)
        records.push_back({pair.key, "", pair.value});
    return read;
}

constexpr std::size_t record = sizeof(KVParams);

// Two records each.
const List lists[] = {
    {"Map", "{a = 'vv', b = 'vv'}", [](lua_State* L, auto& out) { return getParams(L, -1, out, false); }, 2,
     2 * (record + 3)},
    {"Notes", "{a = {'n', 'vv'}, b = {'n', 'vv'}}",
     [](lua_State* L, auto& out) { return getParams_note(L, -1, out, false); }, 2, 2 * (record + 4)},
    {"Array", "{{'a', 'vv', 'n'}, {'a', 'vv', 'n'}}",
     [](lua_State* L, auto& out) { return getArrayParams(L, -1, out, false); }, 2, 2 * (record + 4)},
    {"Nested", "(function(list) return {list, list} end)({{'a', 'vv', 'n'}})", readNested, 4,
     2 * (record + 4 + sizeof(std::vector<KVParams>))},
    {"Pairs", "{{'a', 'vv'}, {'a', 'vv'}}", readPairs, 2, 2 * (sizeof(KVData) + 3)},
};

void PrintTo(const List& list, std::ostream* out)
{
    *out << list.name;
}

class ListBounds : public LuaState, public testing::WithParamInterface<List> {
protected:
    void TearDown() override { detail::listBounds = {}; }

    void expectWithin(std::size_t entries, std::size_t bytes, bool isWhole)
    {
        run(std::string("return ") + GetParam().expression, 1);
        detail::listBounds = {entries, bytes};
        std::vector<KVParams> records;
        EXPECT_EQ(GetParam().read(L, records), isWhole);
        EXPECT_EQ(records.size(), isWhole ? 2U : 1U) << "what was read so far";
        EXPECT_EQ(lua_gettop(L), 1);
        lua_settop(L, 0);
    }
};

TEST_P(ListBounds, OfEntries)
{
    expectWithin(GetParam().entries - 1, many, false);
    expectWithin(GetParam().entries, many, true);
    expectWithin(GetParam().entries + 1, many, true);
}

TEST_P(ListBounds, OfBytes)
{
    expectWithin(many, GetParam().bytes - 1, false);
    expectWithin(many, GetParam().bytes, true);
    expectWithin(many, GetParam().bytes + 1, true);
}

INSTANTIATE_TEST_SUITE_P(Of, ListBounds, testing::ValuesIn(lists),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace

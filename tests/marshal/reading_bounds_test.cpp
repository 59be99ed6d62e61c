// How much of an answer is read: each reader of lists in lists, or of texts, one below what an answer takes,
// at it, and one above.

#include "../Primitives.h"
#include "Budget.h"
#include "marshal_state.h"

#include <QuorPrimary/QuorPrimary.h>
#include <QuorScriptor/QuorScriptor.h>
#include <ostream>

namespace {

using namespace quorlua;

constexpr std::size_t many = 1000000;

/// The bounds of what is read in its life.
class Bounded {
public:
    Bounded(std::size_t entries, std::size_t bytes) { boundsOfReading = {entries, bytes}; }
    ~Bounded() { boundsOfReading = {}; }
    Bounded(const Bounded&) = delete;
    Bounded& operator=(const Bounded&) = delete;
};

/// Tables that stand in others more than once.
constexpr const char* shared = R"(
    local v = {1, {0, 0, 0}}
    local line = {v, {1, {1, 0, 0}}, {1, {1, 1, 0}}}
    local drawn = {25, line}
    local box = {3, 1, 1, 1, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}}
    local edge = {16, {0, 0, 0}, {1, 0, 0}}
    local map = {a = 'xx'}
    local places = {27, {{0, 0, 0}, {1, 0, 0}}}
    local solid = {24, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, 5, line, {line}}
    local words = {19, 1, {0, 0, 0}, 'words', 0}
    local given = {200, {k = 'vv'}}
    answers = {
        line = line, lines = {line, line}, maps = {map, map}, texts = {'abc', 'abc'},
        drawn = {drawn, drawn}, places = {places, places}, solids = {solid, solid}, words = {words, words},
        given = {given, given}, boxes = {{400, 'mmmm'}, box, box}, edges = {{600, 'tttt'}, edge, edge},
    }
)";

std::size_t primitivesOf(lua_State* L)
{
    Primitives drawn;
    EXPECT_EQ(parse_primary_byidx(L, -1, drawn), Quor::Ok);
    // What was set on the way is taken back.
    EXPECT_EQ(luaL_dostring(L, "return {{400}, {600}}"), 0);
    Primitives none;
    EXPECT_EQ(parse_primary_byidx(L, -1, none), Quor::Ok);
    lua_pop(L, 1);
    return drawn.size();
}

template<class Element>
std::size_t verticesOf(lua_State* L)
{
    std::vector<Element> vertices;
    static_cast<void>(getQuorPolyDescArray(L, -1, vertices));
    return vertices.size();
}

/// A result by its letter: the lists in it, and what is in these.
template<class Inner>
std::size_t listsOf(lua_State* L, const char* format)
{
    lua_pushvalue(L, -1);
    lua_setglobal(L, "answer_of_test");
    EXPECT_EQ(luaL_dostring(L, "function give() return answer_of_test end"), 0);
    std::vector<std::vector<Inner>> lists;
    EXPECT_TRUE(callLuaFunc(L, "give", format, &lists));
    std::size_t count = lists.size();
    for (const std::vector<Inner>& list : lists)
        count += list.size();
    return count;
}

std::size_t textsOf(lua_State* L)
{
    std::vector<std::string> texts;
    static_cast<void>(getStringArray(L, -1, texts));
    return texts.size();
}

/// What reading an answer takes, and how much is read of it then and with one less.
struct Answer {
    const char* name;
    std::size_t (*read)(lua_State* L);
    std::size_t entries;
    std::size_t bytes;
    std::size_t whole;
    std::size_t withAnEntryLess;
    std::size_t withAByteLess;
};

constexpr std::size_t vertex = sizeof(QuorPolyDesc);
constexpr std::size_t point = sizeof(KxGePoint3D);
constexpr std::size_t record = sizeof(KVParams);
constexpr std::size_t list = sizeof(std::vector<int>);

const Answer answers[] = {
    {"line", verticesOf<QuorPolyDesc>, 3, 3 * vertex, 3, 2, 2},
    // The list that is not whole is left out.
    {"lines", [](lua_State* L) { return listsOf<QuorPolyDesc>(L, ">l"); }, 8, 2 * list + 6 * vertex, 8, 4, 4},
    {"maps", [](lua_State* L) { return listsOf<KVParams>(L, ">b"); }, 4, 2 * list + 2 * (record + 3), 4, 3,
     3},
    {"texts", textsOf, 2, 2 * (sizeof(std::string) + 3), 2, 1, 1},
    {"drawn", primitivesOf, 6, 6 * vertex, 2, 1, 1},
    {"places", primitivesOf, 4, 4 * point, 2, 1, 1},
    {"solids", primitivesOf, 14, 12 * vertex + 2 * list, 2, 1, 1},
    {"words", primitivesOf, 0, 10, 2, 2, 1},
    {"given", primitivesOf, 4, 2 * (record + 3), 2, 1, 1},
    {"boxes", primitivesOf, 0, 12, 2, 2, 1},
    {"edges", primitivesOf, 0, 12, 2, 2, 1},
};

void PrintTo(const Answer& answer, std::ostream* out)
{
    *out << answer.name;
}

class BoundsOfAnswers : public testing::TestWithParam<Answer> {
protected:
    void SetUp() override
    {
        ASSERT_NE(L, nullptr);
        ASSERT_EQ(luaL_dostring(L, shared), 0) << lua_tostring(L, -1);
        lua_getglobal(L, "answers");
        lua_getfield(L, -1, GetParam().name);
    }

    std::size_t readWithin(std::size_t entries, std::size_t bytes)
    {
        const Bounded bounded(entries, bytes);
        return GetParam().read(L);
    }

    QuorGlibScriptor scriptor;
    lua_State* L = scriptor.getLua(false);
};

TEST_P(BoundsOfAnswers, OfEntries)
{
    const Answer& answer = GetParam();
    if (answer.entries > 0) {
        EXPECT_EQ(readWithin(answer.entries - 1, many), answer.withAnEntryLess);
    }
    EXPECT_EQ(readWithin(answer.entries, many), answer.whole);
    EXPECT_EQ(readWithin(answer.entries + 1, many), answer.whole);
}

TEST_P(BoundsOfAnswers, OfBytes)
{
    const Answer& answer = GetParam();
    EXPECT_EQ(readWithin(many, answer.bytes - 1), answer.withAByteLess);
    EXPECT_EQ(readWithin(many, answer.bytes), answer.whole);
    EXPECT_EQ(readWithin(many, answer.bytes + 1), answer.whole);
}

TEST_P(BoundsOfAnswers, AreThoseOfEachAnswer)
{
    const Answer& answer = GetParam();
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(readWithin(answer.entries, answer.bytes), answer.whole) << i;
}

INSTANTIATE_TEST_SUITE_P(Of, BoundsOfAnswers, testing::ValuesIn(answers),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(BoundsOfNotes, EndTheReadingAsAnotherShapeDoes)
{
    QuorGlibScriptor scriptor;
    ASSERT_EQ(luaL_dostring(scriptor.getLua(false), "notes = {a = {'nn', 'vv'}, b = {'nn', 'vv'}}"), 0);
    const std::size_t bytes = 2 * (record + 4);
    const auto notesWithin = [&scriptor](std::size_t entries, std::size_t most, Quor::GlibStatus expected) {
        const Bounded bounded(entries, most);
        std::vector<KVParams> notes;
        EXPECT_EQ(scriptor.getParams_note("notes", notes), expected);
        return notes.size();
    };
    EXPECT_EQ(notesWithin(1, many, Quor::ScriptFailed), 1U);
    EXPECT_EQ(notesWithin(2, many, Quor::Ok), 2U);
    EXPECT_EQ(notesWithin(3, many, Quor::Ok), 2U);
    EXPECT_EQ(notesWithin(many, bytes - 1, Quor::ScriptFailed), 1U);
    EXPECT_EQ(notesWithin(many, bytes, Quor::Ok), 2U);
    EXPECT_EQ(notesWithin(many, bytes + 1, Quor::Ok), 2U);
}

TEST(BoundsOfReading, EndAllThatIsCountedAfterwards)
{
    QuorGlibScriptor scriptor;
    lua_State* L = scriptor.getLua(false);
    ASSERT_EQ(luaL_dostring(L, "return {('x'):rep(100), 'a', 'b'}"), 0);
    const Bounded bounded(many, 2 * sizeof(std::string) + 2);
    std::vector<std::string> texts;
    EXPECT_FALSE(getStringArray(L, -1, texts));
    ASSERT_EQ(luaL_dostring(L, "return {'a', 'b', 'c'}"), 0);
    EXPECT_TRUE(getStringArray(L, -1, texts));
    EXPECT_EQ(texts, (std::vector<std::string>{"a", "b"}));
}

TEST(BoundsOfReading, LeaveRoomForWhatAScriptMakesPieceByPiece)
{
    EXPECT_EQ(boundsOfReading.entries, 67108864U);
    EXPECT_EQ(boundsOfReading.bytes, 1073741824U);
}

} // namespace

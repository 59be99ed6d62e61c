#include "marshal_state.h"

#include <QuorScriptor/geometry.h>
#include <limits>

namespace {

using namespace quorlua;

class ObjectIds : public MarshalState {
protected:
    KxDbObjectId id{77};
    const KxDbObjectId before{77};
};

TEST_F(ObjectIds, AreReadFrom64BitIntegersAndNumbers)
{
    const struct {
        const char* expression;
        long long value;
    } cases[] = {
        {"int64(42)", 42},
        {"int64('9223372036854775807')", std::numeric_limits<long long>::max()},
        {"int64('-9223372036854775808')", std::numeric_limits<long long>::min()},
        {"42", 42},
        {"-42", -42},
        {"42.9", 42},
        {"0/0", std::numeric_limits<long long>::min()},
        {"1/0", std::numeric_limits<long long>::min()},
        {"2^63", std::numeric_limits<long long>::min()},
        {"newproxy()", 0},
        {"io.stdout", 0},
        {"light", 0},
    };
    for (const auto& [expression, value] : cases) {
        push(expression);
        const std::string table = std::string("{") + expression + ", name = " + expression + "}";
        push(table);
        const SameHeight same(L);
        EXPECT_EQ(getAKxDbObjectId(L, lua_gettop(L) - 1, id), 0) << expression;
        EXPECT_EQ(id.toInt(), value) << expression;
        id = before;
        EXPECT_EQ(getAKxDbObjectId(L, -2, id), 0) << expression;
        EXPECT_EQ(id.toInt(), value) << expression;
        id = before;
        EXPECT_TRUE(getAKxDbObjectId(L, -1, 1, id)) << expression;
        EXPECT_EQ(id.toInt(), value) << expression;
        id = before;
        EXPECT_TRUE(getAKxDbObjectId(L, lua_gettop(L), "name", id)) << expression;
        EXPECT_EQ(id.toInt(), value) << expression;
    }
}

TEST_F(ObjectIds, AreNotReadFromOtherTypes)
{
    for (const char* expression :
         {"nil", "true", "false", "'42'", "''", "{}", "{42}", "print", "coroutine.create(describe)"}) {
        push(expression);
        push(std::string("{") + expression + ", name = " + expression + "}");
        const SameHeight same(L);
        EXPECT_EQ(getAKxDbObjectId(L, -2, id), 1) << expression;
        EXPECT_FALSE(getAKxDbObjectId(L, -1, 1, id)) << expression;
        EXPECT_FALSE(getAKxDbObjectId(L, lua_gettop(L), "name", id)) << expression;
        EXPECT_EQ(id, before) << expression;
    }
}

TEST_F(ObjectIds, NeedATableAndAName)
{
    push("{int64(5), name = int64(6), [''] = int64(7)}");
    EXPECT_FALSE(getAKxDbObjectId(L, 1, "", id));
    EXPECT_FALSE(getAKxDbObjectId(L, 1, static_cast<const char*>(nullptr), id));
    EXPECT_FALSE(getAKxDbObjectId(L, 1, 2, id));
    EXPECT_FALSE(getAKxDbObjectId(L, 2, 1, id));
    EXPECT_FALSE(getAKxDbObjectId(L, 2, "name", id));
    EXPECT_EQ(getAKxDbObjectId(L, 2, id), 1);
    EXPECT_EQ(getAKxDbObjectId(L, 0, id), 1);
    EXPECT_EQ(getAKxDbObjectId(L, -9, id), 1);
    EXPECT_EQ(getAKxDbObjectId(nullptr, 1, id), 1);
    EXPECT_FALSE(getAKxDbObjectId(nullptr, 1, 1, id));
    EXPECT_FALSE(getAKxDbObjectId(nullptr, 1, "name", id));
    push("12");
    EXPECT_FALSE(getAKxDbObjectId(L, 2, 1, id));
    EXPECT_FALSE(getAKxDbObjectId(L, 2, "name", id));
    EXPECT_EQ(id, before);
    EXPECT_EQ(lua_gettop(L), 2);
}

TEST_F(ObjectIds, AreReadThroughMetamethods)
{
    push("setmetatable({}, {__index = function() return int64(8) end})");
    EXPECT_FALSE(getAKxDbObjectId(L, 1, 1, id));
    EXPECT_EQ(id, before);
    EXPECT_TRUE(getAKxDbObjectId(L, 1, "any", id));
    EXPECT_EQ(id.toInt(), 8);
    push("setmetatable({}, {__index = error})");
    EXPECT_FALSE(getAKxDbObjectId(L, 2, "any", id));
    EXPECT_EQ(id.toInt(), 8);
    EXPECT_EQ(lua_gettop(L), 2);
    EXPECT_TRUE(alerts.empty());
}

TEST_F(ObjectIds, AreReadByTheIndexAsItStandsAfterTheName)
{
    push("{name = 1}");
    EXPECT_FALSE(getAKxDbObjectId(L, -1, "name", id));
    EXPECT_EQ(id, before);
    push("{name = 2}");
    EXPECT_TRUE(getAKxDbObjectId(L, -2, "name", id));
    EXPECT_EQ(id.toInt(), 2);
    // What is tested to be a table is the slot as it stood before.
    push("'text'");
    lua_insert(L, 1);
    EXPECT_FALSE(getAKxDbObjectId(L, -3, "name", id));
    EXPECT_EQ(id.toInt(), 2);
    EXPECT_EQ(lua_gettop(L), 3);
}

// The metatable of strings answers for the name.
TEST_F(ObjectIds, OfTheNameItselfAreThoseOfTheStringLibrary)
{
    run("string.name = int64(9)");
    push("{}");
    EXPECT_TRUE(getAKxDbObjectId(L, -1, "name", id));
    EXPECT_EQ(id.toInt(), 9);
    EXPECT_EQ(lua_gettop(L), 1);
}

} // namespace

#include "marshal_state.h"

#include <QuorScriptor/geometry.h>

namespace {

using namespace quorlua;

class Matrix : public MarshalState {
protected:
    Matrix()
    {
        for (int row = 0; row < 4; ++row)
            given.setRow(row, row * 4 + 1, row * 4 + 2, row * 4 + 3, row * 4 + 4);
    }

    KxGeMatrix3D given;
    KxGeMatrix3D matrix;
    const KxGeMatrix3D identity;
    const std::string text = "{{1,2,3,4},{5,6,7,8},{9,10,11,12},{13,14,15,16}}";
};

TEST_F(Matrix, IsFourRowsOfFourNumbers)
{
    lua_tinker::table table(L);
    {
        const SameHeight same(L);
        setMatrix(table, given);
    }
    EXPECT_EQ(popDescribed(), text);
}

TEST_F(Matrix, ComesBackInEveryForm)
{
    push("{" + text + ", field = " + text + "}");
    lua_rawgeti(L, 1, 1);
    const SameHeight same(L);
    for (const int index : {2, -1}) {
        matrix = identity;
        EXPECT_TRUE(getMatrix(L, index, matrix));
        EXPECT_EQ(matrix, given);
    }
    for (const int index : {1, -2}) {
        matrix = identity;
        EXPECT_TRUE(getMatrix(L, index, 1, matrix));
        EXPECT_EQ(matrix, given);
    }
    matrix = identity;
    EXPECT_TRUE(getMatrix(L, 1, "field", matrix));
    EXPECT_EQ(matrix, given);
    matrix = identity;
    lua_tinker::table table(L, 2);
    EXPECT_TRUE(getMatrix(table, matrix));
    EXPECT_EQ(matrix, given);
}

TEST_F(Matrix, IsNotReadFromAHandleWhoseSlotIsGone)
{
    push(text);
    lua_tinker::table table(L, 1);
    lua_settop(L, 0);
    EXPECT_FALSE(getMatrix(table, matrix));
    setMatrix(table, given);
    EXPECT_EQ(matrix, identity);
    EXPECT_EQ(lua_gettop(L), 0);
}

TEST_F(Matrix, OfAnotherLengthIsUntouched)
{
    for (const char* table :
         {"{}", "{{1,2,3,4},{1,2,3,4},{1,2,3,4}}", "{{1,2,3,4},{1,2,3,4},{1,2,3,4},{1,2,3,4},{1,2,3,4}}",
          "'four'", "nil", "12", "print", "newproxy()", "light", "true"}) {
        push(table);
        push(std::string("{") + table + ", field = " + table + "}");
        const SameHeight same(L);
        EXPECT_FALSE(getMatrix(L, -2, matrix)) << table;
        EXPECT_FALSE(getMatrix(L, -1, 1, matrix)) << table;
        EXPECT_FALSE(getMatrix(L, lua_gettop(L), "field", matrix)) << table;
        lua_tinker::table handle(L, -2);
        EXPECT_FALSE(getMatrix(handle, matrix)) << table;
        EXPECT_EQ(matrix, identity) << table;
    }
}

TEST_F(Matrix, KeepsTheRowsBeforeABadOne)
{
    for (const char* bad : {"{13,14,15}", "{13,14,15,16,17}", "12", "false", "'four'", "{}",
                            "{13,14,'15',16}", "{13,14,{},16}"}) {
        matrix = identity;
        push(std::string("{{1,2,3,4},{5,6,7,8},{9,10,11,12},") + bad + "}");
        EXPECT_FALSE(getMatrix(L, -1, matrix)) << bad;
        KxGeMatrix3D three = given;
        three.setRow(3, 0, 0, 0, 1);
        EXPECT_EQ(matrix, three) << bad;
    }
    matrix = identity;
    push("{12, {5,6,7,8}, {9,10,11,12}, {13,14,15,16}}");
    EXPECT_FALSE(getMatrix(L, -1, matrix));
    EXPECT_EQ(matrix, identity);
}

TEST_F(Matrix, OverwritesTheFourEntries)
{
    push("{'a', 'b', 'c', 'd', 'e', name = 'kept'}");
    lua_tinker::table table(L, 1);
    const SameHeight same(L);
    setMatrix(table, given);
    lua_pushvalue(L, 1);
    EXPECT_EQ(popDescribed(), text.substr(0, text.size() - 1) + ",\"e\",name=\"kept\"}");
}

TEST_F(Matrix, NeedsATable)
{
    lua_tinker::table none;
    setMatrix(none, given);
    EXPECT_FALSE(getMatrix(none, matrix));
    push("12");
    lua_tinker::table number(L, 1);
    setMatrix(number, given);
    EXPECT_FALSE(getMatrix(L, 1, 1, matrix));
    EXPECT_FALSE(getMatrix(L, 1, "name", matrix));
    EXPECT_FALSE(getMatrix(L, 5, matrix));
    EXPECT_FALSE(getMatrix(L, 0, matrix));
    EXPECT_FALSE(getMatrix(L, -5, 1, matrix));
    EXPECT_FALSE(getMatrix(nullptr, 1, matrix));
    EXPECT_FALSE(getMatrix(nullptr, 1, 1, matrix));
    EXPECT_FALSE(getMatrix(nullptr, 1, "name", matrix));
    EXPECT_EQ(matrix, identity);
    EXPECT_EQ(lua_gettop(L), 1);
    EXPECT_TRUE(alerts.empty());
}

TEST_F(Matrix, IsReadFromFieldsThroughMetamethods)
{
    push("setmetatable({}, {__index = function(_, k) return k == 'm' and " + text + " end})");
    EXPECT_TRUE(getMatrix(L, 1, "m", matrix));
    EXPECT_EQ(matrix, given);
    push("setmetatable({}, {__index = error})");
    EXPECT_FALSE(getMatrix(L, 2, "m", matrix));
    EXPECT_TRUE(alerts.empty());
    EXPECT_EQ(lua_gettop(L), 2);
}

TEST_F(Matrix, IsReadFromFieldsByTheIndexAsItStandsAfterTheName)
{
    push("{m = " + text + "}");
    EXPECT_FALSE(getMatrix(L, -1, "m", matrix));
    push("{}");
    EXPECT_FALSE(getMatrix(L, -2, "m", matrix)); // the empty one
    EXPECT_EQ(matrix, identity);
    lua_insert(L, 1);
    EXPECT_TRUE(getMatrix(L, -2, "m", matrix));
    EXPECT_EQ(matrix, given);
}

TEST_F(Matrix, IsReadFromTheFieldOfAnEmptyNameButNotWithoutOne)
{
    push("{[''] = " + text + "}");
    EXPECT_FALSE(getMatrix(L, 1, static_cast<const char*>(nullptr), matrix));
    EXPECT_TRUE(getMatrix(L, 1, "", matrix));
    EXPECT_EQ(matrix, given);
}

} // namespace

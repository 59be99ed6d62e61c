#include "marshal_state.h"

#include <QuorScriptor/geometry.h>

namespace {

using namespace quorlua;
using Polyline = std::vector<QuorPolyDesc>;

QuorPolyDesc vertex(int kind, double first, double second, double third, KxGePoint3D point)
{
    QuorPolyDesc made;
    made.kind = kind;
    made.startWidth = first;
    made.endWidth = second;
    made.bulge = third;
    made.point = point;
    return made;
}

class Polylines : public MarshalState {
protected:
    const QuorPolyDesc one = vertex(2, 10, 20, 30, {1, 2, 3});
    const QuorPolyDesc two = vertex(-1, 0.5, 0, -1.5, {4, 5, 6});
    const QuorPolyDesc old = vertex(9, 9, 9, 9, {9, 9, 9});
    Polyline vertices{old};
};

TEST_F(Polylines, AreTablesWithTheThirdNumberBeforeTheOthers)
{
    push("{}");
    {
        const SameHeight same(L);
        EXPECT_TRUE(setQuorPolyDescArray(L, -1, {one, two}));
    }
    EXPECT_EQ(popDescribed(), "{{2,{1,2,3},30,10,20},{-1,{4,5,6},-1.5,0.5,0}}");
}

TEST_F(Polylines, ComeBackAppended)
{
    push("{}");
    EXPECT_TRUE(setQuorPolyDescArray(L, 1, {one, two}));
    for (const int index : {1, -1}) {
        const SameHeight same(L);
        vertices = {old};
        EXPECT_TRUE(getQuorPolyDescArray(L, index, vertices));
        EXPECT_EQ(vertices, (Polyline{old, one, two}));
    }
}

TEST_F(Polylines, OfNoVerticesAreTrue)
{
    push("{}");
    EXPECT_TRUE(getQuorPolyDescArray(L, 1, vertices));
    EXPECT_EQ(vertices, Polyline{old});
    EXPECT_TRUE(setQuorPolyDescArray(L, 1, {}));
    EXPECT_EQ(popDescribed(), "{}");
}

TEST_F(Polylines, TakeEveryKey)
{
    push("{only = {2, {1,2,3}, 30, 10, 20}}");
    EXPECT_TRUE(getQuorPolyDescArray(L, 1, vertices));
    EXPECT_EQ(vertices, (Polyline{old, one}));
}

TEST_F(Polylines, KeepTheDefaultOfANumberThatIsMissing)
{
    push("{{2, {1,2,3}, nil, 10, '20'}, {2, {1,2,3}, 30, false}}");
    EXPECT_TRUE(getQuorPolyDescArray(L, 1, vertices));
    const QuorPolyDesc fresh;
    EXPECT_EQ(vertices, (Polyline{old, vertex(2, 10, fresh.endWidth, fresh.bulge, {1, 2, 3}),
                                  vertex(2, fresh.startWidth, fresh.endWidth, 30, {1, 2, 3})}));
}

TEST_F(Polylines, DefineTheIntegerOfEveryNumber)
{
    const struct {
        const char* number;
        int kind;
    } cases[] = {{"2.9", 2}, {"-2.9", -2}, {"0/0", 0}, {"1/0", 0}, {"-1e300", 0}, {"2^32 + 5", 5}};
    for (const auto& [number, kind] : cases) {
        vertices.clear();
        push(std::string("{{") + number + ", {0,0,0}}}");
        EXPECT_TRUE(getQuorPolyDescArray(L, -1, vertices)) << number;
        ASSERT_EQ(vertices.size(), 1u) << number;
        EXPECT_EQ(vertices[0].kind, kind) << number;
    }
}

TEST_F(Polylines, EndAtTheFirstValueThatIsNoVertex)
{
    for (const char* bad :
         {"12", "true", "'text'", "print", "{}", "{2}", "{2, nil, 30}", "{'2', {1,2,3}}", "{2, {1,2}}",
          "{2, 'point'}", "{2, {1,2,'3'}}", "{{1,2,3}, 2}", "{true, {1,2,3}}", "newproxy()"}) {
        vertices = {old};
        push(std::string("{{2, {1,2,3}, 30, 10, 20}, ") + bad + ", {2, {1,2,3}, 30, 10, 20}}");
        const SameHeight same(L);
        EXPECT_FALSE(getQuorPolyDescArray(L, -1, vertices)) << bad;
        EXPECT_EQ(vertices, (Polyline{old, one})) << bad;
    }
}

TEST_F(Polylines, NeedATable)
{
    for (const char* value : {"nil", "12", "'text'", "print", "newproxy()", "light", "true"}) {
        push(value);
        const SameHeight same(L);
        EXPECT_FALSE(getQuorPolyDescArray(L, -1, vertices)) << value;
        EXPECT_FALSE(setQuorPolyDescArray(L, -1, {one})) << value;
        EXPECT_FALSE(setSpolygonDesc2Lua(L, -1, {{one}})) << value;
    }
    for (const int index : {0, 100, -100}) {
        EXPECT_FALSE(getQuorPolyDescArray(L, index, vertices));
        EXPECT_FALSE(setQuorPolyDescArray(L, index, {one}));
        EXPECT_FALSE(setSpolygonDesc2Lua(L, index, {{one}}));
    }
    EXPECT_FALSE(getQuorPolyDescArray(nullptr, 1, vertices));
    EXPECT_FALSE(setQuorPolyDescArray(nullptr, 1, {one}));
    EXPECT_FALSE(setSpolygonDesc2Lua(nullptr, 1, {{one}}));
    EXPECT_EQ(vertices, Polyline{old});
}

TEST_F(Polylines, AreWrittenPastMetamethods)
{
    push("setmetatable({}, {__newindex = error})");
    EXPECT_TRUE(setQuorPolyDescArray(L, 1, {one}));
    EXPECT_TRUE(setSpolygonDesc2Lua(L, 1, {{one}, {}}));
    EXPECT_EQ(popDescribed(), "{{{2,{1,2,3},30,10,20}},{}}");
    EXPECT_TRUE(alerts.empty());
}

TEST_F(Polylines, NestInOrder)
{
    push("{'old', 'old', 'old'}");
    {
        const SameHeight same(L);
        EXPECT_TRUE(setSpolygonDesc2Lua(L, -1, {{one, two}, {}}));
    }
    EXPECT_EQ(popDescribed(), "{{{2,{1,2,3},30,10,20},{-1,{4,5,6},-1.5,0.5,0}},{},\"old\"}");
}

} // namespace

#include "primary_table.h"

#include <gmock/gmock.h>

namespace {

using namespace table;

const Argument<KxGePoint3D> a = place(1, 2, 3);
const Argument<KxGePoint3D> b = placeApartFrom(a, 4, 5, 7);
const Argument<KxGeVector3D> x = direction(1, 0, 0);
const Argument<KxGeVector3D> y = direction(0, 2, 0);
const Argument<KxGeVector3D> z = direction(0, 0, 3);

Argument<KxGePoint3D> refusing(Argument<KxGePoint3D> argument, const Argument<KxGePoint3D>& other)
{
    argument.refused.push_back(other.good);
    return argument;
}

std::vector<Row> rows()
{
    // b and c keep away from a; the others keep away from what their names say, too.
    const auto c = placeApartFrom(a, 9, 9, 1);
    const auto aNotB = refusing(a, b), aNotBNorC = refusing(aNotB, c);
    const auto bNotC = refusing(b, c), cNotB = refusing(c, b);
    const auto facets = integer(32), across = integer(20), level = integer(1);
    const auto hidden = boolean(false);
    const auto angle = number(45), turn = numberNotZero(90);

    return {
        row<QuorPrimary3D>("createQuorGraphy3DCylinder", createQuorGraphy3DCylinder, aNotB, b, size(25),
                           facets, hidden),
        row<QuorPrimary3D>("createQuorGraphy3DBox", createQuorGraphy3DBox, size(10), size(20), size(30), a, x,
                           y, hidden, level),
        row<QuorPrimary3D>("createQuorGraphy3DBox1", createQuorGraphy3DBox1, size(10), size(20), size(30), a,
                           x, y, hidden, level),
        row<QuorPrimary3D>("createQuorGraphy3DTorus", createQuorGraphy3DTorus, extent(100), size(10),
                           aNotBNorC, b, c, integer(1), facets, across, hidden, level),
        row<QuorPrimary3D>("createQuorGraphy3DTorus1", createQuorGraphy3DTorus1, extent(100), size(10),
                           aNotBNorC, b, c, turn, facets, across, hidden, level),
        row<QuorPrimary3D>("createQuorGraphy3DEcone", createQuorGraphy3DEcone, aNotB, b, extent(10),
                           extent(5), z, facets, hidden),
        row<QuorPrimary3D>("createQuorGraphy3DScylinder", createQuorGraphy3DScylinder, aNotB, b, size(10), z,
                           facets, hidden),
        row<QuorPrimary3D>("createQuorGraphy3DOval", createQuorGraphy3DOval, size(1), size(2), size(3), a, z,
                           facets, across, hidden),
        row<QuorPrimary3D>("createQuorGraphy3DPrism", createQuorGraphy3DPrism, aNotBNorC, b, c, count(6),
                           hidden),
        row<QuorPrimary3D>("createQuorGraphy3DPrism1", createQuorGraphy3DPrism1, aNotBNorC, b, c, count(6),
                           hidden),
        row<QuorPrimary3D>("createQuorGraphy3DSaddle", createQuorGraphy3DSaddle, size(1), size(2), size(3), a,
                           extent(4), angle, facets, x, y, hidden, level),
        row<QuorPrimary3D>("createQuorGraphy3DSphere", createQuorGraphy3DSphere, a, size(5), facets, hidden),
        row<QuorPrimary3D>("createQuorGraphy3DSqucir", createQuorGraphy3DSqucir, aNotB, x, extent(1),
                           extent(2), b, z, extent(3), facets, hidden, level),
        row<QuorPrimary3D>("createQuorGraphy3DSqucir_1", createQuorGraphy3DSqucir_1, aNotB, x, y, extent(1),
                           extent(2), b, z, extent(3), facets, hidden, level),
        row<QuorPrimary3D>("createQuorGraphy3DSqucone", createQuorGraphy3DSqucone, extent(1), extent(2),
                           extent(3), extent(4), size(5), a, x, y, z, angle, hidden),
        row<QuorPrimary3D>("createQuorGraphy3DSqutorus", createQuorGraphy3DSqutorus, extent(1), extent(2),
                           extent(3), extent(4), aNotBNorC, b, c, integer(0), across, hidden, level),
        row<QuorPrimary3D>("createQuorGraphy3DSqutorus1", createQuorGraphy3DSqutorus1, extent(1), extent(2),
                           extent(3), extent(4), aNotB, b, z, turn, across, hidden, level),
        row<QuorPrimary3D>("createQuorGraphy3DWedge", createQuorGraphy3DWedge, aNotBNorC, bNotC, cNotB,
                           size(5), hidden, level),
        row<QuorPrimary3D>("createQuorGraphy3DConcone", createQuorGraphy3DConcone, aNotB, b, extent(10),
                           extent(5), facets, hidden),
        row<QuorPrimary3D>("createQuorGraphy3DPolygon", createQuorGraphy3DPolygon, a, x, y, z, size(5),
                           area(0), loops(), facets, hidden, level),
        row<QuorPrimary3D>("createQuorGraphy3DPline", createQuorGraphy3DPline, polyline(2)),
        row<QuorPrimary3D>("createQuorGraphy3DRevolve", createQuorGraphy3DRevolve, a, z, area(0), turn,
                           facets, hidden, level),
        row<QuorPrimary2D>("createQuorLine", createQuorLine, a, place(4, 5, 6)),
        row<QuorPrimary2D>("createQuorArc", createQuorArc, a, extent(5), angle, number(-45), z),
        row<QuorPrimary2D>("createQuorCirc", createQuorCirc, a, extent(5), z),
        row("createQuorText-Angle",
            static_cast<QuorPrimaryText* (*)(int, const KxGePoint3D&, const char*, double)>(createQuorText),
            integer(1), a, text("DN50"), angle),
        row("createQuorText-Direction",
            static_cast<QuorPrimaryText* (*)(int, const KxGePoint3D&, const char*, const KxGeVector3D&)>(
                createQuorText),
            integer(1), a, text("DN50"), x),
        row<QuorPrimary2D>("createQuorPline2D", createQuorPline2D, polyline(1), extent(0.5)),
        row<QuorPrimary2D>("createQuorPoint", createQuorPoint, a, shortInteger(4464)),
        row<QuorPrimary2D>("createQuorLineArr", createQuorLineArr, points(), boolean(true)),
        row<QuorPrimary2D>("createQuorHatch", createQuorHatch, text("ANSI31"), polyline(1), polyline(2),
                           angle, number(1)),
        row<QuorPrimary2D>("createQuorEllipse", createQuorEllipse, a, z, x, extent(0.5), angle, number(-45)),
        row<QuorPrimary>("createCadReference", createCadReference, text("lib.dwg"), text("VALVE"), a, x, y),
        row<QuorOprPrimary>("createQuorPrimaryBooleanOpr", createQuorPrimaryBooleanOpr, integer(2),
                            integer(3), integer(4)),
        row<QuorOprPrimary>("createQuorPrimarySliceOpr", createQuorPrimarySliceOpr, integer(3), a, z),
    };
}

class Factory : public testing::TestWithParam<Row> {};

TEST_P(Factory, NamesItselfAndItsClass)
{
    const auto made = GetParam().good.create();
    ASSERT_TRUE(made);
    EXPECT_STREQ(made->factoryName(), GetParam().factory.c_str());
    EXPECT_EQ(made->kind(), GetParam().kind);
}

TEST_P(Factory, ShowsItsArgumentsInOrder)
{
    const auto made = GetParam().good.create();
    ASSERT_TRUE(made);
    EXPECT_EQ(argumentsOf(*made), GetParam().good.arguments);
}

TEST_P(Factory, KeepsEveryValueThatItsRulesAllow)
{
    for (const Call& call : GetParam().kept) {
        SCOPED_TRACE(call.what);
        const auto made = call.create();
        ASSERT_TRUE(made);
        EXPECT_EQ(argumentsOf(*made), call.arguments);
    }
}

TEST_P(Factory, IsNullForEveryValueThatItsRulesForbid)
{
    for (const Call& call : GetParam().refused) {
        SCOPED_TRACE(call.what);
        EXPECT_FALSE(call.create());
    }
}

TEST_P(Factory, MakesItWithoutAnyAttributeSet)
{
    const auto made = GetParam().good.create();
    ASSERT_TRUE(made);
    for (const auto& attribute : attributesOf(*made))
        EXPECT_EQ(attribute.value, std::nullopt) << attribute.name;
}

TEST_P(Factory, AnswersForItsClassOnly)
{
    const auto made = GetParam().good.create();
    ASSERT_TRUE(made);
    const QuorPrimary& constant = *made;
    const PrimaryKind kind = GetParam().kind;
    const bool drawn = kind == PrimaryKind::Drawing || kind == PrimaryKind::Text;
    EXPECT_EQ(made->toPrimary3D() != nullptr, kind == PrimaryKind::Solid);
    EXPECT_EQ(made->toPrimary2D() != nullptr, drawn);
    EXPECT_EQ(made->toPrimaryText() != nullptr, kind == PrimaryKind::Text);
    EXPECT_EQ(made->toPrimary3D(), dynamic_cast<QuorPrimary3D*>(made.get()));
    EXPECT_EQ(made->toPrimary2D(), dynamic_cast<QuorPrimary2D*>(made.get()));
    EXPECT_EQ(made->toPrimaryText(), dynamic_cast<QuorPrimaryText*>(made.get()));
    EXPECT_EQ(constant.toPrimary3D(), made->toPrimary3D());
    EXPECT_EQ(constant.toPrimary2D(), made->toPrimary2D());
    EXPECT_EQ(constant.toPrimaryText(), made->toPrimaryText());
}

INSTANTIATE_TEST_SUITE_P(Primary, Factory, testing::ValuesIn(rows()), [](const auto& test) {
    std::string name = test.param.label;
    std::erase_if(name, [](char character) { return character == '-' || character == '_'; });
    return name;
});

// Zeros that count together with others.
struct Together {
    const char* name;
    QuorPrimary* (*create)();
    bool made;
};

const KxGePoint3D P(0, 0, 0), Q(0, 0, 9), R(9, 0, 0);
const KxGeVector3D X(1, 0, 0), Y(0, 1, 0), Z(0, 0, 1);

QuorPrimary* econe(double start, double end)
{
    return createQuorGraphy3DEcone(P, Q, start, end, Z, 32, false);
}
QuorPrimary* cone(double start, double end)
{
    return createQuorGraphy3DConcone(P, Q, start, end, 32, false);
}
QuorPrimary* squcir(double width, double depth, double radius)
{
    return createQuorGraphy3DSqucir(P, X, width, depth, Q, Z, radius, 32, false, 1);
}
QuorPrimary* squcir1(double width, double depth, double radius)
{
    return createQuorGraphy3DSqucir_1(P, X, Y, width, depth, Q, Z, radius, 32, false, 1);
}
QuorPrimary* squcone(double bottomX, double bottomY, double topX, double topY)
{
    return createQuorGraphy3DSqucone(bottomX, bottomY, topX, topY, 5, P, X, Y, Z, 0, false);
}
QuorPrimary* squtorus(double startWidth, double startHeight, double endWidth, double endHeight)
{
    return createQuorGraphy3DSqutorus(startWidth, startHeight, endWidth, endHeight, P, Q, R, 0, 20, false, 1);
}
QuorPrimary* squtorus1(double startWidth, double startHeight, double endWidth, double endHeight)
{
    return createQuorGraphy3DSqutorus1(startWidth, startHeight, endWidth, endHeight, P, R, Z, 90, 20, false,
                                       1);
}

const Together together[] = {
    {"EccentricConeWithoutAStartRadius", [] { return econe(0, 5); }, true},
    {"EccentricConeWithoutAnEndRadius", [] { return econe(5, 0); }, true},
    {"EccentricConeWithoutRadii", [] { return econe(0, 0); }, false},
    {"EccentricConeWhoseRadiiAddUpBeyondTheLargest", [] { return econe(largest, largest); }, true},
    {"EccentricConeWhoseRadiiAreTiny", [] { return econe(0, smallest); }, true},
    {"EccentricConeWhoseNegativeRadiusIsOutweighed", [] { return econe(-1, 5); }, false},
    {"ConeWithoutAStartRadius", [] { return cone(0, 5); }, true},
    {"ConeWithoutAnEndRadius", [] { return cone(5, 0); }, true},
    {"ConeWithoutRadii", [] { return cone(0, 0); }, false},
    {"ConeWithMinusZeroRadii", [] { return cone(-0.0, -0.0); }, false},
    {"TransitionFromAPoint", [] { return squcir(0, 0, 3); }, true},
    {"TransitionFromAnEdge", [] { return squcir(0, 2, 3); }, true},
    {"TransitionToAPoint", [] { return squcir(1, 2, 0); }, true},
    {"TransitionFromAWidthToAPoint", [] { return squcir(1, 0, 0); }, false},
    {"TransitionFromADepthToAPoint", [] { return squcir(0, 2, 0); }, false},
    {"TransitionFromAPointToAPoint", [] { return squcir(0, 0, 0); }, false},
    {"SecondTransitionFromAPoint", [] { return squcir1(0, 0, 3); }, true},
    {"SecondTransitionToAPoint", [] { return squcir1(1, 2, 0); }, true},
    {"SecondTransitionFromAWidthToAPoint", [] { return squcir1(1, 0, 0); }, false},
    {"SecondTransitionFromADepthToAPoint", [] { return squcir1(0, 2, 0); }, false},
    {"SquareConeToAPoint", [] { return squcone(1, 2, 0, 0); }, true},
    {"SquareConeFromAPoint", [] { return squcone(0, 0, 1, 2); }, true},
    {"SquareConeBetweenCrossedEdges", [] { return squcone(1, 0, 0, 2); }, true},
    {"SquareConeWithoutX", [] { return squcone(0, 2, 0, 2); }, false},
    {"SquareConeWithoutY", [] { return squcone(1, 0, 1, 0); }, false},
    {"SquareTorusToAnEdge", [] { return squtorus(1, 2, 0, 2); }, true},
    {"SquareTorusBetweenCrossedEdges", [] { return squtorus(1, 0, 0, 2); }, true},
    {"SquareTorusWithoutWidth", [] { return squtorus(0, 2, 0, 2); }, false},
    {"SquareTorusWithoutHeight", [] { return squtorus(1, 0, 1, 0); }, false},
    {"SecondSquareTorusToAPoint", [] { return squtorus1(1, 2, 0, 0); }, true},
    {"SecondSquareTorusWithoutWidth", [] { return squtorus1(0, 2, 0, 2); }, false},
    {"SecondSquareTorusWithoutHeight", [] { return squtorus1(1, 0, 1, 0); }, false},
    {"TorusWhoseStartIsItsEnd",
     [] { return static_cast<QuorPrimary*>(createQuorGraphy3DTorus(9, 1, P, Q, Q, 0, 32, 32, false, 1)); },
     true},
    {"LineOfNoLength", [] { return static_cast<QuorPrimary*>(createQuorLine(P, P)); }, true},
    {"BoxWhoseAxesAreParallel",
     [] { return static_cast<QuorPrimary*>(createQuorGraphy3DBox(1, 2, 3, P, X, X, false, 1)); }, true},
};

class FactoryZeros : public testing::TestWithParam<Together> {};

TEST_P(FactoryZeros, CountWhereTheSolidWouldVanish)
{
    const std::unique_ptr<QuorPrimary> made(GetParam().create());
    EXPECT_EQ(made != nullptr, GetParam().made);
}

INSTANTIATE_TEST_SUITE_P(Primary, FactoryZeros, testing::ValuesIn(together),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(FactoryTexts, AreCopied)
{
    char text[] = "before";
    const std::unique_ptr<QuorPrimary> made(createQuorText(0, P, text, 0.0));
    text[0] = 'x';
    EXPECT_EQ(argumentsOf(*made)[2], Value("before"));
}

TEST(FactoryLists, AreCopied)
{
    Loops inner = {polylineOf(3)};
    const std::unique_ptr<QuorPrimary> made(
        createQuorGraphy3DPolygon(P, X, Y, Z, 1, polylineOf(1), inner, 32, false, 1));
    inner[0].clear();
    EXPECT_EQ(argumentsOf(*made)[6], Value(Loops{polylineOf(3)}));
}

TEST(Operation, TellsWhatItDoesAndToWhich)
{
    const std::unique_ptr<QuorOprPrimary> boolean(
        createQuorPrimaryBooleanOpr(QuorOprPrimary::Subtract, 7, 8));
    EXPECT_EQ(boolean->operation(), QuorOprPrimary::Subtract);
    EXPECT_EQ(boolean->mainElement(), 7);

    const std::unique_ptr<QuorOprPrimary> slice(createQuorPrimarySliceOpr(9, P, Z));
    EXPECT_EQ(slice->operation(), QuorOprPrimary::Slice);
    EXPECT_EQ(slice->mainElement(), 9);
}

TEST(Operation, KeepsANumberThatIsNotListed)
{
    const std::unique_ptr<QuorOprPrimary> made(createQuorPrimaryBooleanOpr(-70000, 1, 2));
    EXPECT_EQ(static_cast<int>(made->operation()), -70000);
}

TEST(Operation, SliceIsFour)
{
    EXPECT_EQ(static_cast<int>(QuorOprPrimary::Slice), 4);
}

TEST(ParameterArray, ShowsItsListAsItsOneArgument)
{
    const Params params = {{"P1", "diameter", KVValue::ofDouble(0.1)}, {"P2", "", KVValue::ofShort(3)}};
    QuorOprKVParamArray array;
    EXPECT_EQ(argumentsOf(array), std::vector<Value>{Params()});
    array.setParams(params);
    EXPECT_STREQ(array.factoryName(), "QuorOprKVParamArray");
    EXPECT_EQ(array.kind(), PrimaryKind::Parameters);
    EXPECT_EQ(argumentsOf(array), std::vector<Value>{params});
    EXPECT_EQ(array.getParams(), params);
}

TEST(ParameterArray, ReplacesItsListByItsOwn)
{
    QuorOprKVParamArray array;
    array.setParams({{"P1", "", KVValue::ofInt(1)}});
    array.setParams(array.getParams());
    EXPECT_EQ(array.getParams(), (Params{{"P1", "", KVValue::ofInt(1)}}));
    array.setParams({});
    EXPECT_EQ(array.getParams(), Params());
}

} // namespace

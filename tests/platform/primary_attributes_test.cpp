#include "primary_table.h"

#include <gmock/gmock.h>
#include <sstream>

namespace {

using namespace table;
using Attributes = std::vector<Recorder::Attribute>;

std::unique_ptr<QuorPrimary3D> solid()
{
    return std::unique_ptr<QuorPrimary3D>(createQuorGraphy3DSphere({0, 0, 0}, 1, 12, false));
}

std::unique_ptr<QuorPrimary2D> line()
{
    return std::unique_ptr<QuorPrimary2D>(createQuorLine({0, 0, 0}, {1, 0, 0}));
}

std::unique_ptr<QuorPrimaryText> text()
{
    return std::unique_ptr<QuorPrimaryText>(createQuorText(1, {0, 0, 0}, "DN50", 0.0));
}

std::unique_ptr<QuorPrimary> reference()
{
    return std::unique_ptr<QuorPrimary>(createCadReference("a.dwg", "B", {0, 0, 0}, {1, 0, 0}, {0, 1, 0}));
}

TEST(Attributes, OfAnUntouchedSolidAreNull)
{
    EXPECT_EQ(attributesOf(*solid()), (Attributes{{"color", {}}, {"material", {}}}));
}

TEST(Attributes, OfASolidComeAsSet)
{
    const auto made = solid();
    made->setColor(257);
    made->setMaterial("steel");
    made->setGSFlag(2);
    EXPECT_EQ(attributesOf(*made),
              (Attributes{{"color", Value(257)}, {"material", Value("steel")}, {"gsFlag", Value(2)}}));
}

TEST(Attributes, OfAnUntouchedDrawingAreNull)
{
    EXPECT_EQ(attributesOf(*line()),
              (Attributes{{"color", {}}, {"thick", {}}, {"ltScale", {}}, {"lineType", {}}}));
}

TEST(Attributes, OfADrawingComeAsSet)
{
    const auto made = line();
    made->setColor(-3);
    made->setThick(0.7);
    made->setLTScale(2.5);
    made->setLineType("DASHED");
    EXPECT_EQ(attributesOf(*made), (Attributes{{"color", Value(-3)},
                                               {"thick", Value(0.7)},
                                               {"ltScale", Value(2.5)},
                                               {"lineType", Value("DASHED")}}));
}

TEST(Attributes, OfAnUntouchedTextAreThoseOfADrawing)
{
    EXPECT_EQ(attributesOf(*text()),
              (Attributes{{"color", {}}, {"thick", {}}, {"ltScale", {}}, {"lineType", {}}}));
}

TEST(Attributes, OfATextComeAsSetAfterThoseOfADrawing)
{
    const auto made = text();
    made->setTxtFlag(-1);
    made->setNormal({0, 0, -1});
    made->setHeight(3.5);
    made->setScale(0.0);
    EXPECT_EQ(attributesOf(*made), (Attributes{{"color", {}},
                                               {"thick", {}},
                                               {"ltScale", {}},
                                               {"lineType", {}},
                                               {"scale", Value(0.0)},
                                               {"height", Value(3.5)},
                                               {"normal", Value(KxGeVector3D(0, 0, -1))},
                                               {"txtFlag", Value(-1)}}));
}

TEST(Attributes, OfAReferenceAreItsColour)
{
    const auto made = reference();
    EXPECT_EQ(attributesOf(*made), (Attributes{{"color", {}}}));
    made->setColor(5);
    EXPECT_EQ(attributesOf(*made), (Attributes{{"color", Value(5)}}));
}

TEST(Attributes, OfOperationsAndParameterArraysAreNoneEvenWhenColoured)
{
    const std::unique_ptr<QuorPrimary> boolean(createQuorPrimaryBooleanOpr(1, 2, 3));
    const std::unique_ptr<QuorPrimary> slice(createQuorPrimarySliceOpr(1, {0, 0, 0}, {1, 0, 0}));
    const std::unique_ptr<QuorPrimary> parameters(new QuorOprKVParamArray);
    for (const auto* made : {&boolean, &slice, &parameters}) {
        (*made)->setColor(5);
        EXPECT_EQ(attributesOf(**made), Attributes()) << **made;
        EXPECT_EQ((*made)->getColor(), 5);
    }
}

TEST(Attributes, SetToWhatUnsetOnesReadAsCountAsSet)
{
    const auto made = text();
    made->setThick(0.0);
    made->setLTScale(1.0);
    made->setLineType("");
    made->setHeight(0.0);
    made->setTxtFlag(0);
    EXPECT_TRUE(made->hasThick());
    EXPECT_TRUE(made->hasLTScale());
    EXPECT_TRUE(made->hasLineType());
    EXPECT_STREQ(made->getLineType(), "");
    EXPECT_TRUE(made->hasHeight());
    EXPECT_TRUE(made->hasTxtFlag());
    EXPECT_FALSE(made->hasScale());
    EXPECT_FALSE(made->hasNormal());
}

TEST(Getters, OfUnsetAttributesAnswerTheDrawingsOwn)
{
    const auto made = text();
    EXPECT_FALSE(made->hasColor() || made->hasThick() || made->hasLTScale() || made->hasLineType());
    EXPECT_FALSE(made->hasScale() || made->hasHeight() || made->hasNormal() || made->hasTxtFlag());
    EXPECT_EQ(made->getColor(), 257);
    EXPECT_EQ(made->getThick(), 0.0);
    EXPECT_EQ(made->getLTScale(), 1.0);
    EXPECT_EQ(made->getLineType(), nullptr);
    EXPECT_EQ(made->getScale(), 1.0);
    EXPECT_EQ(made->getHeight(), 0.0);
    EXPECT_EQ(made->getNormal(), KxGeVector3D(0, 0, 1));
    EXPECT_EQ(made->getTxtFlag(), 0);

    const auto body = solid();
    EXPECT_FALSE(body->hasMaterial() || body->hasGSFlag());
    EXPECT_EQ(body->getMaterial(), nullptr);
    EXPECT_EQ(body->getGSFlag(), 0);
}

TEST(Getters, AnswerWhatWasSetLast)
{
    const auto made = text();
    made->setThick(1e300);
    made->setThick(0.1);
    made->setLTScale(1e300);
    made->setScale(-0.5);
    made->setHeight(2);
    made->setNormal({1, 2, 3});
    made->setTxtFlag(1);
    EXPECT_EQ(made->getThick(), 0.1);
    EXPECT_EQ(made->getLTScale(), 1e300);
    EXPECT_EQ(made->getScale(), -0.5);
    EXPECT_EQ(made->getHeight(), 2.0);
    EXPECT_EQ(made->getNormal(), KxGeVector3D(1, 2, 3));
    EXPECT_EQ(made->getTxtFlag(), 1);

    const auto body = solid();
    body->setGSFlag(2);
    EXPECT_EQ(body->getGSFlag(), 2);
}

TEST(NamedAttributes, AreCopiedAndReplaced)
{
    char name[] = "DASHED";
    const auto made = line();
    made->setLineType(name);
    name[0] = 'x';
    EXPECT_STREQ(made->getLineType(), "DASHED");
    made->setLineType("a name too long to be kept within a string object");
    EXPECT_STREQ(made->getLineType(), "a name too long to be kept within a string object");

    const auto body = solid();
    body->setMaterial("steel");
    body->setMaterial("\xB8\xD6");
    EXPECT_STREQ(body->getMaterial(), "\xB8\xD6");
}

TEST(NamedAttributes, AreUnsetByNull)
{
    const auto made = line();
    made->setLineType("DASHED");
    made->setLineType(nullptr);
    EXPECT_EQ(made->getLineType(), nullptr);
    EXPECT_FALSE(made->hasLineType());

    const auto body = solid();
    body->setMaterial("steel");
    body->setMaterial(nullptr);
    EXPECT_EQ(body->getMaterial(), nullptr);
    EXPECT_FALSE(body->hasMaterial());
}

TEST(NamedAttributes, MayBeSetToThemselves)
{
    const auto made = line();
    made->setLineType("a name too long to be kept within a string object");
    made->setLineType(made->getLineType());
    EXPECT_STREQ(made->getLineType(), "a name too long to be kept within a string object");
}

std::string printed(const QuorPrimary& primary)
{
    std::ostringstream out;
    out << primary;
    return out.str();
}

TEST(Printing, ShowsUnsetAttributesAsNull)
{
    EXPECT_EQ(printed(*line()),
              "createQuorLine((0, 0, 0), (1, 0, 0)) color=null thick=null ltScale=null lineType=null");
}

TEST(Printing, ShowsNumbersThatReadBackExactly)
{
    const std::unique_ptr<QuorPrimary3D> made(
        createQuorGraphy3DCylinder({0.1, 1e300, -0.0}, {1.0 / 3, 2, 3}, 5e-324, 32, false));
    made->setColor(257);
    made->setGSFlag(2);
    made->setMaterial("say \"Q235\"");
    EXPECT_EQ(printed(*made),
              "createQuorGraphy3DCylinder((0.1, 1e+300, -0), (0.3333333333333333, 2, 3), 5e-324, 32, "
              "false) color=257 material=\"say \\\"Q235\\\"\" gsFlag=2");
}

TEST(Printing, ShowsTextsOnOneLine)
{
    const auto made =
        std::unique_ptr<QuorPrimaryText>(createQuorText(1, {0, 0, 0}, "a\n\tb\\\x01", {1, 0, 0}));
    made->setNormal({0, 0, 1});
    EXPECT_EQ(printed(*made),
              "createQuorText(1, (0, 0, 0), \"a\\n\\tb\\\\\\x01\", (1, 0, 0)) color=null thick=null "
              "ltScale=null lineType=null normal=(0, 0, 1)");
}

TEST(Printing, ShowsListsInBrackets)
{
    const std::unique_ptr<QuorPrimary> polygon(
        createQuorGraphy3DPolygon({0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, 2,
                                  {{1, 2, 3, 0.5, {4, 5, 6}}, {}}, {{}, {{}}}, 32, true, 1));
    EXPECT_EQ(
        printed(*polygon),
        "createQuorGraphy3DPolygon((0, 0, 0), (1, 0, 0), (0, 1, 0), (0, 0, 1), 2, [{1, 2, 3, 0.5, (4, 5, "
        "6)}, "
        "{0, 0, 0, 0, (0, 0, 0)}], [[], [{0, 0, 0, 0, (0, 0, 0)}]], 32, true, 1) color=null material=null");

    const std::unique_ptr<QuorPrimary> lines(createQuorLineArr({{1, 2, 3}, {4, 5, 6}}, true));
    EXPECT_EQ(printed(*lines),
              "createQuorLineArr([(1, 2, 3), (4, 5, 6)], true) color=null thick=null ltScale=null "
              "lineType=null");
}

TEST(Printing, ShowsOperationsAndParametersWithoutAttributes)
{
    const std::unique_ptr<QuorPrimary> boolean(createQuorPrimaryBooleanOpr(2, -1, 3));
    EXPECT_EQ(printed(*boolean), "createQuorPrimaryBooleanOpr(2, -1, 3)");

    QuorOprKVParamArray parameters;
    EXPECT_EQ(printed(parameters), "QuorOprKVParamArray([])");
    parameters.setParams({{"P1", "diameter", KVValue::ofDouble(0.1)}, {"P2", "", KVValue::ofBool(true)}});
    EXPECT_EQ(printed(parameters),
              "QuorOprKVParamArray([{\"P1\", \"diameter\", double:0.1}, {\"P2\", \"\", bool:true}])");
}

} // namespace

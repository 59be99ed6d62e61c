#include <BaseObj/BaseObj.h>
#include <KxGeBasic/KxGeBasic.h>

#include <array>
#include <charconv>
#include <cmath>
#include <gmock/gmock.h>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>

namespace {

template<class Value>
std::string printed(const Value& value)
{
    std::ostringstream out;
    out << value;
    return out.str();
}

std::string number(double value)
{
    std::ostringstream out;
    kxge::printNumber(out, value);
    return out.str();
}

TEST(PrintedNumber, IsTheShortestThatReadsBack)
{
    const std::pair<double, const char*> cases[] = {
        {0.0, "0"},
        {-0.0, "-0"},
        {1.0, "1"},
        {-2.5, "-2.5"},
        {0.1, "0.1"},
        {0.1 + 0.2, "0.30000000000000004"},
        {1e300, "1e+300"},
        {5e-324, "5e-324"},
        {-2.2250738585072014e-308, "-2.2250738585072014e-308"},
        {1.7976931348623157e308, "1.7976931348623157e+308"},
        {std::numeric_limits<double>::infinity(), "inf"},
        {-std::numeric_limits<double>::infinity(), "-inf"},
        {std::numeric_limits<double>::quiet_NaN(), "nan"},
        {-std::numeric_limits<double>::quiet_NaN(), "nan"},
    };
    for (const auto& [value, text] : cases)
        EXPECT_EQ(number(value), text);
}

TEST(PrintedNumber, ReadsBackAsTheSameDouble)
{
    for (double value = 1e-300 / 3; value < 1e300; value *= -70.7) {
        const std::string text = number(value);
        double read = 0;
        const auto end = std::from_chars(text.data(), text.data() + text.size(), read);
        EXPECT_EQ(end.ptr, text.data() + text.size());
        EXPECT_EQ(read, value) << text;
    }
}

TEST(PrintedInteger, HasAllDigits)
{
    std::ostringstream out;
    kxge::printInteger(out, std::numeric_limits<long long>::min());
    EXPECT_EQ(out.str(), "-9223372036854775808");
}

// A stream that would group digits, part with a comma, fill fields and round.
struct Foreign : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(PrintedValues, DoNotDependOnTheStream)
{
    std::ostringstream out;
    out.imbue(std::locale(std::locale::classic(), new Foreign));
    out << std::setw(40) << std::setfill('*') << std::hex << std::showpos << std::fixed
        << std::setprecision(1);
    out << KxGePoint3D(1234567.25, -1, 0) << KxDbObjectId(1234567)
        << KVParams{"k", "n", KVValue::ofInt(1234567)};
    EXPECT_EQ(out.str(), "(1234567.25, -1, 0)1234567{\"k\", \"n\", int:1234567}");
    EXPECT_EQ(out.width(), 40);
    EXPECT_EQ(out.precision(), 1);
}

TEST(PrintedValues, OfGeometryListTheirNumbers)
{
    EXPECT_EQ(printed(QuorPoint{0.1, 2, 1e300}), "(0.1, 2, 1e+300)");
    EXPECT_EQ(printed(KxGePoint3D(1, 2, 3)), "(1, 2, 3)");
    EXPECT_EQ(printed(KxGeVector3D(-1, 0, 0.5)), "(-1, 0, 0.5)");
    EXPECT_EQ(printed(QuorPolyDesc{-2, 10, 20, 30, {1, 2, 3}}), "{-2, 10, 20, 30, (1, 2, 3)}");
}

TEST(PrintedValues, OfAMatrixAreItsRows)
{
    KxGeMatrix3D matrix;
    EXPECT_EQ(printed(matrix), "((1, 0, 0, 0), (0, 1, 0, 0), (0, 0, 1, 0), (0, 0, 0, 1))");
    matrix.setRow(1, 5, 6, 7, 0.1);
    EXPECT_EQ(printed(matrix), "((1, 0, 0, 0), (5, 6, 7, 0.1), (0, 0, 1, 0), (0, 0, 0, 1))");
}

TEST(PrintedValues, OfParametersTellTheirKind)
{
    EXPECT_EQ(printed(KVValue()), "none");
    EXPECT_EQ(printed(KVValue::ofShort(-5)), "short:-5");
    EXPECT_EQ(printed(KVValue::ofDouble(0.1)), "double:0.1");
    EXPECT_EQ(printed(KVValue::ofPoint({1, 2, 3})), "point:(1, 2, 3)");
    EXPECT_EQ(printed(KVValue::ofString("DN\"50\"")), "string:\"DN\\\"50\\\"\"");
    EXPECT_EQ(printed(KVValue::ofInt(70000)), "int:70000");
    EXPECT_EQ(printed(KVValue::ofBool(true)), "bool:true");
    EXPECT_EQ(printed(KVValue::ofBool(false)), "bool:false");
    EXPECT_EQ(printed(KVValue::ofTag(6)), "tag:6");
    EXPECT_EQ(printed(KVParams{"P1", "diameter", KVValue::ofShort(3)}), "{\"P1\", \"diameter\", short:3}");
    EXPECT_EQ(printed(KVData{"P1", KVValue::ofInt(3)}), "{\"P1\", int:3}");
}

TEST(PrintedText, IsQuotedByteByByte)
{
    using namespace std::string_literals;
    const std::pair<std::string, const char*> cases[] = {
        {"", "\"\""},
        {"100%s", "\"100%s\""},
        {"a\nb\rc\td", "\"a\\nb\\rc\\td\""},
        {"\\ and \"", "\"\\\\ and \\\"\""},
        {"\0\x1F\x7F"s, "\"\\x00\\x1f\\x7f\""},
        {"\xB7\xA7\xC3\xC5", "\"\xB7\xA7\xC3\xC5\""},
    };
    for (const auto& [text, quoted] : cases) {
        std::ostringstream out;
        baseobj::printText(out, text);
        EXPECT_EQ(out.str(), quoted);
    }
}

TEST(PolyDesc, KeepsTheOrderOfItsFieldsAndStartsAtZero)
{
    const QuorPolyDesc fresh;
    EXPECT_EQ(fresh, (QuorPolyDesc{0, 0.0, 0.0, 0.0, KxGePoint3D(0, 0, 0)}));
    const QuorPolyDesc made{2, 10, 20, 30, {1, 2, 3}};
    EXPECT_EQ(made.kind, 2);
    EXPECT_EQ(made.startWidth, 10);
    EXPECT_EQ(made.endWidth, 20);
    EXPECT_EQ(made.bulge, 30);
    EXPECT_EQ(made.point, KxGePoint3D(1, 2, 3));
}

TEST(Point, EqualsOnlyTheSameCoordinates)
{
    EXPECT_EQ(KxGePoint3D(), KxGePoint3D(0, 0, -0.0));
    EXPECT_NE(KxGePoint3D(1, 2, 3), KxGePoint3D(1, 2, std::nextafter(3.0, 4.0)));
    const KxGePoint3D unknown(std::nan(""), 0, 0);
    EXPECT_NE(unknown, unknown);
}

TEST(Matrix, GivesAndTakesRows)
{
    KxGeMatrix3D matrix;
    matrix.setRow(3, 1, 2, 3, 4);
    matrix(0, 3) = 9;
    double a = 0, b = 0, c = 0, d = 0;
    matrix.getRow(3, a, b, c, d);
    EXPECT_THAT((std::array{a, b, c, d}), testing::ElementsAre(1, 2, 3, 4));
    matrix.getRow(0, a, b, c, d);
    EXPECT_THAT((std::array{a, b, c, d}), testing::ElementsAre(1, 0, 0, 9));
}

TEST(ObjectId, StartsAsTheNullIdAndOrdersAsSigned)
{
    EXPECT_TRUE(KxDbObjectId().isNull());
    KxDbObjectId id(1);
    id.setId(std::numeric_limits<long long>::min());
    EXPECT_EQ(id.toInt(), std::numeric_limits<long long>::min());
    EXPECT_LT(id, KxDbObjectId());
    EXPECT_FALSE(id.isNull());
    EXPECT_EQ(printed(id), "-9223372036854775808");
}

TEST(ParameterValue, AnswersWithItsKindAndContents)
{
    EXPECT_EQ(KVValue().tag(), KVTag::None);
    EXPECT_EQ(KVValue::ofShort(-5).tag(), KVTag::Short);
    EXPECT_EQ(KVValue::ofShort(-5).asShort(), -5);
    EXPECT_EQ(KVValue::ofDouble(0.1).tag(), KVTag::Double);
    EXPECT_EQ(KVValue::ofDouble(0.1).asDouble(), 0.1);
    EXPECT_EQ(KVValue::ofPoint({1, 2, 3}).tag(), KVTag::Point);
    EXPECT_EQ(KVValue::ofPoint({1, 2, 3}).asPoint(), (QuorPoint{1, 2, 3}));
    EXPECT_EQ(KVValue::ofString("a").tag(), KVTag::String);
    EXPECT_EQ(KVValue::ofString("a").asString(), "a");
    EXPECT_EQ(KVValue::ofInt(70000).tag(), KVTag::Int);
    EXPECT_EQ(KVValue::ofInt(70000).asInt(), 70000);
    EXPECT_EQ(KVValue::ofInt(70000).asShort(), 4464);
    EXPECT_EQ(KVValue::ofBool(true).tag(), KVTag::Bool);
    EXPECT_TRUE(KVValue::ofBool(true).asBool());
    EXPECT_EQ(static_cast<short>(KVValue::ofTag(7).tag()), 7);
}

TEST(ParameterValue, DiffersByKindAndByContents)
{
    EXPECT_EQ(KVValue::ofInt(5), KVValue::ofInt(5));
    EXPECT_NE(KVValue::ofInt(5), KVValue::ofShort(5));
    EXPECT_NE(KVValue::ofInt(5), KVValue::ofInt(6));
}

} // namespace

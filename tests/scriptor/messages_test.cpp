#include "Messages.h"

#include "scriptor_fixture.h"

namespace {

using namespace quorlua::messages;

std::string given;

const char* translate(const char* text)
{
    given = text;
    return "translated";
}

TEST(Messages, AreTheirChineseTextsInGbk)
{
    struct Case {
        const char* bytes;
        const char* text;
    };
    const Case cases[] = {
        {segmentFailed.text(), "图形库调用出错：%s"},
        {noPrimitives.text(), "图形库脚本未返回结果"},
        {booleanLength.text(), "\n布尔运算参数应该为4个，目前为: %d"},
        {booleanOperation.text(), "\n布尔计算第2个参数应该为布尔运算类型"},
        {booleanMain.text(), "\n布尔计算第3个参数应该为执行布尔运算的主体元序号"},
        {booleanOther.text(), "\n布尔计算第3个参数应该为执行布尔运算的体元序号"},
        {slicePlane.text(), "\n布尔计算第3个参数应该为执行布尔切割的平面定义"},
        {slicePoint.text(), "\n布尔切割平面定义的第1个参数应该为点"},
        {sliceDirection.text(), "\n布尔切割平面定义第2个参数应该为方向"},
        {ellipseLength.text(), "\n椭圆参数应该为7个，目前为: %d"},
        {ellipseCentre.text(), "\n椭圆第1个参数应该为点"},
        {ellipseNormal.text(), "\n椭圆第2个参数应该为点"},
        {ellipseMajorAxis.text(), "\n椭圆第3个参数应该为点"},
        {ellipseRatio.text(), "\n椭圆第4个参数应该为数"},
        {ellipseStart.text(), "\n椭圆第5个参数应该为数"},
        {ellipseEnd.text(), "\n椭圆第6个参数应该为数"},
    };
    for (const Case& message : cases)
        EXPECT_EQ(utf8(message.bytes), message.text);
}

TEST(Messages, OfTheTableAreTheCharactersThatTheyStandFor)
{
    for (const GbkCharacter& known : gbkCharacters) {
        const char bytes[] = {static_cast<char>(known.code >> 8), static_cast<char>(known.code & 0xFF), '\0'};
        const char32_t at = known.character;
        // All of them take three bytes in UTF-8.
        const std::string text = {static_cast<char>(0xE0 | (at >> 12)),
                                  static_cast<char>(0x80 | ((at >> 6) & 63)),
                                  static_cast<char>(0x80 | (at & 63))};
        EXPECT_EQ(utf8(bytes), text);
    }
}

TEST(Messages, PassThroughTheHostsTranslation)
{
    EXPECT_EQ(translated(noPrimitives), noPrimitives.text()) << "by default a text is its own translation";
    setQuorGetText_callbk(translate);
    EXPECT_STREQ(translated(segmentFailed), "translated");
    setQuorGetText_callbk(nullptr);
    EXPECT_EQ(utf8(given), "图形库调用出错：%s");
}

} // namespace

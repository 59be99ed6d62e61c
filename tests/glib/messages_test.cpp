#include "../system.h"
#include "primary_state.h"

#include <QuorMsgHandle/QuorMsgHandle.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string fromGbk(const std::string& bytes)
{
    return sys::utf8FromGbk(bytes).value_or("not GBK: " + bytes);
}

struct MessageCase {
    const char* name;
    const char* record;
    const char* text;
};

const MessageCase messageCases[] = {
    {"BooleanTooShort", "{41, 1, 2}", "\n布尔运算参数应该为4个，目前为: 3"},
    {"BooleanTooLong", "{41, 1, 2, 3, 4, 5}", "\n布尔运算参数应该为4个，目前为: 6"},
    {"BooleanWithCodeOnly", "{41}", "\n布尔运算参数应该为4个，目前为: 1"},
    {"BooleanOperation", "{41, '1', 2, 3}", "\n布尔计算第2个参数应该为布尔运算类型"},
    {"BooleanOperationFirst", "{41, {}, {}, {}}", "\n布尔计算第2个参数应该为布尔运算类型"},
    {"BooleanMainElement", "{41, 1, true, 3}", "\n布尔计算第3个参数应该为执行布尔运算的主体元序号"},
    {"SliceMainElement", "{41, 4, {}, 3}", "\n布尔计算第3个参数应该为执行布尔运算的主体元序号"},
    {"BooleanOtherElement", "{41, 1, 2, {a, z}}", "\n布尔计算第3个参数应该为执行布尔运算的体元序号"},
    {"SlicePlane", "{41, 4, 2, 3}", "\n布尔计算第3个参数应该为执行布尔切割的平面定义"},
    {"SlicePoint", "{41, 4, 2, {{1, 2}, z}}", "\n布尔切割平面定义的第1个参数应该为点"},
    {"SlicePointFirst", "{41, 4, 2, {}}", "\n布尔切割平面定义的第1个参数应该为点"},
    {"SliceDirection", "{41, 4, 2, {a}}", "\n布尔切割平面定义第2个参数应该为方向"},
    {"EllipseTooShort", "{31, a, z, x, 0.5, 30}", "\n椭圆参数应该为7个，目前为: 6"},
    {"EllipseWithCodeOnly", "{31}", "\n椭圆参数应该为7个，目前为: 1"},
    {"EllipseCentre", "{31, 5, z, x, 0.5, 30, 60}", "\n椭圆第1个参数应该为点"},
    {"EllipseNormal", "{31, a, 5, x, 0.5, 30, 60}", "\n椭圆第2个参数应该为点"},
    {"EllipseMajorAxis", "{31, a, z, 5, 0.5, 30, 60}", "\n椭圆第3个参数应该为点"},
    {"EllipseRatio", "{31, a, z, x, '0.5', 30, 60}", "\n椭圆第4个参数应该为数"},
    {"EllipseStart", "{31, a, z, x, 0.5, '30', 60}", "\n椭圆第5个参数应该为数"},
    {"EllipseEnd", "{31, a, z, x, 0.5, 30, {}, 1, 'D', 2}", "\n椭圆第6个参数应该为数"},
};

/// How often and with what the translation was asked.
Texts asked;

const char* translateToLatin(const char* text)
{
    static std::string answer;
    asked.emplace_back(text);
    answer = "100%s <" + std::to_string(std::string(text).size()) + "> %d";
    return answer.c_str();
}

class Message : public PrimaryState {
protected:
    void SetUp() override
    {
        PrimaryState::SetUp();
        asked.clear();
    }
    void TearDown() override
    {
        setQuorGetText_callbk(nullptr);
        PrimaryState::TearDown();
    }

    Texts decodedAlerts() const
    {
        Texts texts;
        for (const std::string& alert : alerts)
            texts.push_back(fromGbk(alert));
        return texts;
    }
};

class EveryMessage : public Message, public testing::WithParamInterface<MessageCase> {
protected:
    std::string table() const { return std::string("{") + GetParam().record + "}"; }
};

TEST_P(EveryMessage, IsTheOneOfItsConditionInGbk)
{
    EXPECT_THAT(parse(table()), IsEmpty());
    EXPECT_THAT(decodedAlerts(), ElementsAre(GetParam().text));
}

TEST_P(EveryMessage, IsTranslatedByTheHost)
{
    setQuorGetText_callbk(translateToLatin);
    parse(table());
    ASSERT_EQ(asked.size(), 1u);
    // The text is asked for as it stands in the table, before its number is put in.
    std::string untranslated = GetParam().text;
    const std::size_t number = untranslated.find(": ");
    if (number != std::string::npos) untranslated.replace(number + 2, 1, "%d");
    EXPECT_EQ(fromGbk(asked[0]), untranslated);
    ASSERT_EQ(alerts.size(), 1u);
    // A number fills the translation's conversions; without one, its percent signs are text.
    const std::string size = "<" + std::to_string(asked[0].size()) + ">";
    if (number == std::string::npos)
        EXPECT_EQ(alerts[0], "100%s " + size + " %d");
    else
        EXPECT_EQ(alerts[0], "100" + std::string(GetParam().text).substr(number + 2) + " " + size + " %d");
}

TEST_P(EveryMessage, GoesToStandardErrorWithoutAnAlertFunction)
{
    run("_ALERT = nil");
    testing::internal::CaptureStderr();
    parse(table());
    EXPECT_EQ(fromGbk(testing::internal::GetCapturedStderr()), std::string(GetParam().text) + "\n");
}

TEST_P(EveryMessage, LeavesTheWalkGoingOn)
{
    EXPECT_THAT(parse(std::string("{{10, a, 5}, ") + GetParam().record + ", {10, a, 6}}"),
                ElementsAre("createQuorGraphy3DSphere((1, 2, 3), 5, 12, false)" + plainSolid,
                            "createQuorGraphy3DSphere((1, 2, 3), 6, 12, false)" + plainSolid));
    EXPECT_EQ(alerts.size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Messages, EveryMessage, testing::ValuesIn(messageCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(Message, OnesComeInTheRecordsOrder)
{
    parse("{{41, 1}, {40, {{31}, {41, 4, 2, 3}}}, {31, 5, 5, 5, 5, 5, 5}}");
    EXPECT_THAT(decodedAlerts(),
                ElementsAre("\n布尔运算参数应该为4个，目前为: 2", "\n椭圆参数应该为7个，目前为: 1",
                            "\n布尔计算第3个参数应该为执行布尔切割的平面定义", "\n椭圆第1个参数应该为点"));
}

TEST_F(Message, NoneComesForAnEllipseThatIsTooLong)
{
    EXPECT_EQ(parse("{{31, a, z, x, 0.5, 30, 60, 0.7, 'D', 2, 5, 5}}").size(), 1u);
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Message, NoneComesFromAnyOtherKind)
{
    std::string records;
    for (int code = 0; code <= 800; ++code) {
        if (code == 31 || code == 41) continue;
        records += "{" + std::to_string(code) + "}, {" + std::to_string(code) + ", true, true, true, true}, ";
    }
    EXPECT_THAT(parse("{" + records + "}"), IsEmpty());
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Message, AlertMayChangeTheTableThatWasWalked)
{
    run("function _ALERT(text) for i = 1, 100 do t[i + 1000] = {10, a, i} end t[1], t[3] = nil, nil "
        "collectgarbage() count = (count or 0) + 1 end "
        "t = {{41}, {10, a, 5}, {41}, {10, a, 6}}");
    EXPECT_EQ(parse("t").size(), 2u);
    EXPECT_EQ(shown("count"), "2");
}

TEST_F(Message, AlertThatRaisesSendsTheMessageToStandardError)
{
    run("function _ALERT() error('no') end");
    testing::internal::CaptureStderr();
    EXPECT_EQ(parse("{{41}, {10, a, 5}}").size(), 1u);
    EXPECT_EQ(fromGbk(testing::internal::GetCapturedStderr()), "\n布尔运算参数应该为4个，目前为: 1\n");
}

int parseAgain(lua_State* L)
{
    auto* built = static_cast<std::size_t*>(lua_touserdata(L, lua_upvalueindex(1)));
    lua_getglobal(L, "t");
    std::vector<QuorPrimary*> list;
    if (quorlua::parse_primary_byidx(L, -1, list) == Quor::Ok) *built += list.size();
    for (const QuorPrimary* primitive : list)
        delete primitive;
    return 0;
}

TEST_F(Message, AlertMayParseTheTableAgain)
{
    std::size_t builtWithin = 0;
    lua_pushlightuserdata(L, &builtWithin);
    lua_pushcclosure(L, parseAgain, 1);
    lua_setglobal(L, "_ALERT");
    run("t = {{41}, {10, a, 5}}");
    testing::internal::CaptureStderr();
    EXPECT_EQ(parse("t").size(), 1u);
    EXPECT_EQ(fromGbk(testing::internal::GetCapturedStderr()), "\n布尔运算参数应该为4个，目前为: 1\n")
        << "what the inner parse reports cannot go to the alert that runs it";
    EXPECT_EQ(builtWithin, 1u);
}

} // namespace

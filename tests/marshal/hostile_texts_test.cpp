// Texts that nobody's serializer wrote: they are refused with an error, and nothing in them is ever run.

#include "serializer_fixture.h"

#include <random>
#include <string_view>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class HostileText : public Serializer {
protected:
    void SetUp() override
    {
        Serializer::SetUp();
        run("ran = nil function run() ran = 'ran' return {} end");
    }
    void TearDown() override
    {
        EXPECT_EQ(shown("ran"), "nil") << "something in a text was run";
        Serializer::TearDown();
    }

    /// Reads a text that must be refused; the messages.
    std::vector<std::string> refusalOf(const std::string& text)
    {
        alerts.clear();
        read(text);
        EXPECT_TRUE(lua_isnil(L, -1)) << text;
        lua_pop(L, 1);
        return alerts;
    }
};

/// A text that has all there is in it.
constexpr std::string_view everything =
    "{1,-2.5,5p-52,inf,-inf,nan,true,false,\"a\\5C\",&1{},#-5,{{2}},50=*1,\"k\"=&2#7,#8={},*1={\"x\"=*2}}";

TEST_F(HostileText, IsRefusedWithItsReason)
{
    const struct {
        const char* text;
        const char* reason;
    } cases[] = {
        // The head.
        {" ", "this is no text of serializeTable"},
        {"{}", "this is no text of serializeTable"},
        {"quor-table 1", "this is no text of serializeTable"},
        {"quor-table 1{}", "this is no text of serializeTable"},
        {"quor-table  1 {}", "this is no text of serializeTable"},
        {" quor-table 1 {}", "this is no text of serializeTable"},
        {"\xEF\xBB\xBFquor-table 1 {}", "this is no text of serializeTable"},
        {"Quor-table 1 {}", "this is no text of serializeTable"},
        {"quor-table x {}", "this is no text of serializeTable"},
        {"quor-table -1 {}", "this is no text of serializeTable"},
        {"\x1BLua", "this is no text of serializeTable"},
        {"quor-table 0 {}", "a text of version 0 cannot be read"},
        {"quor-table 2 {}", "a text of version 2 cannot be read"},
        {"quor-table 10 {}", "a text of version 10 cannot be read"},
        {"quor-table 01 {}", "a text of version 01 cannot be read"},
        {"quor-table 1111111111111111111111111 {}", "a text of version 11111111111111111111 cannot be read"},
        // The end.
        {"quor-table 1 ", "the text ends early at byte 14"},
        {"quor-table 1 {", "the text ends early at byte 15"},
        {"quor-table 1 {1", "the text ends early at byte 16"},
        {"quor-table 1 {1,", "the text ends early at byte 17"},
        {"quor-table 1 {\"a\"=", "the text ends early at byte 19"},
        {"quor-table 1 {\"a\"", "the text ends early at byte 18"},
        {"quor-table 1 {{}", "the text ends early at byte 17"},
        {"quor-table 1 {} ", "the text goes on behind its end at byte 16"},
        {"quor-table 1 {}\n", "the text goes on behind its end at byte 16"},
        {"quor-table 1 {}}", "the text goes on behind its end at byte 16"},
        {"quor-table 1 {}{}", "the text goes on behind its end at byte 16"},
        {"quor-table 1 1 2", "the text goes on behind its end at byte 15"},
        {"quor-table 1 \"a\"\"b\"", "the text goes on behind its end at byte 17"},
        {"quor-table 1 5=6", "the text goes on behind its end at byte 15"},
        // Tables.
        {"quor-table 1 }", "a value is expected at byte 14"},
        {"quor-table 1 {,}", "a value is expected at byte 15"},
        {"quor-table 1 {1,}", "a value is expected at byte 17"},
        {"quor-table 1 {1,,2}", "a value is expected at byte 17"},
        {"quor-table 1 {1;2}", ", or } is expected at byte 16"},
        {"quor-table 1 {1 }", ", or } is expected at byte 16"},
        {"quor-table 1 { 1}", "a value is expected at byte 15"},
        {"quor-table 1 {\n1}", "a value is expected at byte 15"},
        {"quor-table 1 {1=}", "a value is expected at byte 17"},
        {"quor-table 1 {=1}", "a value is expected at byte 15"},
        {"quor-table 1 {1=2=3}", ", or } is expected at byte 18"},
        {"quor-table 1 {a=1}", "an unknown word at byte 15"},
        {"quor-table 1 {[1]=1}", "a value is expected at byte 15"},
        {"quor-table 1 (1)", "a value is expected at byte 14"},
        {"quor-table 1 {\"a\"=1,2}", "= is expected at byte 22"},
        {"quor-table 1 {\"a\"=1,2,\"b\"=3}", "= is expected at byte 22"},
        // Keys.
        {"quor-table 1 {nan=1}", "not-a-number is no key at byte 18"},
        {"quor-table 1 {-nan=1}", "an unknown word at byte 15"},
        {"quor-table 1 {nil=1}", "an unknown word at byte 15"},
        {"quor-table 1 {\"a\"=1,\"a\"=2}", "a key stands twice at byte 24"},
        {"quor-table 1 {\"a\"=false,\"\\61\"=2}", "a key stands twice at byte 30"},
        {"quor-table 1 {5,1=6}", "a key stands twice at byte 18"},
        {"quor-table 1 {2=1,2.0=1}", "a key stands twice at byte 22"},
        {"quor-table 1 {0=1,-0=2}", "a key stands twice at byte 21"},
        {"quor-table 1 {true=1,true=2}", "a key stands twice at byte 26"},
        {"quor-table 1 &1{*1=1,*1=2}", "a key stands twice at byte 24"},
        // Words and numbers.
        {"quor-table 1 nil", "an unknown word at byte 14"},
        {"quor-table 1 truefalse", "an unknown word at byte 14"},
        {"quor-table 1 True", "a value is expected at byte 14"},
        {"quor-table 1 infinity", "an unknown word at byte 14"},
        {"quor-table 1 -", "a value is expected at byte 14"},
        {"quor-table 1 --1", "a value is expected at byte 14"},
        {"quor-table 1 +1", "a value is expected at byte 14"},
        {"quor-table 1 .5", "a value is expected at byte 14"},
        {"quor-table 1 5.", "a digit is expected at byte 16"},
        {"quor-table 1 1,5", "the text goes on behind its end at byte 15"},
        {"quor-table 1 1.5.5", "the text goes on behind its end at byte 17"},
        {"quor-table 1 1e5", "the text goes on behind its end at byte 15"},
        {"quor-table 1 0x10", "the text goes on behind its end at byte 15"},
        {"quor-table 1 1.5p3", "the text goes on behind its end at byte 17"},
        {"quor-table 1 1p", "a digit is expected at byte 16"},
        {"quor-table 1 1p+5", "a digit is expected at byte 16"},
        {"quor-table 1 1p1024", "a number is out of range at byte 14"},
        {"quor-table 1 1p-1076", "a number is out of range at byte 14"},
        {"quor-table 1 1p99999", "a number is out of range at byte 14"},
        {"quor-table 1 1p999999999999", "a number is out of range at byte 14"},
        {"quor-table 1 12345678901234567", "a number has too many digits at byte 14"},
        {"quor-table 1 -12345678901234567", "a number has too many digits at byte 14"},
        {"quor-table 1 12345678901234567p1", "a number has too many digits at byte 14"},
        {"quor-table 1 1.2345678901234567", "a number has too many digits at byte 14"},
        // Strings.
        {"quor-table 1 \"", "a string does not end at byte 14"},
        {"quor-table 1 \"a", "a string does not end at byte 14"},
        {"quor-table 1 {\"a}", "a string does not end at byte 15"},
        {"quor-table 1 'a'", "a value is expected at byte 14"},
        {"quor-table 1 [[a]]", "a value is expected at byte 14"},
        {"quor-table 1 \"a\\\"", "a string holds an unknown escape at byte 14"},
        {"quor-table 1 \"\\4\"", "a string holds an unknown escape at byte 14"},
        {"quor-table 1 \"\\n\"", "a string holds an unknown escape at byte 14"},
        {"quor-table 1 \"\\5c\"", "a string holds an unknown escape at byte 14"},
        {"quor-table 1 \"\\\\41\"", "a string holds an unknown escape at byte 14"},
        {"quor-table 1 \"a\nb\"", "a string holds a byte that must be escaped at byte 16"},
        {"quor-table 1 \"\x7F\"", "a string holds a byte that must be escaped at byte 15"},
        {"quor-table 1 \"\xD5\xE2\"", "a string holds a byte that must be escaped at byte 15"},
        // Ids.
        {"quor-table 1 #", "a 64-bit integer is expected at byte 14"},
        {"quor-table 1 #x", "a 64-bit integer is expected at byte 14"},
        {"quor-table 1 #-", "a 64-bit integer is expected at byte 14"},
        {"quor-table 1 #+5", "a 64-bit integer is expected at byte 14"},
        {"quor-table 1 #5.5", "the text goes on behind its end at byte 16"},
        {"quor-table 1 #9223372036854775808", "a 64-bit integer is expected at byte 14"},
        {"quor-table 1 #-9223372036854775809", "a 64-bit integer is expected at byte 14"},
        {"quor-table 1 #000000000000000000000000000005", "a 64-bit integer is expected at byte 14"},
        // Labels.
        {"quor-table 1 *1", "a label that does not stand before at byte 14"},
        {"quor-table 1 {*1,&1{}}", "a label that does not stand before at byte 15"},
        {"quor-table 1 {&1{},*2}", "a label that does not stand before at byte 20"},
        {"quor-table 1 {&1{},&1{}}", "a label stands twice at byte 20"},
        {"quor-table 1 &1{&1{}}", "a label stands twice at byte 17"},
        {"quor-table 1 &{}", "a label is expected at byte 14"},
        {"quor-table 1 *", "a label is expected at byte 14"},
        {"quor-table 1 &0{}", "a label is expected at byte 14"},
        {"quor-table 1 &01{}", "a label is expected at byte 14"},
        {"quor-table 1 &-1{}", "a label is expected at byte 14"},
        {"quor-table 1 &x{}", "a label is expected at byte 14"},
        {"quor-table 1 &1234567890123456{}", "a label is expected at byte 14"},
        {"quor-table 1 &1 {}", "a table or a 64-bit integer is expected at byte 16"},
        {"quor-table 1 &1\"a\"", "a table or a 64-bit integer is expected at byte 16"},
        {"quor-table 1 &1&2{}", "a table or a 64-bit integer is expected at byte 16"},
        {"quor-table 1 &1", "a table or a 64-bit integer is expected at byte 16"},
        {"quor-table 1 {&1{},&2*1}", "a table or a 64-bit integer is expected at byte 22"},
    };
    for (const auto& [text, reason] : cases)
        EXPECT_THAT(refusalOf(text), ElementsAre(std::string("unSerializeTable: ") + reason)) << text;
}

TEST_F(HostileText, IsNeverRun)
{
    for (const char* text : {
             "run()",
             "return run()",
             "quor-table 1 run()",
             "quor-table 1 {run()}",
             "quor-table 1 {[run()]=1}",
             "quor-table 1 {\"a\"=run()}",
             "quor-table 1 {}run()",
             "quor-table 1 {};run()",
             "quor-table 1 {}\nrun()",
             "quor-table 1 {} return run()",
             "quor-table 1 \"\"..run()..\"\"",
             "quor-table 1 (function() run() end)()",
             "quor-table 1 \"]]run()--[[\" run()",
             "quor-table 1 {1}--[[\nrun()--]]",
             "quor-table 1 _G.run()",
             "quor-table run() {}",
         })
        EXPECT_EQ(refusalOf(text).size(), 1u) << text;
    // As data it is welcome.
    read("quor-table 1 {\"run()\"=\"\\22..run()..\\22\"}");
    EXPECT_EQ(shown("read['run()']"), "\"..run()..\"");
}

TEST_F(HostileText, ThatIsCutOffIsRefused)
{
    const std::string text = headed(std::string(everything));
    read(text);
    ASSERT_EQ(written(), text);
    for (std::size_t length = 1; length < text.size(); ++length)
        EXPECT_EQ(refusalOf(text.substr(0, length)).size(), 1u) << text.substr(0, length);
}

TEST_F(HostileText, WithAChangedByteIsReadOrRefused)
{
    const std::string text = headed(std::string(everything));
    std::mt19937 random(20240229);
    int refused = 0;
    int taken = 0;
    for (int i = 0; i < 20000; ++i) {
        std::string changed = text;
        for (auto changes = 1 + random() % 3; changes > 0; --changes) {
            const std::size_t at = random() % changed.size();
            switch (random() % 3) {
            case 0:
                changed[at] = static_cast<char>(1 + random() % 255);
                break;
            case 1:
                changed[at] = text[random() % text.size()];
                break;
            default:
                changed.erase(at, 1 + random() % 5);
                break;
            }
            if (changed.empty()) changed = "x";
        }
        alerts.clear();
        read(changed);
        const bool isRead = !lua_isnil(L, -1);
        ASSERT_EQ(alerts.size(), isRead ? 0u : 1u) << changed;
        if (isRead) {
            // Whatever was read can be written, and that is read as the same; keys that are tables may change
            // places.
            const std::string again = written();
            read(again);
            ASSERT_EQ(written().size(), again.size()) << changed;
            lua_pop(L, 1);
        } else {
            ASSERT_THAT(alerts[0], testing::StartsWith("unSerializeTable: ")) << changed;
        }
        ++(isRead ? taken : refused);
        lua_settop(L, 1);
    }
    EXPECT_GT(refused, 1000);
    EXPECT_GT(taken, 300);
}

TEST_F(HostileText, OfAnyBytesIsRefused)
{
    std::mt19937 random(4711);
    const std::string_view alphabet = "{}{},,==\"\\#&*0123456789.-pinfatruesl \n\x80\xFF";
    for (int i = 0; i < 5000; ++i) {
        std::string text = headed("{");
        for (auto length = random() % 40; length > 0; --length)
            text += alphabet[random() % alphabet.size()];
        // This ends none of the tables, whatever stands before it.
        EXPECT_EQ(refusalOf(text + "{").size(), 1u) << text;
    }
}

TEST_F(HostileText, MayBeDeep)
{
    constexpr std::size_t deep = 300000;
    EXPECT_THAT(refusalOf(headed(std::string(deep, '{'))),
                ElementsAre(HasSubstr("the text ends early at byte 300014")));
    EXPECT_THAT(refusalOf(headed(std::string(deep, '{') + std::string(deep + 1, '}'))),
                ElementsAre(HasSubstr("the text goes on behind its end")));
    std::string keys;
    for (std::size_t i = 0; i < deep; ++i)
        keys += "{1=";
    EXPECT_THAT(refusalOf(headed(keys)), ElementsAre(HasSubstr("the text ends early")));
    EXPECT_THAT(refusalOf(headed(std::string(deep, '&'))), ElementsAre(HasSubstr("a label is expected")));
    EXPECT_THAT(refusalOf(headed(std::string(deep, '-'))), ElementsAre(HasSubstr("a value is expected")));
    EXPECT_THAT(refusalOf(headed(std::string(deep, 'a'))), ElementsAre(HasSubstr("an unknown word")));
    EXPECT_THAT(refusalOf(headed(std::string(deep, '7'))), ElementsAre(HasSubstr("too many digits")));
    EXPECT_THAT(refusalOf(headed("#" + std::string(deep, '7'))), ElementsAre(HasSubstr("64-bit integer")));
    EXPECT_THAT(refusalOf(headed("1p" + std::string(deep, '7'))), ElementsAre(HasSubstr("out of range")));
    EXPECT_THAT(refusalOf(headed("\"" + std::string(deep, '\\') + "\"")),
                ElementsAre(HasSubstr("unknown escape")));
}

TEST_F(HostileText, TakesNoMemoryForWhatIsNotThere)
{
    for (const char* text : {
             "quor-table 1 &999999999999999{}",
             "quor-table 1 {&999999999999999{},&1#5,*999999999999999}",
             "quor-table 1 {2147483647=1,4294967296=2,9007199254740992=3}",
             "quor-table 1 {1073741824=1}",
         }) {
        lua_gc(L, LUA_GCCOLLECT, 0);
        const int before = lua_gc(L, LUA_GCCOUNT, 0);
        read(text);
        EXPECT_TRUE(lua_istable(L, -1)) << text;
        EXPECT_LT(lua_gc(L, LUA_GCCOUNT, 0), before + 64) << text;
        lua_settop(L, 1);
    }
}

TEST_F(HostileText, MayUseOtherFormsThanAreWritten)
{
    const struct {
        const char* text;
        const char* written;
    } cases[] = {
        {"007", "7"},          {"1.50", "1.5"},        {"2.0", "2"},
        {"-0.0", "-0"},        {"4p-2", "1"},          {"0p99999", "0"},
        {"-0p1", "-0"},        {"#-0", "#0"},          {"#007", "#7"},
        {"&7{*7}", "&1{*1}"},  {"{2=2,1=1}", "{1,2}"}, {"{\"b\"=1,\"a\"=2}", "{\"a\"=2,\"b\"=1}"},
        {"\"\\41\"", "\"A\""}, {"&9#5", "#5"},         {"{#5=1,#5=2}", nullptr},
    };
    for (const auto& [text, expected] : cases) {
        read(headed(text));
        ASSERT_FALSE(lua_isnil(L, -1)) << text;
        if (expected) {
            EXPECT_EQ(written(), headed(expected)) << text;
        }
        lua_settop(L, 1);
    }
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(HostileText, IsAnErrorToAScriptThatAsks)
{
    EXPECT_EQ(shown("select(2, pcall(unSerializeTable, 'x'))"),
              "unSerializeTable: this is no text of serializeTable");
    for (const char* value : {"nil", "{}", "12", "true", "print"})
        EXPECT_THAT(shown(std::string("select(2, pcall(unSerializeTable, ") + value + "))"),
                    HasSubstr("unSerializeTable: a text is expected, not "));
    EXPECT_EQ(shown("select(2, pcall(unSerializeTable, 'quor-table 1 {}\\0'))"),
              "unSerializeTable: the text goes on behind its end at byte 16");
    EXPECT_EQ(shown("select(2, pcall(serializeTable))"), "serializeTable: nil cannot be written: value");
    EXPECT_THAT(alerts, IsEmpty());
}

} // namespace

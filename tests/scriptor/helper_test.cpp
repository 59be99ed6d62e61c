#include "scriptor_fixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::vector<std::string> messages;

void noteMessage(const char* text)
{
    messages.emplace_back(text);
}

class Helper : public testing::Test {
protected:
    Helper() { messages.clear(); }

    std::string shown(const std::string& expression) { return luatext::shown(helper.getL(), expression); }

    ScriptFolder folder;
    QuorGlibScriptorHelper helper;
};

TEST_F(Helper, OwnsNothingAtFirst)
{
    EXPECT_EQ(helper.getL(), nullptr);
    EXPECT_EQ(helper.getScriptor(), nullptr);
}

TEST_F(Helper, LoadsAFileInAScriptorOfItsOwn)
{
    ASSERT_TRUE(helper.init(folder.write("a.lua", "a = 1").c_str(), nullptr));
    ASSERT_NE(helper.getScriptor(), nullptr);
    EXPECT_EQ(helper.getL(), helper.getScriptor()->getLua(false));
    EXPECT_EQ(helper.getScriptor()->getFileName(), folder.path("a.lua"));
    EXPECT_EQ(shown("a"), "1");
    EXPECT_EQ(shown("kxcom"), "nil");
    EXPECT_EQ(lua_gettop(helper.getL()), 1);
}

TEST_F(Helper, BindsTheMessageFunctionBeforeTheFileRuns)
{
    const std::string path = folder.write(
        "a.lua", "_ALERT('one'); kxcom.errorMsg('two'); _ALERT(); _ALERT({}); kxcom.errorMsg(7.5)");
    ASSERT_TRUE(helper.init(path.c_str(), noteMessage));
    EXPECT_THAT(messages, ElementsAre("one", "two", "7.5"));
    EXPECT_EQ(shown("rawequal(_ALERT, kxcom.errorMsg)"), "false") << "each is a closure of its own";
    EXPECT_EQ(lua_gettop(helper.getL()), 1);
}

TEST_F(Helper, ShowsErrorsOfTheScriptThroughTheMessageFunction)
{
    EXPECT_FALSE(helper.init(folder.write("a.lua", "error('broken')").c_str(), noteMessage));
    EXPECT_THAT(messages, ElementsAre(HasSubstr("a.lua:1: broken")));
}

TEST_F(Helper, OwnsNothingAfterAFailure)
{
    const char* const bad[] = {"error('x')", "= 1"};
    for (const char* script : bad) {
        ASSERT_TRUE(helper.init(folder.write("good.lua", "").c_str(), noteMessage));
        EXPECT_FALSE(helper.init(folder.write("bad.lua", script).c_str(), noteMessage));
        EXPECT_EQ(helper.getScriptor(), nullptr) << script;
        EXPECT_EQ(helper.getL(), nullptr) << script;
    }
    EXPECT_FALSE(helper.init(folder.path("missing.lua").c_str(), noteMessage));
    EXPECT_FALSE(helper.init("", noteMessage));
    EXPECT_FALSE(helper.init(nullptr, noteMessage));
    EXPECT_EQ(helper.getScriptor(), nullptr);
}

TEST_F(Helper, ReusesItsScriptorAndState)
{
    ASSERT_TRUE(helper.init(folder.write("a.lua", "a = (a or 0) + 1").c_str(), nullptr));
    QuorGlibScriptor* scriptor = helper.getScriptor();
    lua_State* L = helper.getL();
    ASSERT_TRUE(helper.init(folder.path("a.lua").c_str(), noteMessage));
    EXPECT_EQ(helper.getScriptor(), scriptor);
    EXPECT_EQ(helper.getL(), L);
    EXPECT_EQ(shown("a"), "1") << "the file did not change";
    EXPECT_EQ(shown("type(kxcom.errorMsg)"), "function");
    ASSERT_TRUE(helper.init(folder.write("b.lua", "b = 1").c_str(), nullptr));
    EXPECT_EQ(shown("a .. b"), "11");
    EXPECT_EQ(shown("type(kxcom.errorMsg)"), "function") << "no function unbinds nothing";
}

TEST_F(Helper, AddsToAnExistingMessageTable)
{
    ASSERT_TRUE(helper.init(folder.write("a.lua", "kxcom = {other = 1}").c_str(), nullptr));
    ASSERT_TRUE(helper.init(folder.path("a.lua").c_str(), noteMessage));
    EXPECT_EQ(shown("kxcom.other .. type(kxcom.errorMsg)"), "1function");
    ASSERT_TRUE(helper.init(folder.write("b.lua", "kxcom = 5").c_str(), nullptr));
    ASSERT_TRUE(helper.init(folder.path("b.lua").c_str(), noteMessage));
    EXPECT_EQ(shown("type(kxcom.errorMsg)"), "function") << "what is no table is replaced";
}

TEST_F(Helper, BindsWhatItCanInAScriptWithStrictGlobals)
{
    const std::string strict = "setmetatable(_G, {__index = function() error('r') end,"
                               " __newindex = function() error('w') end})";
    ASSERT_TRUE(helper.init(folder.write("a.lua", strict).c_str(), nullptr));
    ASSERT_TRUE(helper.init(folder.path("a.lua").c_str(), noteMessage));
    EXPECT_EQ(shown("type(_ALERT)"), "function");
    EXPECT_EQ(shown("rawget(_G, 'kxcom')"), "nil");
    EXPECT_EQ(lua_gettop(helper.getL()), 1);
}

} // namespace

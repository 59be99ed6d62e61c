#include "scriptor_fixture.h"

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;

/// What is no name of a global: the segment is missing, and nothing is printed.
constexpr const char* noSegments[] = {nullptr, "", "missing", "glib.setpath"};

class Segments : public Scriptor {
protected:
    int call(const char* name)
    {
        return kept([&] { return static_cast<int>(scriptor.callSeg(name)); });
    }
    int call(const char* name, int& needxdir, std::string& text)
    {
        return kept([&] { return static_cast<int>(scriptor.callSeg(name, needxdir, text)); });
    }
    int call(const char* name, std::vector<Keypoint>& keypoints)
    {
        return kept([&] { return static_cast<int>(scriptor.callSeg(name, keypoints)); });
    }
    int call(const char* name, Primitives& primitives)
    {
        return kept([&] { return static_cast<int>(scriptor.callSeg(name, primitives)); });
    }
    void mark()
    {
        Primitives none;
        draw("{{300, 7}}", none);
    }
    static std::string lastError() { return utf8(kxcom::getQuorLastErrorText()); }
};

TEST_F(Segments, AreCalledForTheirEffects)
{
    run("function plain(...) count = select('#', ...) return 1, 2, 3 end");
    EXPECT_EQ(call("plain"), Quor::Ok);
    EXPECT_EQ(shown("count"), "0");
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 0);
}

TEST_F(Segments, ThatAreMissingAreToldByStatusAlone)
{
    int needxdir = 5;
    std::string text = "old";
    Primitives primitives;
    for (const char* name : noSegments) {
        EXPECT_EQ(call(name), Quor::SegmentMissing);
        EXPECT_EQ(call(name, needxdir, text), Quor::SegmentMissing);
        std::vector<Keypoint> keypoints(1);
        EXPECT_EQ(call(name, keypoints), Quor::SegmentMissing);
        EXPECT_THAT(keypoints, IsEmpty()) << "cleared before the call";
        EXPECT_EQ(call(name, primitives), Quor::SegmentMissing);
        EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.callSeg3D(name, primitives)); }),
                  Quor::SegmentMissing);
    }
    EXPECT_EQ(needxdir, 5);
    EXPECT_EQ(text, "old");
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 0);
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Segments, ThatFailSetTheLastError)
{
    for (const char* body : {"error('broken')", "error({})", "error()", "error(5)", "local x = nil .. 'x'",
                             "return fail()", "coroutine.yield()"}) {
        run(std::string("function fails() ") + body + " end");
        kxcom::clearQuorLastError();
        alerts.clear();
        EXPECT_EQ(call("fails"), Quor::ScriptFailed) << body;
        EXPECT_EQ(kxcom::getQuorLastErrorCode(), 2003) << body;
        EXPECT_EQ(lastError(), "图形库调用出错：fails") << body;
        EXPECT_EQ(alerts.size(), 1u) << body;
    }
}

TEST_F(Segments, ThatFailAreReportedThroughAlert)
{
    run("function fails() error('broken %s') end");
    EXPECT_EQ(call("fails"), Quor::ScriptFailed);
    EXPECT_THAT(alerts, ElementsAre(testing::AllOf(HasSubstr("broken %s"), HasSubstr("stack traceback"))));
}

TEST_F(Segments, ThatFailSetTheLastErrorWhateverTheyWereToAnswer)
{
    run("function fails() error('x') end; keypoint = fails");
    int needxdir = 5;
    std::string text = "old";
    std::vector<Keypoint> keypoints(1);
    Primitives primitives;
    EXPECT_EQ(call("fails", needxdir, text), Quor::ScriptFailed);
    EXPECT_EQ(lastError(), "图形库调用出错：fails");
    EXPECT_EQ(needxdir, 5);
    EXPECT_EQ(text, "old");
    kxcom::clearQuorLastError();
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.getKeypoints(keypoints)); }), Quor::ScriptFailed);
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 2003);
    EXPECT_EQ(lastError(), "图形库调用出错：keypoint");
    EXPECT_THAT(keypoints, IsEmpty());
    kxcom::clearQuorLastError();
    draw("{{16, {0, 0, 0}, {1, 0, 0}}}", primitives);
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.callSeg3D("fails", primitives)); }),
              Quor::ScriptFailed);
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 2003);
    EXPECT_EQ(primitives.size(), 1u) << "only a parse clears the list";
}

TEST_F(Segments, MessageTakesTheNameAsItStands)
{
    run("_G['100%s'] = error; _G['\\205\\188'] = error");
    EXPECT_EQ(call("100%s"), Quor::ScriptFailed);
    EXPECT_EQ(lastError(), "图形库调用出错：100%s");
    EXPECT_EQ(call("\xCD\xBC"), Quor::ScriptFailed);
    EXPECT_EQ(lastError(), "图形库调用出错：图");
}

TEST_F(Segments, MessagesAreTranslatedBeforeTheyAreFormatted)
{
    setQuorGetText_callbk([](const char* text) {
        return utf8(text) == "图形库调用出错：%s"     ? "call failed: %s!"
               : utf8(text) == "图形库脚本未返回结果" ? "no result"
                                                      : "unknown";
    });
    run("function fails() error('x') end; function nothing() end");
    Primitives primitives;
    EXPECT_EQ(call("fails"), Quor::ScriptFailed);
    EXPECT_STREQ(kxcom::getQuorLastErrorText(), "call failed: fails!");
    EXPECT_EQ(call("nothing", primitives), Quor::ScriptFailed);
    EXPECT_STREQ(kxcom::getQuorLastErrorText(), "no result");
}

TEST_F(Segments, MayBeAnythingThatIsNotNil)
{
    run("callable = setmetatable({}, {__call = function(self) called = true end});"
        "number = 5; text = 'x'; flag = false; record = {}");
    EXPECT_EQ(call("callable"), Quor::Ok);
    EXPECT_EQ(shown("called"), "true");
    for (const char* name : {"number", "text", "flag", "record"}) {
        kxcom::clearQuorLastError();
        EXPECT_EQ(call(name), Quor::ScriptFailed) << name;
        EXPECT_EQ(kxcom::getQuorLastErrorCode(), 2003) << name;
    }
}

TEST_F(Segments, ThatSucceedResetTheThreadsContext)
{
    run("function plain() end; function bad() error('x') end; function empty() return {} end;"
        "function wants() return {needxdir = {true, 'x'}} end");
    int needxdir = 0;
    std::string text;
    std::vector<Keypoint> keypoints;
    Primitives primitives;
    mark();
    EXPECT_EQ(call("bad"), Quor::ScriptFailed);
    EXPECT_EQ(call("missing"), Quor::SegmentMissing);
    EXPECT_EQ(call("empty", needxdir, text), Quor::ScriptFailed);
    EXPECT_EQ(call("plain", primitives), Quor::ScriptFailed);
    EXPECT_EQ(currentColour(), 7) << "a failure leaves the context";
    EXPECT_EQ(call("plain"), Quor::Ok);
    EXPECT_EQ(currentColour(), 257);
    mark();
    EXPECT_EQ(call("wants", needxdir, text), Quor::Ok);
    EXPECT_EQ(currentColour(), 257);
    mark();
    EXPECT_EQ(call("plain", keypoints), Quor::Ok);
    EXPECT_EQ(currentColour(), 257);
    mark();
    EXPECT_EQ(call("empty", primitives), Quor::Ok);
    EXPECT_EQ(currentColour(), 257);
}

TEST_F(Segments, AnswerWhetherADirectionIsNeeded)
{
    int needxdir = 5;
    std::string text;
    run("function wants() return {needxdir = {true, 'a\\0b'}} end; function not_() return {needxdir = "
        "{false, ''}} end");
    EXPECT_EQ(call("wants", needxdir, text), Quor::Ok);
    EXPECT_EQ(needxdir, 1);
    EXPECT_EQ(text, std::string("a\0b", 3));
    EXPECT_EQ(call("not_", needxdir, text), Quor::Ok);
    EXPECT_EQ(needxdir, 0);
    EXPECT_EQ(text, "");
    run("inherits = function() return setmetatable({}, {__index = {needxdir = {true, 'x'}}}) end");
    EXPECT_EQ(call("inherits", needxdir, text), Quor::Ok);
    EXPECT_EQ(text, "x");
}

TEST_F(Segments, AnswerOfAnotherShapeIsAFailureWithoutALastError)
{
    struct Case {
        const char* answer;
        int needxdir;
    };
    const Case cases[] = {{"", 5},
                          {"nil", 5},
                          {"5", 5},
                          {"'needxdir'", 5},
                          {"{}", 5},
                          {"{needxdir = true}", 5},
                          {"{needxdir = 'x'}", 5},
                          {"{needxdir = {}}", 5},
                          {"{needxdir = {1, 'x'}}", 5},
                          {"{needxdir = {'true', 'x'}}", 5},
                          {"{needxdir = {nil, 'x'}}", 5},
                          {"{needxdir = {true}}", 1},
                          {"{needxdir = {false, 5}}", 0},
                          {"{needxdir = {true, {}}}", 1},
                          {"setmetatable({}, {__index = function() error('x') end})", 5}};
    for (const Case& wrong : cases) {
        run(std::string("function wants() return ") + wrong.answer + " end");
        int needxdir = 5;
        std::string text = "old";
        EXPECT_EQ(call("wants", needxdir, text), Quor::ScriptFailed) << wrong.answer;
        EXPECT_EQ(needxdir, wrong.needxdir) << wrong.answer;
        EXPECT_EQ(text, "old") << wrong.answer;
    }
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 0);
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Segments, AnswerKeypoints)
{
    run("function points() return {{1, 10, {1, 2, 3}}, {1, 20, {4, 5, 6}}} end; keypoint = points");
    std::vector<Keypoint> keypoints(3);
    EXPECT_EQ(call("points", keypoints), Quor::Ok);
    EXPECT_THAT(keypoints, ElementsAre(Keypoint{10, {1, 2, 3}}, Keypoint{20, {4, 5, 6}}));
    keypoints.resize(1);
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.getKeypoints(keypoints)); }), Quor::Ok);
    EXPECT_EQ(keypoints.size(), 2u);
}

TEST_F(Segments, AnswerThatIsNoTableGivesNoKeypoints)
{
    for (const char* answer : {"", "nil", "5", "'text'", "print"}) {
        run(std::string("function keypoint() return ") + answer + " end");
        std::vector<Keypoint> keypoints(3);
        EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.getKeypoints(keypoints)); }), Quor::Ok)
            << answer;
        EXPECT_THAT(keypoints, IsEmpty()) << answer;
    }
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 0);
}

TEST_F(Segments, AnswerPrimitives)
{
    run("function main() return {{300, 7}, {16, {0, 0, 0}, {1, 0, 0}}, {10, {0, 0, 0}, 5}, {999}} end");
    Primitives primitives;
    EXPECT_EQ(call("main", primitives), Quor::Ok);
    ASSERT_EQ(primitives.size(), 2u);
    EXPECT_STREQ(primitives[0]->factoryName(), "createQuorLine");
    EXPECT_EQ(primitives[0]->getColor(), 7);
    EXPECT_STREQ(primitives[1]->factoryName(), "createQuorGraphy3DSphere");
    primitives.free();
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.callSeg3D("main", primitives)); }), Quor::Ok);
    EXPECT_EQ(primitives.size(), 2u);
    run("function none() return {} end");
    primitives.free();
    primitives.push_back(nullptr);
    EXPECT_EQ(call("none", primitives), Quor::Ok);
    EXPECT_THAT(primitives, IsEmpty()) << "the list is cleared first";
}

TEST_F(Segments, AnswerWithoutATableOfPrimitivesSetsTheLastError)
{
    for (const char* answer : {"", "nil", "5", "'text'", "true", "print"}) {
        run(std::string("function main() return ") + answer + " end");
        Primitives primitives;
        primitives.push_back(nullptr);
        kxcom::clearQuorLastError();
        EXPECT_EQ(call("main", primitives), Quor::ScriptFailed) << answer;
        EXPECT_THAT(primitives, IsEmpty()) << answer;
        EXPECT_EQ(kxcom::getQuorLastErrorCode(), 2007) << answer;
        EXPECT_EQ(lastError(), "图形库脚本未返回结果") << answer;
    }
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(Segments, FunctorAndTextStyleAreGlobalsOfTheScript)
{
    int something = 0;
    const auto* functor = reinterpret_cast<const GlibScriptFunctor*>(&something);
    StyleOfTest style;
    const std::pair<const char*, const void*> expected[] = {{"_glib_pass_functor_pointer", functor},
                                                            {"_glib_pass_txtstyle_pointer", &style}};
    EXPECT_EQ(kept([&] { return scriptor.setFunction(functor), 0; }), 0);
    EXPECT_EQ(kept([&] { return scriptor.setGlibTextstyle(&style), 0; }), 0);
    for (const auto& [name, pointer] : expected) {
        lua_getglobal(state(), name);
        EXPECT_EQ(lua_type(state(), -1), LUA_TLIGHTUSERDATA) << name;
        EXPECT_EQ(lua_touserdata(state(), -1), pointer) << name;
        lua_pop(state(), 1);
    }
    EXPECT_EQ(kept([&] { return scriptor.setFunction(nullptr), 0; }), 0);
    EXPECT_EQ(shown("_glib_pass_functor_pointer"), "nil");
    EXPECT_EQ(shown("type(_glib_pass_txtstyle_pointer)"), "userdata");
    EXPECT_EQ(kept([&] { return scriptor.setGlibTextstyle(nullptr), 0; }), 0);
    EXPECT_EQ(shown("_glib_pass_txtstyle_pointer"), "nil");
}

TEST_F(Segments, MayCallTheScriptorAgain)
{
    struct Inner {
        static int call(lua_State* L)
        {
            auto* self = static_cast<QuorGlibScriptor*>(lua_touserdata(L, lua_upvalueindex(1)));
            lua_pushnumber(L, self->callSeg(lua_tostring(L, 1)));
            return 1;
        }
    };
    lua_pushlightuserdata(state(), &scriptor);
    lua_pushcclosure(state(), Inner::call, 1);
    lua_setglobal(state(), "callSegment");
    run("function good() end; function bad() error('inner') end;"
        "function outer() a, b, c = callSegment('good'), callSegment('bad'), callSegment('missing') end");
    EXPECT_EQ(call("outer"), Quor::Ok);
    EXPECT_EQ(shown("a .. ' ' .. b .. ' ' .. c"), "0 4 10");
}

TEST_F(Segments, FailInAFrameThatIsFull)
{
    run("function plain() called = true end; quorgetparam_ui = plain");
    lua_State* L = state();
    while (lua_checkstack(L, 1))
        lua_pushnil(L);
    int needxdir = 0;
    std::string text;
    std::vector<Keypoint> keypoints;
    std::vector<KVParams> records;
    KxGePoint3D first(1, 2, 3);
    KxGePoint3D second;
    StyleOfTest style;
    Primitives primitives;
    EXPECT_EQ(call("plain"), Quor::ScriptFailed);
    EXPECT_EQ(kxcom::getQuorLastErrorCode(), 2003);
    EXPECT_EQ(call("plain", needxdir, text), Quor::ScriptFailed);
    EXPECT_EQ(call("plain", keypoints), Quor::ScriptFailed);
    EXPECT_EQ(call("plain", primitives), Quor::ScriptFailed);
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.callSeg("plain", style)); }), Quor::ScriptFailed);
    EXPECT_THAT(alerts,
                ElementsAreArray(std::vector<std::string>(5, "no room on the stack to call `plain'")));
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.exeLuaUI(first, second, records)); }),
              Quor::CadReturn::CallFailed);
    EXPECT_FALSE(kept([&] { return scriptor.setConstFactor(1); }));
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.getParams_note("x", records)); }),
              Quor::TableMissing);
    EXPECT_EQ(kept([&] { return static_cast<int>(scriptor.getSmrtlnType(text)); }), Quor::ValueMissing);
    EXPECT_EQ(kept([&] { return scriptor.setGlibTextstyle(nullptr), 0; }), 0);
    EXPECT_EQ(first, KxGePoint3D(1, 2, 3));
    lua_settop(L, 1);
    EXPECT_EQ(shown("called"), "nil");
}

} // namespace

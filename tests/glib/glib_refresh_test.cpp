#include "glib_functions.h"

#include <thread>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Which object a "glib" function asks: the one that the globals of the calling state name at that moment.
class GlibRefresh : public GlibFunctions {
protected:
    GlibRefresh()
    {
        other.vector = {7, 8, 9};
        other.point = {7, 8, 9};
    }

    void expectNoAnswers(const std::string& when)
    {
        functor.calls.clear();
        for (const Question& question : questions)
            EXPECT_EQ(answer(question.call), noAnswer) << question.call << " with " << when;
        EXPECT_THAT(functor.calls, IsEmpty()) << when;
    }

    void assign(const char* global, const std::string& value) { run(global + (" = " + value)); }

    const std::string othersAnswer = "1: {7, 8, 9}";
    FunctorOfTest other;
};

/// Values of a pointer's global that are no host object's pointer.
constexpr const char* noPointers[] = {"nil",
                                      "false",
                                      "true",
                                      "5",
                                      "'x'",
                                      "{}",
                                      "print",
                                      "newproxy()",
                                      "int64(5)",
                                      "newproxy(true)",
                                      "coroutine.create(shape)"};

TEST_F(GlibRefresh, NothingIsAnsweredWhereTheGlobalIsNoPointer)
{
    for (const std::string value : noPointers) {
        assign(functorGlobal, value);
        expectNoAnswers(value);
        EXPECT_EQ(answer("getCurrentTxtstyle()"), userdataAnswer) << "the style has a global of its own";
    }
    scriptor.setFunction(&functor);
    for (const std::string value : noPointers) {
        assign(styleGlobal, value);
        EXPECT_EQ(answer("getCurrentTxtstyle()"), noAnswer) << value;
        EXPECT_EQ(answer("getPsView()"), vectorAnswer) << "the functor has a global of its own";
    }
}

TEST_F(GlibRefresh, NothingIsAnsweredWithoutAHostObject)
{
    scriptor.setFunction(nullptr);
    scriptor.setGlibTextstyle(nullptr);
    expectNoAnswers("no object");
    EXPECT_EQ(answer("getCurrentTxtstyle()"), noAnswer);
}

TEST_F(GlibRefresh, TheGlobalDecidesAtEachCall)
{
    EXPECT_EQ(answer("getPsView()"), vectorAnswer);
    setPointer(functorGlobal, &other);
    EXPECT_EQ(answer("getPsView()"), othersAnswer);
    run("kept = _glib_pass_functor_pointer; _glib_pass_functor_pointer = nil");
    EXPECT_EQ(answer("getPsView()"), noAnswer);
    run("_glib_pass_functor_pointer = kept");
    EXPECT_EQ(answer("getIsoPoint(1)"), othersAnswer);
    EXPECT_THAT(functor.calls, ElementsAre("getPsView()"));
    EXPECT_THAT(other.calls, ElementsAre("getPsView()", "getIsoPoint(1)"));
}

TEST_F(GlibRefresh, EachStatesScriptAsksItsOwnObject)
{
    QuorGlibScriptor second;
    second.setFunction(&other);
    lua_State* L = second.getLua(false);
    ASSERT_EQ(luaL_loadstring(L, "return glib.getPsView()[1]"), 0);
    ASSERT_EQ(lua_pcall(L, 0, 1, 0), 0);
    EXPECT_EQ(lua_tonumber(L, -1), 7);
    lua_pop(L, 1);
    EXPECT_EQ(answer("getPsView()"), vectorAnswer) << "although the other was set later";
}

TEST_F(GlibRefresh, AnotherThreadThatRunsTheScriptAsksTheSameObject)
{
    std::string given;
    std::thread thread([&] { given = answer("getPsView()"); });
    thread.join();
    EXPECT_EQ(given, vectorAnswer);
}

TEST_F(GlibRefresh, TheObjectsOutlastASegment)
{
    run("function ask() view, style = answers(glib.getPsView()), answers(glib.getCurrentTxtstyle()) end");
    for (int call = 0; call < 2; ++call) {
        run("view, style = nil, nil");
        EXPECT_EQ(scriptor.callSeg("ask"), Quor::Ok);
        EXPECT_EQ(shown("view"), vectorAnswer);
        EXPECT_EQ(shown("style"), userdataAnswer);
    }
}

TEST_F(GlibRefresh, ANewStateHasNoObjectUntilItIsSetAgain)
{
    const auto resultsOf = [this](const char* function) {
        return shown(std::string("select('#', glib.") + function + "())");
    };
    scriptor.initLua();
    EXPECT_EQ(resultsOf("getPsView"), "0");
    EXPECT_EQ(resultsOf("getCurrentTxtstyle"), "0");
    scriptor.setFunction(&functor);
    scriptor.setGlibTextstyle(&style);
    EXPECT_EQ(resultsOf("getPsView"), "1");
    EXPECT_EQ(resultsOf("getCurrentTxtstyle"), "1");
}

TEST_F(GlibRefresh, GlobalsThatRaiseForUnknownNamesHaveNoObject)
{
    scriptor.setFunction(nullptr);
    scriptor.setGlibTextstyle(nullptr);
    makeGlobalsStrict();
    expectNoAnswers("strict globals");
    EXPECT_EQ(answer("getCurrentTxtstyle()"), noAnswer);
    run("rawset(_G, '_glib_pass_functor_pointer', false)");
    scriptor.setFunction(&functor);
    EXPECT_EQ(answer("getPsView()"), vectorAnswer);
}

TEST_F(GlibRefresh, InheritedGlobalsHaveTheirObject)
{
    run("inherited = {_glib_pass_functor_pointer = _glib_pass_functor_pointer,"
        " _glib_pass_txtstyle_pointer = _glib_pass_txtstyle_pointer}"
        " _glib_pass_functor_pointer, _glib_pass_txtstyle_pointer = nil, nil");
    const std::string views[] = {"inherited", "function(_, name) return inherited[name] end"};
    for (const std::string& view : views) {
        run("setmetatable(_G, {__index = " + view + "})");
        EXPECT_EQ(answer("getPsView()"), vectorAnswer) << view;
        EXPECT_EQ(answer("getCurrentTxtstyle()"), userdataAnswer) << view;
        run("setmetatable(_G, nil)");
        EXPECT_EQ(answer("getPsView()"), noAnswer) << view;
    }
}

TEST_F(GlibRefresh, GlobalsMayAskTheFunctionsThemselves)
{
    run("kept = _glib_pass_functor_pointer; _glib_pass_functor_pointer = nil; depth = 0;"
        "setmetatable(_G, {__index = function() depth = depth + 1"
        " if depth < 20 then local inner = glib.getPsView() return inner end return kept end})");
    EXPECT_EQ(answer("getPsView()"), noAnswer) << "a table is no object";
    EXPECT_EQ(shown("depth"), "20");
    EXPECT_THAT(functor.calls, ElementsAre("getPsView()")) << "of the innermost";
    EXPECT_EQ(answer("getPsView()"), vectorAnswer);
}

TEST_F(GlibRefresh, ACoroutineHasTheObjectsOfItsState)
{
    run("function inCoroutine(name) return coroutine.wrap(function() return answers(glib[name]()) end)() "
        "end");
    EXPECT_EQ(shown("inCoroutine('getPsView')"), vectorAnswer);
    EXPECT_EQ(shown("inCoroutine('getCurrentTxtstyle')"), userdataAnswer);
    scriptor.setFunction(nullptr);
    EXPECT_EQ(shown("inCoroutine('getPsView')"), noAnswer);
}

TEST_F(GlibRefresh, ACoroutineWithGlobalsOfItsOwnHasTheirObject)
{
    setPointer("others", &other);
    run("function inCoroutine(globals) return coroutine.wrap(function()"
        " local answers, glib, setfenv = answers, glib, setfenv"
        " setfenv(0, globals) return answers(glib.getPsView()) end)() end");
    EXPECT_EQ(shown("inCoroutine({_glib_pass_functor_pointer = others})"), othersAnswer);
    EXPECT_EQ(shown("inCoroutine({})"), noAnswer);
    EXPECT_EQ(answer("getPsView()"), vectorAnswer);
}

TEST_F(GlibRefresh, GlobalsThatYieldHaveNoObject)
{
    run("_glib_pass_functor_pointer = nil; setmetatable(_G, {__index = function() coroutine.yield(1) end})"
        " inside = coroutine.create(function() return answers(glib.getPsView()) end)"
        " local _, given = coroutine.resume(inside) first = given");
    EXPECT_EQ(shown("first"), noAnswer);
    EXPECT_EQ(shown("coroutine.status(inside)"), "dead");
}

TEST_F(GlibRefresh, TheTextStyleIsAnObjectThatCallsTheHost)
{
    run("style = glib.getCurrentTxtstyle()"
        " height, length, higher = style:height(), style:getlen('DN80'), style:getlen_h('DN80', 5)"
        " factor, changed = style:getfactor(), answers(style:setstyle('NARROW'))");
    EXPECT_EQ(shown("height"), "2.5");
    EXPECT_EQ(shown("length"), "4");
    EXPECT_EQ(shown("higher"), "20");
    EXPECT_EQ(shown("factor"), "0.75");
    EXPECT_EQ(shown("changed"), noAnswer);
    EXPECT_EQ(style.name_, "NARROW");
}

TEST_F(GlibRefresh, TheTextStyleIsTheOneOfTheMoment)
{
    StyleOfTest second;
    run("first = glib.getCurrentTxtstyle()");
    setPointer(styleGlobal, &second);
    run("glib.getCurrentTxtstyle():setstyle('of the second') first:setstyle('of the first')");
    EXPECT_EQ(style.name_, "of the first");
    EXPECT_EQ(second.name_, "of the second");
    scriptor.setGlibTextstyle(nullptr);
    EXPECT_EQ(answer("getCurrentTxtstyle()"), noAnswer);
}

} // namespace

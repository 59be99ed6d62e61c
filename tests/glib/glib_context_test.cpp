#include "../platform/lua_state.h"
#include "Context.h"
#include "SilentFunctor.h"

#include <QuorCommon/quorsys.h>
#include <QuorScriptor/GlibCallbacks.h>
#include <QuorScriptor/LuaModules.h>
#include <QuorScriptor/ScriptContext.h>
#include <thread>

namespace {

using quorlua::currentContext;

constexpr const char* functions[] = {"getArcIsoMat(1, 2, 3)",
                                     "getNormalIsoMat(1, 2)",
                                     "getNormalIsoMat(1, 2, 3, 4)",
                                     "getDefaultIsoMat()",
                                     "getDefaultMat()",
                                     "getRefIsoMat()",
                                     "getIsoPoint(1)",
                                     "getIsoVgdir(1, 2)",
                                     "getCurrentObjectId()",
                                     "getCurrentObjectPointer()",
                                     "getPsView()"};

/// The thread's context, which keeps the pointers that the "glib" functions take from a script's globals.
class GlibContext : public LuaState {
protected:
    GlibContext()
    {
        luaL_register(L, "glib", quorlua::getGlibRegFuncForLua());
        lua_settop(L, 0);
        forget();
    }
    ~GlibContext() override { forget(); }
    GlibContext(const GlibContext&) = delete;
    GlibContext& operator=(const GlibContext&) = delete;

    static void forget()
    {
        currentContext().functor = nullptr;
        currentContext().textStyle = nullptr;
    }
    void setPointer(const char* global, const void* pointer)
    {
        lua_pushlightuserdata(L, const_cast<void*>(pointer));
        lua_setglobal(L, global);
    }
    void setFunctor(const GlibScriptFunctor* pointer) { setPointer("_glib_pass_functor_pointer", pointer); }
    void call(const char* function) { run(std::string("glib.") + function); }

    const SilentFunctor one;
    const SilentFunctor other;
    /// Only its place counts.
    const GlibTextStyle* const style = reinterpret_cast<const GlibTextStyle*>(&someStyle_);

private:
    int someStyle_ = 0;
};

TEST_F(GlibContext, KeepsTheFunctorOfTheScriptThatAsks)
{
    for (const char* function : functions) {
        setFunctor(&one);
        call(function);
        EXPECT_EQ(currentContext().functor, &one) << function;
        setFunctor(&other);
        call(function);
        EXPECT_EQ(currentContext().functor, &other) << function;
    }
}

TEST_F(GlibContext, ForgetsTheFunctorThatTheScriptNoLongerHas)
{
    for (const char* function : functions) {
        currentContext().functor = &one;
        run("_glib_pass_functor_pointer = nil");
        call(function);
        EXPECT_EQ(currentContext().functor, nullptr) << function;
        currentContext().functor = &one;
        run("_glib_pass_functor_pointer = 'text'");
        call(function);
        EXPECT_EQ(currentContext().functor, nullptr) << function;
    }
}

TEST_F(GlibContext, IsLeftAloneByACallWithWrongArguments)
{
    currentContext().functor = &one;
    setFunctor(&other);
    for (const char* function : {"getArcIsoMat(1, 2)", "getArcIsoMat(1, 2, 'x')", "getNormalIsoMat(1, 2, 3)",
                                 "getNormalIsoMat(1, {})", "getIsoPoint()", "getIsoPoint(1, 2)",
                                 "getIsoPoint('1')", "getIsoVgdir(1)", "getIsoVgdir(1, nil)"}) {
        call(function);
        EXPECT_EQ(currentContext().functor, &one) << function;
    }
}

TEST_F(GlibContext, IsLeftAloneByFunctionsThatAskNobody)
{
    currentContext().functor = &one;
    currentContext().textStyle = style;
    setFunctor(&other);
    call("setpath()");
    call("setkpt(1, {0, 0, 0})");
    EXPECT_EQ(currentContext().functor, &one);
    EXPECT_EQ(currentContext().textStyle, style);
}

TEST_F(GlibContext, KeepsFunctorAndTextStyleApart)
{
    setPointer("_glib_pass_txtstyle_pointer", style);
    setFunctor(&one);
    call("getCurrentTxtstyle()");
    EXPECT_EQ(currentContext().textStyle, style);
    EXPECT_EQ(currentContext().functor, nullptr);
    run("_glib_pass_txtstyle_pointer = nil");
    for (const char* function : functions)
        call(function);
    EXPECT_EQ(currentContext().textStyle, style);
    EXPECT_EQ(currentContext().functor, &one);
    call("getCurrentTxtstyle()");
    EXPECT_EQ(currentContext().textStyle, nullptr);
    EXPECT_EQ(currentContext().functor, &one);
}

TEST_F(GlibContext, OfAnotherThreadStaysAsItIs)
{
    currentContext().functor = &one;
    currentContext().textStyle = style;
    setFunctor(&other);
    std::thread thread([&] {
        quorlua::allocThreadVars(quorsys::currentThreadId());
        EXPECT_EQ(currentContext().functor, nullptr);
        call("getPsView()");
        call("getCurrentTxtstyle()");
        EXPECT_EQ(currentContext().functor, &other);
        EXPECT_EQ(currentContext().textStyle, nullptr);
        quorlua::freeThreadVars(quorsys::currentThreadId());
    });
    thread.join();
    EXPECT_EQ(currentContext().functor, &one);
    EXPECT_EQ(currentContext().textStyle, style);
}

TEST_F(GlibContext, IsOneForThreadsWithoutTheirOwn)
{
    currentContext().functor = &one;
    setFunctor(&other);
    std::thread thread([&] { call("getPsView()"); });
    thread.join();
    EXPECT_EQ(currentContext().functor, &other);
}

} // namespace

#include "../platform/lua_state.h"
#include "glib_functions.h"

namespace {

using testing::StartsWith;

/// The "glib" functions where room runs out: they give no result, and never an error.
using GlibLimits = GlibFunctions;

TEST_F(GlibLimits, AnswerHoweverManyArgumentsTheyAreGiven)
{
    run("function calledWith(count, name)"
        "  local given = {} for at = 1, count do given[at] = at end"
        "  return answers(glib[name](unpack(given))) "
        "end");
    const std::pair<const char*, std::string> rows[] = {{"getArcIsoMat", matrixAnswer},
                                                        {"getDefaultIsoMat", matrixAnswer},
                                                        {"getDefaultMat", matrixAnswer},
                                                        {"getRefIsoMat", matrixAnswer},
                                                        {"getCurrentObjectId", userdataAnswer},
                                                        {"getCurrentObjectPointer", userdataAnswer},
                                                        {"getPsView", vectorAnswer},
                                                        {"getCurrentTxtstyle", userdataAnswer},
                                                        {"getNormalIsoMat", noAnswer},
                                                        {"getIsoPoint", noAnswer},
                                                        {"getIsoVgdir", noAnswer},
                                                        {"setkpt", noAnswer},
                                                        {"setpath", noAnswer}};
    // The last are as many as a function can be given.
    for (const auto& [name, expected] : rows) {
        for (const char* count : {"20", "200", "7998"})
            EXPECT_EQ(shown(std::string("calledWith(") + count + ", '" + name + "')"), expected)
                << name << " with " << count;
    }
    functor.calls.clear();
    EXPECT_EQ(shown("calledWith(7998, 'getArcIsoMat')"), matrixAnswer);
    EXPECT_THAT(functor.calls, testing::ElementsAre("getArcIsoMat(1, 3, 2)"));
}

TEST_F(GlibLimits, RaiseNothingAtTheBottomOfADeepCallStack)
{
    // As deep as the engine lets calls through its own functions nest. "setkpt", which does nothing, shows
    // where even the call of a native function is too much.
    run("function deep(level)"
        "  for at = 1, #names do"
        "    results[names[at]][level] = select('#', glib[names[at]](1))"
        "  end"
        "  table.sort({1, 2}, function() deep(level + 1) return false end) "
        "end "
        "names = {'setkpt', 'getPsView', 'getIsoPoint', 'getDefaultMat', 'getCurrentObjectId',"
        "  'getCurrentTxtstyle', 'setpath'}"
        "results = {} for at = 1, #names do results[names[at]] = {} end "
        "survived = pcall(deep, 1)");
    EXPECT_EQ(shown("survived"), "false");
    EXPECT_EQ(shown("#results.setkpt > 50"), "true");
    for (const std::string name :
         {"getPsView", "getIsoPoint", "getDefaultMat", "getCurrentObjectId", "getCurrentTxtstyle"})
        EXPECT_EQ(shown("results." + name + "[1]"), "1");
    for (int at = 1; at <= 7; ++at) {
        const std::string name = shown("names[" + std::to_string(at) + "]");
        EXPECT_EQ(shown("#results." + name), shown("#results.setkpt")) << name << " raised an error";
    }
    EXPECT_EQ(answer("getPsView()"), vectorAnswer);
}

/// A state of a script whose memory can run out, with a host object and a text style.
struct RationedScript : RationedState {
    explicit RationedScript(const FunctorOfTest& functor, const StyleOfTest& style)
    {
        if (!L) return;
        luaL_openlibs(L);
        lua_tinker::init(L);
        lua_tinker::class_add<GlibTextStyle>(L, "GlibTextStyle");
        luaL_register(L, "glib", quorlua::getGlibRegFuncForLua());
        setPointer("_glib_pass_functor_pointer", &functor);
        setPointer("_glib_pass_txtstyle_pointer", static_cast<const GlibTextStyle*>(&style));
        // What lua_pcall itself takes for a native function is there before.
        EXPECT_NE(lua_checkstack(L, 200), 0);
        lua_settop(L, 0);
    }

    void setPointer(const char* global, const void* pointer) const
    {
        lua_pushlightuserdata(L, const_cast<void*>(pointer));
        lua_setglobal(L, global);
    }

    /// Calls a "glib" function with integers from 1 on while only so many requests for memory are granted.
    /// The number of results, which stay on the stack, or -1 after an error.
    int call(const char* function, int arguments, int granted)
    {
        lua_settop(L, 0);
        lua_getglobal(L, "glib");
        lua_getfield(L, 1, function);
        lua_remove(L, 1);
        for (int argument = 1; argument <= arguments; ++argument)
            lua_pushnumber(L, argument);
        left = granted;
        const int status = lua_pcall(L, arguments, LUA_MULTRET, 0);
        left = -1;
        return status == 0 ? lua_gettop(L) : -1;
    }
};

constexpr int most = 200;

struct Asked {
    const char* function;
    int arguments;
    const char* reaches;
};
constexpr Asked asked[] = {
    {"getArcIsoMat", 3, "getArcIsoMat(1, 3, 2)"},
    {"getNormalIsoMat", 2, "getNormalIsoMat(1, 2)"},
    {"getNormalIsoMat", 4, "getNormalIsoMat4(1, 2, 3, 4)"},
    {"getDefaultIsoMat", 0, "getDefaultIsoMat()"},
    {"getDefaultMat", 0, "getDefaultIsoMat()"},
    {"getRefIsoMat", 2, "getRefIsoMat(1, 2)"},
    {"getIsoPoint", 1, "getIsoPoint(1)"},
    {"getIsoVgdir", 2, "getIsoVgdir(1, 2)"},
    {"getCurrentObjectId", 0, "getCurrentObjectId()"},
    {"getCurrentObjectPointer", 0, "getCurrentObjectPointer()"},
    {"getPsView", 0, "getPsView()"},
    {"getCurrentTxtstyle", 0, nullptr},
};

/// How many requests a function is refused before it answers; each time it gives nothing, raises nothing, and
/// answers as soon as there is memory.
int refusals(const Asked& row, bool calledBefore)
{
    const StyleOfTest style;
    for (int granted = 0; granted < most; ++granted) {
        const FunctorOfTest functor;
        RationedScript script(functor, style);
        if (calledBefore) {
            EXPECT_EQ(script.call(row.function, row.arguments, -1), 1);
            functor.calls.clear();
        }
        const int results = script.call(row.function, row.arguments, granted);
        EXPECT_LE(functor.calls.size(), 1u);
        if (row.reaches && !functor.calls.empty()) {
            EXPECT_EQ(functor.calls[0], row.reaches);
        }
        if (results == 1) {
            EXPECT_EQ(functor.calls.size(), row.reaches ? 1u : 0u);
            return granted;
        }
        EXPECT_EQ(results, 0) << row.function << " with " << granted;
        EXPECT_EQ(script.call(row.function, row.arguments, -1), 1) << row.function << " after " << granted;
    }
    ADD_FAILURE() << row.function << " never answered";
    return most;
}

bool engineTakesAnAllocator()
{
    return RationedState().L != nullptr;
}

TEST(ExhaustedGlib, GivesNothingInAStateThatAskedBefore)
{
    if (!engineTakesAnAllocator()) GTEST_SKIP() << "this engine takes no allocator";
    for (const Asked& row : asked) {
        // The pointer alone is no new object, so it takes nothing.
        const bool takesMemory = std::string(row.function) != "getCurrentObjectPointer";
        EXPECT_EQ(refusals(row, true) > 0, takesMemory) << row.function;
    }
}

TEST(ExhaustedGlib, GivesNothingInAStateThatAsksForTheFirstTime)
{
    if (!engineTakesAnAllocator()) GTEST_SKIP() << "this engine takes no allocator";
    for (const Asked& row : asked)
        EXPECT_GT(refusals(row, false), 1) << row.function;
}

TEST(ExhaustedGlib, SetsThePathAsFarAsMemoryGoes)
{
    if (!engineTakesAnAllocator()) GTEST_SKIP() << "this engine takes no allocator";
    const FunctorOfTest functor;
    const StyleOfTest style;
    RationedScript whole(functor, style);
    EXPECT_EQ(whole.call("setpath", 0, -1), 0);
    const std::string path = luatext::shown(whole.L, "package.path");
    const std::string cpath = luatext::shown(whole.L, "package.cpath");
    std::size_t reached = 0;
    for (int granted = 0; reached < path.size(); ++granted) {
        ASSERT_LT(granted, most);
        RationedScript script(functor, style);
        EXPECT_EQ(script.call("setpath", 0, granted), 0) << granted;
        const std::string part = luatext::shown(script.L, "package.path");
        EXPECT_THAT(path, StartsWith(part)) << granted;
        EXPECT_THAT(cpath, StartsWith(luatext::shown(script.L, "package.cpath"))) << granted;
        EXPECT_GE(part.size(), reached) << "more memory, fewer places";
        reached = part.size();
    }
}

TEST(ExhaustedGlib, SetkptTakesNoMemory)
{
    if (!engineTakesAnAllocator()) GTEST_SKIP() << "this engine takes no allocator";
    const FunctorOfTest functor;
    const StyleOfTest style;
    RationedScript script(functor, style);
    EXPECT_EQ(script.call("setkpt", 2, 0), 0);
}

} // namespace

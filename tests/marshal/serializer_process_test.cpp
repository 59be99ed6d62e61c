// What the serializer does once in a process: its first use, failed ones before it, and the process's end.
// Each test runs in a process of its own.

#include "../scriptor/scriptor_fixture.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorScriptor/LuaSerialize.h>
#include <cstdio>
#include <cstdlib>
#include <functional>

namespace {

using quorlua::LuaSerialize;
using testing::AllOf;
using testing::HasSubstr;
using testing::StrEq;

constexpr const char* scriptFile = "bin/serialObject.lua";
/// A script that defines both functions, and does more.
std::string plainScript(const char* more = "")
{
    std::string script = "function serializeTable() return 'text' end"
                         " function unSerializeTable() return 'value' end ";
    script += more;
    return script;
}

/// A process with an installation of its own. Under the address sanitizer it ends with 0 only when nothing
/// was touched that was gone before, and nothing has leaked.
class SerializerDeathTest : public testing::Test {
protected:
    SerializerDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    ~SerializerDeathTest() override { GTEST_FLAG_SET(death_test_style, "fast"); }

    /// The process: it ends with 0 when all it expects is so.
    [[noreturn]] static void process(const std::function<void(const ScriptFolder& folder)>& work)
    {
        {
            const ScriptFolder folder;
            QuorSystem::setInstallationFolder(folder.path().c_str());
            work(folder);
        }
        std::exit(0);
    }

    static void expect(bool isSo, const char* what)
    {
        if (isSo) return;
        std::fprintf(stderr, "not so: %s\n", what);
        std::_Exit(9);
    }

    static bool isUnusable()
    {
        LuaSerialize::init();
        LuaSerialize::clear();
        return LuaSerialize::getLua() == nullptr && LuaSerialize::serial(1) == nullptr &&
               !LuaSerialize::unSerial("text");
    }

    static bool isUsable()
    {
        lua_State* L = LuaSerialize::getLua();
        if (!L || lua_gettop(L) != 1) return false;
        const char* text = LuaSerialize::serial(1);
        const bool writes = text && std::string(text) == "text";
        const bool reads = LuaSerialize::unSerial("any") && std::string(lua_tostring(L, -1)) == "value";
        const bool piled = lua_gettop(L) == 3;
        LuaSerialize::clear();
        return writes && reads && piled && lua_gettop(L) == 1;
    }

    static bool isGlobal(const char* name)
    {
        lua_State* L = LuaSerialize::getLua();
        lua_getglobal(L, name);
        const bool isThere = !lua_isnil(L, -1);
        lua_pop(L, 1);
        return isThere;
    }
};

TEST_F(SerializerDeathTest, IsOfNoUseWithoutAScriptAndTriesAgain)
{
    const auto work = [](const ScriptFolder& folder) {
        expect(isUnusable(), "without a folder there is no state");
        folder.write("bin/other.lua", plainScript());
        expect(isUnusable(), "without the script there is no state");
        folder.write(scriptFile, plainScript());
        expect(isUsable(), "the script is found by the next use");
    };
    EXPECT_EXIT(process(work), testing::ExitedWithCode(0), StrEq(""));
}

TEST_F(SerializerDeathTest, IsOfNoUseWithAScriptThatFailsAndTriesAgain)
{
    const auto work = [](const ScriptFolder& folder) {
        for (const char* script : {"begun = true error('broken')", "begun = true error()", "= 1"}) {
            folder.write(scriptFile, plainScript(script));
            expect(isUnusable(), script);
        }
        std::filesystem::remove(folder.path(scriptFile));
        folder.write("bin/serialObject.lua/inner", "");
        expect(isUnusable(), "a folder is no script");
        std::filesystem::remove_all(folder.path(scriptFile));
        folder.write(scriptFile, plainScript());
        expect(isUsable(), "the script is run by the next use");
        expect(!isGlobal("begun"), "nothing is left of those that failed");
    };
    EXPECT_EXIT(process(work), testing::ExitedWithCode(0),
                AllOf(HasSubstr("broken"), HasSubstr("unexpected symbol near"), HasSubstr("cannot open")));
}

TEST_F(SerializerDeathTest, IsMadeByTheFirstUseOfAnyKind)
{
    const std::function<void()> uses[] = {
        [] { LuaSerialize::init(); },    [] { LuaSerialize::getLua(); },
        [] { LuaSerialize::serial(1); }, [] { LuaSerialize::unSerial("text"); },
        [] { LuaSerialize::clear(); },
    };
    for (const auto& use : uses) {
        const auto work = [&use](const ScriptFolder& folder) {
            folder.write(scriptFile, plainScript("io.stderr:write('script runs\\n')"));
            std::fputs("then: ", stderr);
            use();
            std::fputs("end\n", stderr);
        };
        EXPECT_EXIT(process(work), testing::ExitedWithCode(0), StrEq("then: script runs\nend\n"));
    }
}

TEST_F(SerializerDeathTest, IsNotMadeForATextThatIsMissingOrEmpty)
{
    const auto work = [](const ScriptFolder& folder) {
        folder.write(scriptFile, "io.stderr:write('script runs\\n')");
        expect(!LuaSerialize::unSerial(""), "an empty text");
        expect(!LuaSerialize::unSerial(nullptr), "no text");
    };
    EXPECT_EXIT(process(work), testing::ExitedWithCode(0), StrEq(""));
}

TEST_F(SerializerDeathTest, IsMadeOnce)
{
    const auto work = [](const ScriptFolder& folder) {
        folder.write(scriptFile, plainScript(), 1000);
        expect(isUsable(), "the first use");
        folder.write(scriptFile, plainScript("again = true"), 2000);
        expect(isUsable() && !isGlobal("again"), "a changed script is not run");
        std::filesystem::remove_all(folder.path("bin"));
        expect(isUsable(), "the script is not needed any more");
        QuorSystem::setInstallationFolder("/elsewhere");
        expect(isUsable(), "nor is the installation");
    };
    EXPECT_EXIT(process(work), testing::ExitedWithCode(0), StrEq(""));
}

TEST_F(SerializerDeathTest, ReportsFunctionsThatItsScriptDoesNotDefine)
{
    const auto work = [](const ScriptFolder& folder) {
        folder.write(scriptFile, "unSerializeTable = 5");
        lua_State* L = LuaSerialize::getLua();
        expect(L != nullptr, "the script runs");
        expect(LuaSerialize::serial(1) == nullptr && lua_isnil(L, -1), "nil has no text");
        expect(LuaSerialize::unSerial("text") && lua_isnumber(L, -1), "the number stays as the result");
    };
    EXPECT_EXIT(process(work), testing::ExitedWithCode(0),
                StrEq("attempt to call global `serializeTable' (not a function)\n"
                      "attempt to call global `unSerializeTable' (not a function)\n"));
}

TEST_F(SerializerDeathTest, KeepsItsStateToTheEndOfTheProcess)
{
    const auto work = [](const ScriptFolder& folder) {
        folder.write(scriptFile,
                     plainScript("last = newproxy(true) getmetatable(last).__gc = function()"
                                 " io.stderr:write('state ends, ' .. type(serializeTable) .. '\\n')"
                                 " for _, f in pairs(glib) do f() f(1, 2, 3, 4) end mirt_get_luafile() end"));
        expect(isUsable(), "the script runs");
        std::fputs("process ends\n", stderr);
    };
    EXPECT_EXIT(process(work), testing::ExitedWithCode(0), StrEq("process ends\nstate ends, function\n"));
}

/// Script function: how each operation of the serializer ends. [-0, +1, m]
int useSerializer(lua_State* L)
{
    LuaSerialize::init();
    LuaSerialize::clear();
    const bool isUsed = LuaSerialize::getLua() || LuaSerialize::serial(1) || LuaSerialize::unSerial("text");
    lua_pushstring(L, isUsed ? "used" : "no state");
    return 1;
}

constexpr luaL_Reg hostFunctions[] = {{"use", useSerializer}, {nullptr, nullptr}};

TEST_F(SerializerDeathTest, HasNoStateForItsScriptWhileThatIsLoadedAndAtTheEnd)
{
    const auto work = [](const ScriptFolder& folder) {
        quorlua::addRegLuaModule("host", hostFunctions);
        folder.write(scriptFile,
                     plainScript("local function say(when) io.stderr:write(when, host.use(), '\\n') end"
                                 " say('loading: ')"
                                 " last = newproxy(true)"
                                 " getmetatable(last).__gc = function() say('ending: ') end"));
        expect(isUsable(), "the script runs");
    };
    EXPECT_EXIT(process(work), testing::ExitedWithCode(0), StrEq("loading: no state\nending: no state\n"));
}

/// A scriptor that the process keeps longer than the serializer's state.
QuorGlibScriptor& lastScriptor()
{
    static QuorGlibScriptor scriptor;
    return scriptor;
}

TEST_F(SerializerDeathTest, HasNoStateForScriptsThatOutliveIt)
{
    const auto work = [](const ScriptFolder& folder) {
        quorlua::addRegLuaModule("host", hostFunctions);
        folder.write(scriptFile, plainScript());
        const std::string path =
            folder.write("last.lua", "last = newproxy(true) getmetatable(last).__gc = function()"
                                     " io.stderr:write('ending: ', host.use(), '\\n') end");
        expect(lastScriptor().loadFile(path.c_str(), false) == Quor::GlibStatus::Ok, "the other script runs");
        expect(isUsable(), "the serializer's script runs");
    };
#if defined(_WIN32)
    // A program's objects end before those of its DLLs, whichever was first.
    const char* const said = "ending: used\n";
#else
    const char* const said = "ending: no state\n";
#endif
    EXPECT_EXIT(process(work), testing::ExitedWithCode(0), StrEq(said));
}

} // namespace

#include "scriptor_fixture.h"

#include <QuorCommon/QuorSystem.h>
#include <cstring>

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

int answerOne(lua_State* L)
{
    lua_pushnumber(L, 1);
    return 1;
}

int answerTwo(lua_State* L)
{
    lua_pushnumber(L, 2);
    return 1;
}

class Libraries : public Scriptor {};

TEST_F(Libraries, GlibListHasItsThirteenNamesInOrder)
{
    std::vector<std::string> names;
    const luaL_Reg* entry = quorlua::getGlibRegFuncForLua();
    for (; entry->name; ++entry) {
        names.emplace_back(entry->name);
        EXPECT_NE(entry->func, nullptr) << entry->name;
    }
    EXPECT_THAT(names, ElementsAre("setpath", "setkpt", "getArcIsoMat", "getNormalIsoMat", "getDefaultIsoMat",
                                   "getDefaultMat", "getRefIsoMat", "getIsoPoint", "getIsoVgdir",
                                   "getCurrentObjectId", "getCurrentObjectPointer", "getPsView",
                                   "getCurrentTxtstyle"));
    EXPECT_EQ(entry->func, nullptr);
    EXPECT_EQ(quorlua::getGlibRegFuncForLua()[4].func, quorlua::getGlibRegFuncForLua()[5].func);
}

TEST_F(Libraries, EveryGlibFunctionIsInANewState)
{
    for (const luaL_Reg* entry = quorlua::getGlibRegFuncForLua(); entry->name; ++entry)
        EXPECT_EQ(shown(std::string("type(glib.") + entry->name + ")"), "function") << entry->name;
    run("count = 0; for _ in pairs(glib) do count = count + 1 end");
    EXPECT_EQ(shown("count"), "13");
}

TEST_F(Libraries, GlibTableIsTheBottomValueOfANewState)
{
    ASSERT_EQ(height(), 1);
    lua_getglobal(state(), "glib");
    EXPECT_TRUE(lua_rawequal(state(), 1, -1));
    lua_pop(state(), 1);
}

TEST_F(Libraries, StandardLibrariesAreOpen)
{
    for (const char* name : {"string", "table", "math", "io", "os", "debug", "package", "coroutine"})
        EXPECT_EQ(shown(std::string("type(") + name + ")"), "table") << name;
    EXPECT_EQ(shown("type(int64)"), "function") << "the binding layer's own globals";
}

TEST_F(Libraries, InitLuaDiscardsEverything)
{
    StyleOfTest style;
    run("mine = 1");
    scriptor.setGlibTextstyle(&style);
    EXPECT_EQ(shown("type(_glib_pass_txtstyle_pointer)"), "userdata");
    lua_pushnumber(state(), 5);
    scriptor.initLua();
    EXPECT_EQ(height(), 1);
    EXPECT_EQ(shown("mine"), "nil");
    EXPECT_EQ(shown("_glib_pass_txtstyle_pointer"), "nil");
    EXPECT_EQ(shown("type(glib.setpath)"), "function");
    scriptor.setGlibTextstyle(nullptr);
}

class SearchPaths : public Scriptor {
protected:
    SearchPaths()
    {
        QuorSystem::setInstallationFolder(folder.path("inst").c_str());
        scriptor.initLua();
    }
    ~SearchPaths() override { QuorSystem::setInstallationFolder(nullptr); }

    std::string platformFolder() const
    {
        return std::filesystem::relative(QuorSystem::quorFullPlatformPath(), folder.path()).string();
    }

    ScriptFolder folder;
};

TEST_F(SearchPaths, AreAppendedInOrder)
{
    const std::string bin = folder.path("inst/bin");
    const std::string platform = QuorSystem::quorFullPlatformPath();
    EXPECT_THAT(shown("package.path"), EndsWith(sys::inSystemForm(";" + bin + "/?.lua;" + bin +
                                                                  "/utils/?.lua;" + platform + "/?.lua")));
    EXPECT_THAT(shown("package.cpath"),
                EndsWith(sys::inSystemForm(";" + platform + "/?") + sys::nativeModuleSuffix));
    EXPECT_THAT(shown("package.path"), HasSubstr(sys::inSystemForm("./?.lua;")))
        << "what was there before stays in front";
}

TEST_F(SearchPaths, LetScriptsRequireTheInstallationsModules)
{
    folder.write("inst/bin/inbin.lua", "return 'bin'");
    folder.write("inst/bin/utils/inutils.lua", "return 'utils'");
    folder.write(platformFolder() + "/inplatform.lua", "return 'platform'");
    EXPECT_EQ(shown("require('inbin') .. require('inutils') .. require('inplatform')"), "binutilsplatform");
}

TEST_F(SearchPaths, SetPackagePathLeavesTheBinFolderAlone)
{
    EXPECT_EQ(kept([&] { return scriptor.setPackagePath(), 0; }), 0);
    EXPECT_EQ(shown("package.path"), folder.path("inst/bin/?.lua"));
}

TEST_F(SearchPaths, SetPackagePathMakesAMissingPackageTable)
{
    for (const char* missing : {"nil", "5", "'text'", "false"}) {
        run(std::string("package = ") + missing);
        EXPECT_EQ(kept([&] { return scriptor.setPackagePath(), 0; }), 0);
        EXPECT_EQ(shown("package.path"), folder.path("inst/bin/?.lua")) << missing;
        EXPECT_EQ(shown("package.cpath"), "nil") << missing;
    }
}

TEST_F(Libraries, AddLibOpensAListAsALibrary)
{
    const luaL_Reg list[] = {{"one", answerOne}, {"two", answerTwo}, {"one", answerTwo}, {nullptr, nullptr}};
    EXPECT_EQ(kept([&] { return scriptor.addLib("added", list), 0; }), 0);
    EXPECT_EQ(shown("added.one() .. added.two()"), "22") << "of two entries of one name the later wins";
    EXPECT_EQ(shown("package.loaded.added == added"), "true");
    const luaL_Reg more[] = {{"three", answerOne}, {nullptr, nullptr}};
    scriptor.addLib("added", more);
    EXPECT_EQ(shown("added.three() .. added.two()"), "12") << "a library of that name is added to";
    scriptor.addLib("deep.inner", more);
    EXPECT_EQ(shown("deep.inner.three()"), "1");
}

TEST_F(Libraries, AddLibLeavesAGlobalThatIsNoTable)
{
    const luaL_Reg list[] = {{"one", answerOne}, {nullptr, nullptr}};
    run("taken = 5");
    EXPECT_EQ(kept([&] { return scriptor.addLib("taken", list), 0; }), 0);
    EXPECT_EQ(shown("taken"), "5");
    EXPECT_THAT(alerts, testing::IsEmpty());
}

TEST_F(Libraries, AddLibIgnoresNulls)
{
    const luaL_Reg list[] = {{"one", answerOne}, {nullptr, nullptr}};
    EXPECT_EQ(kept([&] { return scriptor.addLib(nullptr, list), 0; }), 0);
    EXPECT_EQ(kept([&] { return scriptor.addLib("none", nullptr), 0; }), 0);
    EXPECT_EQ(shown("none"), "nil");
    EXPECT_EQ(shown("glib.one"), "nil");
}

TEST_F(Libraries, AddLibFuncLuaFillsAnExistingTable)
{
    run("tools = {old = 1}; before = tools");
    EXPECT_EQ(kept([&] { return scriptor.addLibFuncLua("tools", "one", answerOne), 0; }), 0);
    EXPECT_EQ(shown("tools.one()"), "1");
    EXPECT_EQ(shown("tools.old"), "1");
    EXPECT_EQ(shown("before == tools"), "true");
}

TEST_F(Libraries, AddLibFuncLuaMakesATableOfWhatIsNone)
{
    for (const char* value : {"nil", "5", "'text'", "print", "true"}) {
        run(std::string("tools = ") + value);
        EXPECT_EQ(kept([&] { return scriptor.addLibFuncLua("tools", "one", answerOne), 0; }), 0);
        EXPECT_EQ(shown("tools.one()"), "1") << value;
    }
}

TEST_F(Libraries, AddLibFuncLuaWritesPastMetamethods)
{
    run("tools = setmetatable({}, {__newindex = function() error('written') end})");
    EXPECT_EQ(kept([&] { return scriptor.addLibFuncLua("tools", "one", answerOne), 0; }), 0);
    EXPECT_EQ(shown("tools.one()"), "1");
}

TEST_F(Libraries, AddLibFuncLuaGivesUpWhenTheTableIsNotKept)
{
    run("setmetatable(_G, {__newindex = function() end})");
    EXPECT_EQ(kept([&] { return scriptor.addLibFuncLua("tools", "one", answerOne), 0; }), 0);
    EXPECT_EQ(shown("tools"), "nil");
}

TEST_F(Libraries, AddLibFuncLuaIgnoresNulls)
{
    EXPECT_EQ(kept([&] { return scriptor.addLibFuncLua(nullptr, "one", answerOne), 0; }), 0);
    EXPECT_EQ(kept([&] { return scriptor.addLibFuncLua("tools", nullptr, answerOne), 0; }), 0);
    EXPECT_EQ(kept([&] { return scriptor.addLibFuncLua("tools", "one", nullptr), 0; }), 0);
    EXPECT_EQ(shown("tools"), "nil");
}

TEST_F(Libraries, GetLuaCutsTheStackToItsBottomValueWhenAsked)
{
    lua_pushnumber(state(), 2);
    lua_pushnumber(state(), 3);
    ASSERT_EQ(height(), 3);
    EXPECT_EQ(scriptor.getLua(false), scriptor.getLua(false));
    EXPECT_EQ(height(), 3);
    lua_State* L = scriptor.getLua(true);
    EXPECT_EQ(L, state());
    EXPECT_EQ(height(), 1);
    EXPECT_TRUE(lua_istable(L, 1)) << "the bottom value is the \"glib\" table";
    scriptor.getLua(true);
    EXPECT_EQ(height(), 1);
    lua_settop(L, 0);
    scriptor.getLua(true);
    EXPECT_EQ(height(), 0) << "nothing is put on an empty stack";
    lua_newtable(L);
}

template<class T>
concept HasOpenLuaClear = requires(T& object)
{
    object.luaClear();
};
template<class T>
concept HasOpenIsMetreUnit = requires(T& object)
{
    object.isMetreUnit("P1");
};
template<class T>
concept HasOpenSetCallParam = requires(T& object, const KxGeMatrix3D& matrix)
{
    object.setCallParam(matrix);
};

TEST_F(Libraries, PrivateOperationsAreNotOpenToHosts)
{
    EXPECT_FALSE(HasOpenLuaClear<QuorGlibScriptor>);
    EXPECT_FALSE(HasOpenIsMetreUnit<QuorGlibScriptor>);
    EXPECT_FALSE(HasOpenSetCallParam<QuorGlibScriptor>);
}

TEST_F(Libraries, MirtGetLuafileGivesTheLoadedFile)
{
    ScriptFolder folder;
    EXPECT_EQ(shown("mirt_get_luafile()"), "nil") << "before any file";
    EXPECT_EQ(shown("select('#', mirt_get_luafile())"), "1");
    const std::string first = folder.write("first.lua", "at_load = mirt_get_luafile()");
    ASSERT_EQ(scriptor.loadFile(first.c_str(), false), Quor::Ok);
    EXPECT_EQ(shown("at_load"), first);
    EXPECT_EQ(shown("mirt_get_luafile()"), first);
    const std::string second = folder.write("second.lua", "");
    ASSERT_EQ(scriptor.loadFile(second.c_str(), false), Quor::Ok);
    EXPECT_EQ(shown("mirt_get_luafile()"), second);
    scriptor.initLua();
    EXPECT_EQ(shown("mirt_get_luafile()"), second);
}

TEST_F(Libraries, FlagsAreReplacedAsAWhole)
{
    EXPECT_FALSE(scriptor.checkFlag(ScriptorBit1));
    scriptor.setFlag(1);
    EXPECT_TRUE(scriptor.checkFlag(ScriptorBit1));
    EXPECT_FALSE(scriptor.checkFlag(ScriptorBit2));
    scriptor.setFlag(2);
    EXPECT_FALSE(scriptor.checkFlag(ScriptorBit1));
    EXPECT_TRUE(scriptor.checkFlag(ScriptorBit2));
    scriptor.setFlag(1 | 8);
    EXPECT_TRUE(scriptor.checkFlag(ScriptorBit1));
    EXPECT_FALSE(scriptor.checkFlag(ScriptorBit3));
    EXPECT_TRUE(scriptor.checkFlag(ScriptorBit4));
    scriptor.setFlag(0);
    EXPECT_FALSE(scriptor.checkFlag(ScriptorBit1));
    EXPECT_FALSE(scriptor.checkFlag(static_cast<ScriptorStatus>(0)));
}

class TextStyles : public Scriptor {
protected:
    /// Calls `function(style)` of a chunk with the style and gives what it returns, as text.
    std::string ask(const std::string& body)
    {
        run("return function(style) " + body + " end", 1);
        quorlua::push_txtstyle(state(), &style);
        EXPECT_EQ(lua_pcall(state(), 1, 1, 0), 0) << lua_tostring(state(), -1);
        const std::string text = luatext::textAt(state(), -1);
        lua_pop(state(), 1);
        return text;
    }

    StyleOfTest style;
};

TEST_F(TextStyles, ScriptsReachTheFiveOperationsOfTheHostsObject)
{
    EXPECT_EQ(ask("return style:height()"), "2.5");
    EXPECT_EQ(ask("return style:getlen('DN50')"), "4");
    EXPECT_EQ(ask("return style:getlen_h('DN50', 10)"), "40");
    EXPECT_EQ(ask("return style:getfactor()"), "0.75");
    EXPECT_EQ(ask("return select('#', style:setstyle('ISO'))"), "0");
    EXPECT_EQ(style.name_, "ISO");
}

TEST_F(TextStyles, ACallWithoutItsArgumentsGivesNothing)
{
    for (const char* call : {"style:getlen()", "style:getlen_h('x')", "style:setstyle(nil)", "style.height()",
                             "style.height(5)", "style.height(io.stdout)"})
        EXPECT_EQ(ask(std::string("return select('#', ") + call + ")"), "0") << call;
    EXPECT_EQ(style.name_, "");
}

TEST_F(TextStyles, ANumberIsItsText)
{
    EXPECT_EQ(ask("return style:getlen(12.5)"), "4");
    EXPECT_EQ(ask("return style:getlen_h(125, 10)"), "30");
}

TEST_F(TextStyles, TheClassIsAGlobalOfItsName)
{
    EXPECT_EQ(shown("type(GlibTextStyle)"), "table");
    for (const char* method : {"height", "getlen", "getlen_h", "setstyle", "getfactor"})
        EXPECT_EQ(shown(std::string("type(GlibTextStyle.") + method + ")"), "function") << method;
}

TEST_F(TextStyles, PushPutsOneObjectOnTheStack)
{
    const int before = height();
    quorlua::push_txtstyle(state(), &style);
    EXPECT_EQ(height(), before + 1);
    EXPECT_EQ(lua_type(state(), -1), LUA_TUSERDATA);
    lua_settop(state(), before);
    quorlua::push_txtstyle(state(), nullptr);
    EXPECT_EQ(height(), before) << "a null pointer pushes nothing";
    quorlua::push_txtstyle(nullptr, &style);
}

} // namespace

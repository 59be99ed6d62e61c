#include "operations.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorScriptor/LuaSerialize.h>
#include <cstring>

namespace failures {
namespace {

const std::vector<KVParams> threeRecords = {{"a", "", KVValue::ofDouble(1)},
                                            {"b", "", KVValue::ofString("a text that is written")},
                                            {"c", "", KVValue::ofPoint({1, 2, 3})}};
const luaL_Reg functions[] = {{"f", [](lua_State*) { return 0; }}, {nullptr, nullptr}};
const luaL_Reg noFunctions[] = {{nullptr, nullptr}};
const StyleOfTest style;
constexpr double positional[23] = {1};
std::string chunk = "loaded = {} for i = 1, 5 do loaded[i] = 'x' .. i end";

/// Two scripts in files of their own. Where one is to have changed, its time has moved.
class Files {
public:
    const char* next() { return paths_[++loads_ % 2].c_str(); }
    const char* changed()
    {
        folder_.setTime("a.lua", 1000000000 + 100 * ++loads_);
        return paths_[0].c_str();
    }

private:
    ScriptFolder folder_;
    std::string paths_[2] = {folder_.write("a.lua", "loaded = {} for i = 1, 5 do loaded[i] = 'x' .. i end"),
                             folder_.write("b.lua", "loaded = {} for i = 1, 5 do loaded[i] = 'y' .. i end")};
    long loads_ = 0;
};

Files& files()
{
    static Files made;
    return made;
}
const char* fileToLoad = nullptr;

void chooseFile(Setting&)
{
    fileToLoad = files().next();
}

/// Another scriptor, whose script has changed since it was loaded.
void loadOther(Setting& s)
{
    s.other = std::make_unique<QuorGlibScriptor>();
    fileToLoad = files().changed();
    EXPECT_EQ(s.other->loadFile(fileToLoad, false), Quor::Ok);
    EXPECT_EQ(luaL_dostring(s.other->getLua(false), "old = true"), 0);
    files().changed();
}

const quor_binary buffer = bufferOf(chunk);

void makeHelper(Setting& s)
{
    s.helper = std::make_unique<QuorGlibScriptorHelper>();
    fileToLoad = files().next();
}

void pushDrawn(Setting& s)
{
    lua_getglobal(s.L, "drawn");
}

void pushKeypoints(Setting& s)
{
    lua_getglobal(s.L, "keypoints");
}

void clearSerializer()
{
    quorlua::LuaSerialize::clear();
    lua_gc(quorlua::LuaSerialize::getLua(), LUA_GCCOLLECT, 0);
}

void startSerializer(Setting&)
{
    QuorSystem::setInstallationFolder(QUOR_SOURCE_DIR "/sample/installation");
    ASSERT_NE(quorlua::LuaSerialize::getLua(), nullptr);
    // The state is the process's: code that is compiled meanwhile stays in it.
    ASSERT_EQ(luaL_dostring(quorlua::LuaSerialize::getLua(), "if jit then jit.off() end"), 0);
    QuorSystem::setInstallationFolder(nullptr);
    clearSerializer();
}

void pushForSerializer(Setting& s)
{
    startSerializer(s);
    ASSERT_EQ(luaL_dostring(quorlua::LuaSerialize::getLua(), "return {1, {2, 'three'}, name = 'a'}"), 0);
}

void makeOther(Setting& s)
{
    s.other = std::make_unique<QuorGlibScriptor>();
    EXPECT_EQ(luaL_dostring(s.other->getLua(false), "old = true"), 0);
}

/// What is seen of a state that was to be made anew: whole, or none, or a part of the new script; never
/// anything of the old one.
Seen lookAtRecreated(Setting& s)
{
    lua_State* L = s.other->getLua(false);
    if (!L) return Seen::Part;
    if (lua_gettop(L) != 1 || !Setting::holds(L, "old == nil and mirt_get_luafile ~= nil and int64 ~= nil"))
        return Seen::Wrong;
    return Setting::holds(L, "loaded and #loaded == 5") ? Seen::Whole : Seen::Part;
}

Seen lookAtNew(Setting& s)
{
    if (!s.other) return Seen::Part;
    return lookAtRecreated(s) == Seen::Wrong ? Seen::Wrong : Seen::Whole;
}

Seen lookAtNothing(Setting&)
{
    return Seen::Whole;
}

Seen lookAtPrimitives(Setting& s)
{
    if (s.primitives.size() > 2) return Seen::Wrong;
    for (const QuorPrimary* primitive : s.primitives)
        if (!primitive || primitive->getColor() != 7) return Seen::Wrong;
    return s.primitives.size() == 2 ? Seen::Whole : s.primitives.empty() ? Seen::Old : Seen::Part;
}

Seen lookAtKeypoints(Setting& s)
{
    if (s.keypoints.size() > 2) return Seen::Wrong;
    for (std::size_t i = 0; i < s.keypoints.size(); ++i)
        if (s.keypoints[i].first != static_cast<short>(5 + i)) return Seen::Wrong;
    return s.keypoints.size() == 2 ? Seen::Whole : Seen::Part;
}

/// The number is written before the text is looked at.
Seen lookAtDirection(Setting& s)
{
    const bool isRead = s.text == "a text that was read";
    if (!isRead && s.text != "old") return Seen::Wrong;
    if (s.number == -1) return isRead ? Seen::Wrong : Seen::Old;
    return s.number != 1 ? Seen::Wrong : isRead ? Seen::Whole : Seen::Part;
}

Seen lookAtExchange(Setting& s)
{
    const KxGePoint3D old(-1, -1, -1);
    const KxGePoint3D unread; // whether a point could be read is not asked
    const bool isFirst = s.point == KxGePoint3D(0, -2, 0);
    const bool isSecond = s.second == KxGePoint3D(0, 0, 1);
    if (!isFirst && s.point != old && s.point != unread) return Seen::Wrong;
    if (!isSecond && s.second != old && s.second != unread) return Seen::Wrong;
    const bool isList = s.records.size() == 1 && s.records.front().key == "k";
    return isFirst && isSecond && isList ? Seen::Whole : Seen::Part;
}

template<std::size_t whole>
Seen lookAtRecords(Setting& s)
{
    // One stands there before.
    if (s.records.empty() || !s.records.front().key.empty() || s.records.size() > 1 + whole)
        return Seen::Wrong;
    return s.records.size() == 1 + whole ? Seen::Whole : s.records.size() == 1 ? Seen::Old : Seen::Part;
}

Seen lookAtType(Setting& s)
{
    return s.text == "PIPE" ? Seen::Whole : s.text == "old" ? Seen::Old : Seen::Wrong;
}

/// Of a written global: whole, or as it was.
#define LOOK_AT(whole, old)                                                                                  \
    [](Setting& s) {                                                                                         \
        return Setting::holds(s.L, whole) ? Seen::Whole : Setting::holds(s.L, old) ? Seen::Old : Seen::Part; \
    }

} // namespace

std::vector<Operation> scriptorOperations()
{
    const auto all = Says::All;
    const auto part = Says::Part;
    const auto little = Says::Little;
    const auto nothing = Says::Nothing;
    // clang-format off
    return {
        {"QuorGlibScriptor::QuorGlibScriptor()", nothing, [](Setting& s) { s.other.reset(new (std::nothrow) QuorGlibScriptor); return s.other && s.other->getLua(false); }, lookAtNew, 0, 0, [](Setting& s) { s.other.reset(); }, true},
        {"QuorGlibScriptor::initLua()", nothing, [](Setting& s) { s.other->initLua(); return s.other->getLua(false) != nullptr; }, lookAtNew, 0, 0, makeOther, true},
        {"QuorGlibScriptor::loadFile(", part, [](Setting& s) { return s.scriptor.loadFile(fileToLoad, true) == Quor::Ok; }, LOOK_AT("loaded and #loaded == 5", "loaded == nil"), 0, 0, chooseFile},
        {"QuorGlibScriptor::loadFile(", part, [](Setting& s) { return s.other->loadFile(fileToLoad, true) == Quor::Ok; }, lookAtRecreated, 0, 0, loadOther, true},
        {"QuorGlibScriptor::reloadLua(", part, [](Setting& s) { return s.other->reloadLua(1) == Quor::Ok; }, lookAtRecreated, 0, 0, loadOther, true},
        {"QuorGlibScriptor::loadBuffer(", part, [](Setting& s) { return s.other->loadBuffer(buffer, 1000, true) == Quor::Ok; }, lookAtRecreated, 0, 0, makeOther, true},
        {"QuorGlibScriptorHelper::init(", nothing, [](Setting& s) { return s.helper->init(fileToLoad, [](const char*) {}); }, [](Setting& s) { return (s.helper->getL() != nullptr) == (s.helper->getScriptor() != nullptr) ? Seen::Whole : Seen::Wrong; }, 0, 0, makeHelper, true},

        {"QuorGlibScriptor::addLib(", nothing, [](Setting& s) { s.scriptor.addLib("added", functions); return true; }, LOOK_AT("added and added.f", "added == nil")},
        {"QuorGlibScriptor::addLibFuncLua(", nothing, [](Setting& s) { s.scriptor.addLibFuncLua("tools", "f", functions[0].func); return true; }, LOOK_AT("tools and tools.f", "tools == nil")},
        {"QuorGlibScriptor::setPackagePath(", nothing, [](Setting& s) { s.scriptor.setPackagePath(); return true; }, LOOK_AT("not package.path:find(';')", "package.path:find(';')")},
        {"QuorGlibScriptor::setFunction(", nothing, [](Setting& s) { s.scriptor.setFunction(reinterpret_cast<const GlibScriptFunctor*>(&style)); s.scriptor.setFunction(nullptr); return true; }, LOOK_AT("true", "true")},
        {"QuorGlibScriptor::setGlibTextstyle(", nothing, [](Setting& s) { s.scriptor.setGlibTextstyle(&style); return true; }, LOOK_AT("_glib_pass_txtstyle_pointer ~= nil", "_glib_pass_txtstyle_pointer == nil")},

        {"QuorGlibScriptor::setParams(double const*", part, [](Setting& s) { return s.scriptor.setParams(positional, 2); }, LOOK_AT("param.P23 == 0", "param.P1 == nil")},
        {"QuorGlibScriptor::setParams(geolib::paramt const*", all, [](Setting& s) { geolib::paramt last; const geolib::paramt cut{&last, 1, 2}; return s.scriptor.setParams(&cut); }, LOOK_AT("param.cut and #param.cut == 2", "param.cut == nil")},
        {"QuorGlibScriptor::setDoubleParam(", all, [](Setting& s) { return s.scriptor.setDoubleParam("param", "new", 1); }, LOOK_AT("param.new == 1", "param.new == nil")},
        {"QuorGlibScriptor::setKeyValues(", part, [](Setting& s) { return s.scriptor.setKeyValues(threeRecords, 2); }, LOOK_AT("param.a == 2 and param.c", "param.a == nil")},
        {"QuorGlibScriptor::setParam(", part, [](Setting& s) { return s.scriptor.setParam("param", threeRecords); }, LOOK_AT("param.a == 1 and param.c", "param.a == nil")},
        {"QuorGlibScriptor::clearParam(", part, [](Setting& s) { return s.scriptor.clearParam("param"); }, LOOK_AT("param.kept == nil", "param.kept == 1")},
        {"QuorGlibScriptor::setConstFactor(", all, [](Setting& s) { return s.scriptor.setConstFactor(3); }, LOOK_AT("glb.factor == 3", "glb.factor == nil")},
        {"QuorGlibScriptor::setObjectId(", all, [](Setting& s) { return s.scriptor.setObjectId(3); }, LOOK_AT("glb.objectid == int64(3)", "glb.objectid == nil")},
        {"QuorGlibScriptor::getParams(", part, [](Setting& s) { return s.scriptor.getParams(s.records) == Quor::Ok; }, lookAtRecords<1>, 0, 0, [](Setting& s) { EXPECT_EQ(luaL_dostring(s.L, "param = {P1 = {'n', 1}}"), 0); }},
        {"QuorGlibScriptor::getParams_note(", part, [](Setting& s) { return s.scriptor.getParams_note("notes", s.records) == Quor::Ok; }, lookAtRecords<1>},
        {"QuorGlibScriptor::getParams_std(", part, [](Setting& s) { return s.scriptor.getParams_std("texts", s.records) == Quor::Ok; }, lookAtRecords<3>},
        {"QuorGlibScriptor::getSmrtlnType(", all, [](Setting& s) { return s.scriptor.getSmrtlnType(s.text) == Quor::Ok; }, lookAtType},

        {"QuorGlibScriptor::callSeg(char const*)", nothing, [](Setting& s) { return s.scriptor.callSeg("plain") == Quor::Ok; }, lookAtNothing},
        {"QuorGlibScriptor::callSeg(char const*, int&", part, [](Setting& s) { return s.scriptor.callSeg("wants", s.number, s.text) == Quor::Ok; }, lookAtDirection},
        {"QuorGlibScriptor::callSeg(char const*, std::vector<std::pair", little, [](Setting& s) { return s.scriptor.callSeg("keypoint", s.keypoints) == Quor::Ok; }, lookAtKeypoints},
        {"QuorGlibScriptor::getKeypoints(", little, [](Setting& s) { return s.scriptor.getKeypoints(s.keypoints) == Quor::Ok; }, lookAtKeypoints},
        {"QuorGlibScriptor::callSeg(char const*, std::vector<QuorPrimary*", little, [](Setting& s) { return s.scriptor.callSeg("main", s.primitives) == Quor::Ok; }, lookAtPrimitives},
        {"QuorGlibScriptor::callSeg3D(", little, [](Setting& s) { return s.scriptor.callSeg3D("main", s.primitives) == Quor::Ok; }, lookAtPrimitives},
        {"QuorGlibScriptor::callSeg(char const*, std::vector<KVParams, std::allocator<KVParams> > const&)", nothing, [](Setting& s) { return s.scriptor.callSeg("echo", threeRecords) == Quor::Ok; }, lookAtNothing, 1},
        {"QuorGlibScriptor::callSeg(char const*, std::vector<KVParams, std::allocator<KVParams> > const&, GlibTextStyle", nothing, [](Setting& s) { return s.scriptor.callSeg("echo", threeRecords, style) == Quor::Ok; }, lookAtNothing, 1},
        {"QuorGlibScriptor::callSeg(char const*, std::vector<KVParams, std::allocator<KVParams> > const&, KxGeMatrix3D", nothing, [](Setting& s) { return s.scriptor.callSeg("echo", threeRecords, KxGeMatrix3D()) == Quor::Ok; }, lookAtNothing, 1},
        {"QuorGlibScriptor::callSeg(char const*, GlibTextStyle", nothing, [](Setting& s) { return s.scriptor.callSeg("echo", style) == Quor::Ok; }, lookAtNothing, 1},
        {"QuorGlibScriptor::callSeg(char const*, lua_tinker::table const&)", nothing, [](Setting& s) { return s.scriptor.callSeg("echo", lua_tinker::table(s.L, Place)) == Quor::Ok; }, lookAtNothing, 1},
        {"QuorGlibScriptor::callSeg(char const*, lua_tinker::table const&, GlibTextStyle", nothing, [](Setting& s) { return s.scriptor.callSeg("echo", lua_tinker::table(s.L, Place), style) == Quor::Ok; }, lookAtNothing, 1},
        {"QuorGlibScriptor::exeLuaUI(", little, [](Setting& s) { return s.scriptor.exeLuaUI(s.point, s.second, s.records) == Quor::CadReturn::Accepted; }, lookAtExchange},
        {"QuorGlibScriptor::parsePrimary(", little, [](Setting& s) { return s.scriptor.parsePrimary(s.primitives) == Quor::Ok; }, lookAtPrimitives, 1, 1, pushDrawn},
        {"QuorGlibScriptor::justParsePrimary(", little, [](Setting& s) { return s.scriptor.justParsePrimary(s.primitives) == Quor::Ok; }, lookAtPrimitives, 1, 1, pushDrawn},
        {"QuorGlibScriptor::parseKeypoint(", part, [](Setting& s) { return s.scriptor.parseKeypoint(s.keypoints, -1) == Quor::Ok; }, lookAtKeypoints, 1, 1, pushKeypoints},

        {"quorlua::LuaLRegHelper::LuaLRegHelper()", nothing, [](Setting&) { quorlua::LuaLRegHelper().addLuaRegFunc("one", functions); return true; }, lookAtNothing},
        {"quorlua::LuaLRegHelper::addLuaRegFunc(", nothing, [](Setting&) { quorlua::LuaLRegHelper lists; lists.addLuaRegFunc("one", noFunctions); lists.addLuaRegFunc("one", functions); return lists.get_reg().size() == 1 && lists.get_reg().begin()->second != noFunctions; }, lookAtNothing},
        {"quorlua::allocThreadVars(", nothing, [](Setting&) { quorlua::allocThreadVars(12345); quorlua::freeThreadVars(12345); return true; }, lookAtNothing},
        {"quorlua::LuaSerialize::serial(", all, [](Setting& s) { const char* text = quorlua::LuaSerialize::serial(2); s.flag = text && std::strlen(text) > 10; return s.flag; }, [](Setting& s) { clearSerializer(); return s.flag ? Seen::Whole : Seen::Old; }, 0, 0, pushForSerializer},
        {"quorlua::LuaSerialize::unSerial(", little, [](Setting&) { return quorlua::LuaSerialize::unSerial("quor-table 1 {&1{1,2.5},*1,\"name\"=\"a\",#7=6004799503160661p-54}") && lua_istable(quorlua::LuaSerialize::getLua(), 2); }, [](Setting&) { const int height = lua_gettop(quorlua::LuaSerialize::getLua()); clearSerializer(); return height == 2 ? Seen::Whole : Seen::Wrong; }, 0, 0, startSerializer},
    };
    // clang-format on
}

} // namespace failures

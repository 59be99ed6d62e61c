// Values that no correct script gives, to everything that reads values of scripts. What each reader makes of
// each kind of value is told where that reader is tested; here every value meets every reader.

#include "operations.h"

#include <chrono>
#include <cmath>
#include <cstdlib>

namespace {

using namespace failures;

struct Shape {
    const char* name;
    /// Runs in the state and gives the value.
    const char* chunk;
    /// Whether it has more records than a reader of groups takes at once.
    bool isHuge = false;
};

const Shape shapes[] = {
    {"groupInItself", "local t = {{10, {1, 2, 3}, 5}} t[2] = {40, t} return t"},
    {"tableOfItself", "local t = {1, 1, 1} t[1] = t t[2] = t t[3] = t t[4] = t t.needxdir = t return t"},
    {"recordInItself", "local t = {40} t[2] = t t[3] = t return t"},
    {"millionDeep", "local t = {} for i = 1, 1000000 do t = {40, t} end return {t}"},
    {"sharedTwice30Times", "local t = {{300, 1}} for i = 1, 30 do t = {{40, t}, {40, t}} end return t", true},
    {"lyingLength",
     "local t = {} for i = 1, 32 do t[i] = {1, 2, 3} end for i = 6, 40 do t[2 ^ i] = {1, 2, 3} end return t"},
    {"notANumber", "local n = 0 / 0 return {{10, {n, n, n}, n}, {n, n, {n, n, n}}, {1, n, {n, n, n}}, n}"},
    {"infinite", "local i = 1 / 0 return {{10, {i, -i, i}, -i}, {-i, i, {i, i, i}}, {1, i, {-i, i, i}}, i}"},
    {"beyondEveryInteger", "local b = 1e300 return {{300, b}, {1, b, {b, b, b}}, {b, {b, b, b}}, {10, {b, b, "
                           "b}, b}, 2 ^ 63, -2 ^ 63, b}"},
    {"beyondSixteenBits", "return {{300, 70000}, {1, 70000, {1, 2, 3}}, {70000, {1, 2, 3}, 1, 2, 3}, 70000}"},
    {"textsWithNul", "local s = 'a\\0b' return {{400, s}, {s, s}, {1, s, {s, s, s}}, s, [s] = {s, s}}"},
    {"brokenGbk",
     "local s = 'a\\129' return {{400, s}, {600, '\\255\\254'}, {19, 1, {1, 2, 3}, s, 30}, s, [s] = {s, s}}"},
    {"veryLongText", "local s = string.rep('x', 1000000) return {{400, s}, s, [s] = {s, s}}"},
    {"everyKey", "local t = {} for _, k in ipairs({1, 1.5, -1, 0, 1e300, -1 / 0, true, false, 'k', '', {}, "
                 "print, newproxy(),"
                 " coroutine.create(function() end)}) do t[k] = {k, k} end return t"},
    {"everyValue", "return {true, false, 1, 'x', {}, print, newproxy(), coroutine.create(function() end), "
                   "int64(5), io.stdout}"},
    {"empty", "return {}"},
    {"ofEmptyTables", "local t = {} for i = 1, 10 do t[i] = {} end return t"},
    {"raisingMetatable",
     "local function raise() error('a metamethod') end local m = {}"
     " for _, e in ipairs({'__index', '__newindex', '__call', '__tostring', '__len', '__eq', '__lt', '__le',"
     " '__concat', '__unm', '__add', '__gc', '__mode', '__metatable'}) do m[e] = raise end m.__mode = nil"
     " return setmetatable({setmetatable({1, 2, 3}, m), setmetatable({}, m)}, m)"},
    {"endlessIndex", "local t = {} return setmetatable(t, {__index = function(t, k) return t end})"},
    {"indexOfItself", "local t = {} return setmetatable(t, {__index = setmetatable({}, {__index = t})})"},
    {"raisingUserdata",
     "local u = newproxy(true) local m = getmetatable(u) local function raise() error('a metamethod') end"
     " m.__index = raise m.__newindex = raise m.__gc = raise m.__len = raise m.__tostring = raise return u"},
    {"foreignUserdata", "return io.stdout"},
    {"emptyUserdata", "return newproxy()"},
    {"coroutine", "return coroutine.create(function() end)"},
    {"function", "return print"},
    {"number", "return 1e300"},
    {"notANumberAlone", "return 0 / 0"},
    {"text", "return '12\\0'"},
    {"truth", "return true"},
    {"nothing", "return nil"},
};

/// Reads the value in the last slot with one operation; what it gives is told elsewhere.
struct Reader {
    const char* name;
    void (*read)(Setting& s);
    bool entersGroups = false;
    int left = 0; ///< on the stack, at most
};

/// Reads what the function "shaped" gives.
template<class Output>
void readAs(Setting& s, const char* format, Output& output)
{
    quorlua::callLuaFunc(s.L, "shaped", format, &output);
}

void readText(Setting& s)
{
    char* text = nullptr;
    readAs(s, ">s", text);
    std::free(text);
}

void readBytes(Setting& s)
{
    quor_binary bytes;
    readAs(s, ">y", bytes);
    std::free(const_cast<char*>(bytes.data));
}

const char* const fieldName = "needxdir";

// clang-format off
const Reader readers[] = {
    {"point", [](Setting& s) { quorlua::getAKxGePoint(s.L, -1, s.point); }},
    {"point at a key", [](Setting& s) { quorlua::getAKxGePoint(s.L, top + 1, 1, s.point); }},
    {"point in a field", [](Setting& s) { quorlua::getAKxGePoint(s.L, top + 1, fieldName, s.point); }},
    {"vector", [](Setting& s) { quorlua::getAKxGeVector(s.L, -1, s.vector); }},
    {"vector at a key", [](Setting& s) { quorlua::getAKxGeVector(s.L, top + 1, 1, s.vector); }},
    {"vector in a field", [](Setting& s) { quorlua::getAKxGeVector(s.L, top + 1, fieldName, s.vector); }},
    {"id", [](Setting& s) { quorlua::getAKxDbObjectId(s.L, -1, s.id); }},
    {"id at a key", [](Setting& s) { quorlua::getAKxDbObjectId(s.L, top + 1, 1, s.id); }},
    {"id in a field", [](Setting& s) { quorlua::getAKxDbObjectId(s.L, top + 1, fieldName, s.id); }},
    {"matrix", [](Setting& s) { quorlua::getMatrix(s.L, -1, s.matrix); }},
    {"matrix at a key", [](Setting& s) { quorlua::getMatrix(s.L, top + 1, 1, s.matrix); }},
    {"matrix in a field", [](Setting& s) { quorlua::getMatrix(s.L, top + 1, fieldName, s.matrix); }},
    {"points", [](Setting& s) { quorlua::getKxGePointArray(s.L, -1, s.points); }},
    {"ids", [](Setting& s) { quorlua::getKxDbObjectIdArray(s.L, -1, s.ids); }},
    {"texts", [](Setting& s) { quorlua::getStringArray(s.L, -1, s.texts); }},
    {"vertices", [](Setting& s) { quorlua::getQuorPolyDescArray(s.L, -1, s.vertices); }},
    {"primitives", [](Setting& s) { static_cast<void>(quorlua::parse_primary_byidx(s.L, -1, s.primitives)); }, true},
    {"registry", [](Setting& s) { lua_pushvalue(s.L, -1); lua_setglobal(s.L, "objects"); quorlua::findObjectIdInState(s.L, KxDbObjectId(1), "objects"); }, false, 1},

    {"letter i", [](Setting& s) { readAs(s, ">i", s.number); }},
    {"letter d", [](Setting& s) { double value = 0; readAs(s, ">d", value); }},
    {"letter n", [](Setting& s) { readAs(s, ">n", s.flag); }},
    {"letter I", [](Setting& s) { long long value = 0; readAs(s, ">I", value); }},
    {"letter s", readText},
    {"letter r", [](Setting& s) { readAs(s, ">r", s.text); }},
    {"letter y", readBytes},
    {"letter u", [](Setting& s) { void* value = nullptr; readAs(s, ">u", value); }},
    {"letter o", [](Setting& s) { readAs(s, ">o", s.id); }},
    {"letter p", [](Setting& s) { readAs(s, ">p", s.point); }},
    {"letter v", [](Setting& s) { readAs(s, ">v", s.vector); }},
    {"letter X", [](Setting& s) { readAs(s, ">X", s.matrix); }},
    {"letter P", [](Setting& s) { readAs(s, ">P", s.points); }},
    {"letter O", [](Setting& s) { readAs(s, ">O", s.ids); }},
    {"letter S", [](Setting& s) { readAs(s, ">S", s.texts); }},
    {"letter g", [](Setting& s) { readAs(s, ">g", s.vertices); }},
    {"letter l", [](Setting& s) { std::vector<std::vector<QuorPolyDesc>> lists; readAs(s, ">l", lists); }},
    {"letter m", [](Setting& s) { readAs(s, ">m", s.records); }},
    {"letter M", [](Setting& s) { readAs(s, ">M", s.records); }},
    {"letter a", [](Setting& s) { readAs(s, ">a", s.records); }},
    {"letter B", [](Setting& s) { std::vector<std::vector<KVParams>> lists; readAs(s, ">B", lists); }},
    {"letter b", [](Setting& s) { std::vector<std::vector<KVParams>> lists; readAs(s, ">b", lists); }},
    {"letter k", [](Setting& s) { std::vector<KVData> pairs; readAs(s, ">k", pairs); }},
    {"letter T", [](Setting& s) { readAs(s, ">T", s.primitives); }, true},
    {"letter c", [](Setting& s) { lua_tinker::table table; readAs(s, ">c", table); }, false, 2},

    {"getParams_note", [](Setting& s) { static_cast<void>(s.scriptor.getParams_note("shape", s.records)); }},
    {"getParams_std", [](Setting& s) { static_cast<void>(s.scriptor.getParams_std("shape", s.records)); }},
    {"getSmrtlnType", [](Setting& s) { EXPECT_EQ(luaL_dostring(s.L, "glb = {smrtlntype = shape}"), 0); static_cast<void>(s.scriptor.getSmrtlnType(s.text)); }},
    {"getSmrtlnType of it", [](Setting& s) { EXPECT_EQ(luaL_dostring(s.L, "glb = shape"), 0); static_cast<void>(s.scriptor.getSmrtlnType(s.text)); }},
    {"skey", [](Setting& s) { EXPECT_EQ(luaL_dostring(s.L, "param, skey = {}, {quantumUnit = shape, angleUnit = shape}"), 0); s.scriptor.setKeyValues({{"a", "", KVValue::ofDouble(1)}}, 2); }},
    {"skey of it", [](Setting& s) { EXPECT_EQ(luaL_dostring(s.L, "param, skey = {}, shape"), 0); s.scriptor.setKeyValues({{"a", "", KVValue::ofDouble(1)}}, 2); }},
    {"param", [](Setting& s) { EXPECT_EQ(luaL_dostring(s.L, "param, skey = shape, nil"), 0); s.scriptor.setKeyValues({{"a", "", KVValue::ofDouble(1)}}, 2); s.scriptor.setDoubleParam("param", "a", 1); }},
    {"clearParam", [](Setting& s) { EXPECT_EQ(luaL_dostring(s.L, "copy = type(shape) == 'table' and {} or shape"), 0); s.scriptor.clearParam("copy"); }},
    {"callSeg", [](Setting& s) { static_cast<void>(s.scriptor.callSeg("shaped")); }},
    {"callSeg of it", [](Setting& s) { static_cast<void>(s.scriptor.callSeg("shape")); }},
    {"callSeg, direction", [](Setting& s) { static_cast<void>(s.scriptor.callSeg("shaped", s.number, s.text)); }},
    {"callSeg, key points", [](Setting& s) { static_cast<void>(s.scriptor.callSeg("shaped", s.keypoints)); }},
    {"callSeg, primitives", [](Setting& s) { static_cast<void>(s.scriptor.callSeg("shaped", s.primitives)); }, true},
    {"parseKeypoint", [](Setting& s) { static_cast<void>(s.scriptor.parseKeypoint(s.keypoints, -1)); }},
    {"parseRtn, truth", [](Setting& s) { static_cast<void>(s.scriptor.parseRtn(s.flag)); }},
    {"parseRtn, integer", [](Setting& s) { static_cast<void>(s.scriptor.parseRtn(s.number)); }},
    {"exchange", [](Setting& s) { EXPECT_EQ(luaL_dostring(s.L, "function quorgetparam_ui() return shape, shape, shape, shape end"), 0); static_cast<void>(s.scriptor.exeLuaUI(s.point, s.second, s.records)); }},
};
// clang-format on

void PrintTo(const Shape& shape, std::ostream* out)
{
    *out << shape.name;
}

class Shapes : public testing::TestWithParam<Shape> {
protected:
    Shapes()
    {
        lua_tinker::set_error_outlet([](const char*, std::size_t, void*) {}, nullptr);
    }
    ~Shapes() override
    {
        lua_tinker::set_error_outlet(nullptr, nullptr);
        kxcom::clearQuorLastError();
    }
};

TEST_P(Shapes, AreReadByEveryReaderOrNot)
{
    using clock = std::chrono::steady_clock;
    Setting setting;
    lua_State* L = setting.L;
    ASSERT_EQ(luaL_loadstring(L, GetParam().chunk), 0) << lua_tostring(L, -1);
    ASSERT_EQ(lua_pcall(L, 0, 1, 0), 0) << lua_tostring(L, -1);
    lua_setglobal(L, "shape");
    ASSERT_EQ(luaL_dostring(L, "function shaped() return shape end"), 0);
    for (const Reader& reader : readers) {
        if (GetParam().isHuge && reader.entersGroups) continue; // Groups.ThatDoubleAtEveryLevelEnd
        setting.begin();
        lua_getglobal(L, "shape");
        const auto start = clock::now();
        reader.read(setting);
        EXPECT_LT(clock::now() - start, std::chrono::seconds(10)) << reader.name;
        const int height = lua_gettop(L);
        EXPECT_GE(height, top + 1) << reader.name;
        EXPECT_LE(height, top + 1 + reader.left) << reader.name;
        EXPECT_TRUE(setting.isUsable()) << reader.name;
    }
}

INSTANTIATE_TEST_SUITE_P(Of, Shapes, testing::ValuesIn(shapes),
                         [](const auto& shape) { return std::string(shape.param.name); });

// Of foreign blocks no byte is read.
TEST(ShapesOfUserdata, AreNoIntegersUnlessTheyAreTheBindingLayers)
{
    Setting setting;
    for (const char* value : {"io.stdout", "newproxy()", "newproxy(true)", "nil"}) {
        const std::string chunk = std::string("shape = ") + value + " function shaped() return shape, 1 end";
        ASSERT_EQ(luaL_dostring(setting.L, chunk.c_str()), 0);
        long long read = -1;
        int one = 0;
        EXPECT_TRUE(quorlua::callLuaFunc(setting.L, "shaped", ">Ii", &read, &one)) << value;
        EXPECT_EQ(read, 0) << value;
        KxDbObjectId id(-1);
        EXPECT_TRUE(quorlua::callLuaFunc(setting.L, "shaped", ">oi", &id, &one)) << value;
        EXPECT_EQ(id.toInt(), 0) << value;
    }
}

} // namespace

#include "operations.h"

#include <cctype>

namespace failures {
namespace {

constexpr const char* script = R"(
    param = {kept = 1} glb = {smrtlntype = 'PIPE'} notes = {P1 = {'n', 1}} skey = {angleUnit = {'P4'}}
    function plain() local t = {} for i = 1, 9 do t[i] = {'x' .. i} end return t end
    function wants() return {needxdir = {true, 'a text ' .. 'that was read'}} end
    function keypoint() return {{1, 5, {1, 2, 3}}, {1, 6, {4, 5, 6}}} end
    function main() return {{300, 7}, {16, {0, 0, 0}, {1, 0, 0}}, {40, {{10, {0, 0, 0}, 5}}}} end
    function quorgetparam_ui(p) return 0, {p[1] + 1, -2, 0}, {0, 0, 1}, {k = 'v'} end
    function echo(...) return {...} end
    function answer() return 5, 'text', {1, 2, 3}, {{1, 2, 3}, {1, 2, 3}} end
    function probe(a) return a end
    texts = {a = 'a text that is long enough', b = 2, c = {1, 2, 3}}
    keypoints = {{1, 5, {1, 2, 3}}, {1, 6, {4, 5, 6}}}
    drawn = {{300, 7}, {16, {0, 0, 0}, {1, 0, 0}}, {40, {{10, {0, 0, 0}, 5}}}}
    ids_of_test = {['1'] = {}}
    local v = {2, {1, 2, 3}, 30, 10, 20}
    data = {
        place = {1, 2, 3}, places = {{1, 2, 3}, {1, 2, 3}, {1, 2, 3}}, ids = {7, 7, 7},
        texts = {'a text that was read', 'a text that was read'}, vertices = {v, v},
        matrix = {{1, 0, 0, 7}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}, id = 7,
    }
    data[1] = data.matrix
)";

} // namespace

Setting::Setting() : L(scriptor.getLua(false))
{
    if (!L) return;
    if (luaL_dostring(L, script) != 0) ADD_FAILURE() << lua_tostring(L, -1);
    begin();
}

Setting::~Setting()
{
    freeOutputs();
}

void Setting::freeOutputs()
{
    for (const QuorPrimary* primitive : primitives)
        delete primitive;
    primitives.clear();
}

void Setting::begin()
{
    freeOutputs();
    point = second = KxGePoint3D(-1, -1, -1);
    vector = KxGeVector3D(-1, -1, -1);
    matrix = KxGeMatrix3D();
    id.setId(-1);
    points.assign(1, point);
    ids.assign(1, id);
    texts.assign(1, "old");
    vertices.assign(1, QuorPolyDesc());
    records.assign(1, KVParams());
    keypoints.assign(1, Keypoint());
    text = "old";
    number = -1;
    flag = false;
    L = scriptor.getLua(true);
    if (!L) return;
    lua_getglobal(L, "data");
    for (const char* field : {"place", "places", "ids", "texts", "vertices", "matrix"})
        lua_getfield(L, Data, field);
    lua_newtable(L);
}

bool Setting::isUsable()
{
    int answer = 0;
    return L && quorlua::callLuaFunc(L, "probe", "i>i", 41, &answer) && answer == 41;
}

bool Setting::holds(lua_State* state, const char* expression)
{
    const int height = lua_gettop(state);
    const std::string chunk = std::string("return ") + expression;
    const bool ran = luaL_loadstring(state, chunk.c_str()) == 0 && lua_pcall(state, 0, 1, 0) == 0;
    const bool isTrue = ran && lua_toboolean(state, -1);
    lua_settop(state, height);
    return isTrue;
}

std::vector<Operation> allOperations()
{
    std::vector<Operation> all = marshallingOperations();
    const std::vector<Operation> more = scriptorOperations();
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

std::string nameOf(const Operation& operation)
{
    std::string name;
    for (const char* at = operation.name; *at; ++at) {
        const bool isPlain = std::isalnum(static_cast<unsigned char>(*at)) != 0;
        if (isPlain)
            name += *at;
        else if (!name.empty() && name.back() != '_')
            name += '_';
    }
    return name;
}

void PrintTo(const Operation& operation, std::ostream* out)
{
    *out << operation.name;
}

void checkLeft(Setting& setting, const Operation& operation, bool succeeded)
{
    const int left = lua_gettop(setting.L) - top;
    if (succeeded) {
        EXPECT_EQ(left, operation.left);
    } else {
        EXPECT_GE(left, 0);
        EXPECT_LE(left, operation.leftOnFailure);
    }
    const Seen seen = operation.look(setting);
    EXPECT_TRUE(seen != Seen::Wrong);
    if (operation.says == Says::All || operation.says == Says::Part) {
        if (succeeded) {
            EXPECT_TRUE(seen == Seen::Whole);
        } else if (operation.says == Says::All) {
            EXPECT_TRUE(seen == Seen::Old);
        }
    }
}

} // namespace failures

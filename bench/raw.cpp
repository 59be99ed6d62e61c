#include "raw.h"

#include <QuorPrimary/QuorPrimaryFactories.h>
#include <cmath>

namespace raw {
namespace {

int describeError(lua_State* L)
{
    return lua_isstring(L, 1) ? 1 : 0;
}

bool getNumber(lua_State* L, int table, int key, double& number)
{
    lua_rawgeti(L, table, key);
    const bool is = lua_type(L, -1) == LUA_TNUMBER;
    if (is) number = lua_tonumber(L, -1);
    lua_pop(L, 1);
    return is;
}

bool getPoint(lua_State* L, int table, int key, KxGePoint3D& point)
{
    lua_rawgeti(L, table, key);
    const bool is = lua_istable(L, -1) && readPoint(L, lua_gettop(L), point);
    lua_pop(L, 1);
    return is;
}

bool getVector(lua_State* L, int table, int key, KxGeVector3D& vector)
{
    KxGePoint3D point;
    if (!getPoint(L, table, key, point)) return false;
    vector.set(point.toQuorPoint().x, point.toQuorPoint().y, point.toQuorPoint().z);
    return true;
}

struct Attributes {
    short colour = 257;
    double thickness = 0.0;
    double scale = 1.0;
    const char* lineType = nullptr;
    const char* material = nullptr;
};

QuorPrimary* finish(QuorPrimary3D* solid, const Attributes& now)
{
    if (!solid) return nullptr;
    solid->setColor(now.colour);
    solid->setMaterial(now.material);
    return solid;
}

QuorPrimary* finish(QuorPrimary2D* drawing, const Attributes& now)
{
    if (!drawing) return nullptr;
    drawing->setColor(now.colour);
    if (drawing->getThick() <= 1e-5) drawing->setThick(now.thickness);
    if (std::fabs(drawing->getLTScale() - 1.0) <= 0.0001) drawing->setLTScale(now.scale);
    if (!drawing->getLineType()) drawing->setLineType(now.lineType);
    return drawing;
}

QuorPrimary* makeRecord(lua_State* L, int r, Attributes& now)
{
    double code = 0, a = 0, b = 0, c = 0;
    KxGePoint3D p, q;
    KxGeVector3D v, w;
    const std::size_t length = lua_objlen(L, r);
    if (!getNumber(L, r, 1, code)) return nullptr;
    switch (static_cast<int>(code)) {
    case 2:
        if (length < 4 || !getPoint(L, r, 2, p) || !getPoint(L, r, 3, q) || !getNumber(L, r, 4, a))
            return nullptr;
        return finish(createQuorGraphy3DCylinder(p, q, a, 32, false), now);
    case 3:
        if (length < 7 || !getNumber(L, r, 2, a) || !getNumber(L, r, 3, b) || !getNumber(L, r, 4, c) ||
            !getPoint(L, r, 5, p) || !getVector(L, r, 6, v) || !getVector(L, r, 7, w))
            return nullptr;
        return finish(createQuorGraphy3DBox(a, b, c, p, v, w, false, 1), now);
    case 15:
        if (length < 5 || !getPoint(L, r, 2, p) || !getPoint(L, r, 3, q) || !getNumber(L, r, 4, a) ||
            !getNumber(L, r, 5, b))
            return nullptr;
        return finish(createQuorGraphy3DConcone(p, q, a, b, 32, false), now);
    case 16:
        if (length < 3 || !getPoint(L, r, 2, p) || !getPoint(L, r, 3, q)) return nullptr;
        return finish(createQuorLine(p, q), now);
    case 18:
        if (length < 4 || !getPoint(L, r, 2, p) || !getNumber(L, r, 3, a) || !getVector(L, r, 4, v))
            return nullptr;
        return finish(createQuorCirc(p, a, v), now);
    case 300:
        now.colour = getNumber(L, r, 2, a) ? static_cast<short>(a) : short{257};
        return nullptr;
    default:
        return nullptr;
    }
}

int answerNothing(lua_State*)
{
    return 0;
}

} // namespace

int keepHandler(lua_State* L)
{
    lua_pushcfunction(L, describeError);
    return luaL_ref(L, LUA_REGISTRYINDEX);
}

bool callStatus(lua_State* L, int handler, const char* function, const char* a, const char* b, int& status)
{
    const int top = lua_gettop(L);
    lua_rawgeti(L, LUA_REGISTRYINDEX, handler);
    lua_getfield(L, LUA_GLOBALSINDEX, function);
    bool done = false;
    if (lua_isfunction(L, -1)) {
        lua_pushstring(L, a);
        lua_pushstring(L, b);
        done = lua_pcall(L, 2, 1, top + 1) == 0 && lua_type(L, -1) == LUA_TNUMBER;
        if (done) status = static_cast<int>(lua_tointeger(L, -1));
    }
    lua_settop(L, top);
    return done;
}

bool callExchange(lua_State* L, int handler, const char* function, const KxGePoint3D& in, int& status,
                  KxGePoint3D& first, KxGePoint3D& second)
{
    const int top = lua_gettop(L);
    lua_rawgeti(L, LUA_REGISTRYINDEX, handler);
    lua_getfield(L, LUA_GLOBALSINDEX, function);
    bool done = false;
    if (lua_isfunction(L, -1)) {
        pushPoint(L, in);
        done = lua_pcall(L, 1, 3, top + 1) == 0 && lua_type(L, -3) == LUA_TNUMBER;
        if (done) {
            status = static_cast<int>(lua_tointeger(L, -3));
            done = readPoint(L, top + 3, first) && readPoint(L, top + 4, second);
        }
    }
    lua_settop(L, top);
    return done;
}

const char* getText(lua_State* L, int handler, const char* function, const char* argument)
{
    const int top = lua_gettop(L);
    const char* answer = nullptr;
    lua_rawgeti(L, LUA_REGISTRYINDEX, handler);
    lua_getfield(L, LUA_GLOBALSINDEX, function);
    if (lua_isfunction(L, -1)) {
        lua_pushstring(L, argument);
        if (lua_pcall(L, 1, 1, top + 1) == 0 && lua_type(L, -1) == LUA_TSTRING) answer = lua_tostring(L, -1);
    }
    lua_settop(L, top);
    return answer;
}

bool readPoint(lua_State* L, int index, KxGePoint3D& point)
{
    double x = 0, y = 0, z = 0;
    if (!lua_istable(L, index)) return false;
    if (!getNumber(L, index, 1, x) || !getNumber(L, index, 2, y) || !getNumber(L, index, 3, z)) return false;
    point.set(x, y, z);
    return true;
}

void pushPoint(lua_State* L, const KxGePoint3D& point)
{
    lua_createtable(L, 3, 0);
    lua_pushnumber(L, point.toQuorPoint().x);
    lua_rawseti(L, -2, 1);
    lua_pushnumber(L, point.toQuorPoint().y);
    lua_rawseti(L, -2, 2);
    lua_pushnumber(L, point.toQuorPoint().z);
    lua_rawseti(L, -2, 3);
}

void readPoints(lua_State* L, int index, std::vector<KxGePoint3D>& points)
{
    points.clear();
    const int length = static_cast<int>(lua_objlen(L, index));
    for (int key = 1; key <= length; ++key) {
        KxGePoint3D point;
        if (getPoint(L, index, key, point)) points.push_back(point);
    }
}

void writePoints(lua_State* L, int index, const std::vector<KxGePoint3D>& points)
{
    int key = 0;
    for (const KxGePoint3D& point : points) {
        pushPoint(L, point);
        lua_rawseti(L, index, ++key);
    }
}

bool readMatrix(lua_State* L, int index, KxGeMatrix3D& matrix)
{
    if (!lua_istable(L, index) || lua_objlen(L, index) != 4) return false;
    for (int row = 0; row < 4; ++row) {
        double n[4] = {};
        lua_rawgeti(L, index, row + 1);
        bool whole = lua_istable(L, -1) && lua_objlen(L, -1) == 4;
        for (int column = 0; whole && column < 4; ++column)
            whole = getNumber(L, lua_gettop(L), column + 1, n[column]);
        lua_pop(L, 1);
        if (!whole) return false;
        matrix.setRow(row, n[0], n[1], n[2], n[3]);
    }
    return true;
}

void writeMatrix(lua_State* L, int index, const KxGeMatrix3D& matrix)
{
    for (int row = 0; row < 4; ++row) {
        double n[4];
        matrix.getRow(row, n[0], n[1], n[2], n[3]);
        lua_createtable(L, 4, 0);
        for (int column = 0; column < 4; ++column) {
            lua_pushnumber(L, n[column]);
            lua_rawseti(L, -2, column + 1);
        }
        lua_rawseti(L, index, row + 1);
    }
}

void parseRecords(lua_State* L, int index, std::vector<QuorPrimary*>& out)
{
    Attributes now;
    for (lua_pushnil(L); lua_next(L, index) != 0; lua_pop(L, 1)) {
        if (!lua_istable(L, -1)) continue;
        if (QuorPrimary* made = makeRecord(L, lua_gettop(L), now)) out.push_back(made);
    }
}

void makeState()
{
    static const luaL_Reg functions[] = {
        {"f1", answerNothing},  {"f2", answerNothing},  {"f3", answerNothing},  {"f4", answerNothing},
        {"f5", answerNothing},  {"f6", answerNothing},  {"f7", answerNothing},  {"f8", answerNothing},
        {"f9", answerNothing},  {"f10", answerNothing}, {"f11", answerNothing}, {"f12", answerNothing},
        {"f13", answerNothing}, {nullptr, nullptr},
    };
    static const luaL_Reg methods[] = {
        {"height", answerNothing},   {"getlen", answerNothing},    {"getlen_h", answerNothing},
        {"setstyle", answerNothing}, {"getfactor", answerNothing}, {nullptr, nullptr},
    };
    lua_State* L = luaL_newstate();
    luaL_openlibs(L);
    luaL_register(L, "glib", functions);
    luaL_newmetatable(L, "GlibTextStyle");
    lua_pushvalue(L, -1);
    lua_setfield(L, -2, "__index");
    luaL_register(L, nullptr, methods);
    lua_close(L);
}

} // namespace raw

#include "limit.h"

#include "raw.h"

#include <QuorPrimary/QuorPrimaryFactories.h>
#include <cmath>

namespace limit {
namespace {

constexpr int handlerSlot = 1;
constexpr int nameSlot = 2;

/// A number at an index; its type is asked for where it is 0.
bool isNumber(lua_State* L, int index, double& number)
{
    number = lua_tonumber(L, index);
    return number != 0.0 || lua_type(L, index) == LUA_TNUMBER;
}

/// The three coordinates stay on the stack.
bool getPoint(lua_State* L, int index, double& x, double& y, double& z)
{
    if (lua_type(L, index) != LUA_TTABLE) return false;
    lua_rawgeti(L, index, 1);
    lua_rawgeti(L, index < 0 ? index - 1 : index, 2);
    lua_rawgeti(L, index < 0 ? index - 2 : index, 3);
    return isNumber(L, -3, x) && isNumber(L, -2, y) && isNumber(L, -1, z);
}

/// Numbers and points of one record, whose values stay on the stack until all are read.
struct Fields {
    lua_State* L;
    int record;

    double number(int key) const
    {
        double value = NAN;
        lua_rawgeti(L, record, key);
        return isNumber(L, -1, value) ? value : NAN;
    }
    bool point(int key, KxGePoint3D& point) const
    {
        double x = 0, y = 0, z = 0;
        lua_rawgeti(L, record, key);
        if (!getPoint(L, -1, x, y, z)) return false;
        point.set(x, y, z);
        return true;
    }
    bool vector(int key, KxGeVector3D& vector) const
    {
        double x = 0, y = 0, z = 0;
        lua_rawgeti(L, record, key);
        if (!getPoint(L, -1, x, y, z)) return false;
        vector.set(x, y, z);
        return true;
    }
};

QuorPrimary* finish(QuorPrimary3D* solid, short colour)
{
    if (!solid) return nullptr;
    solid->setColor(colour);
    solid->setMaterial(nullptr);
    return solid;
}

QuorPrimary* finish(QuorPrimary2D* drawing, short colour)
{
    if (!drawing) return nullptr;
    drawing->setColor(colour);
    if (drawing->getThick() <= 1e-5) drawing->setThick(0.0);
    if (std::fabs(drawing->getLTScale() - 1.0) <= 0.0001) drawing->setLTScale(1.0);
    if (!drawing->getLineType()) drawing->setLineType(nullptr);
    return drawing;
}

QuorPrimary* makeRecord(lua_State* L, int r, short& colour)
{
    const Fields f{L, r};
    KxGePoint3D p, q;
    KxGeVector3D v, w;
    const double code = f.number(1);
    const std::size_t length = lua_objlen(L, r);
    switch (static_cast<int>(code)) {
    case 2: {
        if (length < 4 || !f.point(2, p) || !f.point(3, q)) return nullptr;
        const double radius = f.number(4);
        if (std::isnan(radius)) return nullptr;
        return finish(createQuorGraphy3DCylinder(p, q, radius, 32, false), colour);
    }
    case 3: {
        if (length < 7) return nullptr;
        const double a = f.number(2), b = f.number(3), c = f.number(4);
        if (std::isnan(a + b + c) || !f.point(5, p) || !f.vector(6, v) || !f.vector(7, w)) return nullptr;
        return finish(createQuorGraphy3DBox(a, b, c, p, v, w, false, 1), colour);
    }
    case 15: {
        if (length < 5 || !f.point(2, p) || !f.point(3, q)) return nullptr;
        const double a = f.number(4), b = f.number(5);
        if (std::isnan(a + b)) return nullptr;
        return finish(createQuorGraphy3DConcone(p, q, a, b, 32, false), colour);
    }
    case 16:
        if (length < 3 || !f.point(2, p) || !f.point(3, q)) return nullptr;
        return finish(createQuorLine(p, q), colour);
    case 18: {
        if (length < 4 || !f.point(2, p)) return nullptr;
        const double radius = f.number(3);
        if (std::isnan(radius) || !f.vector(4, v)) return nullptr;
        return finish(createQuorCirc(p, radius, v), colour);
    }
    case 300: {
        const double given = f.number(2);
        colour = std::isnan(given) ? short{257} : static_cast<short>(given);
        return nullptr;
    }
    default:
        return nullptr;
    }
}

} // namespace

void keepHandlerAndName(lua_State* L, const char* function)
{
    lua_settop(L, 0);
    lua_rawgeti(L, LUA_REGISTRYINDEX, raw::keepHandler(L));
    lua_pushstring(L, function);
}

bool callStatus(lua_State* L, const char* a, const char* b, int& status)
{
    lua_pushvalue(L, nameSlot);
    lua_rawget(L, LUA_GLOBALSINDEX);
    lua_pushstring(L, a);
    lua_pushstring(L, b);
    bool done = false;
    if (lua_pcall(L, 2, 1, handlerSlot) == 0) {
        double number = 0;
        done = isNumber(L, -1, number);
        if (done) status = static_cast<int>(number);
    }
    lua_settop(L, nameSlot);
    return done;
}

bool callExchange(lua_State* L, const KxGePoint3D& in, int& status, KxGePoint3D& first, KxGePoint3D& second)
{
    lua_pushvalue(L, nameSlot);
    lua_rawget(L, LUA_GLOBALSINDEX);
    raw::pushPoint(L, in);
    bool done = false;
    if (lua_pcall(L, 1, 3, handlerSlot) == 0) {
        double number = 0, x = 0, y = 0, z = 0;
        done = isNumber(L, nameSlot + 1, number);
        if (done) status = static_cast<int>(number);
        if ((done = done && getPoint(L, nameSlot + 2, x, y, z))) first.set(x, y, z);
        if ((done = done && getPoint(L, nameSlot + 3, x, y, z))) second.set(x, y, z);
    }
    lua_settop(L, nameSlot);
    return done;
}

const char* getText(lua_State* L, const char* argument)
{
    lua_pushvalue(L, nameSlot);
    lua_rawget(L, LUA_GLOBALSINDEX);
    lua_pushstring(L, argument);
    const char* answer = nullptr;
    if (lua_pcall(L, 1, 1, handlerSlot) == 0) answer = lua_tostring(L, -1);
    lua_settop(L, nameSlot);
    return answer;
}

void readPoints(lua_State* L, int index, std::vector<KxGePoint3D>& points)
{
    points.clear();
    const int top = lua_gettop(L);
    const int length = static_cast<int>(lua_objlen(L, index));
    points.reserve(static_cast<std::size_t>(length));
    for (int key = 1; key <= length; ++key) {
        double x = 0, y = 0, z = 0;
        lua_rawgeti(L, index, key);
        if (getPoint(L, top + 1, x, y, z)) points.emplace_back(x, y, z);
        lua_settop(L, top);
    }
}

void writePoints(lua_State* L, int index, const std::vector<KxGePoint3D>& points)
{
    int key = 0;
    for (const KxGePoint3D& point : points) {
        raw::pushPoint(L, point);
        lua_rawseti(L, index, ++key);
    }
}

bool readMatrix(lua_State* L, int index, KxGeMatrix3D& matrix)
{
    if (!lua_istable(L, index) || lua_objlen(L, index) != 4) return false;
    const int top = lua_gettop(L);
    for (int row = 0; row < 4; ++row) {
        double n[4];
        lua_rawgeti(L, index, row + 1);
        bool whole = lua_istable(L, top + 1) && lua_objlen(L, top + 1) == 4;
        for (int column = 0; whole && column < 4; ++column) {
            lua_rawgeti(L, top + 1, column + 1);
            whole = isNumber(L, -1, n[column]);
        }
        lua_settop(L, top);
        if (!whole) return false;
        matrix.setRow(row, n[0], n[1], n[2], n[3]);
    }
    return true;
}

void writeMatrix(lua_State* L, int index, const KxGeMatrix3D& matrix)
{
    raw::writeMatrix(L, index, matrix);
}

void parseRecords(lua_State* L, int index, std::vector<QuorPrimary*>& out)
{
    short colour = 257;
    lua_checkstack(L, 64);
    const int record = lua_gettop(L) + 2;
    for (lua_pushnil(L); lua_next(L, index) != 0; lua_settop(L, record - 1)) {
        if (!lua_istable(L, record)) continue;
        if (QuorPrimary* made = makeRecord(L, record, colour)) out.push_back(made);
    }
}

void makeState()
{
    raw::makeState();
}

} // namespace limit

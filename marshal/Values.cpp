#include "Values.h"

#include "Budget.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <QuorScriptor/GlibCallbacks.h>
#include <charconv>
#include <cmath>
#include <string_view>

namespace quorlua {

constinit BoundsOfReading boundsOfReading;

namespace values {
namespace {

void setNumber(lua_State* L, int key, double number) // [-1] table
{
    lua_pushnumber(L, number);
    lua_rawseti(L, -2, key);
}

/// Whether a number beyond the range of a double is beyond it downwards, as its exponent tells, or, without
/// one, its first digit.
bool isTiny(std::string_view digits, bool hexadecimal)
{
    const std::size_t exponent = digits.find_first_of(hexadecimal ? "pP" : "eE");
    if (exponent != std::string_view::npos) return digits.substr(exponent + 1).starts_with('-');
    return digits.starts_with('0') || digits.starts_with('.');
}

/// The number that a text writes as the interpreter takes it: blanks around it, a sign, decimal or
/// hexadecimal.
bool parseNumber(std::string_view text, double& number)
{
    constexpr std::string_view blanks = " \t\n\v\f\r";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    text = text.substr(0, text.find_last_not_of(blanks) + 1);
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal) text.remove_prefix(2);
    if (text.starts_with('-')) return false;
    double magnitude = 0;
    const auto format = hexadecimal ? std::chars_format::hex : std::chars_format::general;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude, format);
    if (end != text.data() + text.size()) return false;
    if (error == std::errc::result_out_of_range)
        magnitude = isTiny(text, hexadecimal) ? 0.0 : HUGE_VAL;
    else if (error != std::errc())
        return false;
    number = negative ? -magnitude : magnitude;
    return true;
}

} // namespace

bool readNumeric(lua_State* L, int index, double& number)
{
    if (lua_type(L, index) != LUA_TSTRING) return readNumber(L, index, number);
    return parseNumber(lua_tostring(L, index), number);
}

void pushPoint(lua_State* L, const QuorPoint& point)
{
    lua_createtable(L, 3, 0);
    setNumber(L, 1, point.x);
    setNumber(L, 2, point.y);
    setNumber(L, 3, point.z);
}

void pushTextStyle(lua_State* L, const GlibTextStyle* style)
{
    // Scripts may change the style through "setstyle"; the library itself changes nothing of it.
    lua_tinker::push_object<GlibTextStyle>(L, const_cast<GlibTextStyle*>(style));
}

void fillMatrix(lua_State* L, int index, const KxGeMatrix3D& matrix)
{
    for (int row = 0; row < 4; ++row) {
        double numbers[4];
        matrix.getRow(row, numbers[0], numbers[1], numbers[2], numbers[3]);
        lua_createtable(L, 4, 0);
        for (int column = 0; column < 4; ++column)
            setNumber(L, column + 1, numbers[column]);
        lua_rawseti(L, index, row + 1);
    }
}

void fillPoints(lua_State* L, int index, const std::vector<KxGePoint3D>& points)
{
    int key = 0;
    for (const KxGePoint3D& point : points) {
        pushPoint(L, point.toQuorPoint());
        lua_rawseti(L, index, ++key);
    }
}

void fillIds(lua_State* L, int index, const std::vector<KxDbObjectId>& ids)
{
    int key = 0;
    for (const KxDbObjectId& id : ids) {
        lua_tinker::push<long long>(L, id.toInt());
        lua_rawseti(L, index, ++key);
    }
}

void fillTexts(lua_State* L, int index, const std::vector<std::string>& texts)
{
    int key = 0;
    for (const std::string& text : texts) {
        lua_pushstring(L, text.c_str());
        lua_rawseti(L, index, ++key);
    }
}

void fillPolyline(lua_State* L, int index, const std::vector<QuorPolyDesc>& vertices)
{
    int key = 0;
    for (const QuorPolyDesc& vertex : vertices) {
        lua_createtable(L, 5, 0);
        setNumber(L, 1, vertex.kind);
        pushPoint(L, vertex.point.toQuorPoint());
        lua_rawseti(L, -2, 2);
        setNumber(L, 3, vertex.bulge);
        setNumber(L, 4, vertex.startWidth);
        setNumber(L, 5, vertex.endWidth);
        lua_rawseti(L, index, ++key);
    }
}

void fillPolylines(lua_State* L, int index, const std::vector<std::vector<QuorPolyDesc>>& polylines)
{
    int key = 0;
    for (const std::vector<QuorPolyDesc>& vertices : polylines) {
        lua_createtable(L, sizeHint(vertices), 0);
        fillPolyline(L, lua_gettop(L), vertices);
        lua_rawseti(L, index, ++key);
    }
}

bool readPolyline(lua_State* L, int index, std::vector<QuorPolyDesc>& vertices, Budget& budget)
{
    const int top = lua_gettop(L);
    for (lua_pushnil(L); lua_next(L, index) != 0; lua_settop(L, top + 1)) {
        const int element = top + 2; // [-2] key, [-1] element
        QuorPolyDesc vertex;
        double x = 0, y = 0, z = 0;
        if (!budget.takeEntry(sizeof vertex) || !lua_istable(L, element) ||
            !getAInt(L, element, 1, vertex.kind) || !getAPoint(L, element, 2, x, y, z)) {
            lua_settop(L, top);
            return false;
        }
        vertex.point.set(x, y, z);
        getADouble(L, element, 3, vertex.bulge);
        getADouble(L, element, 4, vertex.startWidth);
        getADouble(L, element, 5, vertex.endWidth);
        vertices.push_back(vertex);
    }
    return true;
}

bool readPolylines(lua_State* L, int index, std::vector<std::vector<QuorPolyDesc>>& polylines, Budget& budget)
{
    const int top = lua_gettop(L);
    for (lua_pushnil(L); lua_next(L, index) != 0; lua_settop(L, top + 1)) {
        std::vector<QuorPolyDesc> vertices;
        if (!budget.takeEntry(sizeof(std::vector<QuorPolyDesc>)) || !lua_istable(L, top + 2) ||
            !readPolyline(L, top + 2, vertices, budget)) {
            lua_settop(L, top);
            return false;
        }
        polylines.push_back(std::move(vertices));
    }
    return true;
}

} // namespace values
} // namespace quorlua

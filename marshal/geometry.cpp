#include "Budget.h"
#include "Guard.h"
#include "Values.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <QuorScriptor/geometry.h>
#include <cstring>

namespace quorlua {
namespace {

/// Reads the named field of a table with `read(index)`. The name counts as pushed when the index is resolved:
/// -1 is then the name itself, and every other negative index names the slot one higher.
template<class Read>
bool readField(lua_State* L, int tableIndex, const char* name, Read read)
{
    if (!L || !name) return false;
    if (!guard::isSlot(L, tableIndex) || !lua_istable(L, tableIndex) || !guard::reserve(L, 1)) return false;
    const bool nameIsTable = tableIndex == -1;
    lua_pushvalue(L, tableIndex < -1 && tableIndex > LUA_REGISTRYINDEX ? tableIndex + 1 : tableIndex);
    const bool fetched = guard::run(L, 1, 0, [=](lua_State* frame) {
        if (nameIsTable) {
            lua_pushstring(frame, name);
            lua_replace(frame, 1);
        }
        lua_getfield(frame, 1, name);
        return 1;
    });
    if (!fetched) return false;
    const bool done = read(lua_gettop(L));
    lua_pop(L, 1);
    return done;
}

/// Reads the entry at an integer key of a table with `read(index)`.
template<class Read>
bool readEntry(lua_State* L, int tableIndex, int key, Read read)
{
    if (!L || !guard::isSlot(L, tableIndex) || !lua_istable(L, tableIndex)) return false;
    if (!guard::reserve(L, values::readerSlots)) return false;
    lua_rawgeti(L, tableIndex, key);
    const bool done = read(lua_gettop(L));
    lua_pop(L, 1);
    return done;
}

template<class Triple>
int readTriple(lua_State* L, int index, Triple& triple)
{
    if (!L || !guard::isSlot(L, index) || !guard::reserve(L, values::readerSlots)) return 1;
    const int top = lua_gettop(L);
    QuorPoint point{};
    const bool whole = values::readPoint(L, index, point);
    lua_settop(L, top);
    if (!whole) return 1;
    triple.set(point.x, point.y, point.z);
    return 0;
}

bool isTable(lua_State* L, int index)
{
    return L && guard::isSlot(L, index) && lua_istable(L, index);
}

template<class Triple>
void writeTriple(lua_State* L, int index, const Triple& triple)
{
    const QuorPoint& point = triple.toQuorPoint();
    if (!isTable(L, index)) return;
    guard::runOn(L, index, [&point](lua_State* frame) {
        setAPoint(frame, 1, point.x, point.y, point.z);
        return 0;
    });
}

template<class Triple>
void writeTriple(lua_State* L, int tableIndex, int key, const Triple& triple)
{
    const QuorPoint& point = triple.toQuorPoint();
    const int table = L ? guard::absolute(L, tableIndex) : 0;
    if (!isTable(L, table)) return;
    guard::runOn(L, table, [&point, key](lua_State* frame) {
        values::pushPoint(frame, point);
        lua_rawseti(frame, 1, key);
        return 0;
    });
}

template<class Triple>
void writeTriple(lua_State* L, int tableIndex, const char* name, const Triple& triple)
{
    const QuorPoint& point = triple.toQuorPoint();
    if (!L || !name || !*name) return;
    guard::runOn(L, guard::absolute(L, tableIndex), [&point, name](lua_State* frame) {
        values::pushPoint(frame, point);
        lua_setfield(frame, 1, name);
        return 0;
    });
}

/// Reads the rows of the table at an absolute index.
bool readMatrix(lua_State* L, int index, KxGeMatrix3D& matrix)
{
    if (!lua_istable(L, index) || lua_objlen(L, index) != 4) return false;
    const int top = lua_gettop(L);
    for (int row = 0; row < 4; ++row) {
        double numbers[4] = {};
        lua_rawgeti(L, index, row + 1);
        bool whole = lua_istable(L, top + 1) && lua_objlen(L, top + 1) == 4;
        for (int column = 0; whole && column < 4; ++column) {
            lua_rawgeti(L, top + 1, column + 1);
            whole = values::readNumber(L, -1, numbers[column]);
        }
        lua_settop(L, top);
        if (!whole) return false;
        matrix.setRow(row, numbers[0], numbers[1], numbers[2], numbers[3]);
    }
    return true;
}

/// Clears a vector and appends what `read(index, key, element)` reads of a table's sequence.
template<class Element, class Read>
bool readArray(lua_State* L, int index, std::vector<Element>& out, Read read)
{
    out.clear();
    if (!isTable(L, index) || !guard::reserve(L, values::readerSlots)) return false;
    const int table = guard::absolute(L, index);
    const int top = lua_gettop(L);
    const bool whole = values::withoutThrowing([&] {
        values::forEachIndex(L, table, [&](int key) {
            Element element;
            if (read(table, key, element)) out.push_back(std::move(element));
        });
        return true;
    });
    lua_settop(L, top);
    return whole && !out.empty();
}

} // namespace

int getAKxGePoint(lua_State* L, int index, KxGePoint3D& point)
{
    return readTriple(L, index, point);
}

bool getAKxGePoint(lua_State* L, int tableIndex, int key, KxGePoint3D& point)
{
    return readEntry(L, tableIndex, key, [&](int value) { return readTriple(L, value, point) == 0; });
}

bool getAKxGePoint(lua_State* L, int tableIndex, const char* name, KxGePoint3D& point)
{
    return readField(L, tableIndex, name, [&](int value) { return readTriple(L, value, point) == 0; });
}

int getAKxGeVector(lua_State* L, int index, KxGeVector3D& vector)
{
    return readTriple(L, index, vector);
}

bool getAKxGeVector(lua_State* L, int tableIndex, int key, KxGeVector3D& vector)
{
    return readEntry(L, tableIndex, key, [&](int value) { return readTriple(L, value, vector) == 0; });
}

bool getAKxGeVector(lua_State* L, int tableIndex, const char* name, KxGeVector3D& vector)
{
    return readField(L, tableIndex, name, [&](int value) { return readTriple(L, value, vector) == 0; });
}

void setAKxGePoint(lua_State* L, int index, const KxGePoint3D& point)
{
    writeTriple(L, index, point);
}

void setAKxGePoint(lua_State* L, int tableIndex, int key, const KxGePoint3D& point)
{
    writeTriple(L, tableIndex, key, point);
}

void setAKxGePoint(lua_State* L, int tableIndex, const char* name, const KxGePoint3D& point)
{
    writeTriple(L, tableIndex, name, point);
}

void setAKxGeVector(lua_State* L, int index, const KxGeVector3D& vector)
{
    writeTriple(L, index, vector);
}

void setAKxGeVector(lua_State* L, int tableIndex, int key, const KxGeVector3D& vector)
{
    writeTriple(L, tableIndex, key, vector);
}

void setAKxGeVector(lua_State* L, int tableIndex, const char* name, const KxGeVector3D& vector)
{
    writeTriple(L, tableIndex, name, vector);
}

int getAKxDbObjectId(lua_State* L, int index, KxDbObjectId& id)
{
    if (!L || !guard::isSlot(L, index) || !guard::reserve(L, values::readerSlots)) return 1;
    if (!lua_isuserdata(L, index) && lua_type(L, index) != LUA_TNUMBER) return 1;
    id.setId(lua_tinker::read<long long>(L, index));
    return 0;
}

bool getAKxDbObjectId(lua_State* L, int tableIndex, int key, KxDbObjectId& id)
{
    return readEntry(L, tableIndex, key, [&](int value) { return getAKxDbObjectId(L, value, id) == 0; });
}

bool getAKxDbObjectId(lua_State* L, int tableIndex, const char* name, KxDbObjectId& id)
{
    if (!name || !*name) return false;
    return readField(L, tableIndex, name, [&](int value) { return getAKxDbObjectId(L, value, id) == 0; });
}

bool getMatrix(lua_State* L, int index, KxGeMatrix3D& matrix)
{
    if (!isTable(L, index) || !guard::reserve(L, values::readerSlots)) return false;
    return readMatrix(L, guard::absolute(L, index), matrix);
}

bool getMatrix(lua_State* L, int tableIndex, int key, KxGeMatrix3D& matrix)
{
    return readEntry(L, tableIndex, key, [&](int value) { return readMatrix(L, value, matrix); });
}

bool getMatrix(lua_State* L, int tableIndex, const char* name, KxGeMatrix3D& matrix)
{
    return readField(L, tableIndex, name, [&](int value) { return getMatrix(L, value, matrix); });
}

bool getMatrix(lua_tinker::table& table, KxGeMatrix3D& matrix)
{
    return table.valid() && getMatrix(table.state(), table.index(), matrix);
}

void setMatrix(lua_tinker::table& table, const KxGeMatrix3D& matrix)
{
    if (!table.valid()) return;
    guard::runOn(table.state(), table.index(), [&matrix](lua_State* frame) {
        values::fillMatrix(frame, 1, matrix);
        return 0;
    });
}

bool getKxGePointArray(lua_State* L, int index, std::vector<KxGePoint3D>& points)
{
    const int top = L ? lua_gettop(L) : 0;
    return readArray(L, index, points, [L, top](int table, int key, KxGePoint3D& point) {
        QuorPoint read{};
        lua_rawgeti(L, table, key);
        const bool whole = values::readPoint(L, top + 1, read);
        if (whole) point.set(read.x, read.y, read.z);
        lua_settop(L, top);
        return whole;
    });
}

bool getKxDbObjectIdArray(lua_State* L, int index, std::vector<KxDbObjectId>& ids)
{
    return readArray(L, index, ids, [L](int table, int key, KxDbObjectId& id) {
        return getAKxDbObjectId(L, table, key, id);
    });
}

bool getStringArray(lua_State* L, int index, std::vector<std::string>& texts)
{
    Budget budget(L);
    return readArray(L, index, texts, [L, &budget](int table, int key, std::string& text) {
        const char* read = nullptr;
        if (budget.isSpent() || !getAString(L, table, key, read)) return false;
        const std::size_t length = std::strlen(read);
        if (!budget.takeEntry(sizeof(std::string) + length)) return false;
        text.assign(read, length);
        return true;
    });
}

void setKxGePointArray(lua_State* L, int index, const std::vector<KxGePoint3D>& points)
{
    if (!isTable(L, index)) return;
    guard::runOn(L, index, [&points](lua_State* frame) {
        values::fillPoints(frame, 1, points);
        return 0;
    });
}

void setKxDbObjectIdArray(lua_State* L, int index, const std::vector<KxDbObjectId>& ids)
{
    if (!isTable(L, index)) return;
    guard::runOn(L, index, [&ids](lua_State* frame) {
        values::fillIds(frame, 1, ids);
        return 0;
    });
}

void setStringArray(lua_State* L, int index, const std::vector<std::string>& texts)
{
    if (!isTable(L, index)) return;
    guard::runOn(L, index, [&texts](lua_State* frame) {
        values::fillTexts(frame, 1, texts);
        return 0;
    });
}

bool getQuorPolyDescArray(lua_State* L, int index, std::vector<QuorPolyDesc>& vertices)
{
    if (!isTable(L, index) || !guard::reserve(L, values::readerSlots)) return false;
    const int top = lua_gettop(L);
    Budget budget(L);
    const bool read = values::withoutThrowing(
        [&] { return values::readPolyline(L, guard::absolute(L, index), vertices, budget); });
    lua_settop(L, top);
    return read;
}

bool setQuorPolyDescArray(lua_State* L, int index, const std::vector<QuorPolyDesc>& vertices)
{
    return isTable(L, index) && guard::runOn(L, index, [&vertices](lua_State* frame) {
               values::fillPolyline(frame, 1, vertices);
               return 0;
           });
}

bool setSpolygonDesc2Lua(lua_State* L, int index, const std::vector<std::vector<QuorPolyDesc>>& polylines)
{
    return isTable(L, index) && guard::runOn(L, index, [&polylines](lua_State* frame) {
               values::fillPolylines(frame, 1, polylines);
               return 0;
           });
}

} // namespace quorlua

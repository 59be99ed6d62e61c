#include "operations.h"

#include <algorithm>
#include <cstdarg>
#include <cstdlib>

namespace failures {
namespace {

using namespace quorlua;

constexpr const char* readText = "a text that was read";

template<class Value>
Seen seen(const Value& value, const Value& old, const Value& read)
{
    return value == read ? Seen::Whole : value == old ? Seen::Old : Seen::Wrong;
}

/// A list that is read from its beginning, with old elements before it where it is appended to.
template<class Element, class IsRead>
Seen seenList(const std::vector<Element>& list, std::size_t whole, IsRead isRead)
{
    if (list.size() > whole || !std::all_of(list.begin(), list.end(), isRead)) return Seen::Wrong;
    return list.size() == whole ? Seen::Whole : Seen::Part;
}

const KxGePoint3D readPoint(1, 2, 3);
const std::vector<KxGePoint3D> threePoints(3, readPoint);
const std::vector<KxDbObjectId> threeIds(3, KxDbObjectId(7));
const std::vector<std::string> threeTexts(3, readText);
const std::vector<QuorPolyDesc> threeVertices(3);
const std::vector<std::vector<QuorPolyDesc>> twoPolylines(2, threeVertices);
const std::vector<KVParams> twoRecords(2, KVParams{"key", "note", KVValue::ofString(readText)});
const std::vector<std::vector<KVParams>> twoLists(2, twoRecords);
const std::vector<KVData> twoPairs(2, KVData{"key", KVValue::ofPoint({1, 2, 3})});
const StyleOfTest style;

void pushAnswer(Setting& s)
{
    lua_getglobal(s.L, "answer");
}

void pushDrawn(Setting& s)
{
    lua_getglobal(s.L, "drawn");
}

/// A call whose result is handed out as a table of the caller's.
bool callLuaForTable(Setting& s)
{
    lua_tinker::table* made = nullptr;
    const bool called = callLua<">t">(s.L, "plain", &made);
    const bool isMade = made && made->valid();
    delete made;
    lua_settop(s.L, top);
    return called && isMade;
}

Seen lookAtPoint(Setting& s)
{
    return seen(s.point, KxGePoint3D(-1, -1, -1), readPoint);
}

Seen lookAtVector(Setting& s)
{
    return seen(s.vector, KxGeVector3D(-1, -1, -1), KxGeVector3D(1, 2, 3));
}

Seen lookAtId(Setting& s)
{
    return seen(static_cast<long long>(s.id.toInt()), -1LL, 7LL);
}

Seen lookAtMatrix(Setting& s)
{
    double x[4];
    s.matrix.getRow(0, x[0], x[1], x[2], x[3]);
    return seen(x[3], 0.0, 7.0);
}

Seen lookAtPoints(Setting& s)
{
    return seenList(s.points, 3, [](const KxGePoint3D& point) { return point == readPoint; });
}

Seen lookAtIds(Setting& s)
{
    return seenList(s.ids, 3, [](const KxDbObjectId& id) { return id.toInt() == 7; });
}

Seen lookAtTexts(Setting& s)
{
    return seenList(s.texts, 2, [](const std::string& text) { return text == readText; });
}

/// Two vertices behind the one that was there.
Seen lookAtVertices(Setting& s)
{
    if (s.vertices.empty() || s.vertices.front().kind != QuorPolyDesc().kind) return Seen::Wrong;
    const auto isRead = [](const QuorPolyDesc& vertex) { return vertex.kind == 2 && vertex.bulge == 30; };
    const bool isGood = std::all_of(s.vertices.begin() + 1, s.vertices.end(), isRead);
    if (!isGood || s.vertices.size() > 3) return Seen::Wrong;
    return s.vertices.size() == 3 ? Seen::Whole : s.vertices.size() == 1 ? Seen::Old : Seen::Part;
}

/// What was written into the table in the last slot, by two expressions of it.
Seen written(Setting& s, const char* none, const char* whole)
{
    lua_pushvalue(s.L, Target);
    lua_setglobal(s.L, "target");
    return Setting::holds(s.L, whole) ? Seen::Whole : Setting::holds(s.L, none) ? Seen::Old : Seen::Part;
}

Seen lookAtField(Setting& s)
{
    return written(s, "target.field == nil", "#target.field == 3 and target.field[3] == 3");
}

Seen lookAtEntry(Setting& s)
{
    return written(s, "target[5] == nil", "#target[5] == 3 and target[5][3] == 3");
}

Seen lookAtCoordinates(Setting& s)
{
    return written(s, "next(target) == nil", "#target == 3 and target[3] == 3");
}

Seen lookAtElements(Setting& s)
{
    return written(s, "next(target) == nil", "#target == 3 and target[3] ~= nil");
}

Seen lookAtWrittenMatrix(Setting& s)
{
    return written(s, "next(target) == nil", "#target == 4 and #target[4] == 4 and target[4][4] == 1");
}

Seen lookAtWrittenVertices(Setting& s)
{
    return written(s, "next(target) == nil", "#target == 3 and #target[3] == 5");
}

Seen lookAtWrittenPolylines(Setting& s)
{
    return written(s, "next(target) == nil", "#target == 2 and #target[2] == 3 and #target[2][3] == 5");
}

/// The results of "answer" by format "irpP".
Seen lookAtAnswers(Setting& s)
{
    const bool old[] = {s.number == -1, s.text == "old", s.point == KxGePoint3D(-1, -1, -1),
                        s.points.size() == 1};
    const bool read[] = {s.number == 5, s.text == "text", s.point == readPoint, s.points.size() == 2};
    if (std::all_of(std::begin(read), std::end(read), [](bool is) { return is; })) return Seen::Whole;
    if (std::all_of(std::begin(old), std::end(old), [](bool is) { return is; })) return Seen::Old;
    // Whether a point could be read is not asked: what stands there then is a new one.
    const bool isNew[] = {false, false, s.point == KxGePoint3D(), s.points.size() < 2};
    for (int i = 0; i < 4; ++i)
        if (!old[i] && !read[i] && !isNew[i]) return Seen::Wrong;
    return Seen::Part;
}

Seen lookAtNothing(Setting&)
{
    return Seen::Whole;
}

Seen lookAtNumber(Setting& s)
{
    return seen(s.number, -1, 5);
}

bool callGen(Setting& s, const char* function, const char* format, ...)
{
    va_list items;
    va_start(items, format);
    const bool called = callLuaFunc_gen(s.L, function, format, items);
    va_end(items);
    return called;
}

int prepareList(Setting& s, const char* format, ...)
{
    va_list items;
    va_start(items, format);
    const int count = prepareCallParam_vl(s.L, format, items);
    va_end(items);
    return count;
}

Seen lookAtPrimitives(Setting& s)
{
    const auto isMade = [](const QuorPrimary* primitive) { return primitive && primitive->getColor() == 7; };
    return seenList(s.primitives, 2, isMade);
}

Seen lookAtRegistry(Setting& s)
{
    return Setting::holds(s.L, "type(objects) == 'table'") ? Seen::Whole
           : Setting::holds(s.L, "objects == nil")         ? Seen::Old
                                                           : Seen::Wrong;
}

} // namespace

std::vector<Operation> marshallingOperations()
{
    const auto all = Says::All;
    const auto part = Says::Part;
    const auto nothing = Says::Nothing;
    // clang-format off
    return {
        {"quorlua::getAKxGePoint(lua_State*, int, KxGePoint3D&)", all, [](Setting& s) { return getAKxGePoint(s.L, Place, s.point) == 0; }, lookAtPoint},
        {"quorlua::getAKxGePoint(lua_State*, int, int", all, [](Setting& s) { return getAKxGePoint(s.L, Places, 2, s.point); }, lookAtPoint},
        {"quorlua::getAKxGePoint(lua_State*, int, char const*", all, [](Setting& s) { return getAKxGePoint(s.L, Data, "place", s.point); }, lookAtPoint},
        {"quorlua::getAKxGeVector(lua_State*, int, KxGeVector3D&)", all, [](Setting& s) { return getAKxGeVector(s.L, Place, s.vector) == 0; }, lookAtVector},
        {"quorlua::getAKxGeVector(lua_State*, int, int", all, [](Setting& s) { return getAKxGeVector(s.L, Places, 2, s.vector); }, lookAtVector},
        {"quorlua::getAKxGeVector(lua_State*, int, char const*", all, [](Setting& s) { return getAKxGeVector(s.L, Data, "place", s.vector); }, lookAtVector},
        {"quorlua::getAKxDbObjectId(lua_State*, int, KxDbObjectId&)", all, [](Setting& s) { lua_rawgeti(s.L, Ids, 1); const bool read = getAKxDbObjectId(s.L, -1, s.id) == 0; lua_settop(s.L, top); return read; }, lookAtId},
        {"quorlua::getAKxDbObjectId(lua_State*, int, int", all, [](Setting& s) { return getAKxDbObjectId(s.L, Ids, 2, s.id); }, lookAtId},
        {"quorlua::getAKxDbObjectId(lua_State*, int, char const*", all, [](Setting& s) { return getAKxDbObjectId(s.L, Data, "id", s.id); }, lookAtId},
        {"quorlua::getMatrix(lua_State*, int, KxGeMatrix3D&)", all, [](Setting& s) { return getMatrix(s.L, Matrix, s.matrix); }, lookAtMatrix},
        {"quorlua::getMatrix(lua_State*, int, int", all, [](Setting& s) { return getMatrix(s.L, Data, 1, s.matrix); }, lookAtMatrix},
        {"quorlua::getMatrix(lua_State*, int, char const*", all, [](Setting& s) { return getMatrix(s.L, Data, "matrix", s.matrix); }, lookAtMatrix},
        {"quorlua::getMatrix(lua_tinker::table&", all, [](Setting& s) { lua_tinker::table table(s.L, Matrix); return getMatrix(table, s.matrix); }, lookAtMatrix},
        {"quorlua::getKxGePointArray", part, [](Setting& s) { return getKxGePointArray(s.L, Places, s.points) && s.points.size() == 3; }, lookAtPoints},
        {"quorlua::getKxDbObjectIdArray", part, [](Setting& s) { return getKxDbObjectIdArray(s.L, Ids, s.ids) && s.ids.size() == 3; }, lookAtIds},
        {"quorlua::getStringArray", part, [](Setting& s) { return getStringArray(s.L, Texts, s.texts) && s.texts.size() == 2; }, lookAtTexts},
        {"quorlua::getQuorPolyDescArray", part, [](Setting& s) { return getQuorPolyDescArray(s.L, Vertices, s.vertices); }, lookAtVertices},

        {"quorlua::setAKxGePoint(lua_State*, int, KxGePoint3D", nothing, [](Setting& s) { setAKxGePoint(s.L, Target, readPoint); return true; }, lookAtCoordinates},
        {"quorlua::setAKxGePoint(lua_State*, int, int", nothing, [](Setting& s) { setAKxGePoint(s.L, Target, 5, readPoint); return true; }, lookAtEntry},
        {"quorlua::setAKxGePoint(lua_State*, int, char const*", nothing, [](Setting& s) { setAKxGePoint(s.L, Target, "field", readPoint); return true; }, lookAtField},
        {"quorlua::setAKxGeVector(lua_State*, int, KxGeVector3D", nothing, [](Setting& s) { setAKxGeVector(s.L, Target, KxGeVector3D(1, 2, 3)); return true; }, lookAtCoordinates},
        {"quorlua::setAKxGeVector(lua_State*, int, int", nothing, [](Setting& s) { setAKxGeVector(s.L, Target, 5, KxGeVector3D(1, 2, 3)); return true; }, lookAtEntry},
        {"quorlua::setAKxGeVector(lua_State*, int, char const*", nothing, [](Setting& s) { setAKxGeVector(s.L, Target, "field", KxGeVector3D(1, 2, 3)); return true; }, lookAtField},
        {"quorlua::setMatrix", nothing, [](Setting& s) { lua_tinker::table table(s.L, Target); setMatrix(table, KxGeMatrix3D()); return true; }, lookAtWrittenMatrix},
        {"quorlua::setKxGePointArray", nothing, [](Setting& s) { setKxGePointArray(s.L, Target, threePoints); return true; }, lookAtElements},
        {"quorlua::setKxDbObjectIdArray", nothing, [](Setting& s) { setKxDbObjectIdArray(s.L, Target, threeIds); return true; }, lookAtElements},
        {"quorlua::setStringArray", nothing, [](Setting& s) { setStringArray(s.L, Target, threeTexts); return true; }, lookAtElements},
        {"quorlua::setQuorPolyDescArray", part, [](Setting& s) { return setQuorPolyDescArray(s.L, Target, threeVertices); }, lookAtWrittenVertices},
        {"quorlua::setSpolygonDesc2Lua", part, [](Setting& s) { return setSpolygonDesc2Lua(s.L, Target, twoPolylines); }, lookAtWrittenPolylines},

        {"quorlua::callLuaFunc(", Says::Little, [](Setting& s) { return callLuaFunc(s.L, "answer", ">irpP", &s.number, &s.text, &s.point, &s.points) && s.points.size() == 2; }, lookAtAnswers},
        {"quorlua::callLuaFunc_gen(", Says::Little, [](Setting& s) { return callGen(s, "answer", ">irpP", &s.number, &s.text, &s.point, &s.points) && s.points.size() == 2; }, lookAtAnswers},
        {"quorlua::callLuaItems(", part, [](Setting& s) { return callLua<"isPSlMBbk>i">(s.L, "probe", 5, "text", threePoints, threeTexts, twoPolylines, twoRecords, twoLists, twoLists, twoPairs, &s.number); }, lookAtNumber},
        {"quorlua::callLuaItems(", nothing, [](Setting& s) { return callLuaForTable(s); }, lookAtNothing},
        {"quorlua::prepareCallParam(", nothing, [](Setting& s) { return prepareCallParam(s.L, "probe", "iP", 5, &threePoints) == 2; }, lookAtNothing, 3, 1},
        {"quorlua::prepareCallParam_vl(", nothing, [](Setting& s) { return prepareList(s, "iP", 5, &threePoints) == 2; }, lookAtNothing, 2, 0},
        {"quorlua::callLuaFunc1(", Says::Little, [](Setting& s) { return callLuaFunc1(s.L, "answer", 0, "irpP", &s.number, &s.text, &s.point, &s.points) && s.points.size() == 2; }, lookAtAnswers, 4, 4, pushAnswer},

        {"quorlua::initObjectIdInState(", nothing, [](Setting& s) { initObjectIdInState(s.L, "objects"); return true; }, lookAtRegistry},
        {"quorlua::findObjectIdInState(", nothing, [](Setting& s) { return findObjectIdInState(s.L, KxDbObjectId(1), "ids_of_test"); }, lookAtNothing, 1, 1},
        {"quorlua::parse_primary_byidx(", Says::Little, [](Setting& s) { return parse_primary_byidx(s.L, -1, s.primitives) == Quor::Ok; }, lookAtPrimitives, 1, 1, pushDrawn},
        {"quorlua::push_txtstyle(", nothing, [](Setting& s) { push_txtstyle(s.L, &style); return lua_gettop(s.L) > top; }, lookAtNothing, 1, 0},
    };
    // clang-format on
}

} // namespace failures

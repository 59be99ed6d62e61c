#include "Record.h"

#include <QuorPrimary/QuorOprPrimary.h>
#include <QuorPureScriptor/quorlua_helpers.h>

namespace quorlua::glib {

bool PointsField::read(const Record& record, int field, Value& value)
{
    lua_State* L = record.L;
    record.push(field);
    if (!lua_istable(L, -1)) return false;
    const int table = lua_gettop(L);
    for (lua_pushnil(L); lua_next(L, table) != 0; lua_settop(L, table + 1)) {
        QuorPoint point;
        if (!record.budget.takeEntry(sizeof(KxGePoint3D))) return false;
        if (values::readPoint(L, table + 2, point)) value.emplace_back(point.x, point.y, point.z);
    }
    return true;
}

bool ParametersField::read(const Record& record, int field, Value& value)
{
    record.push(field);
    if (!lua_istable(record.L, -1) || !record.budget.takeEntry()) return false;
    if (!getParams(record.L, lua_gettop(record.L), value, false)) return false;
    for (const KVParams& parameter : value) {
        const bool isText = parameter.value.tag() == KVTag::String;
        const std::size_t text = isText ? parameter.value.asString().size() : 0;
        if (!record.budget.takeEntry(sizeof parameter + parameter.key.size() + text)) return false;
    }
    return true;
}

bool OperandField::read(const Record& record, int field, Value& value)
{
    lua_State* L = record.L;
    int operation = 0;
    IntegerField::read(record, 2, operation);
    if (operation != QuorOprPrimary::Slice) {
        if (IntegerField::read(record, field, value.element)) return true;
        record.complain(messages::booleanOther.text());
        return false;
    }
    record.push(field);
    if (!lua_istable(L, -1)) {
        record.complain(messages::slicePlane.text());
        return false;
    }
    const Record plane{L, lua_gettop(L), 2, record.hatch, record.reports, record.budget};
    if (!PointField::read(plane, 1, value.point)) {
        record.complain(messages::slicePoint.text());
        return false;
    }
    if (!VectorField::read(plane, 2, value.direction)) {
        record.complain(messages::sliceDirection.text());
        return false;
    }
    return true;
}

} // namespace quorlua::glib

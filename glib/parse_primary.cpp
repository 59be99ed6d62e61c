#include "Guard.h"
#include "Kinds.h"
#include "Limits.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/primitives.h>
#include <algorithm>
#include <array>
#include <cmath>

namespace quorlua {
namespace glib {
namespace {

/// Bounds that make cyclic and doubling groups end. A component nests a handful of groups and holds some
/// thousand records; these leave room for generated ones.
constexpr int deepestGroup = 1024;
constexpr int mostGroupedRecords = 2 * 1024 * 1024;

/// What a walk pushes at most: for each level a key and the group's table, then the record with all that
/// reading its fields leaves.
constexpr int recordSlots = 64;
constexpr int walkSlots = 2 * (deepestGroup + 1) + recordSlots;

/// Gives a new primitive the current attributes; false where their texts are beyond the budget: each
/// primitive has a copy of its own.
bool stamp(QuorPrimary3D* solid, const ScriptContext& context, Budget& budget)
{
    if (!budget.takeText(context.material.get())) return false;
    solid->setColor(context.colour);
    solid->setMaterial(context.material.get());
    return true;
}

bool stamp(QuorPrimary2D* drawing, const ScriptContext& context, Budget& budget)
{
    if (!budget.takeText(context.lineType.get())) return false;
    drawing->setColor(context.colour);
    // What the record set itself wins; values that stand for "unset" count as not set.
    if (drawing->getThick() <= 1e-5) drawing->setThick(context.thickness);
    if (std::fabs(drawing->getLTScale() - 1.0) <= 0.0001) drawing->setLTScale(context.lineTypeScale);
    if (!drawing->getLineType()) drawing->setLineType(context.lineType.get());
    return true;
}

bool stamp(QuorPrimary* other, const ScriptContext& context, Budget& budget)
{
    other->setColor(context.colour);
    if (QuorPrimary3D* solid = other->toPrimary3D()) return stamp(solid, context, budget);
    if (QuorPrimary2D* drawing = other->toPrimary2D()) return stamp(drawing, context, budget);
    return true;
}

bool stamp(QuorOprPrimary*, const ScriptContext&, Budget&)
{
    return true;
}

bool stamp(QuorOprKVParamArray*, const ScriptContext&, Budget&)
{
    return true;
}

/// Takes a record by the row of its code: the new primitive, stamped, or null.
using Take = QuorPrimary* (*)(const Record& record, ScriptContext& context);

template<class Fields, class Make>
QuorPrimary* takeBy(const Kind<Fields, Make>& row, const Record& record, ScriptContext& context)
{
    using Made = std::remove_pointer_t<decltype(makeBy(row, record))>;
    std::unique_ptr<Made> made(makeBy(row, record));
    return made && stamp(made.get(), context, record.budget) ? made.release() : nullptr;
}

template<class Fields, class Apply>
QuorPrimary* takeBy(const AttributeKind<Fields, Apply>& row, const Record& record, ScriptContext& context)
{
    ValuesOf<Fields> values{};
    readFields(row.fields, record, values);
    std::apply([&](auto&... value) { row.apply(context, value...); }, values);
    return nullptr;
}

constexpr auto takenKinds = std::tuple_cat(primitiveKinds, attributeKinds);
using RowIndices = std::make_index_sequence<std::tuple_size_v<decltype(takenKinds)>>;

template<std::size_t row>
QuorPrimary* take(const Record& record, ScriptContext& context)
{
    return takeBy(std::get<row>(takenKinds), record, context);
}

constexpr int highestCode =
    std::apply([](const auto&... row) { return std::max({row.code...}); }, takenKinds);

/// How a record of each code is taken, by the code; null for what no row names.
template<std::size_t... row>
constexpr std::array<Take, highestCode + 1> takesByCode(std::index_sequence<row...>)
{
    std::array<Take, highestCode + 1> table{};
    ((table[static_cast<std::size_t>(std::get<row>(takenKinds).code)] = take<row>), ...);
    return table;
}
constexpr std::array<Take, highestCode + 1> takes = takesByCode(RowIndices{});

/// The walk over a table of records and the groups in it. It calls nothing that raises an error, but for one
/// case: while the host reads parameters, a finalizer of the script's may change a table that is being
/// walked, and lua_next then raises one. So the walk runs guarded and keeps no C++ object beside that call.
class Walk {
public:
    Walk(lua_State* L, const HatchNumbers& hatch, std::vector<QuorPrimary*>& out,
         std::vector<Report>& reports, Budget& budget)
        : L_(L), hatch_(hatch), out_(out), reports_(reports), budget_(budget), context_(currentContext())
    {
    }

    /// Takes every record of the table at an absolute index. Throws only when memory runs out.
    void run(int table);

private:
    /// Takes the record on top; true when it is a group and its table has taken the record's place on the
    /// stack.
    bool takeRecord(int index);

    lua_State* L_;
    const HatchNumbers& hatch_;
    std::vector<QuorPrimary*>& out_;
    std::vector<Report>& reports_;
    Budget& budget_;
    ScriptContext& context_;
};
static_assert(std::is_trivially_destructible_v<Walk>, "a Lua error may jump over the walk");

void Walk::run(int table)
{
    // On the stack stand, for each level: the key that was last taken, and the group's table.
    int depth = 0;
    int grouped = 0;
    std::size_t records = 0;
    int current = table;
    lua_pushnil(L_);
    for (;;) {
        const bool ended = depth > 0 && grouped >= mostGroupedRecords;
        if (ended) lua_pop(L_, 1);
        if (ended || lua_next(L_, current) == 0) {
            if (depth == 0) return;
            lua_pop(L_, 1); // the group's table
            --depth;
            current = depth == 0 ? table : lua_gettop(L_) - 1;
            continue;
        }
        if (++records % Budget::entriesBetweenLooks == 0 && !budget_.isInTime()) return;
        if (depth > 0) ++grouped;
        const int record = lua_gettop(L_);
        if (takeRecord(record) && depth < deepestGroup) {
            ++depth;
            current = record;
            lua_pushnil(L_);
        } else {
            lua_settop(L_, record - 1);
        }
    }
}

bool Walk::takeRecord(int index)
{
    if (lua_type(L_, index) != LUA_TTABLE) return false;
    lua_rawgeti(L_, index, 1);
    double number = 0;
    if (!values::readNumber(L_, -1, number)) return false;
    const long long code = values::toInteger(number);
    // The interpreter counts a table's length as an int.
    const Record record{L_, index, static_cast<int>(lua_objlen(L_, index)), hatch_, reports_, budget_};
    if (code == groupKind.code) {
        std::tuple<RecordsField::Value> none;
        if (!readFields(groupKind.fields, record, none)) return false;
        lua_replace(L_, index);
        lua_settop(L_, index);
        return true;
    }
    if (code < 0 || code > highestCode) return false;
    if (const Take takeByRow = takes[static_cast<std::size_t>(code)]) {
        std::unique_ptr<QuorPrimary> made(takeByRow(record, context_));
        if (made) {
            // First the place in the list, which may fail; then the primitive is the caller's.
            out_.push_back(nullptr);
            out_.back() = made.release();
        }
    }
    return false;
}

/// Shows a message in the host's translation.
void show(lua_State* L, const Report& report)
{
    const char* text = quorGetText_callbk(report.message);
    if (report.number == Report::noNumber)
        lua_tinker::print_error(L, "%s", text);
    else
        lua_tinker::print_error(L, "%s", kxcom::printMsg(text, report.number).c_str());
}

/// What the caller's stack holds for hatches.
HatchNumbers hatchNumbers(lua_State* L)
{
    HatchNumbers numbers;
    const int top = lua_gettop(L);
    if (top >= 5) values::readNumber(L, 5, numbers.angle);
    if (top >= 6) values::readNumber(L, 6, numbers.scale);
    return numbers;
}

} // namespace
} // namespace glib

Quor::GlibStatus parse_primary_byidx(lua_State* L, int index, std::vector<QuorPrimary*>& out)
{
    if (!L || !guard::isSlot(L, index) || !lua_istable(L, index)) return Quor::GlibStatus::InvalidArgument;
    const limits::Operation operation(L);
    const glib::HatchNumbers hatch = glib::hatchNumbers(L);
    std::vector<glib::Report> reports;
    Budget budget(L);
    guard::runOn(L, index, [&](lua_State* frame) {
        luaL_checkstack(frame, glib::walkSlots, "too many values");
        values::withoutThrowing([&] {
            glib::Walk(frame, hatch, out, reports, budget).run(1);
            return true;
        });
        return 0;
    });
    values::withoutThrowing([&] {
        for (const glib::Report& report : reports) {
            if (!budget.isInTime()) break;
            glib::show(L, report);
        }
        return true;
    });
    return Quor::GlibStatus::Ok;
}

} // namespace quorlua

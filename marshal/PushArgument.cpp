#include "CallFormats.h"
#include "Guard.h"
#include "Values.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>

namespace quorlua::call {
namespace {

template<char letter>
const auto& object(const CallItem& item)
{
    return *static_cast<const typename CallLetter<letter>::Argument*>(item.address);
}

/// Pushes a new table filled by `fill(index)`. [-0, +1, m]
template<class Fill>
void pushFilled(lua_State* L, int sequence, int fields, Fill fill)
{
    lua_createtable(L, sequence, fields);
    fill(lua_gettop(L));
}

/// A table of maps: each inner vector's records become fields of one table, later ones overwriting earlier.
void fillMaps(lua_State* L, int index, const std::vector<std::vector<KVParams>>& maps)
{
    int key = 0;
    for (const std::vector<KVParams>& records : maps) {
        lua_createtable(L, 0, values::sizeHint(records));
        const int inner = lua_gettop(L);
        for (const KVParams& record : records)
            setTableKv(L, inner, record);
        lua_rawseti(L, index, ++key);
    }
}

} // namespace

void pushArgument(lua_State* L, char letter, const CallItem& item)
{
    if (letter != 's' && pushKnownArgument(L, letter, item)) return;
    switch (letter) {
    case 'I':
        lua_tinker::push<long long>(L, item.integer64);
        break;
    case 's':
        if (const auto* text = static_cast<const char*>(item.address))
            guard::pushText(L, text);
        else
            lua_pushnil(L);
        break;
    case 'r':
        lua_pushlstring(L, object<'r'>(item).data(), object<'r'>(item).size());
        break;
    case 'y': {
        const quor_binary& buffer = object<'y'>(item);
        const bool empty = !buffer.data || buffer.length <= 0;
        lua_pushlstring(L, empty ? "" : buffer.data, empty ? 0 : static_cast<std::size_t>(buffer.length));
        break;
    }
    case 'u':
        lua_pushlightuserdata(L, const_cast<void*>(item.address));
        break;
    case 'o':
        lua_tinker::push<long long>(L, object<'o'>(item).toInt());
        break;
    case 'p':
        values::pushPoint(L, object<'p'>(item).toQuorPoint());
        break;
    case 'v':
        values::pushPoint(L, object<'v'>(item).toQuorPoint());
        break;
    case 'X':
        pushFilled(L, 4, 0, [&](int table) { values::fillMatrix(L, table, object<'X'>(item)); });
        break;
    case 'P':
        pushFilled(L, values::sizeHint(object<'P'>(item)), 0,
                   [&](int table) { values::fillPoints(L, table, object<'P'>(item)); });
        break;
    case 'O':
        pushFilled(L, values::sizeHint(object<'O'>(item)), 0,
                   [&](int table) { values::fillIds(L, table, object<'O'>(item)); });
        break;
    case 'S':
        pushFilled(L, values::sizeHint(object<'S'>(item)), 0,
                   [&](int table) { values::fillTexts(L, table, object<'S'>(item)); });
        break;
    case 'g':
        pushFilled(L, values::sizeHint(object<'g'>(item)), 0,
                   [&](int table) { values::fillPolyline(L, table, object<'g'>(item)); });
        break;
    case 'l':
        pushFilled(L, values::sizeHint(object<'l'>(item)), 0,
                   [&](int table) { values::fillPolylines(L, table, object<'l'>(item)); });
        break;
    case 'm':
        pushFilled(L, 0, values::sizeHint(object<'m'>(item)),
                   [&](int table) { setParams(L, table, object<'m'>(item)); });
        break;
    case 'M':
        pushFilled(L, 0, values::sizeHint(object<'M'>(item)),
                   [&](int table) { setParams_note(L, table, object<'M'>(item)); });
        break;
    case 'a':
        pushFilled(L, values::sizeHint(object<'a'>(item)), 0,
                   [&](int table) { setArrayParams(L, table, object<'a'>(item)); });
        break;
    case 'B':
        pushFilled(L, values::sizeHint(object<'B'>(item)), 0,
                   [&](int table) { setArrayParams(L, table, object<'B'>(item)); });
        break;
    case 'b':
        pushFilled(L, values::sizeHint(object<'b'>(item)), 0,
                   [&](int table) { fillMaps(L, table, object<'b'>(item)); });
        break;
    case 'k':
        pushFilled(L, values::sizeHint(object<'k'>(item)), 0,
                   [&](int table) { setKVdataArray(L, table, object<'k'>(item)); });
        break;
    default: // 'x'
        values::pushTextStyle(L, static_cast<const GlibTextStyle*>(item.address));
    }
}

} // namespace quorlua::call

#include "Budget.h"
#include "CallFormats.h"
#include "Guard.h"
#include "Values.h"
#include "duplicateText.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <QuorScriptor/geometry.h>
#include <QuorScriptor/primitives.h>
#include <cstdlib>
#include <cstring>

namespace quorlua::call {
namespace {

template<char letter>
typename CallLetter<letter>::Result& output(const CallItem& item)
{
    return *static_cast<typename CallLetter<letter>::Result*>(const_cast<void*>(item.address));
}

/// Bytes of a Lua string; they live as long as the string.
struct Bytes {
    const char* data = nullptr;
    std::size_t size = 0;
};

/// The text of a string, or of a number, which is turned into a string where it stands, as the interpreter
/// would, but without asking the locale. False for other values.
bool getBytes(lua_State* L, int index, Bytes& bytes)
{
    if (lua_type(L, index) == LUA_TNUMBER) {
        char text[32];
        const std::size_t size = numberText(lua_tonumber(L, index), text);
        const bool made = guard::run(L, [&text, size](lua_State* frame) {
            lua_pushlstring(frame, text, size);
            return 1;
        });
        if (!made) return false;
        lua_replace(L, index);
    }
    if (lua_type(L, index) != LUA_TSTRING) return false;
    bytes.data = lua_tolstring(L, index, &bytes.size);
    return true;
}

quor_binary duplicateBytes(const Bytes& bytes)
{
    quor_binary copy;
    if (bytes.size == 0) return copy;
    if (bytes.size > 0x7FFFFFFF) return copy; // GCOVR_EXCL_BR_LINE: a text of 2 GB is more than tests ask for
    copy.data = static_cast<char*>(std::malloc(bytes.size));
    if (!copy.data) return copy;
    std::memcpy(copy.data, bytes.data, bytes.size);
    copy.length = static_cast<int>(bytes.size);
    return copy;
}

/// Replaces a vector by what `read(fresh)` appends to an empty one, whether it succeeds or not.
template<char letter, class Read>
void replaceVector(const CallItem& item, Read read)
{
    typename CallLetter<letter>::Result fresh;
    read(fresh);
    output<letter>(item) = std::move(fresh);
}

/// One table of a 'b' result as records; its keys become texts, its values numbers or texts or nothing.
bool readMap(lua_State* L, int index, std::vector<KVParams>& records, Budget& budget)
{
    for (lua_pushnil(L); lua_next(L, index) != 0; lua_pop(L, 1)) {
        KVParams record;
        if (!budget.takeEntry(sizeof record + values::textSize(L, -2) + values::textSize(L, -1)))
            return false;
        if (lua_type(L, -2) == LUA_TSTRING) {
            std::size_t size = 0;
            const char* key = lua_tolstring(L, -2, &size);
            record.key.assign(key, size);
        } else if (lua_type(L, -2) == LUA_TNUMBER) {
            record.key = numberText(lua_tonumber(L, -2));
        }
        if (lua_type(L, -1) == LUA_TNUMBER) {
            record.value = KVValue::ofDouble(lua_tonumber(L, -1));
        } else if (lua_type(L, -1) == LUA_TSTRING) {
            std::size_t size = 0;
            const char* text = lua_tolstring(L, -1, &size);
            record.value = KVValue::ofString(std::string(text, size));
        }
        records.push_back(std::move(record));
    }
    return true;
}

/// The reader of a 'b' result: ends at the first value that is no table, or beyond the budget.
void readMaps(lua_State* L, int index, std::vector<std::vector<KVParams>>& maps)
{
    const int top = lua_gettop(L);
    Budget budget(L);
    for (lua_pushnil(L); lua_next(L, index) != 0 && lua_istable(L, -1); lua_pop(L, 1)) {
        if (!budget.takeEntry(sizeof(std::vector<KVParams>))) break;
        maps.emplace_back();
        if (!readMap(L, top + 2, maps.back(), budget)) break;
    }
    lua_settop(L, top);
}

/// The point or vector of the table at an absolute index below `top`, the stack's height; the default one
/// where the table is none. With the letters of numbers the commonest of all, so it is read in line.
template<class Triple>
void readTriple(lua_State* L, int index, int top, Triple& triple)
{
    QuorPoint point{};
    lua_rawgeti(L, index, 1);
    lua_rawgeti(L, index, 2);
    lua_rawgeti(L, index, 3);
    const bool whole = values::readNumber(L, -3, point.x) && values::readNumber(L, -2, point.y) &&
                       values::readNumber(L, -1, point.z);
    lua_settop(L, top);
    triple = Triple();
    if (whole) triple.set(point.x, point.y, point.z);
}

[[gnu::noinline]] void readTable(lua_State* L, int index, char letter, const CallItem& item, int& kept)
{
    switch (letter) {
    case 'X': {
        KxGeMatrix3D matrix;
        getMatrix(L, index, matrix);
        output<'X'>(item) = matrix;
        break;
    }
    case 'P':
        replaceVector<'P'>(item, [&](auto& fresh) { getKxGePointArray(L, index, fresh); });
        break;
    case 'O':
        replaceVector<'O'>(item, [&](auto& fresh) { getKxDbObjectIdArray(L, index, fresh); });
        break;
    case 'S':
        replaceVector<'S'>(item, [&](auto& fresh) { getStringArray(L, index, fresh); });
        break;
    case 'g':
        replaceVector<'g'>(item, [&](auto& fresh) {
            Budget budget(L);
            values::readPolyline(L, index, fresh, budget);
        });
        break;
    case 'l':
        replaceVector<'l'>(item, [&](auto& fresh) {
            Budget budget(L);
            values::readPolylines(L, index, fresh, budget);
        });
        break;
    case 'm':
        replaceVector<'m'>(item, [&](auto& fresh) { getParams(L, index, fresh, false); });
        break;
    case 'M':
        replaceVector<'M'>(item, [&](auto& fresh) { getParams_note(L, index, fresh, false); });
        break;
    case 'a':
        replaceVector<'a'>(item, [&](auto& fresh) { getArrayParams(L, index, fresh, false); });
        break;
    case 'B':
        replaceVector<'B'>(item, [&](auto& fresh) { getArrayParams(L, index, fresh, false); });
        break;
    case 'b':
        replaceVector<'b'>(item, [&](auto& fresh) { readMaps(L, index, fresh); });
        break;
    case 'k':
        replaceVector<'k'>(item, [&](auto& fresh) { getKVdataArray(L, index, fresh, false); });
        break;
    case 'T':
        replaceVector<'T'>(item,
                           [&](auto& fresh) { static_cast<void>(parse_primary_byidx(L, index, fresh)); });
        break;
    case 'c':
        output<'c'>(item).assign(L, index);
        kept = index;
        break;
    default: // 't'
        // GCOVR_EXCL_BR_START: what is behind a constructor that throws; the platform's does not
        output<'t'>(item) = new lua_tinker::table(L, index);
        // GCOVR_EXCL_BR_STOP
        kept = index;
    }
}

/// Whether a value is what an object id is read from here; a plain number is not.
bool isIdType(int type)
{
    return type == LUA_TUSERDATA || type == LUA_TLIGHTUSERDATA || type == LUA_TNIL;
}

[[gnu::noinline]] void readText(lua_State* L, int index, char letter, const CallItem& item)
{
    Bytes bytes;
    if (letter == 's' && lua_isnil(L, index)) output<'s'>(item) = nullptr;
    if (!getBytes(L, index, bytes)) return;
    if (letter == 's') output<'s'>(item) = duplicateText(bytes.data);
    if (letter == 'r') output<'r'>(item).assign(bytes.data, bytes.size);
    if (letter == 'y') output<'y'>(item) = duplicateBytes(bytes);
}

/// Reads one result, of the given type, at an absolute index below `top`, the stack's height.
void readResult(lua_State* L, int index, int type, int top, char letter, const CallItem& item, int& kept)
{
    switch (letter) {
    case 'p':
        if (type == LUA_TTABLE) readTriple(L, index, top, output<'p'>(item));
        break;
    case 'v':
        if (type == LUA_TTABLE) readTriple(L, index, top, output<'v'>(item));
        break;
    case 'i':
        if (type == LUA_TNUMBER)
            output<'i'>(item) = static_cast<int>(values::toInteger(lua_tonumber(L, index)));
        else if (type == LUA_TBOOLEAN)
            output<'i'>(item) = lua_toboolean(L, index);
        break;
    case 'n':
        if (type == LUA_TBOOLEAN) output<'n'>(item) = lua_toboolean(L, index) != 0;
        break;
    case 'd':
        values::readNumeric(L, index, output<'d'>(item));
        break;
    case 'I':
        if (isIdType(type)) output<'I'>(item) = lua_tinker::read<long long>(L, index);
        break;
    case 's':
    case 'r':
    case 'y':
        readText(L, index, letter, item);
        break;
    case 'u':
        output<'u'>(item) = lua_touserdata(L, index);
        break;
    case 'o':
        if (isIdType(type)) {
            KxDbObjectId id;
            getAKxDbObjectId(L, index, id);
            output<'o'>(item) = id;
        }
        break;
    default:
        if (type == LUA_TTABLE) readTable(L, index, letter, item, kept);
    }
}

} // namespace

bool readResultsByFormat(lua_State* L, const char* format, int top, int count, const CallItem* items,
                         int& kept)
{
    if (count == 0) return true;
    const int first = top - count + 1;
    const int firstType = lua_type(L, first);
    bool allNil = firstType == LUA_TNIL;
    for (int i = 1; allNil && i < count; ++i)
        allNil = lua_isnil(L, first + i);
    if (allNil) return false;
    for (int i = 0; i < count; ++i) {
        if (kindsOf(format[i]).result == CallItemKind::None) return false;
        readResult(L, first + i, i == 0 ? firstType : lua_type(L, first + i), top, format[i], items[i], kept);
    }
    return true;
}

} // namespace quorlua::call

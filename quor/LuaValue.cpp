#include "LuaValue.h"

#include "CharacterSet.h"
#include "Failure.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <QuorScriptor/ScriptLimits.h>
#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <map>
#include <utility>

namespace quor {
namespace {

using Kind = LuaValue::Kind;

constexpr std::size_t mostEntries = 1000;
constexpr int mostLevels = 20;

/// A key in brackets, in UTF-8, as in `[1]` and `["a b"]`.
std::string inBrackets(const LuaValue& key)
{
    std::string text = "[";
    std::size_t strays = 0;
    ValueLine line(text, strays);
    putValue(line, key);
    return text + "]";
}

LuaValue ofNumber(double number)
{
    LuaValue value;
    value.kind = Kind::Number;
    value.number = number;
    return value;
}

bool comesBefore(const LuaValue& one, const LuaValue& other)
{
    const auto rank = [](const LuaValue& key) {
        return key.kind == Kind::Number ? 0 : key.kind == Kind::Text ? 1 : 2;
    };
    if (rank(one) != rank(other)) return rank(one) < rank(other);
    if (one.kind == Kind::Number) return one.number < other.number;
    if (one.kind == Kind::Text) return one.text < other.text;
    return !one.truth && other.truth;
}

bool isPlainKey(int type)
{
    return type == LUA_TNUMBER || type == LUA_TSTRING || type == LUA_TBOOLEAN;
}

/// The keys that lead from the result to a value; the innermost comes first.
struct Path {
    const Path* outer = nullptr;
    const LuaValue* key = nullptr;

    /// In UTF-8, as in `.name[1]`.
    std::string text() const
    {
        if (!outer) return {};
        const bool isName = key->kind == Kind::Text && isWord(key->text);
        return outer->text() + (isName ? "." + key->text : inBrackets(*key));
    }
    int level() const { return outer ? outer->level() + 1 : 0; }
};

/// Reads one value, calling nothing that can raise.
class Reader {
public:
    explicit Reader(lua_State* L) : L_(L) {}

    LuaValue read(int index, const Path& path)
    {
        LuaValue value;
        switch (lua_type(L_, index)) {
        case LUA_TBOOLEAN:
            value.kind = Kind::Boolean;
            value.truth = lua_toboolean(L_, index) != 0;
            break;
        case LUA_TNUMBER:
            return ofNumber(lua_tonumber(L_, index));
        case LUA_TSTRING: {
            std::size_t size = 0;
            const char* bytes = lua_tolstring(L_, index, &size);
            value.kind = Kind::Text;
            value.text.assign(bytes, size);
            break;
        }
        case LUA_TTABLE:
            readTable(index, path, value);
            break;
        default:
            if (lua_tinker::is_int64(L_, index)) {
                value.kind = Kind::Integer64;
                value.integer = lua_tinker::read_int64(L_, index);
            } else {
                value.text = lua_typename(L_, lua_type(L_, index));
            }
        }
        return value;
    }

private:
    void readTable(int index, const Path& path, LuaValue& table)
    {
        const auto [seen, isNew] = seen_.try_emplace(lua_topointer(L_, index));
        if (!isNew) {
            table.kind = Kind::Seen;
            table.text = seen->second;
            return;
        }
        if (path.level() == mostLevels) {
            table.kind = Kind::Deeper;
            seen_.erase(seen);
            return;
        }
        seen->second = path.text();
        table.kind = Kind::Table;
        const int listed = readList(index, path, table);
        readFields(index, path, listed, table);
    }

    /// Takes the place of one entry; false when there is none left.
    bool takePlace(LuaValue& table)
    {
        if (entries_ < mostEntries) return ++entries_, true;
        return ++table.leftOut, false;
    }

    /// The length of the list, of which all may not have been read.
    int readList(int index, const Path& path, LuaValue& table)
    {
        for (int listed = 0;; ++listed) {
            lua_rawgeti(L_, index, listed + 1);
            const bool ends = lua_isnil(L_, -1);
            if (!ends && takePlace(table)) {
                const LuaValue key = ofNumber(listed + 1);
                table.list.push_back(read(lua_gettop(L_), {&path, &key}));
            }
            lua_pop(L_, 1);
            if (ends) return listed;
        }
    }

    void readFields(int index, const Path& path, int listed, LuaValue& table)
    {
        const auto isListed = [listed](const LuaValue& key) {
            return key.kind == Kind::Number && key.number >= 1 && key.number <= listed &&
                   key.number == std::trunc(key.number);
        };
        std::vector<LuaValue> keys;
        bool hasOthers = false;
        for (lua_pushnil(L_); lua_next(L_, index) != 0; lua_pop(L_, 1)) {
            const int place = lua_gettop(L_) - 1;
            hasOthers = hasOthers || !isPlainKey(lua_type(L_, place));
            if (!isPlainKey(lua_type(L_, place))) continue;
            LuaValue key = read(place, path);
            if (!isListed(key)) keys.push_back(std::move(key));
        }
        std::sort(keys.begin(), keys.end(), comesBefore);
        for (LuaValue& key : keys) {
            if (!takePlace(table)) continue;
            pushKey(key);
            lua_rawget(L_, index);
            LuaValue value = read(lua_gettop(L_), {&path, &key});
            lua_pop(L_, 1);
            table.fields.push_back({std::move(key), std::move(value)});
        }
        if (hasOthers) readOtherFields(index, path, table);
    }

    /// The entries whose keys have no order.
    void readOtherFields(int index, const Path& path, LuaValue& table)
    {
        for (lua_pushnil(L_); lua_next(L_, index) != 0; lua_pop(L_, 1)) {
            const int top = lua_gettop(L_);
            if (isPlainKey(lua_type(L_, top - 1)) || !takePlace(table)) continue;
            LuaValue key;
            if (lua_istable(L_, top - 1))
                key.text = lua_typename(L_, LUA_TTABLE);
            else
                key = read(top - 1, path);
            LuaValue value = read(top, {&path, &key});
            table.fields.push_back({std::move(key), std::move(value)});
        }
    }

    /// A text that is a key is there already, so that pushing it takes no memory.
    void pushKey(const LuaValue& key)
    {
        if (key.kind == Kind::Number)
            lua_pushnumber(L_, key.number);
        else if (key.kind == Kind::Text)
            lua_pushlstring(L_, key.text.data(), key.text.size());
        else
            lua_pushboolean(L_, key.truth);
    }

    lua_State* L_;
    std::map<const void*, std::string> seen_;
    std::size_t entries_ = 0;
};

/// As long as it lives no collector runs, which may be a script's own and raise.
class CollectorStopped {
public:
    explicit CollectorStopped(lua_State* L) : L_(L) { lua_gc(L_, LUA_GCSTOP, 0); }
    ~CollectorStopped() { lua_gc(L_, LUA_GCRESTART, 0); }
    CollectorStopped(const CollectorStopped&) = delete;
    CollectorStopped& operator=(const CollectorStopped&) = delete;

private:
    lua_State* L_;
};

/// [-0, +1, m]
void push(lua_State* L, const LuaValue& value)
{
    switch (value.kind) {
    case Kind::Boolean:
        lua_pushboolean(L, value.truth);
        return;
    case Kind::Number:
        lua_pushnumber(L, value.number);
        return;
    case Kind::Text:
        lua_pushlstring(L, value.text.data(), value.text.size());
        return;
    default:
        break;
    }
    lua_newtable(L);
    int place = 0;
    for (const LuaValue& element : value.list) {
        push(L, element);
        lua_rawseti(L, -2, ++place);
    }
    for (const auto& [key, element] : value.fields) {
        push(L, key);
        push(L, element);
        lua_rawset(L, -3);
    }
}

struct Push {
    const LuaValue* value;
    int reference;
};

int pushProtected(lua_State* L)
{
    auto* work = static_cast<Push*>(lua_touserdata(L, 1));
    constexpr int mostSlots = 128; // the readers of JSON let no value be nested deeper than 32 levels
    luaL_checkstack(L, mostSlots, "too deep");
    push(L, *work->value);
    work->reference = luaL_ref(L, LUA_REGISTRYINDEX);
    return 0;
}

std::string gbkOf(const std::string& utf8, const JsonNode& node)
{
    std::string gbk;
    if (!charset::gbkFromUtf8(utf8, gbk))
        throw Failure(WrongUsage, node.place() + ": text that GBK can write is expected; a character in it "
                                                 "has no place there");
    return gbk;
}

Json marked(const char* kind)
{
    Json object;
    object.emplace("[]", kind);
    return object;
}

Json jsonOfTable(const LuaValue& table, const ValueJson& json)
{
    if (table.fields.empty() && !table.list.empty()) {
        Json array = Json::array();
        for (const LuaValue& element : table.list)
            array.push_back(jsonOf(element, json));
        if (table.leftOut != 0) {
            array.push_back(marked("more"));
            array.back().emplace("count", table.leftOut);
        }
        return array;
    }
    Json object = Json::object();
    for (std::size_t i = 0; i < table.list.size(); ++i)
        object.emplace(fmt::format("[{}]", i + 1), jsonOf(table.list[i], json));
    for (const auto& [key, value] : table.fields) {
        std::string name = key.kind == Kind::Text ? json.of(key.text).get<std::string>() : inBrackets(key);
        if (key.kind == Kind::Text && name.starts_with('[')) name = inBrackets(key);
        // Keys without a name of their own, such as functions, may come again.
        const std::string first = name;
        for (int number = 2; object.contains(name); ++number)
            name = fmt::format("{}#{}", first, number);
        object.emplace(name, jsonOf(value, json));
    }
    if (table.leftOut != 0) object.emplace("[]", table.leftOut);
    return object;
}

void putTable(ValueLine& line, const LuaValue& table)
{
    std::string_view before = "";
    line.raw("{");
    const auto next = [&line, &before] {
        line.raw(before);
        before = ", ";
    };
    for (const LuaValue& element : table.list) {
        next();
        putValue(line, element);
    }
    for (const auto& [key, value] : table.fields) {
        next();
        if (key.kind == Kind::Text && isWord(key.text)) {
            line.raw(key.text);
        } else {
            line.raw("[");
            putValue(line, key);
            line.raw("]");
        }
        line.raw(" = ");
        putValue(line, value);
    }
    if (table.leftOut != 0) {
        next();
        line.raw(fmt::format("<{} more>", table.leftOut));
    }
    line.raw("}");
}

} // namespace

LuaValue readLuaValue(lua_State* L, int index)
{
    constexpr int slotsOfLevel = 5;
    const CollectorStopped stopped(L);
    if (!lua_checkstack(L, slotsOfLevel * (mostLevels + 2))) return {};
    return Reader(L).read(index < 0 ? lua_gettop(L) + index + 1 : index, {});
}

LuaValue luaValueOf(const JsonNode& node)
{
    LuaValue value;
    if (node.isText()) {
        value.kind = Kind::Text;
        value.text = gbkOf(node.text(), node);
    } else if (node.isNumber()) {
        value = ofNumber(node.number());
    } else if (node.isBoolean()) {
        value.kind = Kind::Boolean;
        value.truth = node.boolean();
    } else if (node.isArray()) {
        value.kind = Kind::Table;
        for (const JsonNode& element : node.elements("an array is"))
            value.list.push_back(luaValueOf(element));
    } else if (node.isObject()) {
        value.kind = Kind::Table;
        for (const auto& [name, member] : node.members()) {
            LuaValue key;
            key.kind = Kind::Text;
            key.text = gbkOf(name, member);
            value.fields.push_back({std::move(key), luaValueOf(member)});
        }
    } else {
        node.fail("a text, a number, true, false, an array or an object is");
    }
    return value;
}

void pushLuaValue(lua_State* L, const LuaValue& value)
{
    Push work{&value, LUA_REFNIL};
    const quorlua::ScriptOperation operation(L); // of finalizers
    if (lua_cpcall(L, pushProtected, &work) != 0) lua_pop(L, 1);
    // The registry keeps the value as long as the state lives: letting go of it could take memory.
    lua_rawgeti(L, LUA_REGISTRYINDEX, work.reference);
}

Json jsonOf(const LuaValue& value, const ValueJson& json)
{
    switch (value.kind) {
    case Kind::Boolean:
        return json.of(value.truth);
    case Kind::Number:
        return json.of(value.number);
    case Kind::Integer64:
        return json.of(value.integer);
    case Kind::Text:
        return json.of(value.text);
    case Kind::Table:
        return jsonOfTable(value, json);
    case Kind::Seen: {
        Json object = marked("seen");
        object.emplace("at", value.text);
        return object;
    }
    case Kind::Deeper:
        return marked("deeper");
    default:
        return marked(value.text.c_str());
    }
}

void putValue(ValueLine& line, const LuaValue& value)
{
    switch (value.kind) {
    case Kind::Boolean:
        return line.put(value.truth);
    case Kind::Number:
        return line.put(value.number);
    case Kind::Integer64:
        return line.raw(fmt::format("int64(\"{}\")", value.integer));
    case Kind::Text:
        return line.put(value.text);
    case Kind::Table:
        return putTable(line, value);
    case Kind::Seen:
        return line.raw(fmt::format("<see {}>", value.text.empty() ? "top" : value.text));
    case Kind::Deeper:
        return line.raw("<deeper>");
    default:
        return line.raw("<" + value.text + ">");
    }
}

} // namespace quor

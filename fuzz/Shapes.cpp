#include "Shapes.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <cmath>
#include <limits>

namespace fuzz {
namespace {

constexpr double awkwardNumbers[] = {
    0.5,
    -0.0,
    1e-5,
    1.0001,
    70000,
    2147483647,
    2147483648.0,
    -2147483649.0,
    4294967296.0,
    9007199254740992.0,
    9223372036854775808.0,
    -9223372036854775808.0,
    18446744073709551616.0,
    1e300,
    -1e300,
    5e-324,
    std::numeric_limits<double>::infinity(),
    -std::numeric_limits<double>::infinity(),
    std::numeric_limits<double>::quiet_NaN(),
};

constexpr int codes[] = {2,  3,  4,  5,  6,  7,  8,   9,   10,  11,  12,  13, 14, 15,
                         16, 17, 18, 19, 20, 21, 22,  23,  24,  25,  26,  27, 28, 29,
                         30, 31, 32, 40, 41, 42, 200, 300, 400, 500, 600, 700};

constexpr int deepest = 100;
constexpr long mostWeight = 5000;

int raise(lua_State* L)
{
    lua_pushliteral(L, "an event of the metatable");
    return lua_error(L);
}

int returnNothing(lua_State*)
{
    return 0;
}

/// Makes the one value of a case: the tables that are complete stand in a list of the caller's stack.
class Maker {
public:
    Maker(lua_State* L, Input& input, int list) : L_(L), input_(input), list_(list) {}

    /// Pushes a value; how much a walk through it meets.
    long push(int depth);

private:
    long pushTable(int depth);
    /// Takes what stands in the table on top; its weight, or -1 at the end.
    long takeEntry(int depth, int& next);
    long pushAgain();
    void pushPoint(double x, double y, double z);
    void setRaisingMetatable();

    lua_State* L_;
    Input& input_;
    int list_;
    std::vector<long> weights_;
    long weight_ = 0;
    bool hasCycle_ = false;
};

void Maker::pushPoint(double x, double y, double z)
{
    lua_createtable(L_, 3, 0);
    const double coordinates[] = {x, y, z};
    for (int i = 0; i < 3; ++i) {
        lua_pushnumber(L_, coordinates[i]);
        lua_rawseti(L_, -2, i + 1);
    }
}

void Maker::setRaisingMetatable()
{
    if (luaL_newmetatable(L_, "fuzz.raises")) {
        for (const char* event : {"__index", "__newindex", "__call", "__eq", "__lt", "__le", "__len",
                                  "__tostring", "__concat", "__unm", "__add"}) {
            lua_pushcfunction(L_, raise);
            lua_setfield(L_, -2, event);
        }
    }
    lua_setmetatable(L_, -2);
}

long Maker::pushAgain()
{
    const int which = input_.byte();
    if (weights_.empty()) {
        lua_pushnil(L_);
        return 1;
    }
    const std::size_t at = static_cast<std::size_t>(which) % weights_.size();
    const long weight = weights_[at];
    if (weight_ + weight > mostWeight) {
        lua_pushnil(L_);
        return 1;
    }
    lua_rawgeti(L_, list_, static_cast<int>(at) + 1);
    return weight;
}

long Maker::takeEntry(int depth, int& next)
{
    if (input_.ended()) return -1;
    const Input before = input_;
    switch (input_.byte()) {
    case '}':
        return -1;
    case 'M':
        setRaisingMetatable();
        return 0;
    case '@':
        if (!hasCycle_) {
            hasCycle_ = true;
            lua_pushvalue(L_, -1);
            lua_rawseti(L_, -2, next++);
        }
        return 1;
    case '=': {
        long weight = push(depth + 1); // key
        weight += push(depth + 1);
        const bool isKey =
            !lua_isnil(L_, -2) && !(lua_type(L_, -2) == LUA_TNUMBER && std::isnan(lua_tonumber(L_, -2)));
        if (isKey)
            lua_rawset(L_, -3);
        else
            lua_pop(L_, 2);
        return weight;
    }
    case '#': {
        const int count = input_.byte();
        const long weight = push(depth + 1);
        for (int i = 0; i < count && weight_ + i * weight < mostWeight; ++i) {
            lua_pushvalue(L_, -1);
            lua_rawseti(L_, -3, next++);
        }
        lua_pop(L_, 1);
        weight_ += count * weight;
        return weight + count * weight;
    }
    default:
        input_ = before;
    }
    const long weight = push(depth + 1);
    lua_rawseti(L_, -2, next++);
    return weight;
}

long Maker::pushTable(int depth)
{
    lua_newtable(L_);
    long weight = 1;
    int next = 1;
    for (;;) {
        const long entry = takeEntry(depth, next);
        if (entry < 0 || weight_ > mostWeight) break;
        weight += entry;
    }
    lua_pushvalue(L_, -1);
    weights_.push_back(weight);
    lua_rawseti(L_, list_, static_cast<int>(weights_.size()));
    return weight;
}

long Maker::push(int depth)
{
    const int code = input_.byte();
    long weight = 1;
    switch (code) {
    case 'i':
        lua_pushnumber(L_, static_cast<signed char>(input_.byte()));
        break;
    case 'N':
        lua_pushnumber(L_, awkwardNumbers[static_cast<std::size_t>(input_.below(std::size(awkwardNumbers)))]);
        break;
    case 'd':
        lua_pushnumber(L_, input_.rawNumber());
        break;
    case 'k':
        lua_pushnumber(L_, codes[static_cast<std::size_t>(input_.below(std::size(codes)))]);
        break;
    case 's': {
        const std::string text = input_.word(64);
        lua_pushlstring(L_, text.data(), text.size());
        break;
    }
    case 'Z': {
        const std::size_t count = input_.byte();
        const std::string text(count, static_cast<char>(input_.byte()));
        lua_pushlstring(L_, text.data(), text.size());
        break;
    }
    case 't':
    case 'f':
        lua_pushboolean(L_, code == 't');
        break;
    case '_':
        lua_pushnil(L_);
        break;
    case 'p':
        pushPoint(1, 2, 3);
        break;
    case 'v':
        pushPoint(0, 0, 1);
        break;
    case '{':
        if (depth < deepest)
            weight = pushTable(depth);
        else
            lua_newtable(L_);
        break;
    case '*':
        weight = pushAgain();
        break;
    case 'I':
        lua_tinker::push(L_, static_cast<long long>(input_.byte()) << 52);
        break;
    case 'u':
        lua_newuserdata(L_, 0);
        break;
    case 'l':
        lua_pushlightuserdata(L_, &input_);
        break;
    case 'F':
        lua_pushcfunction(L_, returnNothing);
        break;
    case 'T':
        lua_newthread(L_);
        break;
    default:
        lua_pushnumber(L_, code >= '0' && code <= '9' ? code - '0' : code);
    }
    weight_ += weight;
    return weight;
}

} // namespace

void pushValue(lua_State* L, Input& input)
{
    require(lua_checkstack(L, 8 * deepest) != 0, "there is room to make a value");
    lua_newtable(L);
    Maker(L, input, lua_gettop(L)).push(0);
    lua_remove(L, -2);
}

double readNumber(Input& input)
{
    const int code = input.byte();
    if (code == 'd') return input.rawNumber();
    if (code == 'N') return awkwardNumbers[static_cast<std::size_t>(input.below(std::size(awkwardNumbers)))];
    return code - '0';
}

std::vector<KVParams> readRecords(Input& input, int most)
{
    std::vector<KVParams> records(static_cast<std::size_t>(input.below(most + 1)));
    for (KVParams& record : records) {
        record.key = input.word(16);
        switch (const int tag = input.below(10)) {
        case 1:
            record.value = KVValue::ofShort(static_cast<short>(input.byte() << 8 | input.byte()));
            break;
        case 2:
            record.value = KVValue::ofDouble(readNumber(input));
            break;
        case 3:
            record.value = KVValue::ofPoint({readNumber(input), readNumber(input), readNumber(input)});
            break;
        case 4:
            record.value = KVValue::ofString(input.word(32));
            break;
        case 5:
            record.value = KVValue::ofInt(static_cast<int>(input.byte()) << 24 | input.byte());
            break;
        case 8:
            record.value = KVValue::ofBool(input.flag());
            break;
        default:
            record.value = KVValue::ofTag(static_cast<short>(tag));
        }
        record.note = input.word(8);
    }
    return records;
}

} // namespace fuzz

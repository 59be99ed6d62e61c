// The sample's "bin\serialObject.lua", by way of the serializer: what it writes, and that it is read back as
// it was.

#include "../system.h"
#include "serializer_fixture.h"

#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <random>
#include <set>

namespace {

using testing::IsEmpty;

/// Scripts find `same(a, b)`: whether two values are alike, which for numbers means bit by bit, save that one
/// not-a-number is like another, and for tables that what is one table, or one id, here is one there.
class SerializedText : public Serializer {
protected:
    void SetUp() override
    {
        Serializer::SetUp();
        // A constant in a script may lose its sign.
        lua_pushnumber(L, -0.0);
        lua_setglobal(L, "negativeZero");
        run(R"(
            local int64, kindOf = int64, type
            local function isAlike(a, b, there, here)
                if kindOf(a) ~= kindOf(b) then return false end
                if kindOf(a) == 'number' then
                    if a ~= a then return b ~= b end
                    return a == b and 1 / a == 1 / b
                end
                if kindOf(a) ~= 'table' and kindOf(a) ~= 'userdata' then return a == b end
                if there[a] ~= nil or here[b] ~= nil then return there[a] == b and here[b] == a end
                there[a], here[b] = b, a
                if kindOf(a) == 'userdata' then return int64(a) ~= nil and int64(a) == int64(b) end
                local count = 0
                for key, value in next, a do
                    count = count + 1
                    local other = key
                    if kindOf(key) == 'table' or kindOf(key) == 'userdata' then
                        other = there[key]
                        if other == nil then
                            for candidate in next, b do
                                local fits = kindOf(candidate) == kindOf(key) and here[candidate] == nil
                                if fits and (kindOf(key) == 'table' or int64(candidate) == int64(key)) then
                                    other = candidate
                                end
                            end
                        end
                        if other == nil or not isAlike(key, other, there, here) then return false end
                    end
                    if not isAlike(value, rawget(b, other), there, here) then return false end
                end
                for _ in next, b do count = count - 1 end
                return count == 0
            end
            function same(a, b) return isAlike(a, b, {}, {}) end
        )");
    }
    void TearDown() override
    {
        EXPECT_THAT(alerts, IsEmpty());
        Serializer::TearDown();
    }

    /// Writes an expression, reads the text, compares, and writes again. Gives the text.
    std::string roundTrip(const std::string& expression)
    {
        run("original = " + expression);
        lua_getglobal(L, "original");
        std::string text = written();
        read(text);
        EXPECT_EQ(shown("same(original, read)"), "true") << expression << "\n" << text;
        EXPECT_EQ(written(), text) << expression;
        lua_settop(L, 1);
        return text;
    }
};

TEST_F(SerializedText, IsExactAndReadBack)
{
    const struct {
        const char* expression;
        const char* text;
    } cases[] = {
        {"{}", "{}"},
        {"true", "true"},
        {"false", "false"},
        {"12", "12"},
        {"'text'", "\"text\""},
        {"int64(-5)", "#-5"},
        {"{1, 2, 3}", "{1,2,3}"},
        {"{{1}, {{2}}, {}}", "{{1},{{2}},{}}"},
        {"{true, false, 'x', int64('12')}", "{true,false,\"x\",#12}"},
        {"{a = 1, b = 'two', c = {d = false}}", "{\"a\"=1,\"b\"=\"two\",\"c\"={\"d\"=false}}"},
        {"{1, 2, nil, 4}", "{1,2,4=4}"},
        {"{nil, 2}", "{2=2}"},
        {"{[0] = 0, 1, [-1] = -1}", "{1,-1=-1,0=0}"},
        {"{[1.5] = 'x', [1] = 'a', [3] = 'c', [2^53] = 'y', [1e300] = 'z', [1/0] = 'i', [-1/0] = 'm'}",
         "{\"a\",-inf=\"m\",1.5=\"x\",3=\"c\",9007199254740992=\"y\",1681218273811815p946=\"z\",inf=\"i\"}"},
        {"{[true] = 1, [false] = 2, x = 3, [9] = 4}", "{9=4,\"x\"=3,false=2,true=1}"},
        {"{[''] = 1, [' '] = 2}", "{\"\"=1,\" \"=2}"},
        {"{[int64(5)] = 'five'}", "{#5=\"five\"}"},
        {"{[int64('9223372036854775807')] = 1, [int64('-9223372036854775808')] = 2, [int64(0)] = 3}",
         "{#-9223372036854775808=2,#0=3,#9223372036854775807=1}"},
        {"{[{}] = 1}", "{{}=1}"},
        {"{[{x = {}}] = {[{7}] = true}}", "{{\"x\"={}}={{7}=true}}"},
        {"{['1'] = 'text', [1] = 'number'}", "{\"number\",\"1\"=\"text\"}"},
    };
    for (const auto& [expression, text] : cases)
        EXPECT_EQ(roundTrip(expression), headed(text)) << expression;
}

TEST_F(SerializedText, OfNumbersIsExact)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const struct {
        double number;
        const char* text;
    } cases[] = {
        {0.0, "0"},
        {-0.0, "-0"},
        {1, "1"},
        {-70000, "-70000"},
        {0x1p53, "9007199254740992"},
        {-0x1p53, "-9007199254740992"},
        {0x1p53 + 2, "4503599627370497p1"},
        {0x1p63, "1p63"},
        {1e15, "1000000000000000"},
        {1e300, "1681218273811815p946"},
        {0.5, "0.5"},
        {-12.75, "-12.75"},
        {0.1, "0.1"},
        {101.6, "101.6"},
        {0.000001, "0.000001"},
        {-1234567.891011, "-1234567.891011"},
        {9007199253.740991, "9007199253.740992"},
        {0.1 + 0.2, "1351079888211149p-52"},
        {1.0 / 3, "6004799503160661p-54"},
        {0.0000005, "4722366482869645p-73"},
        {123456789012.5, "246913578025p-1"},
        {std::numeric_limits<double>::min(), "1p-1022"},
        {std::numeric_limits<double>::denorm_min(), "1p-1074"},
        {std::numeric_limits<double>::max(), "9007199254740991p971"},
        {-std::numeric_limits<double>::max(), "-9007199254740991p971"},
        {std::numeric_limits<double>::epsilon(), "1p-52"},
        {infinity, "inf"},
        {-infinity, "-inf"},
        {std::numeric_limits<double>::quiet_NaN(), "nan"},
        {-std::numeric_limits<double>::quiet_NaN(), "nan"},
    };
    for (const auto& [number, text] : cases) {
        lua_pushnumber(L, number);
        EXPECT_EQ(written(), headed(text));
        read(headed(text));
        const double again = lua_tonumber(L, -1);
        EXPECT_EQ(lua_type(L, -1), LUA_TNUMBER) << text;
        if (std::isnan(number)) {
            EXPECT_TRUE(std::isnan(again));
        } else {
            EXPECT_EQ(std::memcmp(&again, &number, sizeof number), 0) << text;
        }
        lua_settop(L, 1);
    }
}

TEST_F(SerializedText, KeepsEveryBitOfAnyNumber)
{
    constexpr int count = 20000;
    std::mt19937_64 random(20240229);
    std::vector<double> numbers;
    while (static_cast<int>(numbers.size()) < count) {
        const std::uint64_t bits = random();
        double number = 0;
        std::memcpy(&number, &bits, sizeof number);
        // Of each four: any bits, a number of everyday size, a short fraction, a whole number.
        switch (numbers.size() % 4) {
        case 1:
            number = std::ldexp(static_cast<double>(bits >> 11), -40);
            break;
        case 2:
            number = static_cast<double>(bits % 100000000) / 1000.0;
            break;
        case 3:
            number = static_cast<double>(bits >> (bits % 64));
            break;
        default:
            break;
        }
        if (!std::isnan(number)) numbers.push_back(number);
    }
    lua_newtable(L);
    for (int i = 0; i < count; ++i) {
        lua_pushnumber(L, numbers[static_cast<std::size_t>(i)]);
        lua_rawseti(L, -2, i + 1);
    }
    read(written());
    for (int i = 0; i < count; ++i) {
        lua_rawgeti(L, -1, i + 1);
        const double number = lua_tonumber(L, -1);
        ASSERT_EQ(std::memcmp(&number, &numbers[static_cast<std::size_t>(i)], sizeof number), 0)
            << i << ": " << numbers[static_cast<std::size_t>(i)];
        lua_pop(L, 1);
    }
}

TEST_F(SerializedText, OfStringsIsAsciiOnOneLine)
{
    const struct {
        std::string bytes;
        const char* text;
    } cases[] = {
        {"", "\"\""},
        {"DN50 -> x = {1, 2} [3] #4 &5 *6", "\"DN50 -> x = {1, 2} [3] #4 &5 *6\""},
        {"a\"b", "\"a\\22b\""},
        {"a\\b", "\"a\\5Cb\""},
        {"\\22", "\"\\5C22\""},
        {"line\r\nend\t", "\"line\\0D\\0Aend\\09\""},
        {std::string("\0a\0", 3), "\"\\00a\\00\""},
        {"\x7F\x80\xFF", "\"\\7F\\80\\FF\""},
        // GBK, the second byte of the first character being that of a backslash.
        {"\xD5\x5C\xB7\xA7", "\"\\D5\\5C\\B7\\A7\""},
    };
    for (const auto& [bytes, text] : cases) {
        lua_pushlstring(L, bytes.data(), bytes.size());
        EXPECT_EQ(written(), headed(text));
        read(headed(text));
        EXPECT_EQ(std::string(lua_tostring(L, -1), lua_objlen(L, -1)), bytes);
        lua_settop(L, 1);
    }
    std::string all;
    for (int i = 0; i < 65536; ++i)
        all += static_cast<char>(i * 7 + i / 256);
    lua_pushlstring(L, all.data(), all.size());
    const std::string text = written();
    for (const char byte : text)
        ASSERT_TRUE(byte >= ' ' && byte <= '~');
    read(text);
    EXPECT_EQ(std::string(lua_tostring(L, -1), lua_objlen(L, -1)), all);
}

TEST_F(SerializedText, KeepsWhatIsShared)
{
    const struct {
        const char* expression;
        const char* text;
    } cases[] = {
        {"(function() local s = {} return {s, s, s} end)()", "{&1{},*1,*1}"},
        {"(function() local a, b = {1}, {2} return {b, a, a, b} end)()", "{&2{2},&1{1},*1,*2}"},
        {"(function() local t = {} t.self = t return t end)()", "&1{\"self\"=*1}"},
        {"(function() local t = {} t[t] = t return t end)()", "&1{*1=*1}"},
        {"(function() local a, b = {}, {} a.b, b.a = b, a return a end)()", "&1{\"b\"={\"a\"=*1}}"},
        {"(function() local k = {} return {k, [k] = 1} end)()", "{&1{},*1=1}"},
        {"(function() local k = {} return {[k] = k} end)()", "{&1{}=*1}"},
        {"(function() local i = int64(7) return {i, i, int64(7)} end)()", "{&1#7,*1,#7}"},
        {"(function() local i = int64(7) return {[i] = {id = i}} end)()", "{&1#7={\"id\"=*1}}"},
        {"(function() local a, b = {}, {} return {a, b, [b] = 1, [a] = 2} end)()", "{&1{},&2{},*1=2,*2=1}"},
        // The same text is no shared thing: strings have no identity.
        {"{'s', 's'}", "{\"s\",\"s\"}"},
    };
    for (const auto& [expression, text] : cases)
        EXPECT_EQ(roundTrip(expression), headed(text)) << expression;
}

TEST_F(SerializedText, LetsIdsThatAreKeysBeFound)
{
    roundTrip("(function() local i = int64(7) return {id = i, names = {[i] = 'valve'}} end)()");
    EXPECT_EQ(shown("read.names[read.id]"), "valve");
}

TEST_F(SerializedText, HasKeysInTheOrderOfTheirBytes)
{
    std::mt19937 random(4711);
    for (const std::size_t count : {2u, 3u, 7u, 19u, 20u, 21u, 22u, 60u, 700u}) {
        std::set<std::string> keys;
        while (keys.size() < count) {
            std::string key = random() % 3 == 0 ? "" : "a common beginning";
            for (auto i = random() % 14; i > 0; --i)
                key += "aB\xE4\xFFz0"[random() % 6];
            keys.insert(key);
        }
        // The interpreter's own order of keys depends on how they came.
        std::vector<std::string> shuffled(keys.begin(), keys.end());
        std::shuffle(shuffled.begin(), shuffled.end(), random);
        lua_newtable(L);
        for (const std::string& key : shuffled) {
            lua_pushlstring(L, key.data(), key.size());
            lua_pushboolean(L, 1);
            lua_rawset(L, -3);
        }
        std::string expected;
        for (const std::string& key : keys) {
            expected += expected.empty() ? "{\"" : ",\"";
            for (const char byte : key) {
                if (byte == '\xE4')
                    expected += "\\E4";
                else if (byte == '\xFF')
                    expected += "\\FF";
                else
                    expected += byte;
            }
            expected += "\"=true";
        }
        EXPECT_EQ(written(), headed(expected + "}"));
        lua_settop(L, 1);
    }
}

TEST_F(SerializedText, PutsAShorterKeyFirst)
{
    const char* text = "{\"\"=1,\"\\00\"=1,\"\\00\\00\"=1,\"a\"=1,\"a\\00\"=1,\"a\\00a\"=1,\"aa\"=1,"
                       "\"longer than six\"=1,\"longer than six\\00\"=1,\"longer than six!\"=1}";
    EXPECT_EQ(written("{['a\\0'] = 1, ['longer than six!'] = 1, a = 1, aa = 1, ['\\0\\0'] = 1, ['a\\0a'] = 1,"
                      " ['longer than six\\0'] = 1, [''] = 1, ['\\0'] = 1, ['longer than six'] = 1}"),
              headed(text));
}

TEST_F(SerializedText, IsTheSameInALocaleWithADecimalComma)
{
    const std::string expression =
        "{0.1, 12.75, 1e300, 1e-300, [2.5] = 'x', ['\xE4'] = 1, z = 2, Z = 3, ['_'] = 4}";
    const std::string text =
        headed("{0.1,12.75,1681218273811815p946,6032057205060441p-1049,2.5=\"x\",\"Z\"=3,"
               "\"_\"=4,\"z\"=2,\"\\E4\"=1}");
    EXPECT_EQ(roundTrip(expression), text);

    const sys::CommaLocale comma;
    if (!comma.isSet()) GTEST_SKIP() << "this system makes no such locale";
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    EXPECT_EQ(roundTrip(expression), text);
}

TEST_F(SerializedText, PassesOverMetatables)
{
    run("refuse = function() error('asked') end"
        " guarded = {__index = refuse, __newindex = refuse, __len = refuse, __pairs = refuse, __call = "
        "refuse,"
        " __eq = refuse, __lt = refuse, __concat = refuse, __tostring = refuse, __metatable = 'hidden'}");
    EXPECT_EQ(written("setmetatable({1, 2, x = setmetatable({}, guarded)}, guarded)"),
              headed("{1,2,\"x\"={}}"));
    EXPECT_EQ(written("setmetatable({}, {__index = {1, 2, x = 3}})"), headed("{}"));
    read(headed("{\"__index\"={\"x\"=1}}"));
    EXPECT_EQ(shown("tostring(getmetatable(read))"), "nil");
}

TEST_F(SerializedText, NeedsNoGlobalAfterItsScriptHasRun)
{
    run(R"(
        local next, pcall, saved = next, pcall, {}
        for _, library in next, {_G, string, table, math} do
            saved[library] = {}
            for name, value in next, library do saved[library][name] = value end
        end
        local write, read = serializeTable, unSerializeTable
        local text = write({1.5, 0.1, 'a\n', [int64(5)] = {}, x = {y = true}})
        for library, entries in next, saved do
            for name in next, entries do library[name] = nil end
        end
        local done, again = pcall(function() return write(read(text)) end)
        for library, entries in next, saved do
            for name, value in next, entries do library[name] = value end
        end
        before, after = text, done and again
    )");
    EXPECT_EQ(shown("before == after"), "true") << shown("after");
}

TEST_F(SerializedText, HoldsHundredThousandLevels)
{
    run("local root = {} local t = root for i = 1, 100000 do t[1] = {} t = t[1] end deep = root"
        " function depthOf(t) local depth = 0 while t[1] do t, depth = t[1], depth + 1 end return depth end");
    lua_getglobal(L, "deep");
    const std::string text = written();
    EXPECT_EQ(text, headed(std::string(100001, '{') + std::string(100001, '}')));
    read(text);
    EXPECT_EQ(shown("depthOf(read)"), "100000");
    EXPECT_EQ(written(), text);

    // As deep through keys, and through names.
    run("local t = {} for i = 1, 100000 do t = {[t] = true} end deep = t"
        " local n = {} for i = 1, 100000 do n = {name = n} end named = n");
    lua_getglobal(L, "deep");
    const std::string keys = written();
    read(keys);
    EXPECT_EQ(written(), keys);
    lua_getglobal(L, "named");
    const std::string names = written();
    EXPECT_EQ(names.size(), headed("").size() + 100000 * std::strlen("{\"name\"=}") + 2);
    read(names);
    EXPECT_EQ(written(), names);
    run("deep, named, read = nil");
}

TEST_F(SerializedText, HoldsHundredThousandEntries)
{
    run("entries = {} for i = 1, 100000 do entries['key' .. i] = i / 8 end");
    lua_getglobal(L, "entries");
    const std::string text = written();
    EXPECT_THAT(text, testing::StartsWith(headed("{\"key1\"=0.125,\"key10\"=1.25,\"key100\"=12.5,")));
    read(text);
    EXPECT_EQ(shown("read.key77777 * 8"), "77777");
    EXPECT_EQ(written(), text);
    run("entries, read = nil");
}

TEST_F(SerializedText, OfAListWithHolesNamesTheRest)
{
    EXPECT_EQ(roundTrip("(function() local t = {} for i = 1, 10 do t[2 ^ i] = i end return t end)()"),
              headed("{2=1,4=2,8=3,16=4,32=5,64=6,128=7,256=8,512=9,1024=10}"));
    EXPECT_EQ(roundTrip("{[1] = 'a', [2147483647] = 'b', [2147483648] = 'c', [4294967297] = 'd'}"),
              headed("{\"a\",2147483647=\"b\",2147483648=\"c\",4294967297=\"d\"}"));
}

TEST_F(SerializedText, OfANegativeZeroKeyIsThatOfZero)
{
    run("odd = {} odd[negativeZero] = 'zero'");
    lua_getglobal(L, "odd");
    EXPECT_EQ(written(), headed("{0=\"zero\"}"));
}

// Random trees: all kinds of values and keys, shared parts and cycles.
TEST_F(SerializedText, IsReadBackWhateverIsInIt)
{
    run(R"(
        local floor, char = math.floor, string.char
        local state = 20240229
        local function below(n)
            state = state * 16807 % 2147483647
            return floor(state / 2147483647 * n)
        end
        local function bytes()
            local list = {}
            for i = 1, below(12) do list[i] = char(below(256)) end
            return table.concat(list)
        end
        local made, ids
        local function plain()
            local kind = below(8)
            if kind == 0 then return below(2) == 0 end
            if kind <= 2 then return below(2000) - 1000 end
            if kind == 3 then return (below(2000000) - 1000000) / 1000 end
            if kind == 4 then return (below(2000000) - 1000000) * 2 ^ (below(1900) - 950) end
            if kind == 5 then return ({1 / 0, -1 / 0, 0 / 0, 2 ^ 53})[below(4) + 1] end
            return bytes()
        end
        local function id()
            if #ids > 0 and below(3) == 0 then return ids[below(#ids) + 1] end
            ids[#ids + 1] = int64(below(2000)) * int64('4611686018427387')
            return ids[#ids]
        end
        local function tree(depth)
            if #made > 0 and below(6) == 0 then return made[below(#made) + 1] end
            local t = {}
            made[#made + 1] = t
            for i = 1, below(5) do t[i] = depth > 0 and below(3) == 0 and tree(depth - 1) or plain() end
            for i = 1, below(5) do
                local key = plain()
                if key == key then t[key] = below(3) == 0 and id() or depth > 0 and tree(depth - 1) or plain() end
            end
            -- One such key at most: how two would be matched is not told.
            if below(4) == 0 then t[id()] = plain() end
            if below(4) == 0 then t[made[below(#made) + 1]] = plain() end
            return t
        end
        function someTree()
            made, ids = {}, {}
            return tree(6)
        end
    )");
    std::size_t longest = 0;
    for (int i = 0; i < 200; ++i) {
        const std::string text = roundTrip("someTree()");
        longest = std::max(longest, text.size());
        ASSERT_FALSE(HasFailure()) << "tree " << i;
    }
    EXPECT_GT(longest, 1000u);
}

} // namespace

#include "Protected.h"

#include <QuorPureScriptor/quorlua_helpers.h>
#include <algorithm>
#include <cstring>
#include <string_view>

namespace quorlua {
namespace {

#if !defined(_WIN32)

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0u) == 0x80u;
}

bool isUtf8(std::string_view text)
{
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t length = lead < 0x80   ? 1
                                   : lead < 0xC2 ? 0
                                   : lead < 0xE0 ? 2
                                   : lead < 0xF0 ? 3
                                   : lead < 0xF5 ? 4
                                                 : 0;
        if (length == 0 || i + length > text.size()) return false;
        for (std::size_t at = 1; at < length; ++at) {
            if (!isContinuation(text[i + at])) return false;
        }
        i += length;
    }
    return true;
}

// Turns the backslashes that separate names around, in place.
void turnSeparators(char* text, std::size_t length)
{
    const bool utf8 = isUtf8({text, length});
    for (std::size_t i = 0; i < length; ++i) {
        // A two-byte character of GBK may have a backslash as its second byte.
        if (!utf8 && static_cast<unsigned char>(text[i]) > 0x80)
            ++i;
        else if (text[i] == '\\')
            text[i] = '/';
    }
}

#endif

// Brings a pattern into the system's own form, in place: its new length.
std::size_t makeNative(char* pattern, std::size_t length, bool isModule)
{
#if defined(_WIN32)
    static_cast<void>(pattern);
    static_cast<void>(isModule);
    return length;
#else
    constexpr std::string_view windowsModule = ".dll";
    constexpr std::string_view module = ".so";
    turnSeparators(pattern, length);
    if (!isModule || !std::string_view(pattern, length).ends_with(windowsModule)) return length;
    const std::size_t name = length - windowsModule.size();
    std::memcpy(pattern + name, module.data(), module.size());
    return name + module.size();
#endif
}

void append(lua_State* L, const char* field, const char* pattern, bool isModule)
{
    // Most search paths are joined here; scratch memory for a longer one is a userdata: it goes away by
    // itself when a push raises.
    constexpr std::size_t usualSize = 2048;
    char usual[usualSize];
    if (!L || !pattern || !*pattern) return;
    const int top = lua_gettop(L);
    lua_pushliteral(L, "package");
    lua_rawget(L, LUA_GLOBALSINDEX);
    if (lua_istable(L, -1)) {
        lua_pushstring(L, field);
        lua_pushvalue(L, -1);
        lua_rawget(L, -3); // [-3] package, [-2] field, [-1] path
        std::size_t length = 0;
        const char* path = lua_type(L, -1) == LUA_TSTRING ? lua_tolstring(L, -1, &length) : nullptr;
        const std::size_t patternLength = std::strlen(pattern);
        const std::size_t most = length + 1 + patternLength;
        char* text = most <= usualSize ? usual : static_cast<char*>(lua_newuserdata(L, most));
        if (path) {
            std::copy_n(path, length, text);
            text[length++] = ';';
        }
        std::copy_n(pattern, patternLength, text + length);
        length += makeNative(text + length, patternLength, isModule);
        lua_pushvalue(L, top + 2);
        lua_pushlstring(L, text, length);
        lua_rawset(L, top + 1);
    }
    lua_settop(L, top);
}

struct Question {
    const char* name;
    bool isFunction;
};

int ask(lua_State* L)
{
    auto* question = static_cast<Question*>(lua_touserdata(L, 1));
    lua_getfield(L, LUA_GLOBALSINDEX, question->name);
    question->isFunction = lua_isfunction(L, -1);
    return 0;
}

} // namespace

void addPath(lua_State* L, const char* pattern)
{
    append(L, "path", pattern, false);
}

void addCPath(lua_State* L, const char* pattern)
{
    append(L, "cpath", pattern, true);
}

bool is_global_function(lua_State* L, const char* name)
{
    if (!L || !name) return false;
    Question question{name, false};
    if (lua_cpcall(L, ask, &question) != 0) lua_pop(L, 1);
    return question.isFunction;
}

} // namespace quorlua

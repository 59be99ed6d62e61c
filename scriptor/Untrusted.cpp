#include "Untrusted.h"

#include "SystemPath.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace quorlua {
namespace {

namespace fs = std::filesystem;

constexpr const char* textChunk = "a precompiled chunk is refused";

/// What of a library stays, or goes.
constexpr const char* ofSystem[] = {"clock", "date", "difftime", "time"};
constexpr const char* ofPackage[] = {"config", "loaded", "loaders", "path", "preload", "seeall"};
/// `newproxy` makes values with finalizers, which no time limit ends.
constexpr const char* goneGlobals[] = {"newproxy"};

/// [-0, +(1|2), m]: the function, or nil and a message as `load` has them.
int loadText(lua_State* L, const char* bytes, std::size_t size, const char* name)
{
    if (size > 0 && bytes[0] == LUA_SIGNATURE[0]) {
        lua_pushnil(L);
        lua_pushstring(L, textChunk);
        return 2;
    }
    // Behind a byte order mark or a first line that is skipped, the engines take none themselves.
    const int status = luaL_loadbuffer(L, bytes, size, name);
    if (status == 0) return 1;
    lua_pushnil(L);
    lua_insert(L, -2);
    return 2;
}

/// `loadstring(text [, name])`. [-0, +(1|2), e]
int loadString(lua_State* L)
{
    std::size_t size = 0;
    const char* text = luaL_checklstring(L, 1, &size);
    return loadText(L, text, size, luaL_optstring(L, 2, text));
}

/// `load(function [, name])`: the pieces are gathered first. [-0, +(1|2), e]
int load(lua_State* L)
{
    luaL_checktype(L, 1, LUA_TFUNCTION);
    const char* name = luaL_optstring(L, 2, "=(load)");
    lua_settop(L, 2);
    lua_newtable(L);
    int pieces = 0;
    std::size_t size = 0;
    for (;;) {
        lua_pushvalue(L, 1);
        if (lua_pcall(L, 0, 1, 0) != 0) {
            lua_pushnil(L);
            lua_insert(L, -2);
            return 2;
        }
        if (lua_isnil(L, -1)) break;
        if (lua_isstring(L, -1) == 0) {
            lua_pushnil(L);
            lua_pushliteral(L, "reader function must return a string");
            return 2;
        }
        const std::size_t length = lua_objlen(L, -1); // a number is a text from here on
        if (length == 0) break;
        size += length;
        lua_rawseti(L, 3, ++pieces);
    }
    // No buffer of the interpreter's: it would take 8 KB of the stack while the function above calls the
    // script.
    auto* text = static_cast<char*>(lua_newuserdata(L, size));
    std::size_t at = 0;
    for (int i = 1; i <= pieces; ++i) {
        lua_rawgeti(L, 3, i);
        std::size_t length = 0;
        const char* bytes = lua_tolstring(L, -1, &length);
        std::memcpy(text + at, bytes, length);
        at += length;
        lua_pop(L, 1);
    }
    return loadText(L, text, size, name);
}

bool isBelow(const fs::path& file, const char* folder)
{
    std::error_code error;
    const fs::path root = fs::canonical(systemPath(folder), error);
    if (error) return false;
    const fs::path relative = file.lexically_relative(root);
    return !relative.empty() && *relative.begin() != "..";
}

/// The real path of a file that lies in the installation or in the project, wherever links lead; else none.
fs::path confined(const char* path)
{
    std::error_code error;
    const fs::path file = fs::canonical(systemPath(path), error);
    if (error || !fs::is_regular_file(file, error)) return {};
    const bool isInside =
        isBelow(file, QuorSystem::quorEnv()) || isBelow(file, QuorSystem::getCurrentProjPath());
    return isInside ? file : fs::path();
}

/// The length of such a file, -1 when it may not be read. Raises nothing, and leaves no object of the C++
/// library in the frame of its caller, which an error may cross.
long long sizeOfConfined(const char* path)
{
    try {
        const fs::path file = confined(path);
        std::error_code error;
        const std::uintmax_t size = file.empty() ? 0 : fs::file_size(file, error);
        return file.empty() || error ? -1 : static_cast<long long>(size);
    } catch (const std::exception&) {
        return -1;
    }
}

/// Reads the first bytes of such a file; how many there were, -1 when it may not be read. Likewise.
long long readConfined(const char* path, char* bytes, long long size)
{
    try {
        const fs::path file = confined(path);
        if (file.empty()) return -1;
        std::ifstream opened(file, std::ios::binary);
        if (!opened) return -1;
        opened.read(bytes, static_cast<std::streamsize>(size));
        return opened.bad() ? -1 : static_cast<long long>(opened.gcount());
    } catch (const std::exception&) {
        return -1;
    }
}

struct Source {
    const char* bytes;
    std::size_t size;
};

/// Without a byte order mark and a first line that begins with '#'; that line's end stays, so that lines keep
/// their numbers.
Source chunkIn(Source text)
{
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    std::string_view rest(text.bytes, text.size);
    if (rest.substr(0, mark.size()) == mark) rest.remove_prefix(mark.size());
    if (!rest.empty() && rest[0] == '#') rest.remove_prefix(std::min(rest.find('\n'), rest.size()));
    return {rest.data(), rest.size()};
}

/// Pushes a block with the bytes of a file; false, with nothing pushed, when it may not be read. A file that
/// is larger than the state may become ends by an error of memory before it is read. [-0, +(0|1), m]
bool pushConfined(lua_State* L, const char* path, Source& source)
{
    const long long size = sizeOfConfined(path);
    if (size < 0) return false;
    auto* block = static_cast<char*>(lua_newuserdata(L, static_cast<std::size_t>(size)));
    const long long length = readConfined(path, block, size);
    if (length < 0) {
        lua_pop(L, 1);
        return false;
    }
    source = chunkIn({block, static_cast<std::size_t>(length)});
    return true;
}

/// Loads a file; on failure nil and a message. [-0, +(1|2), e]
int loadConfined(lua_State* L, const char* path)
{
    Source source{};
    if (!pushConfined(L, path, source)) {
        lua_pushnil(L);
        lua_pushfstring(L, "cannot open %s: no file of the installation or the project", path);
        return 2;
    }
    return loadText(L, source.bytes, source.size, lua_pushfstring(L, "@%s", path));
}

/// `loadfile(path)`. [-0, +(1|2), e]
int loadFile(lua_State* L)
{
    return loadConfined(L, luaL_checkstring(L, 1));
}

/// `dofile(path)`. [-0, +n, e]
int doFile(lua_State* L)
{
    const char* path = luaL_checkstring(L, 1);
    lua_settop(L, 1);
    if (loadConfined(L, path) != 1) return lua_error(L);
    const int before = lua_gettop(L) - 1;
    lua_call(L, 0, LUA_MULTRET);
    return lua_gettop(L) - before;
}

/// What `require` asks for a module's function: the patterns of "package.path", in the confined folders.
/// [-0, +1, e]
int findModule(lua_State* L)
{
    const char* name = luaL_checkstring(L, 1);
    const char* file = luaL_gsub(L, name, ".", LUA_DIRSEP);
    lua_getfield(L, LUA_GLOBALSINDEX, "package");
    lua_pushliteral(L, "path");
    if (lua_istable(L, -2))
        lua_rawget(L, -2);
    else
        lua_pushnil(L);
    const char* patterns = lua_tostring(L, -1);
    if (!patterns) return luaL_error(L, "'package.path' must be a string");
    lua_pushliteral(L, "");
    while (*patterns != '\0') {
        const char* end = std::strchr(patterns, ';');
        const std::size_t length = end ? static_cast<std::size_t>(end - patterns) : std::strlen(patterns);
        lua_pushlstring(L, patterns, length);
        const char* path = luaL_gsub(L, lua_tostring(L, -1), "?", file);
        const int top = lua_gettop(L);
        Source source{};
        if (pushConfined(L, path, source)) {
            if (loadText(L, source.bytes, source.size, lua_pushfstring(L, "@%s", path)) == 1) return 1;
            return luaL_error(L, "error loading module '%s' from file '%s':\n\t%s", name, path,
                              lua_tostring(L, -1));
        }
        lua_settop(L, top);
        lua_pushfstring(L, "\n\tno file '%s' of the installation or the project", path);
        lua_replace(L, top - 1);
        lua_settop(L, top - 1);
        lua_concat(L, 2);
        patterns += length + (end ? 1 : 0);
    }
    return 1;
}

bool isAmong(std::string_view name, const char* const* begin, const char* const* end)
{
    for (; begin != end; ++begin)
        if (name == *begin) return true;
    return false;
}

/// Takes everything out of a global table that is not in the list. [-0, +0, e]
template<std::size_t count>
void keepOnly(lua_State* L, const char* table, const char* const (&names)[count])
{
    lua_getglobal(L, table);
    const int own = lua_gettop(L);
    for (lua_pushnil(L); lua_next(L, own) != 0;) {
        lua_pop(L, 1);
        if (lua_type(L, -1) == LUA_TSTRING && isAmong(lua_tostring(L, -1), names, names + count)) continue;
        lua_pushvalue(L, -1);
        lua_pushnil(L);
        lua_rawset(L, own); // a field that is there may be cleared within a traversal
    }
    lua_pop(L, 1);
}

void open(lua_State* L, const char* name, lua_CFunction library)
{
    lua_pushcfunction(L, library);
    lua_pushstring(L, name);
    lua_call(L, 1, 0);
}

#if defined(LUAJIT_VERSION)

/// Takes away what scripts can open by `require`, and what the engine opens for a literal like `1LL`: that
/// registers itself, but only the first time. It stays in the registry, since the engine itself goes on to
/// use what hangs on it. [-0, +0, m]
void hideForeignFunctions(lua_State* L)
{
    constexpr int key = -0x51553105;
    lua_pushcfunction(L, luaopen_ffi);
    lua_call(L, 0, 1);
    lua_rawseti(L, LUA_REGISTRYINDEX, key);
    lua_getfield(L, LUA_REGISTRYINDEX, "_LOADED");
    lua_pushnil(L);
    lua_setfield(L, -2, LUA_FFILIBNAME);
    lua_getglobal(L, LUA_LOADLIBNAME);
    lua_getfield(L, -1, "preload");
    for (lua_pushnil(L); lua_next(L, -2) != 0;) {
        lua_pop(L, 1);
        lua_pushvalue(L, -1);
        lua_pushnil(L);
        lua_rawset(L, -4); // a field that is there may be cleared within a traversal
    }
    lua_pop(L, 3);
}

#endif

constexpr luaL_Reg replaced[] = {{"load", load},
                                 {"loadstring", loadString},
                                 {"loadfile", loadFile},
                                 {"dofile", doFile},
                                 {nullptr, nullptr}};

} // namespace

void openUntrustedLibraries(lua_State* L)
{
    lua_tinker::refuse_precompiled(L);
    open(L, "", luaopen_base);
    open(L, LUA_LOADLIBNAME, luaopen_package);
    open(L, LUA_TABLIBNAME, luaopen_table);
    open(L, LUA_STRLIBNAME, luaopen_string);
    open(L, LUA_MATHLIBNAME, luaopen_math);
    open(L, LUA_OSLIBNAME, luaopen_os);
#if defined(LUAJIT_VERSION)
    open(L, LUA_BITLIBNAME, luaopen_bit);
    hideForeignFunctions(L);
#endif
    keepOnly(L, LUA_OSLIBNAME, ofSystem);
    keepOnly(L, LUA_LOADLIBNAME, ofPackage);
    for (const char* name : goneGlobals) {
        lua_pushnil(L);
        lua_setglobal(L, name);
    }
    for (const luaL_Reg* entry = replaced; entry->name; ++entry)
        lua_register(L, entry->name, entry->func);

    // The first finds what scripts have put into "package.preload"; native modules are the others' affair.
    lua_getglobal(L, LUA_LOADLIBNAME);
    lua_getfield(L, -1, "loaders");
    for (int i = static_cast<int>(lua_objlen(L, -1)); i > 2; --i) {
        lua_pushnil(L);
        lua_rawseti(L, -2, i);
    }
    lua_pushcfunction(L, findModule);
    lua_rawseti(L, -2, 2);
    lua_pop(L, 1);
    // Nothing of this machine's own folders, which are neither the installation nor the project.
    lua_pushnil(L);
    lua_setfield(L, -2, "path");
    lua_pop(L, 1);
}

} // namespace quorlua

#include "Protected.h"
#include "ReadFile.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <exception>
#include <new>
#include <string>

namespace lua_tinker {
namespace {

// How many bytes stand before the chunk. The line end of a '#' line stays, so that lines keep their numbers,
// unless precompiled code follows.
std::size_t skipped(const std::string& bytes)
{
    std::size_t at = bytes.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    if (at >= bytes.size() || bytes[at] != '#') return at;
    at = bytes.find('\n', at);
    if (at == std::string::npos) return bytes.size();
    return at + 1 < bytes.size() && bytes[at + 1] == LUA_SIGNATURE[0] ? at + 1 : at;
}

struct Chunk {
    const char* data;
    std::size_t length;
    const char* name;
    // Raised instead of running the chunk when it is not null.
    const char* problem;
};

bool isTextOnly(lua_State* L)
{
    detail::pushKept(L, detail::Kept::TextOnly);
    const bool textOnly = lua_toboolean(L, -1) != 0;
    lua_pop(L, 1);
    return textOnly;
}

void runChunk(lua_State* L, void* data)
{
    const auto* chunk = static_cast<const Chunk*>(data);
    if (chunk->problem) {
        lua_pushstring(L, chunk->problem);
        lua_error(L);
    }
    if (chunk->length > 0 && chunk->data[0] == LUA_SIGNATURE[0] && isTextOnly(L)) {
        lua_pushfstring(L, "%s: a precompiled chunk is refused",
                        chunk->name + (chunk->name[0] == '@' ? 1 : 0));
        lua_error(L);
    }
    if (luaL_loadbuffer(L, chunk->data, chunk->length, chunk->name) != 0) lua_error(L);
    lua_call(L, 0, 0);
}

} // namespace

void refuse_precompiled(lua_State* L)
{
    if (!L) return;
    lua_pushboolean(L, 1);
    detail::keep(L, detail::Kept::TextOnly);
}

int dofile(lua_State* L, const char* path)
{
    if (!L) return LUA_ERRFILE;
    Chunk chunk{nullptr, 0, nullptr, "cannot open the script: it has no name"};
    std::string bytes;
    std::string name;
    std::string problem;
    if (path) {
        try {
            name = std::string("@") + path;
            bytes = detail::readFile(path, problem);
            const std::size_t from = skipped(bytes);
            chunk = {bytes.data() + from, bytes.size() - from, name.c_str(),
                     problem.empty() ? nullptr : problem.c_str()};
        } catch (const std::exception&) {
            chunk.problem = "cannot read the script: not enough memory";
        }
    }
    return detail::runReported(L, runChunk, &chunk);
}

int dobuffer(lua_State* L, const char* data, std::size_t length, const char* chunkName)
{
    if (!L) return LUA_ERRFILE;
    Chunk chunk{data, length, chunkName ? chunkName : "buffer",
                data ? nullptr : "cannot run the script: it has no text"};
    return detail::runReported(L, runChunk, &chunk);
}

} // namespace lua_tinker

#include "Protected.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <cerrno>
#include <exception>
#include <new>
#include <string>
#include <system_error>

#if defined(_WIN32)
#include <cstdio>
#include <sys/stat.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace lua_tinker {
namespace {

std::string reason(int error)
{
    return std::generic_category().message(error);
}

std::string cannot(const char* action, const char* path, const std::string& why)
{
    return std::string("cannot ") + action + ' ' + path + ": " + why;
}

#if defined(_WIN32)

// The whole file; on failure `problem` is not empty. Throws std::bad_alloc.
std::string readFile(const char* path, std::string& problem)
{
    std::string bytes;
    struct _stat64 status;
    if (_stat64(path, &status) != 0) {
        problem = cannot("open", path, reason(errno));
        return bytes;
    }
    if ((status.st_mode & _S_IFMT) != _S_IFREG) {
        problem = cannot("open", path, "not a regular file");
        return bytes;
    }
    struct Closer {
        ~Closer()
        {
            if (file) std::fclose(file);
        }
        std::FILE* file;
    } opened{std::fopen(path, "rb")};
    if (!opened.file) {
        problem = cannot("open", path, reason(errno));
        return bytes;
    }
    char part[16384];
    for (std::size_t count; (count = std::fread(part, 1, sizeof part, opened.file)) > 0;)
        bytes.append(part, count);
    if (std::ferror(opened.file)) problem = cannot("read", path, reason(errno));
    return bytes;
}

#else

// The whole file; on failure `problem` is not empty. Throws std::bad_alloc.
std::string readFile(const char* path, std::string& problem)
{
    std::string bytes;
    struct Closer {
        ~Closer()
        {
            if (file >= 0) ::close(file);
        }
        int file;
        // Without waiting: a pipe without a writer would hold the host for ever.
    } opened{::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY)};
    struct stat status {};
    if (opened.file < 0 || ::fstat(opened.file, &status) != 0) {
        problem = cannot("open", path, reason(errno));
        return bytes;
    }
    if (!S_ISREG(status.st_mode)) {
        problem = cannot("open", path, S_ISDIR(status.st_mode) ? reason(EISDIR) : "not a regular file");
        return bytes;
    }
    if (status.st_size > 0 && status.st_size < 0x1000000)
        bytes.reserve(static_cast<std::size_t>(status.st_size));
    char part[16384];
    for (;;) {
        const ssize_t count = ::read(opened.file, part, sizeof part);
        if (count > 0) {
            bytes.append(part, static_cast<std::size_t>(count));
        } else if (count == 0) {
            return bytes;
        } else if (errno != EINTR) {
            problem = cannot("read", path, reason(errno));
            return bytes;
        }
    }
}

#endif

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

void runChunk(lua_State* L, void* data)
{
    const auto* chunk = static_cast<const Chunk*>(data);
    if (chunk->problem) {
        lua_pushstring(L, chunk->problem);
        lua_error(L);
    }
    if (luaL_loadbuffer(L, chunk->data, chunk->length, chunk->name) != 0) lua_error(L);
    lua_call(L, 0, 0);
}

} // namespace

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
            bytes = readFile(path, problem);
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

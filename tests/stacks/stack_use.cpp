// How much of a thread's stack scripts take that recurse in the interpreter's own code: in its plain state,
// and in one of the library's. Each is run in a process of its own, as some end theirs.

#include <QuorScriptor/QuorScriptor.h>
#include <cstdio>
#include <cstring>
#include <lua.hpp>
#include <pthread.h>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr std::size_t largeStack = std::size_t{8} << 20;
constexpr std::size_t smallStack = std::size_t{256} << 10;
constexpr unsigned char untouched = 0xA5;

struct Row {
    const char* what;
    const char* chunk;
};

constexpr Row rows[] = {
    {"nothing", "local nothing"},
    {"190 nested functions in a source text", "loadstring(('function f() '):rep(190) .. (' end'):rep(190))"},
    {"protected calls within protected calls", "local function f() return (pcall(f)) end f()"},
    {"coroutines within coroutines", "local function f() return (coroutine.wrap(f)()) end pcall(f)"},
    {"`table.sort` within its own comparison",
     "local function f() table.sort({1, 2, 3}, f) return true end pcall(f)"},
    {"`string.gsub` within its own callback",
     "local function f(s) return (s:gsub('.', f)) end pcall(f, 'a')"},
    {"nested functions within callbacks of `string.gsub`",
     "local function f(s) loadstring(('function f() '):rep(190) .. (' end'):rep(190)) "
     "return (s:gsub('.', f)) end pcall(f, 'a')"},
    {"a pattern of 10,000 repetitions", "local s = ('a'):rep(10000) pcall(s.find, s, ('a?'):rep(10000))"},
    {"a pattern of 300,000 repetitions", "local s = ('a'):rep(300000) pcall(s.find, s, ('a?'):rep(300000))"},
    {"`unpack({}, 0, 2^31 - 1)`", "pcall(unpack, {}, 0, 2^31 - 1)"},
};

void* runPlain(void* given)
{
    lua_State* L = luaL_newstate();
    luaL_openlibs(L);
    const char* chunk = static_cast<const Row*>(given)->chunk;
    const int status = luaL_dostring(L, chunk);
    lua_close(L);
    return status == 0 ? given : nullptr;
}

void* runInLibrary(void* given)
{
    QuorGlibScriptor scriptor;
    std::string chunk = static_cast<const Row*>(given)->chunk;
    const quor_binary buffer{static_cast<int>(chunk.size()), chunk.data()};
    return scriptor.loadBuffer(buffer, 100, false) == Quor::GlibStatus::Ok ? given : nullptr;
}

/// The bytes of a new thread's stack of `stackSize` that a row touches, by what is left of a pattern; ends
/// the process when the row does not run to its end.
std::size_t touchedBy(void* (*run)(void*), const Row& row, std::size_t stackSize)
{
    void* block = mmap(nullptr, stackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (block == MAP_FAILED) _exit(2);
    auto* bytes = static_cast<unsigned char*>(block);
    mprotect(bytes, 4096, PROT_NONE);
    std::memset(bytes + 4096, untouched, stackSize - 4096);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, block, stackSize);
    pthread_t thread;
    void* result = nullptr;
    const bool ran = pthread_create(&thread, &attributes, run, const_cast<Row*>(&row)) == 0 &&
                     pthread_join(thread, &result) == 0 && result;
    if (!ran) _exit(2);
    std::size_t low = 4096;
    while (low < stackSize && bytes[low] == untouched)
        ++low;
    return stackSize - low;
}

/// The kilobytes as a text, or how the process ended that was to find them.
std::string kilobytes(void* (*run)(void*), const Row& row, std::size_t stackSize)
{
    int ends[2];
    if (pipe(ends) != 0) return "no pipe";
    const pid_t child = fork();
    if (child == 0) {
        const std::size_t touched = touchedBy(run, row, stackSize);
        _exit(write(ends[1], &touched, sizeof touched) == sizeof touched ? 0 : 2);
    }
    close(ends[1]);
    std::size_t touched = 0;
    const bool told = read(ends[0], &touched, sizeof touched) == sizeof touched;
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (told) return std::to_string((touched + 1023) / 1024);
    return WIFSIGNALED(status) ? "a crash" : "it failed";
}

} // namespace

int main()
{
    std::printf("%-55s %18s %18s %18s\n", "KB of a thread's stack", "interpreter, 8 MB", "library, 8 MB",
                "library, 256 KB");
    std::fflush(stdout); // or each child prints it, too
    for (const Row& row : rows) {
        std::printf("%-55s %18s %18s %18s\n", row.what, kilobytes(runPlain, row, largeStack).c_str(),
                    kilobytes(runInLibrary, row, largeStack).c_str(),
                    kilobytes(runInLibrary, row, smallStack).c_str());
        std::fflush(stdout);
    }
    return 0;
}

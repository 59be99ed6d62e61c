// Files that fail between their query and their end: the system's calls are decorated here, and fail in turn.

#include "../../scriptor/scriptor_fixture.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <cerrno>
#include <cstdarg>
#include <dlfcn.h>
#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// The calls of this thread that look at files, while they are counted.
struct Calls {
    bool areCounted = false;
    int made = 0;
    int failing = -1; ///< the first that fails
    bool once = false;
    int error = 0;
    std::function<void(int call)> before;

    /// Whether the call that is made now fails.
    bool fails()
    {
        if (!areCounted) return false;
        const int call = made++;
        areCounted = false; // what is done before makes calls as well
        if (before) before(call);
        areCounted = true;
        if (failing < 0 || call < failing || (once && call > failing)) return false;
        errno = error;
        return true;
    }
};
thread_local Calls calls;

template<class Function>
Function* next(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

#define DECORATED extern "C" __attribute__((visibility("default")))

DECORATED int stat(const char* path, struct stat* status) noexcept
{
    return calls.fails() ? -1 : next<int(const char*, struct stat*)>("stat")(path, status);
}

DECORATED int fstat(int file, struct stat* status) noexcept
{
    return calls.fails() ? -1 : next<int(int, struct stat*)>("fstat")(file, status);
}

DECORATED ssize_t read(int file, void* bytes, std::size_t size)
{
    return calls.fails() ? -1 : next<ssize_t(int, void*, std::size_t)>("read")(file, bytes, size);
}

DECORATED int open(const char* path, int flags, ...)
{
    va_list more;
    va_start(more, flags);
    const int mode = (flags & O_CREAT) != 0 ? va_arg(more, int) : 0;
    va_end(more);
    return calls.fails() ? -1 : next<int(const char*, int, ...)>("open")(path, flags, mode);
}

namespace {

/// Longer than what is read at once.
const std::string script = "first = {} " + std::string(20000, ' ') + "second = {} " +
                           std::string(20000, ' ') + "function main() return {} end";

class Files : public testing::Test {
protected:
    Files() : path(folder.write("script.lua", script))
    {
        lua_tinker::set_error_outlet([](const char*, std::size_t, void*) {}, nullptr);
    }
    ~Files() override
    {
        calls = Calls();
        lua_tinker::set_error_outlet(nullptr, nullptr);
    }

    /// Runs an operation with what was said of its calls; the calls are as ever after it.
    template<class Operation>
    Quor::GlibStatus counted(Operation operation)
    {
        calls.made = 0;
        calls.areCounted = true;
        const Quor::GlibStatus status = operation();
        calls.areCounted = false;
        return status;
    }

    static bool holds(QuorGlibScriptor& scriptor, const char* expression)
    {
        return luatext::shown(scriptor.getLua(false), expression) == "true";
    }

    Quor::GlibStatus load(QuorGlibScriptor& scriptor)
    {
        return counted([&] { return scriptor.loadFile(path.c_str(), false); });
    }

    ScriptFolder folder;
    const std::string path;
};

TEST_F(Files, WhoseCallsFailEndInAStatus)
{
    int attempts = 0;
    for (const bool once : {true, false}) {
        for (const int error : {EIO, EACCES, ENOENT, EMFILE, ENAMETOOLONG, ELOOP, EOVERFLOW, ENOMEM}) {
            for (int failing = 0;; ++failing, ++attempts) {
                QuorGlibScriptor scriptor;
                calls.failing = failing;
                calls.once = once;
                calls.error = error;
                const Quor::GlibStatus status = load(scriptor);
                if (calls.made <= failing) {
                    EXPECT_EQ(status, Quor::Ok);
                    EXPECT_GT(calls.made, 4) << "the query, opening, its query, and reading in parts";
                    break;
                }
                EXPECT_EQ(status, failing == 0 ? Quor::FileNotExamined : Quor::ScriptFailed) << failing;
                EXPECT_TRUE(holds(scriptor, "first == nil and main == nil")) << "a part of a script runs not";
                EXPECT_EQ(scriptor.getFileName() != nullptr, failing > 0);
                EXPECT_EQ(lua_gettop(scriptor.getLua(false)), 1);
                // The time of a load that failed counts, so that it is asked for by a reload.
                calls.failing = -1;
                EXPECT_EQ(scriptor.loadFile(path.c_str(), false), Quor::Ok);
                if (failing > 0) {
                    EXPECT_EQ(scriptor.reloadLua(0), Quor::Ok);
                }
                EXPECT_TRUE(holds(scriptor, "second ~= nil and main ~= nil"));
            }
        }
    }
    RecordProperty("attempts", attempts);
    EXPECT_GT(attempts, 60);
}

TEST_F(Files, WhoseCallsFailInAReloadLeaveWhatWasLoaded)
{
    for (const bool recreate : {false, true}) {
        for (int failing = 0;; ++failing) {
            QuorGlibScriptor scriptor;
            ASSERT_EQ(scriptor.loadFile(path.c_str(), false), Quor::Ok);
            calls.failing = failing;
            calls.error = EIO;
            const Quor::GlibStatus status = counted([&] { return scriptor.reloadLua(recreate ? 1 : 0); });
            calls.failing = -1;
            if (status == Quor::Ok) break;
            EXPECT_EQ(status, failing == 0 ? Quor::FileNotExamined : Quor::ScriptFailed) << failing;
            const bool isNew = recreate && failing > 0;
            EXPECT_EQ(holds(scriptor, "first ~= nil and second ~= nil and main ~= nil"), !isNew) << failing;
            EXPECT_EQ(holds(scriptor, "first == nil and second == nil and main == nil"), isNew) << failing;
        }
    }
}

TEST_F(Files, AreReadOnWhenASignalCameBetween)
{
    for (int failing = 3; failing < 6; ++failing) {
        QuorGlibScriptor scriptor;
        calls.failing = failing;
        calls.once = true;
        calls.error = EINTR;
        EXPECT_EQ(load(scriptor), Quor::Ok) << failing;
        EXPECT_TRUE(holds(scriptor, "second ~= nil and main ~= nil"));
    }
}

/// What becomes of a file behind its query.
struct Change {
    const char* name;
    void (*make)(const std::string& path);
    Quor::GlibStatus status;
    const char* holds; ///< afterwards
};

const Change changes[] = {
    {"vanishes", [](const std::string& path) { std::filesystem::remove(path); }, Quor::ScriptFailed,
     "first == nil"},
    {"becomes a folder",
     [](const std::string& path) {
         std::filesystem::remove(path);
         std::filesystem::create_directory(path);
     },
     Quor::ScriptFailed, "first == nil"},
    {"becomes a pipe",
     [](const std::string& path) {
         std::filesystem::remove(path);
         mkfifo(path.c_str(), 0600);
     },
     Quor::ScriptFailed, "first == nil"},
    {"becomes a link to itself",
     [](const std::string& path) {
         std::filesystem::remove(path);
         std::filesystem::create_symlink(path, path);
     },
     Quor::ScriptFailed, "first == nil"},
    {"is emptied", [](const std::string& path) { std::filesystem::resize_file(path, 0); }, Quor::Ok,
     "first == nil"},
    {"is cut within a word", [](const std::string& path) { std::filesystem::resize_file(path, 3); },
     Quor::ScriptFailed, "first == nil"},
    {"is cut between statements", [](const std::string& path) { std::filesystem::resize_file(path, 11); },
     Quor::Ok, "first ~= nil and second == nil"},
    {"is replaced", [](const std::string& path) { std::ofstream(path, std::ios::trunc) << "other = 1"; },
     Quor::Ok, "first == nil and other == 1"},
};

TEST_F(Files, ThatChangeBetweenQueryAndReadingAreTakenAsTheyAreThen)
{
    for (const Change& change : changes) {
        std::filesystem::remove_all(path);
        folder.write("script.lua", script);
        QuorGlibScriptor scriptor;
        calls.before = [&](int call) {
            if (call == 1) change.make(path);
        };
        EXPECT_EQ(load(scriptor), change.status) << change.name;
        EXPECT_TRUE(holds(scriptor, change.holds)) << change.name;
        EXPECT_EQ(scriptor.getFileName(), path) << change.name;
    }
    std::filesystem::remove_all(path);
}

TEST_F(Files, ThatAreCutWhileTheyAreReadEndInAStatus)
{
    struct Cut {
        std::uintmax_t length;
        Quor::GlibStatus status;
    };
    constexpr Quor::GlibStatus withinAStatement = Quor::ScriptFailed;
    for (const auto& [length, status] : {Cut{0, Quor::Ok}, Cut{11, Quor::Ok}, Cut{16000, Quor::Ok},
                                         Cut{20020, withinAStatement}, Cut{30000, Quor::Ok}}) {
        folder.write("script.lua", script);
        QuorGlibScriptor scriptor;
        calls.before = [&path = path, length = length](int call) {
            if (call == 4) std::filesystem::resize_file(path, length); // a first part has been read
        };
        EXPECT_EQ(load(scriptor), status) << length;
        EXPECT_TRUE(holds(scriptor, "main == nil")) << length;
        EXPECT_EQ(holds(scriptor, "first ~= nil"), status == Quor::Ok) << length;
        EXPECT_EQ(holds(scriptor, "second ~= nil"), length == 30000) << length;
    }
}

TEST_F(Files, OfEveryNameAreLoadedOrNotExamined)
{
    const std::string notInTheCodePage = folder.write("\xFF\xFE\x80.lua", "loaded = true");
    const std::string tooLong = folder.path(std::string(300, 'n'));
    const std::string farTooLong = folder.path(std::string(100000, 'n'));
    QuorGlibScriptor scriptor;
    EXPECT_EQ(scriptor.loadFile(notInTheCodePage.c_str(), false), Quor::Ok);
    EXPECT_TRUE(holds(scriptor, "loaded"));
    EXPECT_EQ(scriptor.loadFile(tooLong.c_str(), false), Quor::FileNotExamined);
    EXPECT_EQ(scriptor.loadFile(farTooLong.c_str(), false), Quor::FileNotExamined);
    EXPECT_EQ(scriptor.getFileName(), notInTheCodePage);
}

} // namespace

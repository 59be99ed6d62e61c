// Load, call, parse, error and reload, again and again in one process: soak [CYCLES]. What it holds after the
// last cycle is what it held after the first ones; the last line counts the checks.

#include "../system.h"
#include "Process.h"

#include <QuorCommon/QuorCommon.h>
#include <QuorMsgHandle/QuorMsgHandle.h>
#include <QuorPrimary/QuorPrimary.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/QuorScriptor.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr long defaultCycles = 1000000;
constexpr long settledAfter = 10000; ///< or the half of fewer cycles

constexpr char componentScript[] = R"(
    param, glb, skey = { P1 = 1 }, { smrtlntype = 'PIPE' }, { quantumUnit = { 'P3' }, angleUnit = {} }
    notes = { P1 = { 'length', 100 }, angle = 30 }
    function draw()
        return { { 300, 5 }, { 400, 'steel' }, { 10, { 0, 0, 0 }, param.P1 }, { 19, 1, { 1, 2, 3 }, 'DN50', { 1, 0, 0 } },
            { 40, { { 16, { 0, 0, 0 }, { 1, 0, 0 } }, { 10, 'no point', 5 } } } }
    end
    function keypoint() return { { 1, 5, { 0, 0, 0 } }, { 1, 6, { 1, 2, 3 } }, { 2, 7, { 1, 2, 3 } } } end
    function answer(text) return text .. '!', { 1, 2, 3 }, { P1 = 1, P2 = 'x' } end
    function fail() error({ 'not a text' }) end
    function failInText() return nil + 1 end
)";
constexpr char brokenScript[] = "function draw( return {";
constexpr char configScript[] = R"(
    function initConfig(text) last = text end
    function getProjectSpec(module, name) return module .. name end
    function getProjectAttr() error('no attribute') end
)";

int passed = 0;
int failed = 0;

void check(bool holds, const char* what)
{
    ++(holds ? passed : failed);
    if (!holds) std::printf("failed: %s\n", what);
}

/// A step that goes otherwise than it must ends the run: the rest would prove nothing.
void must(bool holds, const char* what, long cycle)
{
    if (holds) return;
    std::printf("failed in cycle %ld: %s\n0 passed, 1 failed\n", cycle, what);
    std::exit(1);
}

class Folder {
public:
    Folder() : folder_(sys::makeFolder("quor-soak")) { std::filesystem::create_directories(folder_ / "bin"); }
    ~Folder() { std::filesystem::remove_all(folder_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string write(const std::string& name, const char* bytes) const
    {
        const std::string path = sys::join(folder_, name);
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }
    std::string path() const { return folder_.string(); }

private:
    std::filesystem::path folder_;
};

struct Registry {
    std::size_t length = 0;
    int entries = 0;
    friend bool operator==(const Registry&, const Registry&) = default;
};

Registry registryOf(lua_State* L)
{
    Registry registry{lua_objlen(L, LUA_REGISTRYINDEX), 0};
    for (lua_pushnil(L); lua_next(L, LUA_REGISTRYINDEX) != 0; lua_pop(L, 1))
        ++registry.entries;
    return registry;
}

struct Held {
    std::size_t bytes = 0;
    int files = 0;
    int luaKilobytes = 0;
    Registry registry;
};

class Soak {
public:
    Soak()
    {
        QuorSystem::setInstallationFolder(folder_.path().c_str());
        QuorSystem::setProjectFolder(folder_.path().c_str());
        kxcom::setMessageSink([](const char*, void*) {}, nullptr);
        lua_tinker::set_error_outlet([](const char*, std::size_t, void*) {}, nullptr);
        std::ifstream serializer(QUOR_SOURCE_DIR "/sample/installation/bin/serialObject.lua",
                                 std::ios::binary);
        std::ofstream(folder_.path() + "/bin/serialObject.lua", std::ios::binary) << serializer.rdbuf();
        folder_.write("bin/one.lua", configScript);
        folder_.write("bin/other.lua", configScript);
        must(loadOf(component_, 0) == Quor::Ok, "the component loads", 0);
        name_ = scriptor_.getFileName();
    }

    void cycle(long number)
    {
        reload(number);
        callAndParse(number);
        fail(number);
        callByFormat(number);
        serialize(number);
        if (number % 100 == 0) replaceFiles(number);
        if (number % 100 == 50) configure(number);
    }

    Held held()
    {
        quorconfig::freeThreadConfig(quorsys::currentThreadId());
        quorlua::LuaSerialize::clear();
        lua_gc(quorlua::LuaSerialize::getLua(), LUA_GCCOLLECT, 0);
        must(scriptor_.reloadLua(1) == Quor::Ok, "the file runs in a new state", -1);
        must(scriptor_.reloadLua(0) == Quor::Ok, "the file runs again", -1);
        lua_State* L = scriptor_.getLua(true);
        must(scriptor_.callSeg("fail") == Quor::ScriptFailed, "the segment fails", -1);
        lua_gc(L, LUA_GCCOLLECT, 0);
        lua_gc(L, LUA_GCCOLLECT, 0);
        return {process::bytesInUse(), process::openFiles(), lua_gc(L, LUA_GCCOUNT, 0), registryOf(L)};
    }

    /// Whether the file's name is the block that it was from the start.
    bool hasSameName() const { return scriptor_.getFileName() == name_; }

private:
    Quor::GlibStatus loadOf(const std::string& file, long number, bool recreate = false)
    {
        must(sys::setFileTime(file, 1000000 + 10 * number), "the file's time is set", number);
        return scriptor_.loadFile(file.c_str(), recreate);
    }

    void reload(long number)
    {
        must(loadOf(component_, number, number % 20 == 0) == Quor::Ok, "the file runs again", number);
    }

    void callAndParse(long number)
    {
        const double values[23] = {1, 2, 3};
        must(scriptor_.setParams(values, 1000), "parameters are written", number);
        must(scriptor_.setKeyValues({{"P1", "", KVValue::ofDouble(2)}, {"name", "", KVValue::ofString("x")}},
                                    2),
             "named parameters are written", number);
        std::vector<QuorPrimary*> drawn;
        must(scriptor_.callSeg3D("draw", drawn) == Quor::Ok && drawn.size() == 3, "the segment draws",
             number);
        for (const QuorPrimary* primitive : drawn)
            delete primitive;
        std::vector<Keypoint> keypoints;
        must(scriptor_.getKeypoints(keypoints) == Quor::Ok && keypoints.size() == 2, "there are key points",
             number);
        std::vector<KVParams> records;
        must(scriptor_.getParams_note("notes", records) == Quor::Ok && records.size() == 1, "notes are read",
             number);
        must(scriptor_.callSeg("draw", records) == Quor::Ok, "a segment leaves its result", number);
        lua_pop(scriptor_.getLua(false), 1);
    }

    void fail(long number)
    {
        must(scriptor_.callSeg("fail") == Quor::ScriptFailed, "an error fails a segment", number);
        must(scriptor_.callSeg("failInText") == Quor::ScriptFailed, "another one, too", number);
        must(scriptor_.callSeg("nothing") == Quor::SegmentMissing, "a segment is missing", number);
        kxcom::clearQuorLastError();
    }

    void callByFormat(long number)
    {
        lua_State* L = scriptor_.getLua(false);
        const std::string given = "text" + std::to_string(number % 1000);
        char* text = nullptr;
        KxGePoint3D point;
        std::vector<KVParams> records;
        must(quorlua::callLua<"s>spm">(L, "answer", given.c_str(), &text, &point, &records) &&
                 text == given + "!" && records.size() == 2,
             "a function answers", number);
        std::free(text);
        must(!quorlua::callLua<"s>s">(L, "fail", "x", &text), "a function fails", number);
        const KxDbObjectId id(number % 50);
        quorlua::initObjectIdInState(L, nullptr);
        must(quorlua::requireObjectIdInState(L, id, nullptr), "an object gets a table", number);
        lua_pop(L, 1);
        must(lua_gettop(L) == 1, "the stack is as high as before", number);
    }

    static void serialize(long number)
    {
        quorlua::LuaSerialize::clear();
        must(quorlua::LuaSerialize::unSerial("quor-table 1 {1,\"x\"={true}}"), "a text is read", number);
        const char* text = quorlua::LuaSerialize::serial(lua_gettop(quorlua::LuaSerialize::getLua()));
        must(text && std::string(text) == "quor-table 1 {1,\"x\"={true}}", "the same text is written",
             number);
    }

    /// Other files in place of the one, one that is broken among them, and other scriptors beside this one.
    void replaceFiles(long number)
    {
        must(loadOf(second_, number) == Quor::Ok, "another file takes its place", number);
        must(loadOf(broken_, number) == Quor::ScriptFailed, "a broken file fails", number);
        must(loadOf(component_, number, true) == Quor::Ok, "the first file comes back", number);
        QuorGlibScriptor first;
        QuorGlibScriptor other;
        must(first.loadFile(second_.c_str(), false) == Quor::Ok, "another scriptor loads", number);
        std::string bytes = componentScript;
        must(other.loadBuffer({static_cast<int>(bytes.size()), bytes.data()}, 1000, false) == Quor::Ok,
             "another scriptor takes a buffer", number);
    }

    static void configure(long number)
    {
        using namespace quorconfig;
        quorconfig::allocThreadConfig(quorsys::currentThreadId());
        must(initConfig("one.lua", "a", "b", "c") && initConfig("other.lua", "a", nullptr, nullptr),
             "configuration scripts run", number);
        const TempPermitNull permitted;
        const char* spec = getProjectSpec("pipe", "x");
        must(spec && std::string(spec) == "pipex", "the configuration answers", number);
        must(!getProjectAttr("pipe", "x"), "no answer is null", number);
        quorconfig::freeThreadConfig(quorsys::currentThreadId());
    }

    Folder folder_;
    std::string component_ = folder_.write("component.lua", componentScript);
    std::string second_ = folder_.write("second.lua", componentScript);
    std::string broken_ = folder_.write("broken.lua", brokenScript);
    QuorGlibScriptor scriptor_;
    const char* name_ = nullptr;
};

void print(long cycle, const Held& held)
{
    std::printf(
        "after %ld cycles: %zu bytes, %d files open, %d KB in the state, a registry of %zu and %d entries\n",
        cycle, held.bytes, held.files, held.luaKilobytes, held.registry.length, held.registry.entries);
}

} // namespace

int main(int argc, char** argv)
{
    std::setvbuf(stdout, nullptr, _IONBF, 0); // its buffer would count
    const long cycles = argc > 1 ? std::atol(argv[1]) : defaultCycles;
    const long first = std::min(settledAfter, cycles / 2);
    must(first > 0, "there are two cycles at least", 0);
    Soak soak;
    for (long i = 1; i <= first; ++i)
        soak.cycle(i);
    const Held before = soak.held();
    print(first, before);
    for (long i = first + 1; i <= cycles; ++i)
        soak.cycle(i);
    const Held after = soak.held();
    print(cycles, after);

    const double growth = 100.0 * (static_cast<double>(after.bytes) / static_cast<double>(before.bytes) - 1);
    std::printf("memory: %+.3f %%\n", growth);
    check(growth > -1 && growth < 1, "memory is within 1 % of what it was");
    check(after.luaKilobytes <= before.luaKilobytes + before.luaKilobytes / 100 + 1,
          "so is that of the state");
    check(after.files == before.files, "no file stays open");
    check(after.registry == before.registry, "no reference stays in the registry");
    check(soak.hasSameName(), "a file that comes back has the name that it had");
    std::printf("%d passed, %d failed\n", passed, failed);
    return failed == 0 ? 0 : 1;
}

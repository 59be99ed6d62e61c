#include "scriptor_fixture.h"

#include <stdexcept>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class LoadFile : public Scriptor {
protected:
    LoadFile() { scriptor.setLoadFileCallbk(&counter); }

    int load(const std::string& path, bool recreate = false)
    {
        if (!state()) return scriptor.loadFile(path.c_str(), recreate);
        const int status = scriptor.loadFile(path.c_str(), recreate);
        EXPECT_EQ(height(), 1);
        return status;
    }
    int reload(int bits)
    {
        const int status = scriptor.reloadLua(bits);
        EXPECT_EQ(height(), 1);
        return status;
    }

    /// A script that counts its runs in the state, last changed at second 1000.
    std::string counting() const { return folder.write("counting.lua", "runs = (runs or 0) + 1", 1000); }

    ScriptFolder folder;
    LoadCounter counter;
};

TEST_F(LoadFile, RunsAFileAndTellsTheCallback)
{
    EXPECT_EQ(scriptor.getFileName(), nullptr);
    EXPECT_EQ(scriptor.get_mtime(), 0);
    const std::string path = counting();
    EXPECT_EQ(load(path), Quor::Ok);
    EXPECT_EQ(shown("runs"), "1");
    EXPECT_EQ(counter.count, 1);
    EXPECT_EQ(counter.state, state());
    EXPECT_EQ(scriptor.getFileName(), path);
    EXPECT_EQ(scriptor.get_mtime(), 1000);
}

TEST_F(LoadFile, WorksWithoutACallback)
{
    EXPECT_EQ(scriptor.getLoadFileCallbk(), &counter);
    scriptor.setLoadFileCallbk(nullptr);
    EXPECT_EQ(scriptor.getLoadFileCallbk(), nullptr);
    EXPECT_EQ(load(counting()), Quor::Ok);
    EXPECT_EQ(shown("runs"), "1");
}

TEST_F(LoadFile, IsDoneWhenTheCallbackThrows)
{
    struct Thrower final : FunctionRightAfterLoadFile {
        void loaded(lua_State*) override { throw std::runtime_error("the host's own"); }
    } thrower;
    scriptor.setLoadFileCallbk(&thrower);
    EXPECT_EQ(load(counting()), Quor::Ok);
    EXPECT_EQ(shown("runs"), "1");
}

TEST_F(LoadFile, RefusesANullPath)
{
    EXPECT_EQ(scriptor.loadFile(nullptr, false), Quor::InvalidArgument);
    EXPECT_EQ(scriptor.loadFile(nullptr, true), Quor::InvalidArgument);
    EXPECT_EQ(scriptor.getFileName(), nullptr);
    EXPECT_EQ(counter.count, 0);
}

TEST_F(LoadFile, CannotExamineWhatIsNotThere)
{
    folder.write("file.lua", "");
    sys::makeLink(folder.path("nowhere"),
                  folder.path("dangling.lua")); // where none is made, nothing is there
    for (const std::string& path : {std::string(), folder.path("missing.lua"), folder.path("missing/x.lua"),
                                    folder.path("file.lua/x.lua"), folder.path("dangling.lua")}) {
        EXPECT_EQ(load(path), Quor::FileNotExamined) << path;
        EXPECT_EQ(scriptor.getFileName(), nullptr) << path;
    }
    EXPECT_EQ(counter.count, 0);
    EXPECT_THAT(alerts, IsEmpty());
}

TEST_F(LoadFile, FailsOnWhatIsNoReadableFile)
{
    const sys::Obstacle obstacle(folder.path("obstacle"));
    std::vector<std::string> paths = {folder.path(), folder.path("obstacle")};
#if defined(_WIN32)
    for (const std::string& device : sys::devices())
        EXPECT_EQ(load(device), Quor::FileNotExamined) << "devices have no time there";
#else
    paths.emplace_back("/proc/self/mem");
    for (const std::string& device : sys::devices())
        paths.push_back(device);
#endif
    const std::string unreadable = folder.write("unreadable.lua", "");
    std::filesystem::permissions(unreadable, std::filesystem::perms::none);
    // No permission keeps the superuser out.
    if (!std::ifstream(unreadable)) paths.push_back(unreadable);
    for (const std::string& path : paths) {
        alerts.clear();
        EXPECT_EQ(load(path), Quor::ScriptFailed) << path;
        EXPECT_EQ(scriptor.getFileName(), path) << "the name is stored before the script runs";
        EXPECT_EQ(alerts.size(), 1u) << path;
    }
    EXPECT_EQ(counter.count, 0);
    // Or it could not be removed on every system.
    std::filesystem::permissions(unreadable, std::filesystem::perms::owner_all);
}

TEST_F(LoadFile, FailsOnASyntaxError)
{
    EXPECT_EQ(load(folder.write("bad.lua", "ran = 1\n= 2")), Quor::ScriptFailed);
    EXPECT_EQ(shown("ran"), "nil");
    EXPECT_EQ(counter.count, 0);
    EXPECT_THAT(alerts, ElementsAre(HasSubstr("bad.lua:2:")));
}

TEST_F(LoadFile, KeepsWhatARunDefinedBeforeItFailed)
{
    run("earlier = 1");
    EXPECT_EQ(load(folder.write("raises.lua", "ran = 1\nerror('broken')", 1000)), Quor::ScriptFailed);
    EXPECT_EQ(shown("ran"), "1");
    EXPECT_EQ(shown("earlier"), "1");
    EXPECT_EQ(scriptor.getFileName(), folder.path("raises.lua"));
    EXPECT_EQ(scriptor.get_mtime(), 1000);
    EXPECT_EQ(counter.count, 0);
    EXPECT_THAT(alerts, ElementsAre(HasSubstr("raises.lua:2: broken")));
}

TEST_F(LoadFile, TakesAFailedFileForLoadedUntilItChanges)
{
    const std::string path = folder.write("raises.lua", "error('broken')", 1000);
    EXPECT_EQ(load(path), Quor::ScriptFailed);
    EXPECT_EQ(load(path), Quor::Ok) << "unchanged: nothing is to do";
    EXPECT_EQ(counter.count, 0);
    folder.write("raises.lua", "mended = 1", 1010);
    EXPECT_EQ(load(path), Quor::Ok);
    EXPECT_EQ(shown("mended"), "1");
    EXPECT_EQ(counter.count, 1);
}

TEST_F(LoadFile, FailsOnErrorsOfEveryKind)
{
    for (const char* script : {"error()", "error({})", "error(5)", "error(print)", "local x = nil + 1",
                               "local function f() return 1 + f() end f()", "return coroutine.yield()"}) {
        EXPECT_EQ(load(folder.write("raises.lua", script)), Quor::ScriptFailed) << script;
        EXPECT_EQ(load(folder.write("other.lua", "")), Quor::Ok);
    }
}

TEST_F(LoadFile, RunsAnEmptyFile)
{
    EXPECT_EQ(load(folder.write("empty.lua", "")), Quor::Ok);
    EXPECT_EQ(counter.count, 1);
}

TEST_F(LoadFile, DropsWhatTheScriptReturns)
{
    EXPECT_EQ(load(folder.write("returns.lua", "return 1, 2, {}")), Quor::Ok);
}

TEST_F(LoadFile, RunsPrecompiledCode)
{
    run("return string.dump(loadstring('ran = 7'))", 1);
    std::size_t size = 0;
    const char* bytes = lua_tolstring(state(), -1, &size);
    const std::string path = folder.write("code.luac", std::string(bytes, size));
    lua_pop(state(), 1);
    EXPECT_EQ(load(path), Quor::Ok);
    EXPECT_EQ(shown("ran"), "7");
}

TEST_F(LoadFile, RunsAgainOnlyWhenTheTimeMovedByFiveSecondsOrMore)
{
    struct Case {
        long long seconds;
        long nanoseconds;
        bool runs;
    };
    // The file's time counts in whole seconds, cut off downwards.
    const Case cases[] = {
        {1000, 0, false}, {1000, 999999999, false}, {1004, 0, false},       {1004, 999999999, false},
        {1005, 0, true},  {1005, 1, true},          {1006, 0, true},        {996, 0, false},
        {995, 0, true},   {995, 999999999, true},   {994, 999999999, true}, {0, 0, true},
        {1, 0, true},     {4000000000, 0, true},    {995, 1, true},         {996, 1, false},
    };
    const std::string path = counting();
    for (const Case& now : cases) {
        scriptor.initLua();
        folder.write("other.lua", "", 1);
        EXPECT_EQ(load(folder.path("other.lua")), Quor::Ok);
        folder.setTime("counting.lua", 1000);
        EXPECT_EQ(load(path), Quor::Ok);
        counter.count = 0;
        folder.setTime("counting.lua", now.seconds, now.nanoseconds);
        EXPECT_EQ(load(path), Quor::Ok);
        EXPECT_EQ(shown("runs"), now.runs ? "2" : "1") << now.seconds << " s " << now.nanoseconds << " ns";
        EXPECT_EQ(counter.count, now.runs ? 1 : 0) << now.seconds;
        EXPECT_EQ(scriptor.get_mtime(), now.runs ? now.seconds : 1000) << now.seconds;
    }
}

TEST_F(LoadFile, ComparesWithTheTimeOfTheLastRun)
{
    const std::string path = counting();
    EXPECT_EQ(load(path), Quor::Ok);
    for (const long time : {1003, 1004, 1002}) {
        folder.setTime("counting.lua", time);
        EXPECT_EQ(load(path), Quor::Ok);
    }
    EXPECT_EQ(shown("runs"), "1") << "small steps do not add up";
    folder.setTime("counting.lua", 1005);
    EXPECT_EQ(load(path), Quor::Ok);
    EXPECT_EQ(shown("runs"), "2");
}

TEST_F(LoadFile, RunsAChangedFileInTheSameState)
{
    const std::string path = folder.write("first.lua", "a = 1", 1000);
    EXPECT_EQ(load(path), Quor::Ok);
    folder.write("first.lua", "b = 2", 2000);
    EXPECT_EQ(load(path, false), Quor::Ok);
    EXPECT_EQ(shown("a") + shown("b"), "12");
}

TEST_F(LoadFile, RunsAChangedFileInANewStateWhenAsked)
{
    const std::string path = folder.write("first.lua", "a = 1", 1000);
    EXPECT_EQ(load(path), Quor::Ok);
    EXPECT_EQ(load(path, true), Quor::Ok);
    EXPECT_EQ(shown("a"), "1");
    EXPECT_EQ(counter.count, 1) << "unchanged: no new state either";
    folder.write("first.lua", "b = 2", 2000);
    EXPECT_EQ(load(path, true), Quor::Ok);
    EXPECT_EQ(shown("a") + shown("b"), "nil2");
    EXPECT_EQ(counter.state, state());
}

TEST_F(LoadFile, LayersAnotherFileOverTheFirst)
{
    for (const bool recreate : {false, true}) {
        EXPECT_EQ(load(folder.write("first.lua", "a = 1; both = 'first'"), recreate), Quor::Ok);
        EXPECT_EQ(load(folder.write("second.lua", "b = 2; both = 'second'"), recreate), Quor::Ok);
        EXPECT_EQ(shown("a .. b .. both"), "12second") << recreate;
    }
    EXPECT_EQ(counter.count, 4) << "each was another file than the one before";
}

TEST_F(LoadFile, KeepsTheStateOfTheFirstLoadWhenAskedToRecreate)
{
    run("earlier = 1");
    EXPECT_EQ(load(counting(), true), Quor::Ok);
    EXPECT_EQ(shown("earlier"), "1");
}

TEST_F(LoadFile, TakesAnotherSpellingForAnotherFile)
{
    EXPECT_EQ(load(counting()), Quor::Ok);
    EXPECT_EQ(load(folder.path("./counting.lua")), Quor::Ok);
    EXPECT_EQ(shown("runs"), "2");
}

TEST_F(LoadFile, LoadsByTheNameThatItGaveOut)
{
    EXPECT_EQ(load(counting()), Quor::Ok);
    EXPECT_EQ(scriptor.loadFile(scriptor.getFileName(), false), Quor::Ok);
    EXPECT_EQ(shown("runs"), "1");
}

TEST_F(LoadFile, KeepsTheNameOfAnExaminedFileOnly)
{
    EXPECT_EQ(load(counting()), Quor::Ok);
    EXPECT_EQ(load(folder.path("missing.lua")), Quor::FileNotExamined);
    EXPECT_EQ(scriptor.getFileName(), folder.path("counting.lua"));
    EXPECT_EQ(scriptor.loadFile(nullptr, false), Quor::InvalidArgument);
    EXPECT_EQ(scriptor.getFileName(), folder.path("counting.lua"));
}

TEST_F(LoadFile, LeavesReplacedNamesValid)
{
    const std::string first = folder.write("first.lua", "");
    const std::string second = folder.write("second.lua", "");
    std::vector<const char*> names;
    {
        QuorGlibScriptor other;
        for (const std::string& path : {first, second, first}) {
            EXPECT_EQ(other.loadFile(path.c_str(), false), Quor::Ok);
            EXPECT_EQ(load(path), Quor::Ok);
            names.push_back(other.getFileName());
            names.push_back(scriptor.getFileName());
        }
    }
    const std::string* const paths[] = {&first, &first, &second, &second};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(names[i], *paths[i]) << i;
}

TEST_F(LoadFile, ResetsTheThreadsContextOnceTheFileIsExamined)
{
    const std::string path = counting();
    struct Case {
        const char* what;
        std::string path;
        int colour;
    };
    const Case cases[] = {{"first load", path, 257},
                          {"unchanged", path, 257},
                          {"missing", folder.path("missing.lua"), 7},
                          {"failing", folder.write("bad.lua", "="), 257}};
    for (const Case& now : cases) {
        Primitives none;
        draw("{{300, 7}}", none);
        ASSERT_EQ(currentColour(), 7);
        static_cast<void>(load(now.path));
        EXPECT_EQ(currentColour(), now.colour) << now.what;
    }
    Primitives none;
    draw("{{300, 7}}", none);
    EXPECT_EQ(scriptor.loadFile(nullptr, false), Quor::InvalidArgument);
    EXPECT_EQ(currentColour(), 7);
    EXPECT_EQ(scriptor.reloadLua(0), Quor::ScriptFailed);
    EXPECT_EQ(currentColour(), 257);
}

class ReloadLua : public LoadFile {};

TEST_F(ReloadLua, FailsWithoutAFile)
{
    for (int bits = 0; bits < 4; ++bits)
        EXPECT_EQ(reload(bits), Quor::ScriptFailed) << bits;
    EXPECT_EQ(counter.count, 0);
}

TEST_F(ReloadLua, CannotExamineAFileThatIsGone)
{
    EXPECT_EQ(load(counting()), Quor::Ok);
    std::filesystem::remove(folder.path("counting.lua"));
    EXPECT_EQ(reload(0), Quor::FileNotExamined);
    EXPECT_EQ(reload(3), Quor::FileNotExamined);
    EXPECT_EQ(shown("runs"), "1");
}

TEST_F(ReloadLua, ObeysItsBits)
{
    struct Case {
        int bits;
        long time;
        const char* runs; // "old" survives in the same state only
        const char* old;
        int told;
    };
    const Case cases[] = {
        {0, 1000, "2", "1", 1}, {0, 2000, "2", "1", 1},  {1, 1000, "1", "nil", 1},  {1, 2000, "1", "nil", 1},
        {2, 1000, "1", "1", 0}, {2, 1004, "1", "1", 0},  {2, 996, "1", "1", 0},     {2, 1005, "2", "1", 1},
        {2, 995, "2", "1", 1},  {3, 1000, "1", "1", 0},  {3, 1004, "1", "1", 0},    {3, 1005, "1", "nil", 1},
        {4, 1000, "2", "1", 1}, {-1, 1000, "1", "1", 0}, {-1, 1005, "1", "nil", 1},
    };
    for (const Case& now : cases) {
        scriptor.initLua();
        EXPECT_EQ(load(folder.write("other.lua", "", 1)), Quor::Ok);
        EXPECT_EQ(load(counting()), Quor::Ok);
        run("old = 1");
        counter.count = 0;
        folder.setTime("counting.lua", now.time);
        EXPECT_EQ(reload(now.bits), Quor::Ok);
        EXPECT_EQ(shown("runs"), now.runs) << now.bits << " at " << now.time;
        EXPECT_EQ(shown("old"), now.old) << now.bits << " at " << now.time;
        EXPECT_EQ(counter.count, now.told) << now.bits << " at " << now.time;
        EXPECT_EQ(scriptor.get_mtime(), now.told ? now.time : 1000);
    }
}

TEST_F(ReloadLua, ReportsAScriptThatFails)
{
    EXPECT_EQ(load(counting()), Quor::Ok);
    folder.write("counting.lua", "half = 1\nerror('x')", 3000);
    EXPECT_EQ(reload(0), Quor::ScriptFailed);
    EXPECT_EQ(shown("half .. runs"), "11");
    EXPECT_EQ(scriptor.get_mtime(), 3000);
    EXPECT_EQ(counter.count, 1);
    EXPECT_EQ(alerts.size(), 1u);
}

} // namespace

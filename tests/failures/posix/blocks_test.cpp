// What the library hands out or keeps as blocks of the C library, where that has none: its functions are
// decorated here.

#include "../../scriptor/scriptor_fixture.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <cstdlib>
#include <dlfcn.h>
#include <optional>

namespace {

/// Blocks that this thread may still take; below zero there is no limit.
thread_local long allowed = -1;
thread_local long refused = 0;

bool isRefused()
{
    if (allowed < 0) return false;
    if (allowed > 0) {
        --allowed;
        return false;
    }
    ++refused;
    return true;
}

template<class Function>
Function* next(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

#define DECORATED extern "C" __attribute__((visibility("default")))

DECORATED void* malloc(std::size_t size) noexcept
{
    static auto* const original = next<void*(std::size_t)>("malloc");
    return isRefused() ? nullptr : original(size);
}

DECORATED void* calloc(std::size_t count, std::size_t size) noexcept
{
    static auto* const original = next<void*(std::size_t, std::size_t)>("calloc");
    return isRefused() ? nullptr : original(count, size);
}

namespace {

/// Runs work with so many blocks; whether one was refused.
template<class Work>
bool isRefusedIn(long granted, Work work)
{
    const long before = refused;
    allowed = granted;
    work();
    allowed = -1;
    return refused != before;
}

constexpr long many = 1000;

/// Every block is refused from the first on, from the second, and so on until none is.
class Blocks : public testing::Test {
protected:
    Blocks()
    {
        lua_tinker::set_error_outlet([](const char*, std::size_t, void*) {}, nullptr);
        std::string chunk = "function answer() return 'a text' end";
        EXPECT_EQ(scriptor.loadBuffer(bufferOf(chunk), 100, false), Quor::Ok);
        // What a thread keeps for itself is there then: the C library ends a process that cannot make it.
        quorlua::callLuaFunc(scriptor.getLua(true), "answer", "");
        EXPECT_EQ(scriptor.callSeg("answer"), Quor::Ok);
    }
    ~Blocks() override { lua_tinker::set_error_outlet(nullptr, nullptr); }

    QuorGlibScriptor scriptor;
};

TEST_F(Blocks, OfATextAreHandedOutOrNone)
{
    bool isRefused = true;
    for (long granted = 0; isRefused; ++granted) {
        ASSERT_LT(granted, many);
        char* text = nullptr;
        isRefused =
            isRefusedIn(granted, [&] { quorlua::callLuaFunc(scriptor.getLua(true), "answer", ">s", &text); });
        EXPECT_STREQ(text, isRefused ? nullptr : "a text");
        EXPECT_TRUE(isRefused || granted > 0);
        std::free(text);
    }
}

TEST_F(Blocks, OfBytesAreHandedOutOrNone)
{
    bool isRefused = true;
    for (long granted = 0; isRefused; ++granted) {
        ASSERT_LT(granted, many);
        quor_binary bytes{};
        isRefused = isRefusedIn(granted,
                                [&] { quorlua::callLuaFunc(scriptor.getLua(true), "answer", ">y", &bytes); });
        EXPECT_EQ(std::string(bytes.data ? bytes.data : "", static_cast<std::size_t>(bytes.length)),
                  isRefused ? "" : "a text");
        EXPECT_EQ(bytes.data == nullptr, isRefused);
        EXPECT_TRUE(isRefused || granted > 0);
        std::free(bytes.data);
    }
}

TEST_F(Blocks, OfAFilesNameAreThereOrTheFormerFileStays)
{
    const ScriptFolder folder;
    bool isRefused = true;
    for (long granted = 0; isRefused; ++granted) {
        ASSERT_LT(granted, many);
        const std::string before = scriptor.getFileName() ? scriptor.getFileName() : "";
        // A name that was kept before takes no block.
        const std::string path = folder.write(std::to_string(granted) + ".lua", "x = 1");
        Quor::GlibStatus status = Quor::Ok;
        isRefused = isRefusedIn(granted, [&] { status = scriptor.loadFile(path.c_str(), false); });
        if (granted == 0) {
            EXPECT_EQ(status, Quor::ScriptFailed);
            EXPECT_EQ(scriptor.getFileName(), nullptr);
        }
        const std::string now = scriptor.getFileName() ? scriptor.getFileName() : "";
        EXPECT_TRUE(now == path || (now == before && status == Quor::ScriptFailed)) << now;
        EXPECT_TRUE(isRefused || status == Quor::Ok);
        EXPECT_EQ(scriptor.loadFile(path.c_str(), false), Quor::Ok);
    }
}

TEST_F(Blocks, OfAMergedModuleAreThereOrItStaysAsItWas)
{
    const lua_CFunction nothing = [](lua_State*) { return 0; };
    const luaL_Reg first[] = {{"a", nothing}, {"b", nothing}, {nullptr, nullptr}};
    const luaL_Reg second[] = {{"c", nothing}, {"d", nothing}, {nullptr, nullptr}};
    bool isRefused = true;
    long granted = 0;
    for (; isRefused; ++granted) {
        ASSERT_LT(granted, many);
        quorlua::LuaLRegHelper modules;
        modules.addLuaRegFunc("module", first);
        isRefused = isRefusedIn(granted, [&] { modules.addLuaRegFunc("module", second); });
        const luaL_Reg* list = modules.get_reg().at("module");
        if (isRefused) {
            EXPECT_EQ(list, first);
        } else {
            ASSERT_NE(list, first);
            EXPECT_STREQ(list[3].name, "d");
        }
    }
    EXPECT_GT(granted, 5);
}

TEST_F(Blocks, OfARegistryAreThereOrItIsEmptyUntilTheyAre)
{
    const luaL_Reg list[] = {{"a", [](lua_State*) { return 0; }}, {nullptr, nullptr}};
    bool isRefused = true;
    for (long granted = 0; isRefused; ++granted) {
        ASSERT_LT(granted, many);
        std::optional<quorlua::LuaLRegHelper> modules;
        isRefused = isRefusedIn(granted, [&] { modules.emplace(); });
        EXPECT_TRUE(modules->get_reg().empty());
        const bool isListRefused = isRefusedIn(0, [&] { modules->addLuaRegFunc("module", list); });
        EXPECT_EQ(modules->get_reg().empty(),
                  isListRefused); // memcheck takes blocks of `operator new` elsewhere
        modules->addLuaRegFunc("module", list);
        EXPECT_EQ(modules->get_reg().count("module"), 1u);
    }
}

} // namespace

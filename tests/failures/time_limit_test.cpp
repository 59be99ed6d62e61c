// Every exported operation under a time limit, on states whose scripts run for ever wherever one of them can
// come to be run: each operation ends.

#include "../scriptor/script_limits.h"
#include "operations.h"

#include <QuorCommon/QuorSystem.h>

namespace {

using namespace failures;

constexpr double limit = 0.1;

/// What no limit ends goes on for two seconds, and says so: a test that hung would tell less.
constexpr const char* definition = R"(
    local clock, table = os.clock, _G
    function outlast()
        local start = clock()
        while clock() - start < 2 do local t = {} end
        rawset(table, 1, true)
    end
    function raise() error('raised') end
    segments = {'plain', 'wants', 'keypoint', 'main', 'quorgetparam_ui', 'echo', 'answer', 'probe',
                'serializeTable', 'unSerializeTable'}
)";

/// Where a script's code is found by an operation that did not ask for it, or that did.
struct Trap {
    const char* name;
    const char* before; ///< run before the operation is prepared
    const char* after;
};
const Trap traps[] = {
    {"a report", R"(_ALERT = outlast drawn = {{31}, {41}}
                    for _, name in ipairs(segments) do _G[name] = raise end)",
     ""},
    {"a report of what is missing", R"(_ALERT = outlast drawn = {{31}, {41}}
                                       for _, name in ipairs(segments) do _G[name] = nil end)",
     ""},
    {"a segment", "for _, name in ipairs(segments) do _G[name] = outlast end", ""},
    {"a table",
     R"(local wait = {__index = outlast, __newindex = outlast}
        for _, name in ipairs {'param', 'glb', 'notes', 'skey', 'ids_of_test', 'texts'} do
            _G[name] = setmetatable({}, wait)
        end)",
     ""},
    {"the globals", "",
     R"(local wait, keep = outlast, {true, _G = true}
        local strict = setmetatable
        for name in pairs(_G) do if not keep[name] then _G[name] = nil end end
        strict(_G, {__index = wait, __newindex = wait}))"},
    {"a finalizer", "",
     R"(collectgarbage('setpause', 0) collectgarbage('setstepmul', 100000)
        local last = 0
        local function leave()
            getmetatable(newproxy(true)).__gc = function()
                last = last + 1
                if last < 4 then leave() end
                if armed then outlast() end
            end
        end
        collectgarbage() leave() leave() leave() armed = true)"},
};

class TimeLimitOfOperations : public testing::TestWithParam<Operation> {
protected:
    void SetUp() override
    {
        lua_tinker::set_error_outlet([](const char*, std::size_t, void*) {}, nullptr);
    }
    void TearDown() override
    {
        lua_tinker::set_error_outlet(nullptr, nullptr);
        kxcom::clearQuorLastError();
    }

    /// The states that scripts of the operation run in.
    static std::vector<lua_State*> statesOf(Setting& setting)
    {
        std::vector<lua_State*> states = {setting.L};
        if (std::string(GetParam().name).find("LuaSerialize") != std::string::npos)
            states.push_back(quorlua::LuaSerialize::getLua());
        return states;
    }

    static void run(lua_State* L, const char* chunk)
    {
        const int height = lua_gettop(L);
        EXPECT_EQ(luaL_dostring(L, chunk), 0) << lua_tostring(L, -1);
        lua_settop(L, height);
    }

    /// Takes no memory, so that no finalizer runs by it.
    static bool wasOutlasted(lua_State* L)
    {
        lua_rawgeti(L, LUA_GLOBALSINDEX, 1);
        const bool was = lua_toboolean(L, -1) != 0;
        lua_pop(L, 1);
        return was;
    }
};

TEST_P(TimeLimitOfOperations, EndsThemWhateverTheyRun)
{
    QuorSystem::setInstallationFolder(QUOR_SOURCE_DIR "/sample/installation");
    const Limited limited(limit);
    for (const Trap& trap : traps) {
        SCOPED_TRACE(trap.name);
        Setting setting;
        setting.begin();
        for (lua_State* L : statesOf(setting)) {
            run(L, definition);
            run(L, trap.before);
        }
        if (GetParam().prepare) GetParam().prepare(setting);
        run(setting.L, trap.after); // the serializer's state is the process's
        GetParam().call(setting);
        for (lua_State* L : statesOf(setting))
            EXPECT_FALSE(wasOutlasted(L));
        EXPECT_GE(lua_gettop(setting.L), top);
    }
    QuorSystem::setInstallationFolder(nullptr);
}

INSTANTIATE_TEST_SUITE_P(Of, TimeLimitOfOperations, testing::ValuesIn(allOperations()),
                         [](const auto& row) { return nameOf(row.param) + std::to_string(row.index); });

} // namespace

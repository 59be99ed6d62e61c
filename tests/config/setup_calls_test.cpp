#include "config_fixture.h"

namespace {

using quorconfig::initConfig;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* noting = R"(
    local function noting(name)
        return function(...)
            local all = {name, select('#', ...)}
            for i = 1, select('#', ...) do all[i + 2] = type((select(i, ...))) .. ':' .. tostring((select(i, ...))) end
            probe.note(table.concat(all, ' '))
            return 'ignored', {}
        end
    end
    initConfig = noting('initConfig')
    setUserVersion = noting('setUserVersion')
    setDesignDbModule = noting('setDesignDbModule')
)";

class SetUp : public Config {
protected:
    /// Loads the project script with these arguments in fresh states.
    bool start(const std::string& script, const char* argument, const char* version, const char* database)
    {
        takeFreshSlots();
        Probe::notes.clear();
        write(projectScript, script);
        return initConfig(projectScript, argument, version, database);
    }
};

TEST_F(SetUp, CallsFollowTheLoadInTheirOrder)
{
    EXPECT_TRUE(start(std::string(noting) + "probe.note('run')", "a", "b", "c"));
    EXPECT_THAT(Probe::notes, ElementsAre("run", "initConfig 1 string:a", "setUserVersion 1 string:b",
                                          "setDesignDbModule 1 string:c"));
}

TEST_F(SetUp, CallsAreThoseWhoseArgumentIsNotNull)
{
    struct Case {
        const char* argument;
        const char* version;
        const char* database;
        std::vector<std::string> called;
    };
    const Case cases[] = {
        {nullptr, nullptr, nullptr, {}},
        {"a", nullptr, nullptr, {"initConfig 1 string:a"}},
        {nullptr, "b", nullptr, {"setUserVersion 1 string:b"}},
        {nullptr, nullptr, "c", {"setDesignDbModule 1 string:c"}},
        {"a", nullptr, "c", {"initConfig 1 string:a", "setDesignDbModule 1 string:c"}},
        {"", "", "", {"initConfig 1 string:", "setUserVersion 1 string:", "setDesignDbModule 1 string:"}},
        {nullptr, "", "100%s", {"setUserVersion 1 string:", "setDesignDbModule 1 string:100%s"}},
        {"\xC5\xE4\xD6\xC3\\", nullptr, nullptr, {"initConfig 1 string:\xC5\xE4\xD6\xC3\\"}},
    };
    for (const Case& given : cases) {
        EXPECT_TRUE(start(noting, given.argument, given.version, given.database));
        EXPECT_EQ(Probe::notes, given.called);
        EXPECT_THAT(messages(), IsEmpty());
    }
}

TEST_F(SetUp, HappensWithTheNameUnsaidWhenTheStateIsNew)
{
    write(projectScript, noting);
    EXPECT_TRUE(initConfig(nullptr, "a", nullptr, nullptr));
    EXPECT_THAT(Probe::notes, ElementsAre("initConfig 1 string:a"));
}

TEST_F(SetUp, FunctionsThatAreMissingAreReportedAndChangeNothing)
{
    EXPECT_TRUE(start("", "a", "b", "c"));
    EXPECT_THAT(messages(), ElementsAre(noFunction("initConfig"), noFunction("setUserVersion"),
                                        noFunction("setDesignDbModule")));
    EXPECT_TRUE(start(std::string(noting) + "setUserVersion = nil", "a", "b", "c"));
    EXPECT_THAT(messages(), ElementsAre(noFunction("setUserVersion")));
    EXPECT_THAT(Probe::notes, ElementsAre("initConfig 1 string:a", "setDesignDbModule 1 string:c"));
}

TEST_F(SetUp, FunctionsThatAreNoneAreReportedAndChangeNothing)
{
    for (const char* value : {"5", "'text'", "{}", "true", "setmetatable({}, {__call = print})"}) {
        EXPECT_TRUE(start(std::string(noting) + "initConfig = " + value, "a", "b", nullptr)) << value;
        EXPECT_THAT(messages(), ElementsAre(noFunction("initConfig"))) << value;
        EXPECT_THAT(Probe::notes, ElementsAre("setUserVersion 1 string:b")) << value;
    }
}

TEST_F(SetUp, FunctionsThatRaiseAreReportedAndChangeNothing)
{
    const std::string raising = "function initConfig(a) error('no ' .. a, 0) end "
                                "function setUserVersion() error({}) end "
                                "function setDesignDbModule() error() end ";
    EXPECT_TRUE(start(raising, "a", "b", "c"));
    EXPECT_THAT(messages(),
                ElementsAre("no a", "(error object is a table value)", "(error object is a nil value)"));
    EXPECT_TRUE(initConfig(projectScript, "a", "b", "c"));
    EXPECT_THAT(messages(), IsEmpty());
}

TEST_F(SetUp, FunctionsHiddenByStrictGlobalsCountAsMissing)
{
    EXPECT_TRUE(start("setmetatable(_G, {__index = function() error('strict') end})", "a", nullptr, nullptr));
    EXPECT_THAT(messages(), ElementsAre(noFunction("initConfig")));
}

TEST_F(SetUp, FunctionsMayReplaceEachOther)
{
    EXPECT_TRUE(start(std::string(noting) + "function initConfig() setUserVersion = nil "
                                            "setDesignDbModule = function(a) probe.note('new ' .. a) end end",
                      "a", "b", "c"));
    EXPECT_THAT(messages(), ElementsAre(noFunction("setUserVersion")));
    EXPECT_THAT(Probe::notes, ElementsAre("new c"));
}

} // namespace

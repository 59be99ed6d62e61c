// No exported operation is left out of the walks.

#include "../config/getter_rows.h"
#include "operations.h"

#include <map>
#include <set>

namespace {

using namespace failures;

/// Beginnings of lines of the list of exports, and why no row of the table stands for them.
const std::map<std::string, std::string>& exceptions()
{
    static const char constant[] = "takes no memory: it gives or stores what is there";
    static const char end[] = "takes no memory: it gives back what there is";
    static const char config[] = "tests/config/exhausted_memory_test.cpp walks it";
    static const std::map<std::string, std::string> list = {
        {"Quor::version()", constant},
        {"Quor::versionNumber()", constant},
        {"QuorGlibScriptor::checkFlag(", constant},
        {"QuorGlibScriptor::setFlag(", constant},
        {"QuorGlibScriptor::getFileName()", constant},
        {"QuorGlibScriptor::getLoadFileCallbk()", constant},
        {"QuorGlibScriptor::setLoadFileCallbk(", constant},
        {"QuorGlibScriptor::getLua(", constant},
        {"QuorGlibScriptor::get_mtime()", constant},
        {"QuorGlibScriptor::operator=(", constant},
        {"QuorGlibScriptor::parseRtn(", constant},
        {"QuorGlibScriptor::~QuorGlibScriptor()", end},
        {"QuorGlibScriptor::luaClear()", "private"},
        {"QuorGlibScriptor::isMetreUnit(",
         "private: what it does is that of UnitFreeNames, as in setKeyValues"},
        {"QuorGlibScriptor::setCallParam(", "private: callSeg calls it, guarded"},
        {"QuorGlibScriptorHelper::getL()", constant},
        {"QuorGlibScriptorHelper::getScriptor()", constant},
        {"QuorGlibScriptorHelper::operator=(", constant},
        {"QuorGlibScriptorHelper::~QuorGlibScriptorHelper()", end},
        {"quorlua::LuaLRegHelper::operator=(", constant},
        {"quorlua::LuaLRegHelper::~LuaLRegHelper()",
         "the rows of its constructor and of addLuaRegFunc end in it"},
        {"quorlua::LuaSerialize::clear()", "that of getLua, and it takes no memory"},
        {"quorlua::LuaSerialize::getLua()",
         "tests/marshal/serializer_memory_test.cpp walks it, in a process of its own"},
        {"quorlua::LuaSerialize::init()", "that of getLua"},
        {"quorlua::LuaSerialize::m_init", "a variable"},
        {"quorlua::addRegLuaModule(", "that of addLuaRegFunc, for the one registry of the process"},
        {"quorlua::freeThreadVars(", end},
        {"quorlua::getGlibRegFuncForLua()", constant},
        {"quorlua::limitNewStates(", constant},
        {"quorlua::takeLimitReached()", constant},
        {"quorlua::ScriptOperation::", constant},
        {"quorlua::checkScriptLimits(", "defined to raise: a hook of the host's calls it"},
        {"quorlua::requireObjectIdInState(", "defined to raise: its caller works under a protected call"},
        {"quorconfig::TempPermitNull::", constant},
        {"quorconfig::permitNullReturn(", constant},
        {"quorconfig::lastAnswerOrigin()", constant},
        {"quorconfig::freeThreadConfig(", end},
        {"quorconfig::allocThreadConfig(", config},
        {"quorconfig::initConfig(", config},
        {"quorconfig::initSysConfig()", config},
        {"quorconfig::getProjectDbSeed(", config},
        {"quorconfig::isPropertyClass_full(", config},
        {"quorconfig::set_escape_dbengine(", "the question that escape_dbkey asks, with an integer"},
    };
    return list;
}

std::vector<std::string> exportedLines()
{
    std::ifstream file(QUOR_SOURCE_DIR "/tests/layers/exports/QuorScriptor.linux.txt");
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

/// Every beginning of a line that is accounted for.
std::set<std::string> knownBeginnings()
{
    std::set<std::string> known;
    for (const Operation& operation : allOperations())
        known.insert(operation.name);
    for (const Getter& getter : allGetters())
        known.insert("quorconfig::" + getter.name + "(");
    for (const auto& [beginning, reason] : exceptions())
        known.insert(beginning);
    return known;
}

TEST(OperationsThatCanFail, AreAllWalked)
{
    const std::vector<std::string> lines = exportedLines();
    EXPECT_GT(lines.size(), 100u);
    const std::set<std::string> known = knownBeginnings();
    for (const std::string& line : lines) {
        const auto isBeginning = [&line](const std::string& beginning) {
            return line.starts_with(beginning);
        };
        EXPECT_TRUE(std::any_of(known.begin(), known.end(), isBeginning)) << "no row for " << line;
    }
    for (const std::string& beginning : known) {
        const auto begins = [&beginning](const std::string& line) { return line.starts_with(beginning); };
        EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), begins)) << beginning << " is not exported";
    }
}

TEST(OperationsThatCanFail, HaveOneNameEach)
{
    const std::vector<std::string> lines = exportedLines();
    for (const Operation& operation : allOperations()) {
        const auto begins = [&operation](const std::string& line) {
            return line.starts_with(operation.name);
        };
        EXPECT_EQ(std::count_if(lines.begin(), lines.end(), begins), 1) << operation.name;
    }
}

} // namespace

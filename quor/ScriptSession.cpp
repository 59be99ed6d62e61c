#include "ScriptSession.h"

#include "Failure.h"
#include "GuestFunctions.h"
#include "ParameterValue.h"
#include "SceneFile.h"
#include "SceneFunctor.h"
#include "SceneTextStyle.h"
#include "ScriptHost.h"
#include "ScriptKeeper.h"
#include "Terminal.h"

#include <QuorMsgHandle/QuorMsgHandle.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <QuorScriptor/ScriptLimits.h>
#include <algorithm>
#include <optional>

namespace quor {
namespace {

using Quor::GlibStatus;

/// What scripts write to standard output comes in its order among the messages, which are not buffered.
constexpr char standardError[] = "io.output(io.stderr) io.stdout = io.stderr";

constexpr const char* scriptHelp =
    R"(SCRIPT is a path from the working folder, else one in the project, in the project's folder "components", or in
the installation: the first that exists. The scene's FILE is a path from the working folder, else one in the project, or
in the project's folder "scenes".

A value of --set has the type that the script's table "param" holds under that name: a number, true or false, a
point x,y,z, or text. Under another name it has the first of these types that fits. Parameters that are not given
keep the script's values.

Units: lengths in millimetres, or in the unit that the factor starts from; angles in degrees. The factor multiplies
each number given, unless the script's table "skey" says that it is a quantity or an angle; where --factor is given,
the script is told it as glb.factor. Nothing else is scaled.

Exit codes: 0 done; 1 the script failed; 2 the command was used wrongly.)";

struct Global {
    std::string name;
    /// Where a function written in Lua comes from; empty and 0 for every other value.
    std::string source;
    int line = 0;
};

/// The globals whose names are strings, in the order of these. Calls nothing that can raise.
std::vector<Global> globalsOf(lua_State* L)
{
    std::vector<Global> globals;
    const int top = lua_gettop(L);
    for (lua_pushnil(L); lua_next(L, LUA_GLOBALSINDEX) != 0; lua_settop(L, top + 1)) {
        if (lua_type(L, -2) != LUA_TSTRING) continue;
        std::size_t length = 0;
        const char* name = lua_tolstring(L, -2, &length);
        Global& global = globals.emplace_back();
        global.name.assign(name, length);
        if (!lua_isfunction(L, -1) || lua_iscfunction(L, -1)) continue;
        lua_Debug function;
        lua_pushvalue(L, -1);
        lua_getinfo(L, ">S", &function);
        global.source = function.source;
        global.line = function.linedefined;
    }
    lua_settop(L, top);
    std::sort(globals.begin(), globals.end(),
              [](const Global& one, const Global& other) { return one.name < other.name; });
    return globals;
}

/// Whether a script has a global function of that name, within its limits: a metatable may answer.
bool isGlobalFunction(lua_State* L, const std::string& name)
{
    const quorlua::ScriptOperation operation(L);
    return quorlua::is_global_function(L, name.c_str());
}

std::string describe(GlibStatus status, const char* meaning)
{
    return fmt::format("status {}: {}", static_cast<int>(status), meaning);
}

std::string describe(GlibStatus status)
{
    return describe(status, meaningOf(status));
}

/// The host's codes for what a failed call of a segment ended in.
constexpr int segmentRaisedError = 2003;
constexpr int segmentGaveNoPrimitives = 2007;

std::string describeCall(GlibStatus status)
{
    const int reason = kxcom::getQuorLastErrorCode();
    if (status != GlibStatus::ScriptFailed) return describe(status);
    if (reason == segmentRaisedError) return describe(status, "the segment raised an error");
    if (reason == segmentGaveNoPrimitives)
        return describe(status, "the segment did not return a table of primitives");
    return describe(status);
}

} // namespace

const char* meaningOf(GlibStatus status)
{
    switch (status) {
    case GlibStatus::Ok:
        return "done";
    case GlibStatus::FileNotExamined:
        return "there is no such file, or it cannot be examined";
    case GlibStatus::NoState:
        return "there is no Lua state";
    case GlibStatus::ScriptFailed:
        return "the script failed";
    case GlibStatus::ValueMissing:
        return "a value of the table \"glb\" is missing";
    case GlibStatus::SegmentMissing:
        return "the script has no segment of that name";
    case GlibStatus::InvalidArgument:
        return "an argument is not valid";
    case GlibStatus::TableMissing:
        return "the script has no table of that name";
    case GlibStatus::BufferRefused:
        return "a script from a file takes no buffer";
    }
    return "unknown";
}

void addScriptOptions(CLI::App& command, ScriptOptions& options)
{
    command.add_option("SCRIPT", options.script, "The component's script")->required()->type_name("");
    command
        .add_option("--set", options.settings,
                    "Writes a parameter into the script's table \"param\"; may be given many times")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
    command.add_option("--factor", options.factor, "Multiplies the lengths that --set gives; default 1")
        ->type_name("F")
        ->each([&options](const std::string&) { options.factorGiven = true; });
    addFolderOptions(command, options.folders);
    addLimitOptions(command, options.limits);
    command
        .add_option("--scene", options.scene,
                    "The scene that answers what the script asks the host; without one it has no answers")
        ->type_name("FILE")
        ->each([&options](const std::string&) { options.sceneGiven = true; });
    command.add_flag("-q,--quiet", options.quiet, "Leaves out the line that sums up what was done");
    command.footer(scriptHelp);
}

struct ScriptSession::Alone {
    explicit Alone(const ScriptOptions& options) : limit(options.limits) {}

    ScriptLimit limit;
    std::optional<ScriptHost> host;
    ScriptKeeper keeper;
};

ScriptSession::ScriptSession(const ScriptOptions& options)
    : options_(options), alone_(std::make_unique<Alone>(options)), keeper_(alone_->keeper)
{
    checkOptions();
    alone_->host.emplace(options.folders);
    findFiles();
    alone_->limit.setScript(script_.path);
}

ScriptSession::ScriptSession(const ScriptOptions& options, ScriptKeeper& keeper)
    : options_(options), keeper_(keeper)
{
    static_cast<void>(quorlua::takeLimitReached()); // of another's job
    checkOptions();
    findFiles();
}

void ScriptSession::checkOptions()
{
    if (options_.script.empty())
        throw Failure(WrongUsage, "SCRIPT: the path of a script is expected; it is empty");
    factor_ = readFactor(options_.factor, "--factor");
    checkParameters(options_.settings, options_.set);
}

void ScriptSession::findFiles()
{
    kxcom::clearQuorLastError();
    script_ = findScript(options_.script);
    name_ = system::textOf(system::pathOf(script_.path).filename());
    if (name_.empty()) name_ = script_.path;
    systemPath_ = terminal::systemName(script_.path, script_.path);
    terminal::expectPath(systemPath_);
    if (options_.sceneGiven) openScene();
}

void ScriptSession::openScene()
{
    if (options_.scene.empty())
        throw Failure(WrongUsage, "--scene: the path of a scene's file is expected; it is empty");
    const FoundFile found = findScene(options_.scene);
    if (!found.isThere)
        throw Failure(WrongUsage, fmt::format("--scene {}: a file is expected; there is none{}",
                                              options_.scene, listOfPlaces(found)));
    scenePath_ = found.path;
    Scene scene = readScene(scenePath_);
    if (!scene.textStyles.empty()) textStyle_ = std::make_unique<SceneTextStyle>(scene);
    functor_ = std::make_unique<SceneFunctor>(std::move(scene));
}

ScriptSession::~ScriptSession()
{
    if (!scriptor_) return;
    if (functor_) {
        scriptor_->setFunction(nullptr);
        scriptor_->setGlibTextstyle(nullptr);
    }
    // Finalizers may still ask the scene.
    if (alone_)
        keeper_.clear();
    else
        keeper_.giveBack(*scriptor_);
}

void ScriptSession::setOutput(const std::string& path)
{
    if (alone_) alone_->limit.setOutput(path);
}

void ScriptSession::checkLimits() const
{
    quor::checkLimits(options_.limits, path());
}

void ScriptSession::load()
{
    loadFile();
    setScene();
    writeParameters();
}

void ScriptSession::setScene()
{
    if (!functor_) return;
    scriptor_->setFunction(functor_.get());
    scriptor_->setGlibTextstyle(textStyle_.get());
}

void ScriptSession::loadFile()
{
    scriptor_ = &keeper_.take(systemPath_);
    lua_State* L = scriptor_->getLua(false);
    if (!L) throw Failure(ScriptFailed, fmt::format("{}: {}", path(), describe(GlibStatus::NoState)));
    if (!options_.limits.untrusted) lua_tinker::dobuffer(L, standardError, sizeof standardError - 1);
    if (!alone_) shareProcess(L);
    for (const Global& global : globalsOf(L)) {
        globalsBefore_.insert(global.name);
        sourcesBefore_.insert(global.source);
    }

    const bool isKnown = scriptor_->getFileName() != nullptr;
    const GlibStatus status =
        isKnown ? scriptor_->reloadLua(0) : scriptor_->loadFile(systemPath_.c_str(), false);
    if (status == GlibStatus::Ok) return;
    checkLimits();
    const std::string reason = status == GlibStatus::ScriptFailed
                                   ? describe(status, "it cannot be read, compiled or run to its end")
                                   : describe(status);
    std::string text = fmt::format("{}: {}", path(), reason);
    if (status == GlibStatus::FileNotExamined) text += listOfPlaces(script_);
    throw Failure(ScriptFailed, text);
}

void ScriptSession::writeParameters()
{
    if (options_.factorGiven && !scriptor_->setConstFactor(factor_))
        terminal::say("{}: the script has no table \"glb\", so it is not told the factor", path());

    std::vector<KVParams> held;
    const bool hasParameters = scriptor_->getParams_std("param", held) == GlibStatus::Ok;
    const std::vector<KVParams> given = readParameters(options_.settings, held, options_.set);
    if (given.empty()) return;
    if (hasParameters && scriptor_->setKeyValues(given, factor_)) return;
    checkLimits();
    const GlibStatus status = hasParameters ? GlibStatus::ScriptFailed : GlibStatus::TableMissing;
    throw Failure(ScriptFailed, fmt::format("{}: \"param\" cannot be written: {}", path(), describe(status)));
}

std::vector<std::string> ScriptSession::ownFunctions() const
{
    const std::vector<Global> globals = globalsOf(scriptor_->getLua(false));
    std::vector<std::string> own;
    std::vector<std::string> added;
    for (const Global& global : globals) {
        if (global.source.empty()) continue;
        if (global.source == "@" + systemPath_) own.push_back(global.name);
        if (!globalsBefore_.contains(global.name) && !sourcesBefore_.contains(global.source))
            added.push_back(global.name);
    }
    // Precompiled scripts may name another file; what they added is then taken for their own.
    return own.empty() ? added : own;
}

std::string ScriptSession::listOfFunctions() const
{
    const std::vector<std::string> names = ownFunctions();
    if (names.empty()) return "it defines no global function";
    std::string list = "its functions are:";
    for (const std::string& name : names)
        list += "\n  " + terminal::fromGbk(name);
    return list;
}

bool ScriptSession::hasGlobal(std::string_view name) const
{
    lua_State* L = scriptor_->getLua(false);
    if (isGlobalFunction(L, std::string(name))) return true;
    // Other values count as well: calling them fails, and the failure says more than "missing" would.
    const std::vector<Global> globals = globalsOf(L);
    return std::any_of(globals.begin(), globals.end(),
                       [name](const Global& global) { return global.name == name; });
}

std::string ScriptSession::chooseSegment(const std::string& wanted)
{
    if (!wanted.empty()) {
        return options_.set == ArgumentSet::Utf8
                   ? terminal::gbkFromUtf8(wanted, "--segment " + terminal::fromUtf8(wanted))
                   : terminal::gbkFrom(wanted, "--segment " + wanted);
    }
    if (hasGlobal("main")) return "main";
    checkLimits();
    const std::vector<std::string> names = ownFunctions();
    if (names.size() == 1) return names.front();
    throw Failure(WrongUsage, fmt::format("{}: --segment is expected, since the script has no \"main\"; {}",
                                          path(), listOfFunctions()));
}

/// "FILE:LINE: segment NAME", the line where the segment begins, when it is known.
std::string ScriptSession::placeOf(const char* what, const std::string& name) const
{
    std::string place = path();
    for (const Global& global : globalsOf(scriptor_->getLua(false))) {
        if (global.name == name && global.source == "@" + systemPath_)
            place += fmt::format(":{}", global.line);
    }
    return fmt::format("{}: {} {}", place, what, terminal::fromGbk(name));
}

void ScriptSession::failCall(const char* what, const std::string& name, const std::string& reason)
{
    checkLimits();
    throw Failure(ScriptFailed, fmt::format("{}: {}", placeOf(what, name), reason));
}

void ScriptSession::checkFunction(const std::string& function)
{
    if (isGlobalFunction(scriptor_->getLua(false), function)) return;
    failCall("function", function, "the script has no global function of that name\n" + listOfFunctions());
}

const GlibTextStyle* ScriptSession::textStyle() const
{
    return textStyle_.get();
}

void ScriptSession::checkSegment(GlibStatus status, const std::string& segment)
{
    if (status == GlibStatus::Ok) return;
    checkLimits();
    std::string text = fmt::format("{}: {}", placeOf("segment", segment), describeCall(status));
    const std::string reason = kxcom::getQuorLastErrorText();
    if (!reason.empty())
        text += fmt::format("\n{} (error {})", terminal::fromGbk(reason), kxcom::getQuorLastErrorCode());
    if (status == GlibStatus::SegmentMissing) text += "\n" + listOfFunctions();
    throw Failure(ScriptFailed, text);
}

} // namespace quor

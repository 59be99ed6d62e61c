#pragma once

#include "HostFolders.h"
#include "ParameterValue.h"
#include "ScriptFiles.h"
#include "ScriptLimit.h"

#include <CLI/CLI.hpp>
#include <QuorScriptor/QuorGlibScriptor.h>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace quor {

class SceneFunctor;
class SceneTextStyle;
class ScriptKeeper;

/// What every subcommand that runs a component's script takes.
struct ScriptOptions {
    std::string script;
    std::vector<std::string> settings;
    ArgumentSet set = ArgumentSet::Terminal; ///< of the settings, and of a segment's name
    std::string factor = "1";
    bool factorGiven = false;
    HostFolders folders;
    std::string scene;
    bool sceneGiven = false;
    LimitOptions limits;
    bool quiet = false;
};

/// Adds SCRIPT and the options, which must outlive the command.
void addScriptOptions(CLI::App& command, ScriptOptions& options);

/// A script, found when the session is made, and loaded into a scriptor of its own as a host does it: folders
/// are set, messages go to standard error, the factor, if it is given, and the parameters are written; where
/// a scene is given, it answers what the script asks the host. What the script prints goes to standard error
/// as well, and it cannot end the program.
///
/// A session alone sets up the host, and is the only one at that time. Among several, one on a thread at a
/// time, the host is there and the scriptor a kept one; a script then cannot change what is the process's.
///
/// Every failure is a `Failure`: of the script, with the status and what it means, or of usage.
class ScriptSession {
public:
    /// The options must outlive the session.
    explicit ScriptSession(const ScriptOptions& options);
    /// A session among several, on this thread that has the keeper, which outlives it.
    ScriptSession(const ScriptOptions& options, ScriptKeeper& keeper);
    ~ScriptSession();
    ScriptSession(const ScriptSession&) = delete;
    ScriptSession& operator=(const ScriptSession&) = delete;

    /// Runs the script and writes the parameters; once, before what follows.
    void load();

    QuorGlibScriptor& scriptor() { return *scriptor_; }
    /// The path under which the script was found.
    const std::string& path() const { return script_.path; }
    /// The script's file name without its folder, as the system writes it.
    const std::string& name() const { return name_; }
    /// The path under which the scene was found; empty without one.
    const std::string& scenePath() const { return scenePath_; }

    /// The segment to call, in GBK: `wanted` (as an argument), where it is not empty; else "main"; else the
    /// one global function that the script defines.
    std::string chooseSegment(const std::string& wanted);

    /// The file that the result will go to: when the command is ended, an earlier run's is removed.
    void setOutput(const std::string& path);

    /// Throws what is to be said when `status`, of a call of the segment, is not Ok.
    void checkSegment(Quor::GlibStatus status, const std::string& segment);

    /// Throws, with the functions that there are, unless the script has a global function of that name, in
    /// GBK.
    void checkFunction(const std::string& function);
    /// Throws that a call of a function, or of a segment as `what` says, failed for a reason.
    [[noreturn]] void failCall(const char* what, const std::string& name, const std::string& reason);

    /// The scene's text style; null without one.
    const GlibTextStyle* textStyle() const;

private:
    struct Alone;

    void checkOptions();
    void findFiles();
    void openScene();
    void loadFile();
    void setScene();
    void writeParameters();
    std::vector<std::string> ownFunctions() const;
    std::string listOfFunctions() const;
    std::string placeOf(const char* what, const std::string& name) const;
    bool hasGlobal(std::string_view name) const;
    void checkLimits() const;

    const ScriptOptions& options_;
    std::unique_ptr<Alone> alone_; ///< null among several; outlives the state
    ScriptKeeper& keeper_;
    double factor_ = 1;
    FoundFile script_;
    std::string systemPath_; ///< the same as the library takes it
    std::string name_;
    std::set<std::string> globalsBefore_;
    /// Of functions written in Lua that were there: safeguards among them, on some engines.
    std::set<std::string> sourcesBefore_;
    std::string scenePath_;
    std::unique_ptr<SceneFunctor> functor_;
    std::unique_ptr<SceneTextStyle> textStyle_;
    QuorGlibScriptor* scriptor_ = nullptr;
};

/// What a status means, in words.
const char* meaningOf(Quor::GlibStatus status);

} // namespace quor

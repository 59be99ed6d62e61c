#pragma once

#include "ConfigGetters.h"
#include "HostFolders.h"
#include "OutputFile.h"
#include "ScriptLimit.h"

#include <CLI/CLI.hpp>
#include <QuorScriptor/getters.h>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quor {

/// What every question to the configuration scripts takes. Of the texts, those that were not given are null
/// for the host.
struct ConfigOptions {
    HostFolders folders;
    std::optional<std::string> file;
    std::optional<std::string> initArg;
    std::optional<std::string> userVersion;
    std::optional<std::string> designDbModule;
    bool permitNull = false;
    LimitOptions limits;
};

/// Adds the options, which must outlive the command.
void addConfigOptions(CLI::App& command, ConfigOptions& options);

/// A script's answer as the host gets it, and what can be said about it.
struct ConfigAnswer {
    const Getter* getter = nullptr;
    GetterArguments arguments;
    GetterValue value;
    quorconfig::AnswerOrigin origin = quorconfig::AnswerOrigin::None;
    /// Whether the path that was answered leads to something; none for everything else.
    std::optional<bool> isThere;
    /// What was shown meanwhile, reports of errors included, as it was shown.
    std::vector<std::string> messages;
    bool raised = false;
};

/// The configuration scripts as a host asks them: folders are set, and the states are the session's own. What
/// the scripts print goes to standard error, and they cannot end the program. One session at a time.
class ConfigSession {
public:
    explicit ConfigSession(const ConfigOptions& options);
    ~ConfigSession();
    ConfigSession(const ConfigSession&) = delete;
    ConfigSession& operator=(const ConfigSession&) = delete;

    /// Loads a script and runs its set-up functions, once. What is shown meanwhile goes to standard error at
    /// once. A `Failure` of the script when it does not load.
    void prepare(ConfigScript script);

    /// Asks a getter, whose script is made ready first.
    ConfigAnswer ask(const Getter& getter, const GetterArguments& arguments);

    /// What was shown by the scripts that were made ready.
    const std::vector<std::string>& setUpMessages() const { return setUpMessages_; }
    /// The paths of those whose set-up functions raised errors.
    const std::vector<std::string>& raisedInSetUp() const { return raisedInSetUp_; }

    /// Where a script lies.
    std::string pathOf(ConfigScript script) const;

private:
    static void receive(const char* text, void* session);
    static void receiveReport(const char* text, std::size_t length, void* session);
    void keepOrShow(std::string_view message);
    void load(ConfigScript script);
    std::string systemPathOf(ConfigScript script) const;

    const StandardOutputAside aside_; // ends last, since closing a state runs collectors
    ScriptLimit limit_;               ///< outlives the states
    std::optional<std::string> file_; ///< as the library takes it
    std::optional<std::string> initArg_;
    std::optional<std::string> userVersion_;
    std::optional<std::string> designDbModule_;
    bool isSettingUp_ = false;
    std::vector<ConfigScript> ready_;
    std::vector<std::string> messages_;
    std::vector<std::string> setUpMessages_;
    std::vector<std::string> raisedInSetUp_;
};

} // namespace quor

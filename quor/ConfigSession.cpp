#include "ConfigSession.h"

#include "AnsweredPath.h"
#include "Failure.h"
#include "GuestFunctions.h"
#include "Terminal.h"

#include <QuorCommon/QuorCommon.h>
#include <QuorMsgHandle/QuorMsgHandle.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/configstate.h>
#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace quor {
namespace {

constexpr const char* projectScript = "quorModuleSystem.lua";
constexpr const char* systemScript = "mirtSystemConfig.lua";

/// Whether errors of scripts were met in its life.
class ErrorWatch {
public:
    bool sawErrors() const { return lua_tinker::error_count() != before_; }

private:
    unsigned long long before_ = lua_tinker::error_count();
};

std::optional<std::string> gbkOf(const std::optional<std::string>& argument, const char* flag)
{
    if (!argument) return std::nullopt;
    return terminal::gbkFrom(*argument, fmt::format("{} {}", flag, *argument));
}

std::optional<std::string> systemNameOf(const std::optional<std::string>& argument, const char* flag)
{
    if (!argument) return std::nullopt;
    return terminal::systemName(*argument, fmt::format("{} {}", flag, *argument));
}

const char* textOrNull(const std::optional<std::string>& text)
{
    return text ? text->c_str() : nullptr;
}

void addText(CLI::App& command, const char* flag, std::optional<std::string>& text, const char* meaning,
             const char* form)
{
    command
        .add_option_function<std::string>(
            flag, [&text](const std::string& value) { text = value; }, meaning)
        ->type_name(form)
        ->take_last();
}

} // namespace

void addConfigOptions(CLI::App& command, ConfigOptions& options)
{
    addFolderOptions(command, options.folders);
    addLimitOptions(command, options.limits);
    addText(command, "--config", options.file,
            "The project script, in the installation's \"bin\"; default quorModuleSystem.lua", "FILE");
    addText(command, "--init-arg", options.initArg, "Calls the project script's initConfig(TEXT)", "TEXT");
    addText(command, "--user-version", options.userVersion, "Calls its setUserVersion(TEXT)", "TEXT");
    addText(command, "--design-db-module", options.designDbModule, "Calls its setDesignDbModule(TEXT)",
            "TEXT");
    command.add_flag("--permit-null", options.permitNull,
                     "Asks as a host that permits null: the getters show no messages of their own, and give "
                     "none of the fallbacks behind them");
}

ConfigSession::ConfigSession(const ConfigOptions& options)
    : limit_(options.limits), file_(systemNameOf(options.file, "--config")),
      initArg_(gbkOf(options.initArg, "--init-arg")),
      userVersion_(gbkOf(options.userVersion, "--user-version")),
      designDbModule_(gbkOf(options.designDbModule, "--design-db-module"))
{
    if (options.file && options.file->empty())
        throw Failure(WrongUsage, "--config: the name of a script is expected; it is empty");
    setFolders(options.folders);
    static const bool registered = (registerGuestFunctions(), true);
    static_cast<void>(registered);
    // States of this session's own, which end with it. The default ones live on while the process ends.
    quorconfig::allocThreadConfig(quorsys::currentThreadId());
    kxcom::setMessageSink(receive, this);
    lua_tinker::set_error_outlet(receiveReport, this);
    quorconfig::permitNullReturn(options.permitNull);
}

ConfigSession::~ConfigSession()
{
    isSettingUp_ = true; // whatever the scripts have left to say is shown at once
    quorconfig::freeThreadConfig(quorsys::currentThreadId());
    quorconfig::permitNullReturn(false);
    kxcom::setMessageSink(nullptr, nullptr);
    lua_tinker::set_error_outlet(nullptr, nullptr);
}

void ConfigSession::receive(const char* text, void* session)
{
    static_cast<ConfigSession*>(session)->keepOrShow(text);
}

void ConfigSession::receiveReport(const char* text, std::size_t length, void* session)
{
    static_cast<ConfigSession*>(session)->keepOrShow(std::string_view(text, length));
}

void ConfigSession::keepOrShow(std::string_view message)
{
    if (isSettingUp_) terminal::showMessage(message);
    try {
        messages_.emplace_back(message);
    } catch (const std::exception&) {
        if (!isSettingUp_) terminal::showMessage(message);
    }
}

std::string ConfigSession::systemPathOf(ConfigScript script) const
{
    if (script == ConfigScript::System) return QuorSystem::getFullQuorName("bin", systemScript);
    return QuorSystem::getBinRuntimeFullName(file_ ? file_->c_str() : projectScript);
}

std::string ConfigSession::pathOf(ConfigScript script) const
{
    return terminal::fromSystemName(systemPathOf(script));
}

void ConfigSession::load(ConfigScript script)
{
    const bool isReady = script == ConfigScript::System
                             ? quorconfig::initSysConfig()
                             : quorconfig::initConfig(textOrNull(file_), textOrNull(initArg_),
                                                      textOrNull(userVersion_), textOrNull(designDbModule_));
    limit_.check();
    if (isReady) return;
    long long time = 0;
    const char* reason = quorsys::fileModificationTime(systemPathOf(script).c_str(), time)
                             ? "it cannot be read, compiled or run to its end"
                             : "there is no such file, or it cannot be examined";
    throw Failure(ScriptFailed, fmt::format("{}: {}", pathOf(script), reason));
}

void ConfigSession::prepare(ConfigScript script)
{
    if (std::find(ready_.begin(), ready_.end(), script) != ready_.end()) return;
    ready_.push_back(script);
    terminal::expectPath(systemPathOf(script));
    limit_.setScript(pathOf(script));
    isSettingUp_ = true;
    const ErrorWatch watch;
    load(script);
    isSettingUp_ = false;
    if (watch.sawErrors()) raisedInSetUp_.push_back(pathOf(script));
    std::move(messages_.begin(), messages_.end(), std::back_inserter(setUpMessages_));
    messages_.clear();
}

ConfigAnswer ConfigSession::ask(const Getter& getter, const GetterArguments& arguments)
{
    prepare(getter.script);
    ConfigAnswer answer;
    answer.getter = &getter;
    answer.arguments = arguments;
    const ErrorWatch watch;
    limit_.setScript(pathOf(getter.script));
    answer.value = getter.ask(answer.arguments);
    answer.origin = quorconfig::lastAnswerOrigin();
    answer.messages = std::exchange(messages_, {});
    answer.raised = watch.sawErrors();
    limit_.check();
    // False of a function that failed is no answer of the script's.
    if (answer.raised && std::holds_alternative<bool>(answer.value) && !std::get<bool>(answer.value))
        answer.origin = quorconfig::AnswerOrigin::None;
    const auto* path = std::get_if<std::string>(&answer.value);
    if (getter.text == GetterText::Path && path && !path->empty()) answer.isThere = leadsSomewhere(*path);
    return answer;
}

} // namespace quor

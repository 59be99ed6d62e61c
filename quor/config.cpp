#include "ConfigReport.h"
#include "ConfigSession.h"
#include "Failure.h"
#include "OutputFile.h"
#include "Subcommands.h"
#include "Terminal.h"

#include <fmt/format.h>
#include <memory>
#include <string>
#include <vector>

namespace quor {
namespace {

struct ConfigCommand {
    ConfigOptions config;
    GivenOptions given;
    std::string getter;
    bool json = false;
};

constexpr const char* exitCodes =
    R"(Exit codes: 0 done; 1 a configuration script did not load, or one of its functions raised an error; 2 the command
was used wrongly.)";

/// What a subcommand found out. The scripts are gone by then, and nothing of them runs any more.
struct Report {
    std::string output; ///< in UTF-8
    std::string said;   ///< to people
    std::string raised; ///< where scripts raised errors
};

void addRaised(Report& report, const std::string& place)
{
    report.raised += "\n  " + place;
}

std::string placeOf(const ConfigAnswer& answer)
{
    const char* module = nullptr;
    if (answer.getter->takes(GetterOption::Module)) module = answer.arguments.text(GetterOption::Module);
    return module ? fmt::format("{} for {}", answer.getter->name, module) : answer.getter->name;
}

void addRaised(Report& report, const ConfigSession& session, const std::vector<ConfigAnswer>& answers)
{
    for (const std::string& path : session.raisedInSetUp())
        addRaised(report, "the set-up of " + path);
    for (const ConfigAnswer& answer : answers) {
        if (answer.raised) addRaised(report, placeOf(answer));
    }
}

Report reportOne(const ConfigCommand& command)
{
    const Getter& getter = findGetter(command.getter);
    checkOptions(getter, command.given);
    const GetterArguments arguments(command.given);
    ConfigSession session(command.config);
    const ConfigAnswer answer = session.ask(getter, arguments);
    for (const std::string& message : answer.messages)
        terminal::showMessage(message);
    Report report;
    report.output = command.json ? jsonOf(answer) + "\n" : lineOf(answer);
    report.said = provenanceOf(answer);
    addRaised(report, session, {answer});
    return report;
}

/// The module that was asked for, or all of them.
std::vector<QuorAuth::Module> modulesOf(const GetterArguments& arguments)
{
    if (arguments.has(GetterOption::Module)) return {arguments.module()};
    return {std::begin(QuorAuth::allModules), std::end(QuorAuth::allModules)};
}

std::vector<ConfigAnswer> askAll(ConfigSession& session, const GetterArguments& arguments)
{
    std::vector<ConfigAnswer> answers;
    const auto isAsked = [&arguments](const Getter& getter) {
        // Without a function of the script it has no question.
        return !getter.takes(GetterOption::Function) || arguments.has(GetterOption::Function);
    };
    for (const QuorAuth::Module module : modulesOf(arguments)) {
        for (const Getter& getter : allGetters()) {
            if (getter.takes(GetterOption::Module) && isAsked(getter))
                answers.push_back(session.ask(getter, arguments.of(module)));
        }
    }
    for (const Getter& getter : allGetters()) {
        if (!getter.takes(GetterOption::Module)) answers.push_back(session.ask(getter, arguments));
    }
    return answers;
}

Report reportAll(const ConfigCommand& command)
{
    const GetterArguments arguments(command.given);
    ConfigSession session(command.config);
    session.prepare(ConfigScript::Project);
    session.prepare(ConfigScript::System);
    const std::vector<ConfigAnswer> answers = askAll(session, arguments);
    Report report;
    report.output =
        command.json ? jsonOf(session, answers, command.config.permitNull) : tableOf(session, answers);
    report.said = summaryOf(answers);
    addRaised(report, session, answers);
    return report;
}

void finish(const Report& report, bool isJson)
{
    OutputFile file("-");
    if (isJson)
        file.write(report.output);
    else
        file.writeText(report.output);
    file.finish();
    terminal::say("{}", report.said);
    if (!report.raised.empty()) throw Failure(ScriptFailed, "errors were raised by:" + report.raised);
}

CLI::App& addPart(CLI::App& config, Action& action, const std::shared_ptr<ConfigCommand>& command,
                  const char* name, const char* description, Report (*reportOf)(const ConfigCommand&))
{
    CLI::App& part = *config.add_subcommand(name, description);
    addConfigOptions(part, command->config);
    addGetterOptions(part, command->given);
    part.add_flag("--json", command->json, "Writes JSON, in UTF-8");
    part.footer(exitCodes);
    part.callback([command, reportOf, &action] {
        action = [command, reportOf] { finish(reportOf(*command), command->json); };
    });
    return part;
}

} // namespace

void addConfig(CLI::App& program, Action& action)
{
    CLI::App& config =
        *program.add_subcommand("config", "Shows what the configuration scripts tell the CAD program");
    config.require_subcommand(1);
    config.footer(exitCodes);

    auto one = std::make_shared<ConfigCommand>();
    CLI::App& get = addPart(config, action, one, "get", "Asks one getter and prints its answer", reportOne);
    get.add_option("GETTER", one->getter, "The getter's name, as getProjectSpec or projectSpec")
        ->required()
        ->type_name("");
    get.footer(fmt::format("Getters and what they take:\n{}\n{}", listOfGetters(), exitCodes));

    addPart(config, action, std::make_shared<ConfigCommand>(), "table",
            "Asks all getters, for one module or for all, and prints a table", reportAll);
}

} // namespace quor

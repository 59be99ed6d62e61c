#include "Failure.h"
#include "Language.h"
#include "Subcommands.h"
#include "System.h"
#include "Terminal.h"

#include <CLI/CLI.hpp>
#include <QuorScriptor/version.h>
#include <exception>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr const char* about = "Runs the scripts of a plant-design catalogue without the CAD program.\n"
                              "Exit codes: 0 done; 1 the script failed; 2 the command was used wrongly.";

constexpr const char* seeHelp = "quor --help, and --help behind a subcommand, say what can be asked.";

void parse(CLI::App& program, int count, char** given)
{
    std::vector<std::string> arguments = quor::system::arguments(count, given);
    std::vector<char*> texts;
    texts.reserve(arguments.size());
    for (std::string& argument : arguments)
        texts.push_back(argument.data());
    program.parse(static_cast<int>(texts.size()), texts.data());
}

int run(int count, char** arguments)
{
    quor::terminal::start();
    CLI::App program(about, "quor");
    quor::Action action;
    program.set_version_flag("--version", std::string("quor ") + Quor::version(),
                             "Print the version and exit");
    program.allow_windows_style_options(false); // "/valves/gate.lua" is a path
    program.require_subcommand(0, 1);           // a later argument is never taken for another subcommand
    quor::addAsk(program, action);
    quor::addBatch(program, action);
    quor::addCall(program, action);
    quor::addConfig(program, action);
    quor::addDraw(program, action);
    quor::addKeypoints(program, action);
    std::optional<std::string> language;
    quor::language::addOption(program, language);
    try {
        parse(program, count, arguments);
    } catch (const CLI::Success& help) {
        return program.exit(help);
    } catch (const CLI::ParseError& error) {
        throw quor::Failure(quor::WrongUsage, fmt::format("{}\n{}", error.what(), seeHelp));
    }
    if (!action) throw quor::Failure(quor::WrongUsage, std::string("a subcommand is expected\n") + seeHelp);
    quor::language::choose(language);
    action();
    return quor::Done;
}

} // namespace

int main(int count, char** arguments)
{
    try {
        return run(count, arguments);
    } catch (const quor::Ended& ended) {
        return ended.exitCode;
    } catch (const quor::Failure& failure) {
        quor::terminal::say("quor: {}", failure.what());
        return failure.exitCode();
    } catch (const std::exception& error) {
        quor::terminal::say("quor: {}", error.what());
        return quor::ScriptFailed;
    }
}

#include "CallArguments.h"
#include "CallFormat.h"
#include "CallResults.h"
#include "CallWatch.h"
#include "Failure.h"
#include "OutputFile.h"
#include "PrimaryJson.h"
#include "ResultOptions.h"
#include "ScriptSession.h"
#include "Subcommands.h"
#include "Terminal.h"

#include <memory>

namespace quor {
namespace {

struct CallOptions {
    ScriptOptions script;
    std::string function;
    std::string format;
    std::vector<std::string> arguments;
    ResultOptions result;
};

struct Called {
    std::string path;   ///< of the script, as it was found
    std::string script; ///< its file name
    std::string function;
    std::size_t results = 0;
    std::size_t notGiven = 0;
    std::string text;
    std::size_t strays = 0;
};

constexpr const char* callHelp =
    R"(An ARG that begins with '-' and no digit, or is "++", stands behind '--', as do all that follow it. Results are
shown by their letters in order; one of another type than its letter takes is not given.
)";

/// More arguments than any command line has.
constexpr int mostArguments = 1 << 20;

void show(const CallOptions& options, const CallFormat& format, const CallResults& results, Called& called)
{
    if (!options.result.isJson()) {
        called.text = results.lines(called.strays);
        return;
    }
    called.text = jsonHead(called.script, "function", called.function, called.strays) + ",\"format\":";
    appendJson(called.text, format.text());
    called.text += ",\n\"results\":" + results.json(called.strays) + "}\n";
}

/// Runs the script. When this ends the script's state is gone, and nothing of it runs any more.
Called called(const CallOptions& options)
{
    if (options.function.empty())
        throw Failure(WrongUsage, "FUNCTION: the name of a global function is expected; it is empty");
    const CallFormat format = readCallFormat(options.format);
    CallArguments arguments(format.arguments, options.arguments);
    Called called;
    called.function = terminal::gbkFrom(options.function, "FUNCTION " + options.function);

    const StandardOutputAside aside; // outlives the session, since closing the state runs collectors
    ScriptSession session(options.script);
    checkOutput(options.result, session);
    arguments.addTextStyle(session.textStyle());
    session.load();
    session.checkFunction(called.function);
    lua_State* L = session.scriptor().getLua(false);
    arguments.addTables(L);
    CallResults results(format.results);
    std::vector<quorlua::CallItem> items = arguments.items();
    results.addTo(items);
    const CallWatch watch(L, called.function, format.results.size());
    if (!watch.isInstalled()) session.failCall("function", called.function, "the function cannot be fetched");
    const bool done = quorlua::callLuaItems(L, called.function.c_str(), format.text().c_str(), items.data());
    if (!watch.returned()) session.failCall("function", called.function, "the function raised an error");
    if (!done)
        session.failCall("function", called.function,
                         watch.returnedOnlyNil() ? "the function returned nothing, or only nil"
                                                 : "the results cannot be read");
    results.settle(watch);
    called.path = session.path();
    called.script = session.name();
    called.results = format.results.size();
    called.notGiven = results.notGiven();
    show(options, format, results, called);
    return called;
}

void call(const CallOptions& options)
{
    withOutput(options.result, [&options] {
        const Called result = called(options);
        writeResult(options.result, result.text);
        tellStrays(options.result, result.path, result.strays);
        if (options.script.quiet) return;
        terminal::say("{} {}: {} result{}{}", result.script, terminal::fromGbk(result.function),
                      result.results, result.results == 1 ? "" : "s",
                      result.notGiven == 0 ? "" : fmt::format(", {} not given", result.notGiven));
    });
}

} // namespace

void addCall(CLI::App& program, Action& action)
{
    CLI::App* command = program.add_subcommand(
        "call", "Calls a global function of a script by a format, and shows what it returns");
    auto options = std::make_shared<CallOptions>();
    addScriptOptions(*command, options->script);
    command->add_option("FUNCTION", options->function, "The global function to call")
        ->required()
        ->type_name("");
    command
        ->add_option("FORMAT", options->format,
                     "The letters of the arguments, '>' and the letters of the results, as in \"ss>ip\"")
        ->required()
        ->type_name("");
    // Taken one by one, as they stand: a list would be split where a text has brackets and commas.
    CLI::Option* arguments = command->add_option(
        "ARG", [](const CLI::results_t&) { return true; }, "The arguments, one for each letter");
    arguments->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->expected(mostArguments, CLI::detail::expected_max_vector_size)
        ->type_name("");
    addResultOptions(*command, options->result, "text", "a line for each result");
    command->footer(helpOfLetters() + "\n" + callHelp + "\n" + command->get_footer());
    command->callback([options, arguments, &action] {
        options->arguments = arguments->results();
        action = [options] { call(*options); };
    });
}

} // namespace quor

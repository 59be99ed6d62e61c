#include "CallArguments.h"
#include "CallWatch.h"
#include "Failure.h"
#include "OutputFile.h"
#include "ParameterValue.h"
#include "ResultOptions.h"
#include "ScriptSession.h"
#include "Subcommands.h"
#include "Terminal.h"
#include "ValueJson.h"
#include "ValueLine.h"

#include <QuorMsgHandle/QuorMsgHandle.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <memory>
#include <optional>

namespace quor {
namespace {

using Quor::CadReturn;
using Quor::GlibStatus;

/// What an option was given, if it was.
using Given = std::optional<std::string>;

struct AskOptions {
    ScriptOptions script;
    std::string kind;
    Given segment;
    std::vector<std::string> passed;
    Given table;
    Given matrix;
    bool textStyle = false;
    Given first;
    Given second;
    ResultOptions result;
};

/// What is handed to the segment, and what the exchange begins with.
struct Inputs {
    std::vector<KVParams> parameters;
    std::optional<LuaValue> table;
    std::optional<KxGeMatrix3D> matrix;
    KxGePoint3D first;
    KxGePoint3D second;
};

struct Answer {
    std::string path;   ///< of the script, as it was found
    std::string script; ///< its file name
    std::string segment;
    /// The result from the JSON's head on, or the lines.
    std::string text;
    std::size_t strays = 0;
};

constexpr const char* exchangeFunction = "quorgetparam_ui";

constexpr const char* askHelp = R"(Kinds:
  yesno      the segment returns true or false
  integer    the segment returns a number, of which the whole part counts
  direction  the segment takes no arguments and returns { needxdir = { true or false, text } }
  ui         quorgetparam_ui takes the first point and returns a status (0: accepted), both points and parameters

A segment of the kinds yesno and integer is called, as hosts do it, with one of:
  the parameters of --pass, none at all included
  the parameters of --pass, and the matrix of --matrix or the text style of --textstyle
  the text style of --textstyle alone, when there is no --pass
  the table of --table, and the text style of --textstyle if it is given
)";

/// What a kind of question takes.
struct Kind {
    const char* name;
    bool takesArguments; ///< --table, --matrix, --textstyle
    bool isExchange;     ///< takes --first and --second, and no --segment
    bool takesParameters;
};

constexpr Kind kinds[] = {
    {"yesno", true, false, true},
    {"integer", true, false, true},
    {"direction", false, false, false},
    {"ui", false, true, true},
};

const Kind& kindOf(const AskOptions& options)
{
    for (const Kind& kind : kinds) {
        if (options.kind == kind.name) return kind;
    }
    throw Failure(WrongUsage,
                  fmt::format("--kind {}: yesno, integer, direction or ui is expected", options.kind));
}

void checkOptions(const AskOptions& options)
{
    const Kind& kind = kindOf(options);
    const struct {
        const char* name;
        bool given;
        bool taken;
    } rules[] = {
        {"--segment", options.segment.has_value(), !kind.isExchange},
        {"--pass", !options.passed.empty(), kind.takesParameters},
        {"--table", options.table.has_value(), kind.takesArguments},
        {"--matrix", options.matrix.has_value(), kind.takesArguments},
        {"--textstyle", options.textStyle, kind.takesArguments},
        {"--first", options.first.has_value(), kind.isExchange},
        {"--second", options.second.has_value(), kind.isExchange},
    };
    for (const auto& [name, given, taken] : rules) {
        if (given && !taken)
            throw Failure(WrongUsage, fmt::format("{}: --kind {} takes none", name, kind.name));
    }
    if (options.segment && options.segment->empty())
        throw Failure(WrongUsage, "--segment: the name of a segment is expected; it is empty");
    const auto exclude = [](bool one, const char* name, bool other, const char* otherName) {
        if (one && other)
            throw Failure(WrongUsage, fmt::format("{}: no segment takes it with {}", name, otherName));
    };
    exclude(options.table.has_value(), "--table", !options.passed.empty(), "--pass");
    exclude(options.table.has_value(), "--table", options.matrix.has_value(), "--matrix");
    exclude(options.matrix.has_value(), "--matrix", options.textStyle, "--textstyle");
}

Inputs readInputs(const AskOptions& options)
{
    Inputs inputs;
    for (const std::string& text : options.passed)
        inputs.parameters.push_back(readParameter(text, "--pass " + text));
    if (options.table) inputs.table = readTableArgument(*options.table, "--table");
    if (options.matrix) inputs.matrix = readMatrixArgument(*options.matrix, "--matrix");
    if (options.first) inputs.first = readPointArgument(*options.first, "--first");
    if (options.second) inputs.second = readPointArgument(*options.second, "--second");
    return inputs;
}

/// Calls the segment with what is there; on Ok its result is on top of the stack.
GlibStatus callSegment(ScriptSession& session, const std::string& segment, const AskOptions& options,
                       const Inputs& inputs)
{
    QuorGlibScriptor& scriptor = session.scriptor();
    const GlibTextStyle* style = options.textStyle ? session.textStyle() : nullptr;
    const char* name = segment.c_str();
    if (inputs.table) {
        lua_State* L = scriptor.getLua(false);
        pushLuaValue(L, *inputs.table);
        const lua_tinker::table table(L, -1);
        return style ? scriptor.callSeg(name, table, *style) : scriptor.callSeg(name, table);
    }
    if (inputs.matrix) return scriptor.callSeg(name, inputs.parameters, *inputs.matrix);
    if (!style) return scriptor.callSeg(name, inputs.parameters);
    if (inputs.parameters.empty()) return scriptor.callSeg(name, *style);
    return scriptor.callSeg(name, inputs.parameters, *style);
}

/// An answer of a kind, in the one form or the other.
class Form {
public:
    Form(const AskOptions& options, Answer& answer) : isJson_(options.result.isJson()), answer_(answer)
    {
        if (isJson_) answer_.text = jsonHead(answer.script, "segment", answer.segment, answer.strays);
    }

    /// A member of the object; in text a line, which begins with the name unless that is empty.
    template<class Value>
    void put(const char* member, const char* name, const Value& value)
    {
        if (isJson_) {
            answer_.text += fmt::format(",\"{}\":", member) + ValueJson(answer_.strays).of(value).dump();
            return;
        }
        ValueLine line(answer_.text, answer_.strays);
        if (*name != '\0') line.raw(std::string(name) + " ");
        line.put(value);
        line.raw("\n");
    }
    void putYesNo(const char* member, bool yes)
    {
        if (isJson_)
            put(member, "", yes);
        else
            answer_.text += yes ? "yes\n" : "no\n";
    }
    void putJson(const char* member, const Json& value)
    {
        if (isJson_) answer_.text += fmt::format(",\"{}\":", member) + value.dump();
    }
    void putLine(const std::string& line)
    {
        if (!isJson_) answer_.text += line + "\n";
    }
    void end()
    {
        if (isJson_) answer_.text += "}\n";
    }

private:
    bool isJson_;
    Answer& answer_;
};

template<class Value>
Value answerOf(ScriptSession& session, const std::string& segment, const AskOptions& options,
               const Inputs& inputs, const char* expected)
{
    QuorGlibScriptor& scriptor = session.scriptor();
    session.checkSegment(callSegment(session, segment, options, inputs), segment);
    lua_State* L = scriptor.getLua(false);
    Value answer{};
    if (scriptor.parseRtn(answer) != GlibStatus::Ok)
        session.failCall("segment", segment,
                         fmt::format("status 4: {} is expected; the segment returned a {} value", expected,
                                     lua_typename(L, lua_type(L, -1))));
    scriptor.getLua(true);
    return answer;
}

void askDirection(ScriptSession& session, const std::string& segment, Form& form)
{
    int needed = 0;
    std::string name;
    const GlibStatus status = session.scriptor().callSeg(segment.c_str(), needed, name);
    if (status == GlibStatus::ScriptFailed && kxcom::getQuorLastErrorCode() == 0)
        session.failCall("segment", segment,
                         "status 4: { needxdir = { true or false, text } } is expected; the segment returned "
                         "something else");
    session.checkSegment(status, segment);
    form.putYesNo("answer", needed != 0);
    form.put("text", "text", name);
}

/// The number's name; null when it is the script's own.
const char* nameOf(CadReturn status)
{
    switch (status) {
    case CadReturn::Accepted:
        return "Accepted";
    case CadReturn::StateMissing:
        return "StateMissing";
    case CadReturn::CallFailed:
        return "CallFailed";
    }
    return nullptr;
}

/// Why a host takes an exchange for failed.
std::string reasonOf(const CallWatch& watch)
{
    if (!watch.returned()) return "the function raised an error";
    if (watch.returnedOnlyNil()) return "the function returned nothing, or only nil";
    if (watch.takes(0, 'i')) return "the script itself returned this status, which the host takes for that";
    return fmt::format("a number is expected as its first result; a {} value is there", watch.typeName(0));
}

void askExchange(ScriptSession& session, Inputs& inputs, Form& form)
{
    session.checkFunction(exchangeFunction);
    constexpr std::size_t results = 4;
    const std::string function = exchangeFunction;
    const CallWatch watch(session.scriptor().getLua(false), function, results);
    if (!watch.isInstalled()) session.failCall("function", function, "the function cannot be fetched");
    const CadReturn status = session.scriptor().exeLuaUI(inputs.first, inputs.second, inputs.parameters);
    const char* name = nameOf(status);
    const int number = static_cast<int>(status);
    if (status == CadReturn::StateMissing || status == CadReturn::CallFailed)
        session.failCall("function", function,
                         fmt::format("return {}, {}: {}", number, name, reasonOf(watch)));
    form.putLine(fmt::format("return {}, {}", number, name ? name : "the script's own"));
    form.putJson("return", number);
    form.putJson("name", name ? Json(name) : Json());
    form.put("first", "first", inputs.first);
    form.put("second", "second", inputs.second);
    form.put("parameters", "parameters", inputs.parameters);
}

/// Runs the script. When this ends the script's state is gone, and nothing of it runs any more.
Answer answerTo(const AskOptions& options)
{
    checkOptions(options);
    Inputs inputs = readInputs(options);
    Answer answer;
    const StandardOutputAside aside; // outlives the session, since closing the state runs collectors
    ScriptSession session(options.script);
    checkOutput(options.result, session);
    if (options.textStyle && !session.textStyle())
        throw Failure(WrongUsage, "--textstyle: a --scene with text styles is expected; there is none");
    session.load();
    answer.path = session.path();
    answer.script = session.name();
    answer.segment =
        kindOf(options).isExchange ? exchangeFunction : session.chooseSegment(options.segment.value_or(""));
    Form form(options, answer);
    if (!kindOf(options).isExchange) form.putJson("status", static_cast<int>(GlibStatus::Ok));
    if (options.kind == "yesno")
        form.putYesNo("answer", answerOf<bool>(session, answer.segment, options, inputs, "true or false"));
    else if (options.kind == "integer")
        form.put("answer", "", answerOf<int>(session, answer.segment, options, inputs, "a number"));
    else if (options.kind == "direction")
        askDirection(session, answer.segment, form);
    else
        askExchange(session, inputs, form);
    form.end();
    return answer;
}

void ask(const AskOptions& options)
{
    withOutput(options.result, [&options] {
        const Answer answer = answerTo(options);
        writeResult(options.result, answer.text);
        tellStrays(options.result, answer.path, answer.strays);
        if (options.script.quiet) return;
        terminal::say("{} {}: answered", answer.script, terminal::fromGbk(answer.segment));
    });
}

} // namespace

void addAsk(CLI::App& program, Action& action)
{
    CLI::App* command = program.add_subcommand(
        "ask",
        "Asks a segment for yes or no, an integer or a direction, or exchanges points with the script");
    auto options = std::make_shared<AskOptions>();
    addScriptOptions(*command, options->script);
    command->add_option("--kind", options->kind, "What is asked for")
        ->required()
        ->type_name("yesno|integer|direction|ui");
    command
        ->add_option("--segment", options->segment,
                     "The segment to call; default main, else the script's only function")
        ->type_name("NAME");
    command
        ->add_option("--pass", options->passed,
                     "A parameter for the segment, or one that the exchange begins with; may be given many "
                     "times")
        ->type_name("NAME=VALUE")
        ->allow_extra_args(false);
    command->add_option("--table", options->table, "A table for the segment, in place of parameters")
        ->type_name("JSON");
    command->add_option("--matrix", options->matrix, "A matrix for the segment: 16 numbers, row by row")
        ->type_name("M");
    command->add_flag("--textstyle", options->textStyle, "The scene's text style for the segment");
    command->add_option("--first", options->first, "The first point of the exchange; default 0,0,0")
        ->type_name("X,Y,Z");
    command->add_option("--second", options->second, "The second point before the exchange; default 0,0,0")
        ->type_name("X,Y,Z");
    addResultOptions(*command, options->result, "text", "lines");
    command->footer(std::string(askHelp) + "\n" + command->get_footer());
    command->callback([options, &action] { action = [options] { ask(*options); }; });
}

} // namespace quor

#include "Failure.h"
#include "OutputFile.h"
#include "PrimaryJson.h"
#include "PrimaryLine.h"
#include "ResultOptions.h"
#include "ScriptSession.h"
#include "Subcommands.h"
#include "Terminal.h"

#include <QuorPrimary/QuorPrimary.h>
#include <memory>
#include <vector>

namespace quor {
namespace {

struct DrawOptions {
    ScriptOptions script;
    std::string segment;
    bool segmentGiven = false;
    ResultOptions result;
};

using Primitives = std::vector<std::unique_ptr<QuorPrimary>>;

struct Drawing {
    std::string path;   ///< of the script, as it was found
    std::string script; ///< its file name
    std::string segment;
    Primitives primitives;
};

/// Enough to make writing cheap, little enough that a long list is never held twice.
constexpr std::size_t blockSize = 1 << 16;

Primitives drawn(ScriptSession& session, const std::string& segment)
{
    std::vector<QuorPrimary*> list;
    const Quor::GlibStatus status = session.scriptor().callSeg3D(segment.c_str(), list);
    Primitives primitives;
    primitives.reserve(list.size());
    for (QuorPrimary* primitive : list)
        primitives.emplace_back(primitive);
    session.checkSegment(status, segment);
    return primitives;
}

void writeJson(OutputFile& file, const Drawing& drawing, std::size_t& strays)
{
    std::string block = jsonHead(drawing.script, "segment", drawing.segment, strays);
    block += ",\"status\":0,\n\"primitives\":[";
    const char* before = "\n";
    for (const auto& primitive : drawing.primitives) {
        block += before;
        appendJson(block, *primitive, strays);
        before = ",\n";
        if (block.size() < blockSize) continue;
        file.write(block);
        block.clear();
    }
    block += "]}\n";
    file.write(block);
}

void writeLines(OutputFile& file, const Primitives& primitives, std::size_t& strays)
{
    std::string block;
    std::size_t index = 0;
    for (const auto& primitive : primitives) {
        appendLine(block, index++, *primitive, strays);
        if (block.size() < blockSize) continue;
        file.writeText(block);
        block.clear();
    }
    file.writeText(block);
}

/// Runs the script. When this ends the script's state is gone, and nothing of it runs any more.
Drawing drawingOf(const DrawOptions& options)
{
    const StandardOutputAside aside; // outlives the session, since closing the state runs collectors
    ScriptSession session(options.script);
    checkOutput(options.result, session);
    session.load();
    Drawing drawing;
    drawing.path = session.path();
    drawing.script = session.name();
    drawing.segment = session.chooseSegment(options.segment);
    drawing.primitives = drawn(session, drawing.segment);
    return drawing;
}

void write(const DrawOptions& options, const Drawing& drawing)
{
    std::size_t strays = 0;
    OutputFile file(options.result.output);
    if (options.result.isJson())
        writeJson(file, drawing, strays);
    else
        writeLines(file, drawing.primitives, strays);
    file.finish();
    tellStrays(options.result, drawing.path, strays);
    if (options.script.quiet) return;
    const std::size_t count = drawing.primitives.size();
    terminal::say("{} {}: {} primitive{}", drawing.script, terminal::fromGbk(drawing.segment), count,
                  count == 1 ? "" : "s");
}

void draw(const DrawOptions& options)
{
    withOutput(options.result, [&options] {
        if (options.segmentGiven && options.segment.empty())
            throw Failure(WrongUsage, "--segment: the name of a segment is expected; it is empty");
        write(options, drawingOf(options));
    });
}

} // namespace

void addDraw(CLI::App& program, Action& action)
{
    CLI::App* command =
        program.add_subcommand("draw", "Runs a segment of a component's script and writes its primitives");
    auto options = std::make_shared<DrawOptions>();
    addScriptOptions(*command, options->script);
    command
        ->add_option("--segment", options->segment,
                     "The segment to call; default main, else the script's only function")
        ->type_name("NAME");
    addResultOptions(*command, options->result, "json", "a line for each primitive");
    command->callback([command, options, &action] {
        options->segmentGiven = command->count("--segment") != 0;
        action = [options] { draw(*options); };
    });
}

} // namespace quor

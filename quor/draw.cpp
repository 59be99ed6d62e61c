#include "Drawing.h"
#include "Failure.h"
#include "OutputFile.h"
#include "Subcommands.h"
#include "Terminal.h"

#include <memory>

namespace quor {
namespace {

/// Runs the script. When this ends the script's state is gone, and nothing of it runs any more.
Drawing drawAlone(const DrawOptions& options)
{
    const StandardOutputAside aside; // outlives the session, since closing the state runs collectors
    ScriptSession session(options.script);
    return drawingOf(options, session);
}

void tell(const Drawing& drawing)
{
    const std::size_t count = drawing.primitives.size();
    terminal::say("{} {}: {} primitive{}", drawing.script, terminal::fromGbk(drawing.segment), count,
                  count == 1 ? "" : "s");
}

void draw(const DrawOptions& options)
{
    withOutput(options.result, [&options] {
        if (options.segmentGiven && options.segment.empty())
            throw Failure(WrongUsage, "--segment: the name of a segment is expected; it is empty");
        const Drawing drawing = drawAlone(options);
        write(options, drawing);
        if (!options.script.quiet) tell(drawing);
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

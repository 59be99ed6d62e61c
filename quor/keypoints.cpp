#include "Failure.h"
#include "OutputFile.h"
#include "ResultOptions.h"
#include "ScriptSession.h"
#include "Subcommands.h"
#include "Terminal.h"
#include "ValueJson.h"
#include "ValueLine.h"

#include <memory>
#include <optional>

namespace quor {
namespace {

struct KeypointsOptions {
    ScriptOptions script;
    std::optional<std::string> segment;
    ResultOptions result;
};

struct Keypoints {
    std::string script; ///< its file name
    std::string segment = "keypoint";
    std::vector<Keypoint> list;
};

/// Runs the script. When this ends the script's state is gone, and nothing of it runs any more.
Keypoints keypointsOf(const KeypointsOptions& options)
{
    Keypoints keypoints;
    const StandardOutputAside aside; // outlives the session, since closing the state runs collectors
    ScriptSession session(options.script);
    checkOutput(options.result, session);
    session.load();
    keypoints.script = session.name();
    Quor::GlibStatus status = Quor::GlibStatus::Ok;
    if (options.segment) {
        keypoints.segment = session.chooseSegment(*options.segment);
        status = session.scriptor().callSeg(keypoints.segment.c_str(), keypoints.list);
    } else {
        status = session.scriptor().getKeypoints(keypoints.list);
    }
    session.checkSegment(status, keypoints.segment);
    return keypoints;
}

std::string jsonOf(const Keypoints& keypoints)
{
    std::size_t strays = 0; // of a name that was written on the command line: none
    const ValueJson json(strays);
    std::string text = jsonHead(keypoints.script, "segment", keypoints.segment, strays);
    text += ",\"status\":0,\n\"keypoints\":[";
    const char* before = "\n";
    for (const auto& [number, point] : keypoints.list) {
        Json object;
        object.emplace("number", number);
        object.emplace("point", json.of(point));
        text += before + object.dump();
        before = ",\n";
    }
    return text + "]}\n";
}

std::string linesOf(const Keypoints& keypoints)
{
    std::string text;
    std::size_t strays = 0;
    ValueLine line(text, strays);
    for (const auto& [number, point] : keypoints.list) {
        line.put(static_cast<int>(number));
        line.raw(" ");
        line.put(point);
        line.raw("\n");
    }
    return text;
}

void showKeypoints(const KeypointsOptions& options)
{
    withOutput(options.result, [&options] {
        if (options.segment && options.segment->empty())
            throw Failure(WrongUsage, "--segment: the name of a segment is expected; it is empty");
        const Keypoints keypoints = keypointsOf(options);
        writeResult(options.result, options.result.isJson() ? jsonOf(keypoints) : linesOf(keypoints));
        if (options.script.quiet) return;
        const std::size_t count = keypoints.list.size();
        terminal::say("{} {}: {} key point{}", keypoints.script, terminal::fromGbk(keypoints.segment), count,
                      count == 1 ? "" : "s");
    });
}

} // namespace

void addKeypoints(CLI::App& program, Action& action)
{
    CLI::App* command = program.add_subcommand(
        "keypoints", "Asks a component's script where it is joined, and writes its key points");
    auto options = std::make_shared<KeypointsOptions>();
    addScriptOptions(*command, options->script);
    command->add_option("--segment", options->segment, "The segment to ask; default keypoint")
        ->type_name("NAME");
    addResultOptions(*command, options->result, "json", "a line for each key point");
    command->callback([options, &action] { action = [options] { showKeypoints(*options); }; });
}

} // namespace quor

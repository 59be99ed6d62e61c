#include "Drawing.h"

#include "OutputFile.h"
#include "PrimaryJson.h"
#include "PrimaryLine.h"

namespace quor {
namespace {

using Primitives = std::vector<std::unique_ptr<QuorPrimary>>;

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

} // namespace

Drawing drawingOf(const DrawOptions& options, ScriptSession& session)
{
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
}

} // namespace quor

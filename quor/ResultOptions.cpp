#include "ResultOptions.h"

#include "CharacterSet.h"
#include "Failure.h"
#include "OutputFile.h"
#include "PrimaryJson.h"
#include "ScriptSession.h"
#include "Terminal.h"

#include <filesystem>
#include <utility>

namespace quor {
namespace {

void checkWords(const ResultOptions& options)
{
    if (options.format != "json" && options.format != "text")
        throw Failure(WrongUsage, "--format " + options.format + ": json or text is expected");
    if (options.output.empty())
        throw Failure(WrongUsage, "-o: a file, or - for standard output, is expected");
    terminal::systemName(options.output, "-o " + options.output); // where another program could not name it
}

} // namespace

void addResultOptions(CLI::App& command, ResultOptions& options, const std::string& defaultFormat,
                      const std::string& text)
{
    options.format = defaultFormat;
    const auto word = [&defaultFormat](const std::string& name) {
        return name == defaultFormat ? name + " (the default)" : name;
    };
    command
        .add_option("--format", options.format,
                    word("json") + ": for programs, in UTF-8; " + word("text") + ": " + text)
        ->type_name("json|text");
    command.add_option("-o", options.output, "The file to write; default -, standard output")
        ->type_name("FILE");
}

void checkOutput(const ResultOptions& options, ScriptSession& session)
{
    const std::pair<const std::string&, const char*> inputs[] = {{session.path(), "the script"},
                                                                 {session.scenePath(), "the scene"}};
    for (const auto& [path, name] : inputs) {
        std::error_code error;
        if (options.output != "-" &&
            std::filesystem::equivalent(system::pathOf(options.output), system::pathOf(path), error))
            throw Failure(WrongUsage,
                          fmt::format("-o {}: a file other than {} is expected", options.output, name));
    }
    session.setOutput(options.output);
}

void withOutput(const ResultOptions& options, const std::function<void()>& work)
{
    checkWords(options);
    try {
        work();
    } catch (const Failure& failure) {
        if (failure.exitCode() == ScriptFailed) removeOutput(options.output);
        throw;
    } catch (const std::exception&) {
        removeOutput(options.output);
        throw;
    }
}

void writeResult(const ResultOptions& options, const std::string& utf8)
{
    OutputFile file(options.output);
    if (options.isJson())
        file.write(utf8);
    else
        file.writeText(utf8);
    file.finish();
}

std::string jsonHead(const std::string& script, const char* member, const std::string& name,
                     std::size_t& strays)
{
    std::string head = "{\"script\":";
    appendJson(head, terminal::utf8From(script));
    head += fmt::format(",\"{}\":", member);
    appendJson(head, charset::utf8FromGbk(name, strays));
    return head;
}

void tellStrays(const ResultOptions& options, const std::string& path, std::size_t strays)
{
    if (strays == 0) return;
    const bool isOne = strays == 1;
    terminal::say("{}: {} byte{} in its texts {} no GBK and stand{} as {}", path, strays, isOne ? "" : "s",
                  isOne ? "is" : "are", isOne ? "s" : "",
                  options.isJson() ? "U+F780 to U+F7FF" : "\\x80 to \\xFF");
}

} // namespace quor

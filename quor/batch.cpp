#include "BatchRun.h"
#include "DoneJobs.h"
#include "Failure.h"
#include "Interrupt.h"
#include "Job.h"
#include "OutputFile.h"
#include "ScriptHost.h"
#include "ScriptLimit.h"
#include "Subcommands.h"
#include "Terminal.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <thread>

namespace quor {
namespace {

struct BatchOptions {
    std::string jobs;
    std::string threads;
    bool force = false;
    HostFolders folders;
    LimitOptions limits;
    bool quiet = false;
};

constexpr const char* batchHelp =
    R"(A line of JOBS is a job, an object in JSON; script and output must be there:

{"script":"gate_valve.lua", "parameters":{"P1":180}, "factor":1, "segment":"main", "scene":"isometric.json",
"format":"json", "output":"out/gate_valve.json"}

It is drawn as "quor draw" draws it. Paths are from the working folder. A job whose output is there, and was drawn from
the same job, script and scene, is left out.

Exit codes: 0 all are drawn; 1 some failed; 2 the command was used wrongly, and nothing was drawn; 130 interrupted.)";

constexpr unsigned mostThreads = 1024;

unsigned readThreads(const std::string& text)
{
    if (text.empty()) return std::clamp(std::thread::hardware_concurrency(), 1U, mostThreads);
    unsigned number = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end || number < 1 || number > mostThreads)
        throw Failure(WrongUsage, fmt::format("--threads {}: a whole number from 1 to {} is expected", text,
                                              mostThreads));
    return number;
}

std::vector<const Job*> jobsToDo(const std::vector<Job>& jobs, const DoneJobs& done, bool force)
{
    std::vector<const Job*> missing;
    for (const Job& job : jobs) {
        if (force || !done.has(job)) missing.push_back(&job);
    }
    return missing;
}

std::string summary(const std::string& name, std::size_t all, std::size_t missing, const BatchCount& count)
{
    std::string text = fmt::format("{}: {} job{}: {} drawn", name, all, all == 1 ? "" : "s", count.drawn);
    if (missing != all) text += fmt::format(", {} there already", all - missing);
    if (count.failed != 0) text += fmt::format(", {} failed", count.failed);
    if (count.left != 0) text += fmt::format(", {} not begun", count.left);
    return text;
}

ExitCode exitCodeOf(const BatchCount& count)
{
    if (interrupt::signal() != 0) return static_cast<ExitCode>(interrupt::exitCode(interrupt::signal()));
    return count.failed != 0 || count.left != 0 ? ScriptFailed : Done;
}

void batch(const BatchOptions& options)
{
    const unsigned threads = readThreads(options.threads);
    const NewStateLimits limits(options.limits);
    const StandardOutputAside aside;
    const ScriptHost host(options.folders);
    const std::vector<Job> jobs = readJobs(options.jobs, options.limits);
    system::emptyInput(); // which script would get it would be chance
    DoneJobs done(jobs);
    const std::vector<const Job*> missing = jobsToDo(jobs, done, options.force);
    interrupt::watch();
    BatchRun run(missing, done, limits.seconds());
    const BatchCount count = run.run(threads, !options.quiet && system::isErrorsTerminal());

    const std::string text = summary(options.jobs, jobs.size(), missing.size(), count);
    const ExitCode exitCode = exitCodeOf(count);
    if (exitCode != Done || !options.quiet) terminal::say("{}{}", exitCode == Done ? "" : "quor: ", text);
    // What scripts that still run have in use must stay.
    if (count.isStuck) std::_Exit(exitCode);
    if (exitCode != Done) throw Ended(exitCode);
}

} // namespace

void addBatch(CLI::App& program, Action& action)
{
    CLI::App* command = program.add_subcommand("batch", "Draws many components, on several threads");
    auto options = std::make_shared<BatchOptions>();
    command->add_option("JOBS", options->jobs, "The file of jobs; - is standard input")
        ->required()
        ->type_name("");
    command
        ->add_option("--threads", options->threads, "How many draw at a time; default one for each processor")
        ->type_name("N");
    command->add_flag("--force", options->force, "Draws also what is there already");
    addFolderOptions(*command, options->folders);
    addLimitOptions(*command, options->limits);
    command->add_flag("-q,--quiet", options->quiet,
                      "Leaves out the progress, and the line that sums up when all went well");
    command->footer(batchHelp);
    command->callback([options, &action] { action = [options] { batch(*options); }; });
}

} // namespace quor

#include "ScriptLimit.h"

#include "Failure.h"
#include "OutputFile.h"
#include "Terminal.h"

#include <charconv>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <thread>

namespace quor {
namespace {

using Clock = std::chrono::steady_clock;

/// For the last words; whoever reads them may have stopped reading.
constexpr std::chrono::seconds patienceForWords(2);

constexpr double mostSeconds = 1e7;
constexpr double mostMebibytes = 1 << 30;
constexpr double mebibyte = 1 << 20;

double readLimit(const std::string& text, const char* option, double most)
{
    double number = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end || !(number >= 0 && number <= most))
        throw Failure(WrongUsage,
                      fmt::format("{} {}: a number from 0 to {:.0f} is expected", option, text, most));
    return number;
}

} // namespace

std::string overTime(const std::string& script, const LimitOptions& options)
{
    return fmt::format("{}: --time-limit {}: the script still ran after {} seconds", script, options.seconds,
                       options.seconds);
}

/// Ends the command when it is still there at the deadline.
class ScriptLimit::Watchdog {
public:
    Watchdog(double seconds, const LimitOptions& options)
        : options_(options),
          deadline_(Clock::now() + patienceForScripts +
                    std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds))),
          thread_([this] { watch(); })
    {
    }
    ~Watchdog()
    {
        {
            const std::lock_guard lock(mutex_);
            isCalledOff_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    void setScript(const std::string& path)
    {
        const std::lock_guard lock(mutex_);
        script_ = path;
    }
    void setOutput(const std::string& path)
    {
        const std::lock_guard lock(mutex_);
        output_ = path;
    }

private:
    void watch()
    {
        std::unique_lock lock(mutex_);
        if (changed_.wait_until(lock, deadline_, [this] { return isCalledOff_; })) return;
        // On a thread of their own: the script's may hold what it takes to write.
        std::thread([this, script = script_, output = output_] { sayAndRemove(script, output); }).detach();
        changed_.wait_for(lock, patienceForWords, [this] { return isSaid_; });
        std::_Exit(ScriptFailed);
    }

    void sayAndRemove(const std::string& script, const std::string& output)
    {
        if (!output.empty()) removeOutput(output);
        terminal::say("quor: {}, where nothing but the command's end could end it",
                      overTime(script, options_));
        {
            const std::lock_guard lock(mutex_);
            isSaid_ = true;
        }
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    bool isCalledOff_ = false;
    bool isSaid_ = false;
    std::string script_;
    std::string output_;
    const LimitOptions& options_;
    const Clock::time_point deadline_;
    std::thread thread_;
};

void addLimitOptions(CLI::App& command, LimitOptions& options)
{
    command
        .add_option("--time-limit", options.seconds,
                    "How long scripts may run, all in all; default 60, 0 for no limit")
        ->type_name("SECONDS");
    command
        .add_option("--memory-limit", options.mebibytes,
                    "How much memory a script may hold; default 2048, 0 for no limit")
        ->type_name("MIB");
    command.add_flag(
        "--untrusted", options.untrusted,
        "Lets scripts read the installation's and the project's Lua files, and nothing else of the "
        "system");
}

NewStateLimits::NewStateLimits(const LimitOptions& options)
    : seconds_(readLimit(options.seconds, "--time-limit", mostSeconds))
{
    quorlua::ScriptLimits limits;
    limits.seconds = seconds_;
    limits.bytes =
        static_cast<std::size_t>(readLimit(options.mebibytes, "--memory-limit", mostMebibytes) * mebibyte);
    limits.untrusted = options.untrusted;
    quorlua::limitNewStates(limits);
    static_cast<void>(quorlua::takeLimitReached());
}

NewStateLimits::~NewStateLimits()
{
    quorlua::limitNewStates({});
}

void checkLimits(const LimitOptions& options, const std::string& script)
{
    switch (quorlua::takeLimitReached()) {
    case quorlua::LimitReached::None:
        return;
    case quorlua::LimitReached::Time:
        throw Failure(ScriptFailed, overTime(script, options));
    case quorlua::LimitReached::Memory:
        throw Failure(ScriptFailed,
                      fmt::format("{}: --memory-limit {}: the script asked for more than {} MiB", script,
                                  options.mebibytes, options.mebibytes));
    }
}

ScriptLimit::ScriptLimit(const LimitOptions& options) : options_(options), limits_(options)
{
    if (limits_.seconds() > 0) watchdog_ = std::make_unique<Watchdog>(limits_.seconds(), options);
}

ScriptLimit::~ScriptLimit() = default;

void ScriptLimit::setScript(const std::string& path)
{
    script_ = path;
    if (watchdog_) watchdog_->setScript(path);
}

void ScriptLimit::setOutput(const std::string& path)
{
    if (watchdog_) watchdog_->setOutput(path);
}

void ScriptLimit::check()
{
    checkLimits(options_, script_);
}

} // namespace quor

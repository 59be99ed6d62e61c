#include "BatchRun.h"

#include "Failure.h"
#include "Interrupt.h"
#include "OutputFile.h"
#include "ScriptKeeper.h"
#include "Terminal.h"

#include <QuorCommon/quorsys.h>
#include <QuorScriptor/ScriptContext.h>
#include <algorithm>
#include <filesystem>
#include <optional>
#include <thread>

namespace quor {
namespace {

/// How many jobs that nothing can end may be left behind.
constexpr unsigned spareThreads = 8;

constexpr std::chrono::milliseconds progressTime(100);

/// Thrown by a job that was left behind, and came to an end all the same.
struct LeftBehind : std::exception {};

void replaceAll(std::string& text, std::string_view what, std::string_view with)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
}

void sayFailure(const Job& job, const std::string& reason)
{
    terminal::say("quor: {}: {}: {}", job.place, job.draw.result.output, onOneLine(reason));
}

void makeFolderOf(const std::string& output)
{
    const std::filesystem::path folder = system::pathOf(output).parent_path();
    std::error_code error; // what it means, the file's opening will tell
    if (!folder.empty()) std::filesystem::create_directories(folder, error);
}

} // namespace

std::string onOneLine(std::string text)
{
    replaceAll(text, ":\n  ", ": ");
    replaceAll(text, "\n  ", ", ");
    replaceAll(text, "\n", "; ");
    return text;
}

struct BatchRun::Worker {
    std::optional<unsigned int> threadId;
    const Job* job = nullptr;
    std::optional<Clock::time_point> deadline;
    bool hasPlace = false;
    bool isLeft = false;
    std::thread thread;
};

BatchRun::BatchRun(std::vector<const Job*> jobs, DoneJobs& done, double seconds)
    : jobs_(std::move(jobs)), done_(done), seconds_(seconds)
{
}

BatchRun::~BatchRun() = default;

/// Contexts are made while no thread draws, and a thread's needs its id.
void BatchRun::startThreads(unsigned count)
{
    Lock lock(mutex_);
    try {
        while (workers_.size() < count) {
            auto worker = std::make_unique<Worker>();
            worker->thread = std::thread([this, own = worker.get()] { work(*own); });
            workers_.push_back(std::move(worker));
        }
    } catch (const std::exception&) {
        // One is enough; the others would only have made it faster.
        if (workers_.empty()) throw;
    }
    for (const auto& worker : workers_) {
        forMain_.wait(lock, [&worker] { return worker->threadId.has_value(); });
        quorlua::allocThreadVars(*worker->threadId);
    }
    isStarted_ = true;
    forWorkers_.notify_all();
}

void BatchRun::joinThreads()
{
    for (const auto& worker : workers_) {
        worker->thread.join();
        quorlua::freeThreadVars(*worker->threadId);
    }
}

BatchCount BatchRun::run(unsigned threads, bool showsProgress)
{
    const auto wanted = static_cast<unsigned>(std::min<std::size_t>(threads, jobs_.size()));
    if (wanted == 0) return count_;
    places_ = wanted;
    startThreads(wanted + (seconds_ > 0 ? spareThreads : 0));
    {
        Lock lock(mutex_);
        while (!isOver() || running_ != 0) {
            forMain_.wait_until(lock, nextLook(showsProgress));
            leaveLateOnes(lock);
            if (showsProgress) showProgress();
        }
        forWorkers_.notify_all();
        if (showsProgress) terminal::showStatus({});
        count_.left = jobs_.size() - next_;
        count_.isStuck =
            std::any_of(workers_.begin(), workers_.end(), [](const auto& worker) { return worker->isLeft; });
        if (count_.isStuck) return count_;
    }
    joinThreads();
    return count_;
}

/// Whether no further job is to be begun.
bool BatchRun::isOver() const
{
    return next_ == jobs_.size() || isExhausted_ || interrupt::signal() != 0;
}

void BatchRun::work(Worker& worker)
{
    {
        Lock lock(mutex_);
        worker.threadId = quorsys::currentThreadId();
        forMain_.notify_all();
        forWorkers_.wait(lock, [this] { return isStarted_; });
    }
    ScriptKeeper keeper;
    while (const Job* job = take(worker))
        draw(*job, worker, keeper);
}

/// Until a job is left behind.
BatchRun::Clock::duration BatchRun::timeOfJob() const
{
    return patienceForScripts +
           std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds_));
}

/// The next job; null when there is none for this thread any more.
const Job* BatchRun::take(Worker& worker)
{
    Lock lock(mutex_);
    forWorkers_.wait(lock, [&] { return worker.hasPlace || places_ > 0 || isOver(); });
    if (isOver()) {
        forWorkers_.notify_all();
        forMain_.notify_all();
        return nullptr;
    }
    if (!worker.hasPlace) --places_;
    worker.hasPlace = true;
    worker.job = jobs_[next_++];
    ++running_;
    if (seconds_ > 0) worker.deadline = Clock::now() + timeOfJob();
    return worker.job;
}

void BatchRun::draw(const Job& job, Worker& worker, ScriptKeeper& keeper)
{
    std::optional<std::string> failure;
    try {
        const terminal::MessageScope scope(job.place);
        withOutput(job.draw.result, [&] {
            Drawing drawing;
            {
                ScriptSession session(job.draw.script, keeper);
                drawing = drawingOf(job.draw, session);
            }
            if (!mayWrite(worker)) throw LeftBehind();
            makeFolderOf(job.draw.result.output);
            write(job.draw, drawing);
        });
        done_.add(job);
    } catch (const std::exception& error) {
        failure = error.what();
    }
    if (failure && mayWrite(worker)) sayFailure(job, *failure);
    finish(worker, !failure);
}

/// Ends the job's time. False when it is over already.
bool BatchRun::mayWrite(Worker& worker)
{
    const Lock lock(mutex_);
    worker.deadline.reset();
    return !worker.isLeft;
}

void BatchRun::finish(Worker& worker, bool isDrawn)
{
    const Lock lock(mutex_);
    worker.job = nullptr;
    if (worker.isLeft) {
        // It was counted then, and another has its place.
        worker.isLeft = false;
        worker.hasPlace = false;
        return;
    }
    ++(isDrawn ? count_.drawn : count_.failed);
    --running_;
}

/// When the first job can be over its time, also of those that begin from now on. An interruption wakes
/// nobody: a worker sees it with its next job.
BatchRun::Clock::time_point BatchRun::nextLook(bool showsProgress) const
{
    constexpr std::chrono::hours hour(1);
    const Clock::duration rest = seconds_ > 0 ? timeOfJob() : hour;
    Clock::time_point next = Clock::now() + (showsProgress ? progressTime : rest);
    for (const auto& worker : workers_) {
        if (worker->deadline) next = std::min(next, *worker->deadline);
    }
    return next;
}

void BatchRun::leaveLateOnes(Lock& lock)
{
    const Clock::time_point now = Clock::now();
    for (const auto& worker : workers_) {
        if (!worker->deadline || *worker->deadline > now) continue;
        const Job& job = *worker->job;
        leave(*worker);
        lock.unlock();
        removeOutput(job.draw.result.output);
        sayFailure(job, overTime(job.draw.script.script, job.draw.script.limits) +
                            ", where nothing but the command's end could end it");
        lock.lock();
    }
}

/// Gives a worker's place to another.
void BatchRun::leave(Worker& worker)
{
    worker.deadline.reset();
    worker.isLeft = true;
    --running_;
    ++places_;
    ++count_.failed;
    isExhausted_ = std::all_of(workers_.begin(), workers_.end(), [](const auto& one) { return one->isLeft; });
    forWorkers_.notify_all();
}

void BatchRun::showProgress() const
{
    constexpr std::size_t width = 30;
    const std::size_t ended = count_.drawn + count_.failed;
    const std::size_t filled = ended * width / jobs_.size();
    std::string line =
        fmt::format("[{:#<{}}{:-<{}}] {} of {}", "", filled, "", width - filled, ended, jobs_.size());
    if (count_.failed != 0) line += fmt::format(", {} failed", count_.failed);
    terminal::showStatus(line);
}

} // namespace quor

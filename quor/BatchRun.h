#pragma once

#include "DoneJobs.h"
#include "Job.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace quor {

class ScriptKeeper;

/// What became of a batch's jobs.
struct BatchCount {
    std::size_t drawn = 0;
    std::size_t failed = 0;
    std::size_t left = 0; ///< not begun
    bool isStuck = false; ///< scripts still run that nothing can end; the process must end by `std::_Exit`
};

/// Draws jobs on several threads, each with states of its own. Which thread draws a job, and what it drew
/// before, makes no difference to the result.
///
/// A job that does not end with its time has failed. Its thread is left behind with it, and another takes its
/// place; where too many are left behind, no further job is begun.
class BatchRun {
public:
    /// The jobs, and the record of what is done, must outlive it. `seconds`: the time limit of a job; 0 for
    /// none.
    BatchRun(std::vector<const Job*> jobs, DoneJobs& done, double seconds);
    ~BatchRun();
    BatchRun(const BatchRun&) = delete;
    BatchRun& operator=(const BatchRun&) = delete;

    /// Draws all jobs, or, after an interruption, those that are begun; says each failure, and shows how far
    /// it is if `showsProgress`. Once. Throws `std::system_error` when there is no thread.
    BatchCount run(unsigned threads, bool showsProgress);

private:
    using Clock = std::chrono::steady_clock;
    using Lock = std::unique_lock<std::mutex>;
    struct Worker;

    void startThreads(unsigned count);
    void joinThreads();
    void work(Worker& worker);
    const Job* take(Worker& worker);
    void draw(const Job& job, Worker& worker, ScriptKeeper& keeper);
    bool mayWrite(Worker& worker);
    void finish(Worker& worker, bool isDrawn);
    bool isOver() const;
    Clock::duration timeOfJob() const;
    Clock::time_point nextLook(bool showsProgress) const;
    void leaveLateOnes(Lock& lock);
    void leave(Worker& worker);
    void showProgress() const;

    const std::vector<const Job*> jobs_;
    DoneJobs& done_;
    const double seconds_;

    std::mutex mutex_; ///< of all that follows
    std::condition_variable forWorkers_;
    std::condition_variable forMain_;
    std::vector<std::unique_ptr<Worker>> workers_;
    bool isStarted_ = false;
    bool isExhausted_ = false;
    std::size_t next_ = 0;
    std::size_t running_ = 0;
    unsigned places_ = 0; ///< for workers that may draw and do not yet
    BatchCount count_;
};

/// A text of several lines on one.
std::string onOneLine(std::string text);

} // namespace quor

#pragma once

#include "Job.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace quor {

/// Which results are there already. In each folder of results a file ".quor-batch" has a line for each result
/// that was written: what it was made from, as a number, its size, and its name. So it does not matter in
/// which file a job stands, nor which process drew it. What a line cannot be trusted for is drawn again.
class DoneJobs {
public:
    /// Reads the records of all folders, and the scripts and scenes, once each.
    explicit DoneJobs(const std::vector<Job>& jobs);
    DoneJobs(const DoneJobs&) = delete;
    DoneJobs& operator=(const DoneJobs&) = delete;

    /// Whether the job's result is there and was made from the same job, script and scene.
    bool has(const Job& job) const;
    /// Records the result, which is there. Any thread may.
    void add(const Job& job);

private:
    struct Record {
        std::uint64_t origin = 0;
        std::uint64_t size = 0;

        bool operator==(const Record&) const = default;
    };

    void readFolder(const std::string& folder);
    std::uint64_t originOf(const Job& job);

    std::map<std::string, std::uint64_t> scripts_; ///< what stands in them, by their given names
    std::map<std::string, std::uint64_t> scenes_;
    std::set<std::string> folders_;
    std::unordered_map<std::string, Record> records_;        ///< by the place of the result
    std::unordered_map<std::string, std::uint64_t> origins_; ///< likewise
    std::mutex writing_;
};

} // namespace quor

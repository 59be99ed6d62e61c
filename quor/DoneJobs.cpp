#include "DoneJobs.h"

#include "Failure.h"
#include "JsonFile.h"
#include "ScriptFiles.h"
#include "System.h"

#include <QuorScriptor/version.h>
#include <charconv>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <optional>
#include <string_view>

namespace quor {
namespace {

namespace fs = std::filesystem;

constexpr const char* recordName = ".quor-batch";

/// FNV-1a, over texts that end where a byte 0 says so: the bytes of a key, not proof against malice.
class Hash {
public:
    void add(std::string_view bytes)
    {
        for (const char byte : bytes)
            put(static_cast<unsigned char>(byte));
        put(0);
    }
    void add(std::uint64_t number)
    {
        for (int shift = 0; shift < 64; shift += 8)
            put(static_cast<unsigned char>(number >> shift));
    }
    std::uint64_t value() const { return value_; }

private:
    void put(unsigned char byte) { value_ = (value_ ^ byte) * 0x100000001B3; }

    std::uint64_t value_ = 0xCBF29CE484222325;
};

std::optional<std::uint64_t> sizeOf(const std::string& path)
{
    std::error_code error;
    const fs::path place = system::pathOf(path);
    if (!fs::is_regular_file(fs::status(place, error))) return std::nullopt;
    const auto size = fs::file_size(place, error);
    if (error) return std::nullopt;
    return size;
}

/// The first number of a line, taken off with the blank behind it.
bool takeNumber(std::string_view& line, std::uint64_t& number, int base)
{
    const char* end = line.data() + line.size();
    const auto [rest, error] = std::from_chars(line.data(), end, number, base);
    if (error != std::errc() || rest == end || *rest != ' ') return false;
    line.remove_prefix(static_cast<std::size_t>(rest - line.data()) + 1);
    return true;
}

/// What stands in a file, which is read once.
std::uint64_t contentsOf(const std::string& given, FoundFile (*find)(const std::string&),
                         std::map<std::string, std::uint64_t>& known)
{
    const auto [contents, isNew] = known.emplace(given, 0);
    if (!isNew) return contents->second;
    try {
        Hash hash;
        hash.add(readTextFile(find(given).path));
        contents->second = hash.value();
    } catch (const Failure&) {
        contents->second = 0; // the job itself will fail by it
    }
    return contents->second;
}

fs::path folderOf(const Job& job)
{
    return system::pathOf(job.target).parent_path();
}

} // namespace

DoneJobs::DoneJobs(const std::vector<Job>& jobs)
{
    for (const Job& job : jobs) {
        const std::string folder = system::textOf(folderOf(job));
        if (folders_.insert(folder).second) readFolder(folder);
        origins_[job.target] = originOf(job);
    }
}

/// The last line of a result counts. One that another process has not written to its end is none.
void DoneJobs::readFolder(const std::string& folder)
{
    std::ifstream file(system::pathOf(folder) / recordName, std::ios::binary);
    for (std::string text; std::getline(file, text) && !file.eof();) {
        std::string_view line = text;
        Record record;
        if (!takeNumber(line, record.origin, 16) || !takeNumber(line, record.size, 10)) continue;
        records_[system::textOf(system::pathOf(folder) / system::pathOf(line))] = record;
    }
}

std::uint64_t DoneJobs::originOf(const Job& job)
{
    const ScriptOptions& script = job.draw.script;
    Hash hash;
    hash.add(Quor::version());
    hash.add(script.script);
    hash.add(contentsOf(script.script, findScript, scripts_));
    hash.add(script.factorGiven ? script.factor : "");
    hash.add(script.settings.size());
    for (const std::string& setting : script.settings)
        hash.add(setting);
    hash.add(job.draw.segment);
    hash.add(job.draw.result.format);
    hash.add(script.limits.untrusted ? "untrusted" : "");
    if (script.sceneGiven) hash.add(contentsOf(script.scene, findScene, scenes_));
    return hash.value();
}

bool DoneJobs::has(const Job& job) const
{
    const auto record = records_.find(job.target);
    return record != records_.end() && record->second.origin == origins_.at(job.target) &&
           sizeOf(job.target) == record->second.size;
}

void DoneJobs::add(const Job& job)
{
    const std::optional<std::uint64_t> size = sizeOf(job.target);
    const std::string name = system::textOf(system::pathOf(job.target).filename());
    if (!size || name.find('\n') != std::string::npos) return;
    const Record record = {origins_.at(job.target), *size};
    const std::string line = fmt::format("{:016x} {} {}\n", record.origin, record.size, name);
    const std::lock_guard lock(writing_);
    Record& known = records_[job.target];
    if (known == record) return;
    known = record;
    // At once, and at the end: other processes write there, too. Where that fails, the job is done again.
    std::ofstream file(folderOf(job) / recordName, std::ios::binary | std::ios::app);
    file.write(line.data(), static_cast<std::streamsize>(line.size()));
}

} // namespace quor

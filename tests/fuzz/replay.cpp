// Each case that is kept for a fuzzing target, as a test: what the target requires holds, and nothing that it
// calls goes wrong.

#include "../../fuzz/Input.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

namespace {

std::string bytesOf(const std::filesystem::path& file)
{
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class Replay : public testing::Test {
public:
    explicit Replay(std::filesystem::path file) : file_(std::move(file)) {}
    void TestBody() override
    {
        const std::string bytes = bytesOf(file_);
        ASSERT_FALSE(bytes.empty()) << file_ << " cannot be read";
        EXPECT_EQ(LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()),
                  0);
    }

private:
    std::filesystem::path file_;
};

/// A suite for the target, and a test for each file in its folder.
bool registerCases()
{
    const std::string suite = std::string("Fuzz_") + fuzz::target;
    std::vector<std::filesystem::path> files;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::string(QUOR_SOURCE_DIR "/fuzz/seeds/") + fuzz::target))
        files.push_back(entry.path());
    fuzz::require(!files.empty(), "there are seeds");
    std::sort(files.begin(), files.end());
    for (const std::filesystem::path& file : files) {
        testing::RegisterTest(suite.c_str(), file.filename().string().c_str(), nullptr, nullptr, __FILE__,
                              __LINE__, [file]() -> Replay* { return new Replay(file); });
    }
    return true;
}

[[maybe_unused]] const bool isRegistered = registerCases();

} // namespace

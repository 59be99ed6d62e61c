#include <algorithm>
#include <cstdio>
#include <fstream>
#include <gmock/gmock.h>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

/// The demangled names that the library defines for others, sorted, each once.
std::vector<std::string> exportedNames()
{
    constexpr const char* command = QUOR_NM " -D -C --defined-only '" QUOR_LIBRARY_FILE "'";
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command, "r"), pclose);
    std::vector<std::string> names;
    std::string line;
    for (int byte = std::fgetc(pipe.get()); byte != EOF; byte = std::fgetc(pipe.get())) {
        if (byte != '\n') {
            line.push_back(static_cast<char>(byte));
            continue;
        }
        // address, kind, name
        std::istringstream fields(line);
        std::string address, kind, name;
        fields >> address >> kind;
        std::getline(fields >> std::ws, name);
        // The address sanitizer marks the library's variables with symbols of its own.
        if (name.rfind("__odr_asan", 0) != 0) names.push_back(name);
        line.clear();
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

std::vector<std::string> linesOf(const std::string& path)
{
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

TEST(Exports, AreExactlyTheKeptList)
{
    const std::vector<std::string> kept = linesOf(QUOR_SOURCE_DIR "/tests/layers/exports.txt");
    EXPECT_THAT(exportedNames(), testing::ElementsAreArray(kept));
}

} // namespace

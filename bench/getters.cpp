#include "limit.h"
#include "raw.h"
#include "ways.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorScriptor/QuorScriptor.h>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

namespace bench::ways {
namespace {

constexpr const char* script = "function getProjectStan(module) return 'standard.sqlite' end\n";

/// An installation in a folder of its own, whose configuration script is the one above.
class Installation {
public:
    Installation() : folder_(std::filesystem::temp_directory_path() / "quor_bench")
    {
        const std::filesystem::path bin = folder_ / "bin";
        std::filesystem::create_directories(bin);
        std::ofstream(bin / "quorModuleSystem.lua") << script;
        QuorSystem::setInstallationFolder(folder_.string().c_str());
        require(quorconfig::initConfig(nullptr, nullptr, nullptr, nullptr), "text getter, configuration");
    }
    ~Installation()
    {
        QuorSystem::setInstallationFolder(nullptr);
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;

private:
    std::filesystem::path folder_;
};

void requireAnswer(const char* answer)
{
    require(answer && std::strcmp(answer, "standard.sqlite") == 0, "text getter");
}

} // namespace

void getTextRaw(Laps& laps)
{
    const ScriptState state(script);
    const int handler = raw::keepHandler(state.get());
    const char* answer = nullptr;
    laps.repeat([&] { answer = raw::getText(state.get(), handler, "getProjectStan", "PIPE"); });
    requireAnswer(answer);
}

void getTextLimit(Laps& laps)
{
    const ScriptState state(script);
    limit::keepHandlerAndName(state.get(), "getProjectStan");
    const char* answer = nullptr;
    laps.repeat([&] { answer = limit::getText(state.get(), "PIPE"); });
    requireAnswer(answer);
}

void getTextLibrary(Laps& laps)
{
    const Installation installation;
    const char* answer = nullptr;
    laps.repeat([&] { answer = quorconfig::getProjectStan("PIPE"); });
    requireAnswer(answer);
}

} // namespace bench::ways

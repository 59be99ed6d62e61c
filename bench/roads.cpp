// Whole roads of a host, and what being asked again costs. They have no raw code beside them: what is asked
// is where the instructions go.

#include "Workload.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorPrimary/QuorPrimary.h>
#include <QuorScriptor/QuorScriptor.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace bench {
namespace {

using Quor::GlibStatus;

const std::string sample = QUOR_SAMPLE;

constexpr const char* components[] = {"control_valve_iso", "elbow_90", "gate_valve",
                                      "reducer",           "support",  "tee"};

std::string componentFile(int component)
{
    return sample + "/project/components/" + components[component] + ".lua";
}

/// The sample installation and project, for as long as it lives.
class SampleFolders {
public:
    SampleFolders()
    {
        QuorSystem::setInstallationFolder((sample + "/installation").c_str());
        QuorSystem::setProjectFolder((sample + "/project").c_str());
    }
    ~SampleFolders()
    {
        QuorSystem::setInstallationFolder(nullptr);
        QuorSystem::setProjectFolder(nullptr);
    }
    SampleFolders(const SampleFolders&) = delete;
    SampleFolders& operator=(const SampleFolders&) = delete;
};

/// A script file that draws many records; gone at the end.
class LongScript {
public:
    /// The roads run at the same time: each has a file of its own.
    LongScript(const char* road, int records)
        : file_(std::filesystem::temp_directory_path() /
                ("quor_bench_" + std::string(road) + std::to_string(records) + ".lua"))
    {
        std::ofstream(file_) << "param = {} glb = {}\nfunction main()\n  local list = {}\n  for i = 1, "
                             << records
                             << " do list[i] = {2, {0, 0, i}, {0, 0, i + 1}, 25} end\n  return list\nend\n";
    }
    ~LongScript()
    {
        std::error_code ignored;
        std::filesystem::remove(file_, ignored);
    }
    LongScript(const LongScript&) = delete;
    LongScript& operator=(const LongScript&) = delete;

    std::string path() const { return file_.string(); }

private:
    std::filesystem::path file_;
};

/// A new scriptor, the file, parameters, the drawing, and the end of it all.
void draw(const std::string& file, std::size_t atLeast)
{
    QuorGlibScriptor scriptor;
    require(scriptor.loadFile(file.c_str(), false) == GlibStatus::Ok, file.c_str());
    scriptor.setConstFactor(1.0);
    scriptor.setKeyValues({{"P1", "", KVValue::ofDouble(203.0)}}, 1.0);
    std::vector<QuorPrimary*> primitives;
    require(scriptor.callSeg3D("main", primitives) == GlibStatus::Ok, file.c_str());
    require(primitives.size() >= atLeast, file.c_str());
    for (const QuorPrimary* primitive : primitives)
        delete primitive;
}

template<int component>
void drawComponent(Laps& laps)
{
    const SampleFolders folders;
    const std::string file = componentFile(component);
    laps.repeat([&] { draw(file, 1); });
}

void drawLong(Laps& laps)
{
    constexpr int records = 100000;
    const LongScript script("draw", records);
    laps.repeat([&] { draw(script.path(), records); });
}

void askTenGetters(Laps& laps)
{
    using Module = QuorAuth::Module;
    const SampleFolders folders;
    require(quorconfig::initConfig(nullptr, nullptr, nullptr, nullptr), "ten getters");
    laps.repeat([] {
        bool all = quorconfig::getModelingXml("PIPE") != nullptr;
        all = quorconfig::getPropertyClass("PIPE") != nullptr && all;
        all = quorconfig::getProjectStan("PIPE") != nullptr && all;
        all = quorconfig::getProjectSpec("PIPE", "A1") != nullptr && all;
        all = quorconfig::getProjectGlib("PIPE", "valve") != nullptr && all;
        all = quorconfig::getProjectSysname("PIPE") != nullptr && all;
        all = quorconfig::getProjectSpec_dbkey(Module::Pipe, nullptr) != nullptr && all;
        all = quorconfig::getProjectGlib_dbkey(Module::Pipe) != nullptr && all;
        all = quorconfig::getQuorInt2Str(Module::Pipe) != nullptr && all;
        all = quorconfig::getProjectTemplatePath(Module::Pipe, "iso") != nullptr && all;
        require(all, "ten getters");
    });
}

void reload(Laps& laps)
{
    const SampleFolders folders;
    QuorGlibScriptor scriptor;
    require(scriptor.loadFile(componentFile(2).c_str(), false) == GlibStatus::Ok, "reload");
    laps.repeat([&] { require(scriptor.reloadLua(0) == GlibStatus::Ok, "reload"); });
}

void loadAgain(Laps& laps)
{
    const SampleFolders folders;
    const std::string file = componentFile(2);
    QuorGlibScriptor scriptor;
    require(scriptor.loadFile(file.c_str(), false) == GlibStatus::Ok, "load again");
    laps.repeat([&] { require(scriptor.loadFile(file.c_str(), false) == GlibStatus::Ok, "load again"); });
}

void initAgain(Laps& laps)
{
    const SampleFolders folders;
    laps.repeat([] {
        require(quorconfig::initConfig("quorModuleSystem.lua", nullptr, nullptr, nullptr), "init again");
    });
}

void getAgain(Laps& laps)
{
    const SampleFolders folders;
    require(quorconfig::initConfig(nullptr, nullptr, nullptr, nullptr), "get again");
    laps.repeat([] { require(quorconfig::getProjectStan("PIPE") != nullptr, "get again"); });
}

template<int records>
void parseMany(Laps& laps)
{
    const LongScript script("parse", records);
    QuorGlibScriptor scriptor;
    require(scriptor.loadFile(script.path().c_str(), false) == GlibStatus::Ok, "parse many");
    lua_State* L = scriptor.getLua(false);
    require(scriptor.callSeg("main", std::vector<KVParams>()) == GlibStatus::Ok, "parse many");
    laps.repeat([L] {
        std::vector<QuorPrimary*> primitives;
        require(quorlua::parse_primary_byidx(L, -1, primitives) == GlibStatus::Ok, "parse many");
        for (const QuorPrimary* primitive : primitives)
            delete primitive;
    });
}

/// As many parameters as names that the script declares to be no lengths.
template<int parameters>
void setMany(Laps& laps)
{
    const std::string script = "param = {} skey = { quantumUnit = {}, angleUnit = {} } for i = 1, " +
                               std::to_string(parameters) + " do skey.quantumUnit[i] = 'parameter' .. i end";
    quor_binary buffer;
    std::string bytes = script;
    buffer.data = bytes.data();
    buffer.length = static_cast<int>(bytes.size());
    QuorGlibScriptor scriptor;
    require(scriptor.loadBuffer(buffer, 100, false) == GlibStatus::Ok, "set many");
    std::vector<KVParams> records;
    for (int i = 1; i <= parameters; ++i)
        records.push_back({"parameter" + std::to_string(i), "", KVValue::ofDouble(i)});
    laps.repeat([&] { require(scriptor.setKeyValues(records, 1000.0), "set many"); });
}

constexpr Way drawComponents[] = {
    {"control_valve_iso", drawComponent<0>, 0, 0}, {"elbow_90", drawComponent<1>, 0, 0},
    {"gate_valve", drawComponent<2>, 0, 0},        {"reducer", drawComponent<3>, 0, 0},
    {"support", drawComponent<4>, 0, 0},           {"tee", drawComponent<5>, 0, 0}};
constexpr Way drawLongs[] = {{"100000 records", drawLong, 0, 0}};
constexpr Way configure[] = {{"ten getters", askTenGetters, 0, 0}, {"a reload", reload, 0, 0}};
constexpr Way again[] = {
    {"loadFile", loadAgain, 0, 0}, {"initConfig", initAgain, 0, 0}, {"a getter", getAgain, 0, 0}};
constexpr Way thousand[] = {{"records", parseMany<1000>, 0, 0}, {"parameters", setMany<1000>, 0, 0}};
constexpr Way ten[] = {{"records", parseMany<10>, 0, 0}, {"parameters", setMany<10>, 0, 0}};
constexpr Way tenThousand[] = {{"records", parseMany<10000>, 0, 0}, {"parameters", setMany<10000>, 0, 0}};
constexpr Way hundredThousand[] = {{"records", parseMany<100000>, 0, 0}};
constexpr Way million[] = {{"records", parseMany<1000000>, 0, 0}};

constexpr Workload all[] = {{"draw", 10, drawComponents},
                            {"draw", 1, drawLongs},
                            {"road", 20, configure},
                            {"again", 1000, again},
                            {"10", 1000, ten},
                            {"1000", 20, thousand},
                            {"10000", 4, tenThousand},
                            {"100000", 1, hundredThousand},
                            {"1000000", 1, million}};

} // namespace

std::span<const Workload> roads()
{
    return all;
}

} // namespace bench

// Configuration answers: the script answers any value to every question.

#include "Drawn.h"
#include "Shapes.h"

#include <QuorCommon/QuorCommon.h>
#include <QuorMsgHandle/QuorMsgHandle.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/QuorScriptor.h>
#include <filesystem>
#include <fstream>

namespace {

using namespace quorconfig;

constexpr QuorAuth::Module modules[] = {QuorAuth::Module::None, QuorAuth::Module::Pipe,
                                        static_cast<QuorAuth::Module>(1000)};

fuzz::Input* answers = nullptr;

/// The next value of the case; one case in eight raises it instead. [-0, +1, e]
int nextAnswer(lua_State* L)
{
    if (!answers) return 0;
    const bool raises = answers->below(8) == 7;
    fuzz::pushValue(L, *answers);
    lua_gc(L, LUA_GCRESTART, 0); // the next look at the collector starts it
    return raises ? lua_error(L) : 1;
}

/// Every global that a getter may ask for is that function, but for "missing" ones.
constexpr char script[] = R"(
    for name in ([[getModelingXml getModelingXml_meta getPropertyClass getProjectStan getProjectSpec getProjectAttr
                  getProjectSupport getProjectGlib getProjectSyscommon getProjectSysname getProjectSysInsert
                  getProjectTooltip getProjectSkey getProjectStanpart getProjectStan_dbkey getProjectSpec_dbkey
                  getProjectSkey_r getProjectPath getProjectUser getProjectTemplate getObjectSkeyBasicPath getQuorInt2Str
                  getQuorInt2Str_key getProjDatabaseClass getDigitalFile isDigitalStan isPropertyClass_full
                  getProjectDbSeed escape_dbkey set_project_dbengine]]):gmatch '%S+' do
        _G[name] = fuzz.answer
    end
    _ALERT = function() end
)";

void makeStates()
{
    static const luaL_Reg functions[] = {{"answer", nextAnswer}, {nullptr, nullptr}};
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("quor-fuzz-" + std::to_string(quorsys::currentThreadId()));
    std::filesystem::create_directories(folder / "bin");
    for (const char* name : {"quorModuleSystem.lua", "mirtSystemConfig.lua"})
        std::ofstream(folder / "bin" / name, std::ios::binary) << script;
    QuorSystem::setInstallationFolder(folder.string().c_str());
    QuorSystem::setProjectFolder(folder.string().c_str());
    kxcom::setMessageSink([](const char*, void*) {}, nullptr);
    lua_tinker::set_error_outlet(fuzz::silence, nullptr);
    quorlua::addRegLuaModule("fuzz", functions);
    fuzz::require(initConfig(nullptr, nullptr, nullptr, nullptr), "the project script runs");
    fuzz::require(initSysConfig(), "the system script runs");
    std::filesystem::remove_all(folder);
}

/// Looks at every byte of an answer.
void look(const char* text)
{
    if (text) fuzz::require(std::strlen(text) < 100000, "an answer is a text that ends");
    fuzz::require((lastAnswerOrigin() == AnswerOrigin::None) == !text, "what is there comes from somewhere");
}

void askAll(QuorAuth::Module module, const char* name)
{
    look(getModelingXml(module));
    look(getModelingXml_meta(module));
    look(getPropertyClass(module));
    look(getProjectStan(module));
    look(getProjectSpec(module, name));
    look(getProjectAttr("", name));
    look(getProjectInsert(module, name));
    look(getProjectTooltip(module));
    look(getProjectSkeyPath(module, name));
    look(getProjectStan_dbkey(module));
    look(getProjectSpec_dbkey(module, name));
    look(getProjectSkeyPath_r(module, name));
    look(getProjectPath(module, name, name));
    look(getProjectUserDbPath());
    look(getProjectTemplatePath(module, name));
    look(getObjectSkeyBasicPath(module == QuorAuth::Module::None ? -1 : 1));
    look(getQuorInt2Str(module));
    look(getQuorInt2Str_key(module));
    look(getProjDatabaseClass(module, nullptr));
    look(getDigitalFile(module, name));
    look(isDigitalStan(module));
    look(escape_dbkey(name));
    (void)isPropertyClass_full(module);
    (void)set_escape_dbengine(static_cast<KxDb::DbType>(static_cast<int>(module)));
    short seed = -7;
    if (!getProjectDbSeed(name, module, seed)) fuzz::require(seed == -7, "a failure leaves the seed");
}

} // namespace

const char fuzz::target[] = "configuration";

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool isMade = (makeStates(), true);
    fuzz::require(isMade, "the states are made once");
    fuzz::Input input(data, size);
    permitNullReturn(input.flag());
    const QuorAuth::Module module = modules[input.below(std::size(modules))];
    const std::string name = input.word(32);
    answers = &input;
    askAll(module, name == "null" ? nullptr : name.c_str());
    answers = nullptr;
    return 0;
}

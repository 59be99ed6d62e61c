#include <QuorCommon/QuorAuth.h>

#include <atomic>
#include <string_view>

namespace kxcom {
namespace {

std::atomic<QuorAuth::Module> currentModule{QuorAuth::Module::None};

} // namespace

const char* getModuleName(const QuorAuth::Module& module)
{
    switch (module) {
    case QuorAuth::Module::None:
        break;
    case QuorAuth::Module::System:
        return "SYSTEM";
    case QuorAuth::Module::Pipe:
        return "PIPE";
    case QuorAuth::Module::Equip:
        return "EQUIP";
    case QuorAuth::Module::Support:
        return "SUPPORT";
    case QuorAuth::Module::Iso:
        return "ISO";
    case QuorAuth::Module::Struct:
        return "STRUCT";
    case QuorAuth::Module::Hvac:
        return "HVAC";
    case QuorAuth::Module::Electric:
        return "ELECTRIC";
    case QuorAuth::Module::Instrument:
        return "INSTRUMENT";
    }
    return "";
}

bool findModule(const char* name, QuorAuth::Module& module)
{
    if (name == nullptr) return false;
    for (const QuorAuth::Module candidate : QuorAuth::allModules) {
        if (std::string_view(name) == getModuleName(candidate)) {
            module = candidate;
            return true;
        }
    }
    return false;
}

QuorAuth::Module getCurrentModule()
{
    return currentModule.load(std::memory_order_relaxed);
}

void setCurrentModule(QuorAuth::Module module)
{
    currentModule.store(module, std::memory_order_relaxed);
}

} // namespace kxcom

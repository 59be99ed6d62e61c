#include "ScriptKeeper.h"

namespace quor {

QuorGlibScriptor& ScriptKeeper::take(const std::string& systemPath)
{
    if (scriptors_.size() >= mostKept && !scriptors_.contains(systemPath)) scriptors_.clear();
    std::unique_ptr<QuorGlibScriptor>& scriptor = scriptors_[systemPath];
    if (!scriptor)
        scriptor = std::make_unique<QuorGlibScriptor>();
    else if (!scriptor->getLua(false))
        scriptor->initLua();
    return *scriptor;
}

void ScriptKeeper::giveBack(QuorGlibScriptor& scriptor)
{
    scriptor.initLua();
}

} // namespace quor

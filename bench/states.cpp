#include "limit.h"
#include "raw.h"
#include "ways.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorScriptor/QuorGlibScriptor.h>

namespace bench::ways {

void newStateRaw(Laps& laps)
{
    laps.repeat([] { raw::makeState(); });
}

void newStateLimit(Laps& laps)
{
    laps.repeat([] { limit::makeState(); });
}

void newStateLibrary(Laps& laps)
{
    // Search paths cost by their length, which must not be that of a developer's folders.
    QuorSystem::setInstallationFolder("/opt/plant-design/quor");
    laps.repeat([] {
        QuorGlibScriptor scriptor;
        require(scriptor.getLua(false) != nullptr, "new state, library");
    });
    QuorSystem::setInstallationFolder(nullptr);
}

} // namespace bench::ways

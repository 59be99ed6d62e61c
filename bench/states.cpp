#include "limit.h"
#include "raw.h"
#include "ways.h"

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
    laps.repeat([] {
        QuorGlibScriptor scriptor;
        require(scriptor.getLua(false) != nullptr, "new state, library");
    });
}

} // namespace bench::ways

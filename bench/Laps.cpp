#include "Workload.h"

#include <cstdio>
#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_ZERO_STATS static_cast<void>(0)
#define CALLGRIND_DUMP_STATS_AT(name) static_cast<void>(name)
#endif

namespace bench {

void Laps::startCounting()
{
    CALLGRIND_ZERO_STATS;
}

void Laps::stopCounting() const
{
    char name[128];
    std::snprintf(name, sizeof name, "%s/%s", workload_->name, way_->name);
    CALLGRIND_DUMP_STATS_AT(name);
}

} // namespace bench

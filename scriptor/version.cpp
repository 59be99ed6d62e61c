#include <QuorScriptor/version.h>

namespace Quor {

const char* version() noexcept
{
    return QUORSCRIPTOR_VERSION;
}

int versionNumber() noexcept
{
    return QUORSCRIPTOR_VERSION_NUMBER;
}

} // namespace Quor

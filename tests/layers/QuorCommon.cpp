#include <QuorCommon/QuorCommon.h>
#include <cstring>

int main()
{
    return std::strlen(QuorSystem::getFullQuorName("bin\\?.lua")) > 0 ? 0 : 1;
}

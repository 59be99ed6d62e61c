#include <QuorCommon/QuorCommon.h>

#include <cstdio>

/// Prints the two folders as they come from the program's place and environment, one a line.
int main()
{
    std::printf("%s\n%s\n", QuorSystem::quorEnv(), QuorSystem::getCurrentProjPath());
}

#include "../Process.h"

#include <filesystem>
#include <iterator>
#include <malloc.h>

namespace process {

std::size_t bytesInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

int openFiles()
{
    const std::filesystem::directory_iterator open("/proc/self/fd");
    // One of them is the folder itself.
    return static_cast<int>(std::distance(begin(open), end(open))) - 1;
}

} // namespace process

#include "../SystemPath.h"

namespace quorlua {

std::filesystem::path systemPath(const char* name)
{
    return name;
}

} // namespace quorlua

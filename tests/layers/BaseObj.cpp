#include <BaseObj/BaseObj.h>
#include <sstream>

int main()
{
    std::ostringstream text;
    text << KxDbObjectId(42);
    return text.str().empty() ? 1 : 0;
}

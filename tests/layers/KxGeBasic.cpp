#include <KxGeBasic/KxGeBasic.h>
#include <sstream>

int main()
{
    std::ostringstream text;
    text << KxGePoint3D(1, 2, 3);
    return text.str().empty() ? 1 : 0;
}

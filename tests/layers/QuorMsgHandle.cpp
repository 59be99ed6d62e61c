#include <QuorMsgHandle/QuorMsgHandle.h>

int main()
{
    return kxcom::printMsg("%s: %d", "DN", 50) == "DN: 50" ? 0 : 1;
}

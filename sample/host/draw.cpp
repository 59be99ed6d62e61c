#include <QuorMsgHandle/QuorMsgHandle.h>
#include <QuorPrimary/QuorPrimary.h>
#include <QuorScriptor/QuorScriptor.h>
#include <iostream>

int main(int count, char** arguments)
{
    QuorGlibScriptor scriptor;
    if (count != 2 || scriptor.loadFile(arguments[1], false) != Quor::GlibStatus::Ok) return 1;
    scriptor.setConstFactor(1.0);
    scriptor.setKeyValues({{"P1", "face to face, mm", KVValue::ofDouble(203.0)}}, 1.0);

    std::vector<QuorPrimary*> primitives;
    if (scriptor.callSeg3D("main", primitives) != Quor::GlibStatus::Ok) {
        std::cerr << kxcom::getQuorLastErrorText() << '\n';
        return 1;
    }
    for (const QuorPrimary* primitive : primitives) {
        std::cout << *primitive << '\n';
        delete primitive;
    }
    return 0;
}

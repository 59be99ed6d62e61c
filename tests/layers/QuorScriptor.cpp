#include <QuorScriptor/QuorScriptor.h>

int main()
{
    QuorGlibScriptor scriptor;
    char script[] = "function main() return {} end";
    const quor_binary buffer{static_cast<int>(sizeof script - 1), script};
    std::vector<QuorPrimary*> primitives;
    const bool loaded = scriptor.loadBuffer(buffer, 100, false) == Quor::GlibStatus::Ok;
    return loaded && scriptor.callSeg3D("main", primitives) == Quor::GlibStatus::Ok ? 0 : 1;
}

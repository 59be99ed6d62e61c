#include "drawing.h"

#include <QuorPrimary/QuorPrimary.h>
#include <QuorScriptor/QuorScriptor.h>
#include <cstring>
#include <string>

namespace {

char script[] = R"(
    rounds = 0
    function main()
        rounds = rounds + 1
        local records = {}
        for i = 1, 100 do records[i] = { 16, { i, 0, 0 }, { 0, rounds, i } } end
        return records
    end
    function who() return { needxdir = { rounds > 0, _VERSION .. type(jit) } } end)";

bool load(QuorGlibScriptor& scriptor)
{
    return scriptor.loadBuffer({static_cast<int>(std::strlen(script)), script}, 1000, false) == Quor::Ok;
}

int draw(QuorGlibScriptor& scriptor)
{
    std::vector<QuorPrimary*> primitives;
    const bool drawn = scriptor.callSeg3D("main", primitives) == Quor::Ok;
    for (const QuorPrimary* primitive : primitives)
        delete primitive;
    return drawn ? static_cast<int>(primitives.size()) : 0;
}

} // namespace

#if defined(_WIN32)
__declspec(dllexport)
#else
__attribute__((visibility("default")))
#endif
    int drawOnce(char (&kind)[16])
{
    static QuorGlibScriptor kept;
    static int total = 0;
    if (total == 0 && !load(kept)) return 0;
    QuorGlibScriptor fresh;
    int running = 0;
    std::string type;
    if (!load(fresh) || draw(fresh) != 100 || draw(kept) != 100) return 0;
    if (kept.callSeg("who", running, type) != Quor::Ok || running != 1) return 0;
    std::strncpy(kind, type.c_str(), sizeof kind - 1);
    return total += 100;
}

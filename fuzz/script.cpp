// Script text to segment calls: a scriptor loads any text and asks it all that a host asks.

#include "CallSlots.h"
#include "Limits.h"

#include <QuorCommon/quorsys.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/QuorScriptor.h>

namespace {

using Quor::GlibStatus;

constexpr long mostInstructions = 20000;
constexpr std::size_t mostBytes = 1 << 20; ///< what it copies again and again takes time, too

/// What reaches files, processes and native code, and the loops of the interpreter itself that no hook ends.
constexpr char closing[] = R"(
    for _, name in ipairs { 'os', 'io', 'debug', 'package', 'require', 'module', 'dofile', 'loadfile', 'loadstring',
                            'load', 'unpack', 'print', 'collectgarbage' } do
        _G[name] = nil
    end
    for _, name in ipairs { 'find', 'match', 'gmatch', 'gfind', 'gsub', 'dump' } do string[name] = nil end
    table.insert = nil
    if jit then
        jit.off()
        jit, ffi, bit = nil
    end
)";

class Functor final : public GlibScriptFunctor {
public:
    virtual ~Functor() = default;
    bool getCurrentObjectId(KxDbObjectId& id) const override { return id.setId(7), true; }
    bool getIsoPoint(int number, KxGePoint3D& point) const override { return point.set(number, 0, 0), true; }
    bool getDefaultIsoMat(KxGeMatrix3D&) const override { return true; }
    bool getIsoVgdir(unsigned short a, unsigned short b, KxGeVector3D& direction) const override
    {
        return direction.set(a, b, 0), a != b;
    }
    bool getNormalIsoMat4(unsigned short, unsigned short, unsigned short, unsigned short,
                          KxGeMatrix3D&) const override
    {
        return true;
    }
    bool getNormalIsoMat(unsigned short, unsigned short, KxGeMatrix3D&) const override { return false; }
    bool getArcIsoMat(unsigned short, unsigned short, unsigned short, KxGeMatrix3D&) const override
    {
        return true;
    }
    bool getRefIsoMat(KxGeMatrix3D&, int, int) const override { return true; }
    void* getCurrentObjectPointer() const override { return nullptr; }
    bool getPsView(KxGeVector3D& direction) const override { return direction.set(0, 0, 1), true; }
};

constexpr const char* segments[] = {"seg", "drawing", "keypoint"};

void check(GlibStatus status)
{
    switch (status) {
    case GlibStatus::Ok:
    case GlibStatus::NoState:
    case GlibStatus::ScriptFailed:
    case GlibStatus::ValueMissing:
    case GlibStatus::SegmentMissing:
    case GlibStatus::InvalidArgument:
    case GlibStatus::TableMissing:
        return;
    case GlibStatus::FileNotExamined:
    case GlibStatus::BufferRefused:
        break;
    }
    fuzz::require(false, "the status is one that these operations have");
}

/// A call that leaves its result on the stack, and all that reads it there.
void readResult(QuorGlibScriptor& scriptor, const char* segment)
{
    lua_State* L = scriptor.getLua(false);
    const int height = lua_gettop(L);
    const std::vector<KVParams> records = {{"a", "", KVValue::ofDouble(1)}};
    const GlibStatus status = scriptor.callSeg(segment, records);
    check(status);
    fuzz::require(lua_gettop(L) == height + (status == Quor::Ok ? 1 : 0), "a result stays when there is one");
    if (status != Quor::Ok) return;
    fuzz::Drawn drawn;
    std::vector<Keypoint> keypoints;
    bool truth = false;
    int integer = 0;
    check(scriptor.justParsePrimary(drawn));
    check(scriptor.parseKeypoint(keypoints, -1));
    check(scriptor.parseRtn(truth));
    check(scriptor.parseRtn(integer));
    fuzz::require(lua_gettop(L) == height + 1, "readers leave the result");
    lua_pop(L, 1);
}

void ask(QuorGlibScriptor& scriptor)
{
    lua_State* L = scriptor.getLua(false);
    const int height = lua_gettop(L);
    std::vector<KVParams> records;
    std::vector<Keypoint> keypoints;
    fuzz::Drawn drawn;
    std::string text;
    int needxdir = 0;
    for (const char* segment : segments) {
        check(scriptor.callSeg(segment));
        check(scriptor.callSeg3D(segment, drawn));
        drawn.free();
        check(scriptor.callSeg(segment, keypoints));
        check(scriptor.callSeg(segment, needxdir, text));
        readResult(scriptor, segment);
    }
    check(scriptor.getParams(records));
    check(scriptor.getParams_std("param", records));
    check(scriptor.getSmrtlnType(text));
    const double values[23] = {1, 2, 3};
    (void)scriptor.setParams(values, 1000);
    KxGePoint3D first;
    KxGePoint3D second;
    (void)scriptor.exeLuaUI(first, second, records);
    fuzz::require(lua_gettop(L) == height, "the stack is as high as before");
}

} // namespace

const char fuzz::target[] = "script";

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Functor functor;
    lua_tinker::set_error_outlet(fuzz::silence, nullptr);
    QuorGlibScriptor scriptor;
    lua_State* L = scriptor.getLua(false);
    fuzz::require(L != nullptr && luaL_dostring(L, closing) == 0, "there is a state");
    scriptor.setFunction(&functor);

    std::string script(reinterpret_cast<const char*>(data), size);
    // Precompiled chunks are not checked by every engine.
    if (script.starts_with(LUA_SIGNATURE[0])) return 0;
    fuzz::Limited limited(L, mostInstructions, mostBytes);
    const GlibStatus status =
        scriptor.loadBuffer({static_cast<int>(script.size()), script.data()}, 1000, false);
    check(status);
    if (!scriptor.getLua(false)) {
        limited.forget();
        fuzz::require(status == Quor::ScriptFailed, "a state is lost by a failure alone");
        return 0;
    }
    ask(scriptor);
    limited.release();
    return 0;
}

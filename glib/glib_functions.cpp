// The "glib" functions, by which a script asks the host about the drawing in work. None raises an error or
// shows a message: where anything fails, running out of memory included, the script gets no result.

#include "Context.h"
#include "Guard.h"
#include "Limits.h"
#include "Values.h"

#include <QuorCommon/QuorSystem.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <QuorPureScriptor/quorlua_helpers.h>
#include <QuorScriptor/GlibCallbacks.h>
#include <QuorScriptor/LuaModules.h>
#include <exception>

namespace quorlua {
namespace {

/// Runs work that pushes its results; how many there are, none when it fails. The arguments have been read
/// and make way: however many a script gave, there is room.
template<class Work>
int resultsOf(lua_State* L, Work work)
{
    lua_settop(L, 0);
    guard::run(L, work);
    return lua_gettop(L);
}

/// The host object whose pointer a global of the script holds; null when it holds anything else. [-0, +0, m]
template<class Host>
const Host* passedPointer(lua_State* frame, const char* global, limits::Passed which)
{
    guard::pushGlobal(frame, global);
    const void* pointer = lua_islightuserdata(frame, -1) ? lua_touserdata(frame, -1) : nullptr;
    lua_pop(frame, 1);
    return limits::mayBeUsed(frame, which, pointer) ? static_cast<const Host*>(pointer) : nullptr;
}

template<class Ask>
bool isAnswered(const GlibScriptFunctor& functor, Ask ask)
{
    try {
        return ask(functor);
    } catch (const std::exception&) {
        return false;
    }
}

/// Asks the host's object that the script's globals name now, and pushes what `ask` filled with `push`.
template<class Ask, class Push>
int answer(lua_State* L, Ask ask, Push push)
{
    return resultsOf(L, [ask, push](lua_State* frame) {
        const auto* functor =
            passedPointer<GlibScriptFunctor>(frame, "_glib_pass_functor_pointer", limits::Passed::Functor);
        currentContext().functor = functor;
        if (!functor || !isAnswered(*functor, ask)) return 0;
        push(frame);
        return 1;
    });
}

template<class Ask>
int answerMatrix(lua_State* L, Ask ask)
{
    KxGeMatrix3D matrix;
    return answer(
        L, [ask, &matrix](const GlibScriptFunctor& functor) { return ask(functor, matrix); },
        [&matrix](lua_State* frame) {
            lua_createtable(frame, 4, 0);
            values::fillMatrix(frame, lua_gettop(frame), matrix);
        });
}

/// For points and vectors.
template<class Triple, class Ask>
int answerTriple(lua_State* L, Ask ask)
{
    Triple triple;
    return answer(
        L, [ask, &triple](const GlibScriptFunctor& functor) { return ask(functor, triple); },
        [&triple](lua_State* frame) { values::pushPoint(frame, triple.toQuorPoint()); });
}

/// Reads the arguments from the first on as integers. [-0, +0, -]
template<int count>
bool readIntegers(lua_State* L, int (&integers)[count])
{
    for (int i = 0; i < count; ++i)
        if (getAInt(L, i + 1, integers[i]) != 0) return false;
    return true;
}

/// The low 16 bits, which are what the host's operations take.
unsigned short narrowed(int integer)
{
    return static_cast<unsigned short>(integer);
}

int setpath(lua_State* L)
{
    return resultsOf(L, [](lua_State* frame) {
        addPath(frame, QuorSystem::getFullQuorName("bin\\?.lua"));
        addPath(frame, QuorSystem::getFullQuorName("bin\\utils\\?.lua"));
        if (!limits::isUntrusted(frame)) addCPath(frame, QuorSystem::quorFullPlatformPath("?.dll"));
        addPath(frame, QuorSystem::getBinUtilsRuntimeFullName("?.lua"));
        addPath(frame, QuorSystem::getBinRuntimeFullName("?.lua"));
        addPath(frame, QuorSystem::getFullQuorName("sys\\?.lua"));
        return 0;
    });
}

/// Key points are what the segment "keypoint" answers. Scripts that set them one by one still find this
/// function, and it does nothing.
int setkpt(lua_State*)
{
    return 0;
}

int getArcIsoMat(lua_State* L)
{
    int given[3] = {};
    if (lua_gettop(L) < 3 || !readIntegers(L, given)) return 0;
    return answerMatrix(L, [&given](const GlibScriptFunctor& functor, KxGeMatrix3D& matrix) {
        // The host expects the last two the other way round.
        return functor.getArcIsoMat(narrowed(given[0]), narrowed(given[2]), narrowed(given[1]), matrix);
    });
}

int getNormalIsoMat2(lua_State* L)
{
    int given[2] = {};
    if (!readIntegers(L, given)) return 0;
    return answerMatrix(L, [&given](const GlibScriptFunctor& functor, KxGeMatrix3D& matrix) {
        return functor.getNormalIsoMat(narrowed(given[0]), narrowed(given[1]), matrix);
    });
}

int getNormalIsoMat4(lua_State* L)
{
    int given[4] = {};
    if (!readIntegers(L, given)) return 0;
    return answerMatrix(L, [&given](const GlibScriptFunctor& functor, KxGeMatrix3D& matrix) {
        return functor.getNormalIsoMat4(narrowed(given[0]), narrowed(given[1]), narrowed(given[2]),
                                        narrowed(given[3]), matrix);
    });
}

int getNormalIsoMat(lua_State* L)
{
    switch (lua_gettop(L)) {
    case 2:
        return getNormalIsoMat2(L);
    case 4:
        return getNormalIsoMat4(L);
    default:
        return 0;
    }
}

int getDefaultIsoMat(lua_State* L)
{
    return answerMatrix(L, [](const GlibScriptFunctor& functor, KxGeMatrix3D& matrix) {
        return functor.getDefaultIsoMat(matrix);
    });
}

int getRefIsoMat(lua_State* L)
{
    int a = 0;
    int b = -1;
    getAInt(L, 1, a);
    getAInt(L, 2, b);
    return answerMatrix(L, [a, b](const GlibScriptFunctor& functor, KxGeMatrix3D& matrix) {
        return functor.getRefIsoMat(matrix, a, b);
    });
}

int getIsoPoint(lua_State* L)
{
    int number[1] = {};
    if (lua_gettop(L) != 1 || !readIntegers(L, number)) return 0;
    return answerTriple<KxGePoint3D>(L, [&number](const GlibScriptFunctor& functor, KxGePoint3D& point) {
        return functor.getIsoPoint(number[0], point);
    });
}

int getIsoVgdir(lua_State* L)
{
    int given[2] = {};
    if (lua_gettop(L) != 2 || !readIntegers(L, given)) return 0;
    return answerTriple<KxGeVector3D>(L, [&given](const GlibScriptFunctor& functor, KxGeVector3D& vector) {
        return functor.getIsoVgdir(narrowed(given[0]), narrowed(given[1]), vector);
    });
}

int getCurrentObjectId(lua_State* L)
{
    KxDbObjectId id;
    return answer(
        L, [&id](const GlibScriptFunctor& functor) { return functor.getCurrentObjectId(id); },
        [&id](lua_State* frame) { lua_tinker::push(frame, static_cast<long long>(id.toInt())); });
}

int getCurrentObjectPointer(lua_State* L)
{
    void* pointer = nullptr;
    return answer(
        L,
        [&pointer](const GlibScriptFunctor& functor) {
            pointer = functor.getCurrentObjectPointer();
            return pointer != nullptr;
        },
        [&pointer](lua_State* frame) { lua_pushlightuserdata(frame, pointer); });
}

int getPsView(lua_State* L)
{
    return answerTriple<KxGeVector3D>(L, [](const GlibScriptFunctor& functor, KxGeVector3D& direction) {
        return functor.getPsView(direction);
    });
}

int getCurrentTxtstyle(lua_State* L)
{
    return resultsOf(L, [](lua_State* frame) {
        const auto* style =
            passedPointer<GlibTextStyle>(frame, "_glib_pass_txtstyle_pointer", limits::Passed::TextStyle);
        currentContext().textStyle = style;
        if (!style) return 0;
        values::pushTextStyle(frame, style);
        return 1;
    });
}

constexpr luaL_Reg functions[] = {
    {"setpath", setpath},
    {"setkpt", setkpt},
    {"getArcIsoMat", getArcIsoMat},
    {"getNormalIsoMat", getNormalIsoMat},
    {"getDefaultIsoMat", getDefaultIsoMat},
    {"getDefaultMat", getDefaultIsoMat},
    {"getRefIsoMat", getRefIsoMat},
    {"getIsoPoint", getIsoPoint},
    {"getIsoVgdir", getIsoVgdir},
    {"getCurrentObjectId", getCurrentObjectId},
    {"getCurrentObjectPointer", getCurrentObjectPointer},
    {"getPsView", getPsView},
    {"getCurrentTxtstyle", getCurrentTxtstyle},
    {nullptr, nullptr},
};

} // namespace

const luaL_Reg* getGlibRegFuncForLua()
{
    return functions;
}

} // namespace quorlua

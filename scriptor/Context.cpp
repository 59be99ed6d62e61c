#include "Context.h"

#include "Guard.h"
#include "Values.h"

#include <QuorCommon/quorsys.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/GlibCallbacks.h>
#include <QuorScriptor/ScriptContext.h>
#include <exception>
#include <map>

namespace quorlua {
namespace {

struct ContextStore {
    ScriptContext shared;
    std::map<unsigned int, ScriptContext> byThread;
};

ContextStore& store()
{
    static ContextStore contexts;
    return contexts;
}

} // namespace

void ScriptContext::reset()
{
    material.set(nullptr);
    colour = defaultColour;
    functor = nullptr;
    thickness = 0.0;
    lineTypeScale = 1.0;
    lineType.set(nullptr);
}

ScriptContext& currentContext()
{
    ContextStore& contexts = store();
    if (contexts.byThread.empty()) return contexts.shared;
    const auto own = contexts.byThread.find(quorsys::currentThreadId());
    return own == contexts.byThread.end() ? contexts.shared : own->second;
}

void allocThreadVars(unsigned long threadId)
{
    try {
        store().byThread.try_emplace(static_cast<unsigned int>(threadId));
    } catch (const std::exception&) {
        // Without memory the thread goes on with the shared context.
    }
}

void freeThreadVars(unsigned long threadId)
{
    store().byThread.erase(static_cast<unsigned int>(threadId));
}

void push_txtstyle(lua_State* L, const GlibTextStyle* style)
{
    if (!L || !style) return;
    guard::run(L, [style](lua_State* frame) {
        values::pushTextStyle(frame, style);
        return 1;
    });
}

} // namespace quorlua

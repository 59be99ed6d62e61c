#include "GlobalTable.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/QuorGlibScriptor.h>
#include <QuorScriptor/QuorGlibScriptorHelper.h>
#include <new>

namespace {

namespace guard = quorlua::guard;

/// Makes the function the script's "_ALERT" and "kxcom"."errorMsg". [-0, +?, e]
int bindMessages(lua_State* frame, QuorGlibScriptorHelper::MessageFunction message)
{
    lua_tinker::def(frame, "_ALERT", message);
    quorlua::setInGlobalTable(frame, "kxcom", "errorMsg",
                              [message](lua_State* state) { lua_tinker::push_function(state, message); });
    return 0;
}

} // namespace

QuorGlibScriptorHelper::~QuorGlibScriptorHelper()
{
    delete scriptor_;
}

QuorGlibScriptorHelper& QuorGlibScriptorHelper::operator=(const QuorGlibScriptorHelper& other) = default;

bool QuorGlibScriptorHelper::init(const char* file, MessageFunction message)
{
    if (!scriptor_) scriptor_ = new (std::nothrow) QuorGlibScriptor;
    if (!scriptor_) return false;
    lua_State* L = scriptor_->getLua(false);
    if (L && message) guard::run(L, [message](lua_State* frame) { return bindMessages(frame, message); });
    if (scriptor_->loadFile(file, false) == Quor::GlibStatus::Ok) return true;
    delete scriptor_;
    scriptor_ = nullptr;
    return false;
}

lua_State* QuorGlibScriptorHelper::getL() const
{
    return scriptor_ ? scriptor_->getLua(false) : nullptr;
}

QuorGlibScriptor* QuorGlibScriptorHelper::getScriptor() const
{
    return scriptor_;
}

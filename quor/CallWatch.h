#pragma once

#include <lua.hpp>
#include <string>
#include <vector>

namespace quor {

/// Sees what becomes of the next call of a global function, which the library's answer leaves open: whether
/// the function was called, whether it returned, and of which types its results were. The script sees nothing
/// of it but one frame more on the stack: the global is again what it was when the function begins.
class CallWatch {
public:
    /// The call takes so many results. The function must be one. Nothing is watched when memory runs out.
    /// [-0, +0, -]
    CallWatch(lua_State* L, const std::string& function, std::size_t results);
    /// Puts back what stood in the function's place. The state is still there.
    ~CallWatch();
    CallWatch(const CallWatch&) = delete;
    CallWatch& operator=(const CallWatch&) = delete;

    /// Whether the next call is, or was, watched.
    bool isInstalled() const { return place_ != nullptr; }
    bool returned() const { return returned_; }
    /// Whether all results are nil; of no results they are.
    bool returnedOnlyNil() const;
    /// Whether a result is of a type that the reader of a letter (callletters.h) takes; it passes over all
    /// others. For 'd' a text is one, of which it takes those that are numbers.
    bool takes(std::size_t result, char letter) const;
    /// The name of the Lua type of a result; nil for one that the function did not return.
    const char* typeName(std::size_t result) const;

private:
    static int install(lua_State* L);
    static int remove(lua_State* L);
    static int call(lua_State* L);

    lua_State* L_;
    const std::string& function_;
    /// In the state, which keeps it: where the function in the other's place finds this. It may be called
    /// later than this lives, and finds null then.
    CallWatch** place_ = nullptr;
    bool returned_ = false;
    std::vector<int> types_;
};

} // namespace quor

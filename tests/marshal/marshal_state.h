#pragma once

#include "../platform/lua_state.h"

/// A `LuaState` whose scripts describe values: `describe(v)` gives a text of a value and all in it,
/// `seen(...)` keeps that of its arguments, and `light` is a light userdata.
class MarshalState : public LuaState {
protected:
    MarshalState()
    {
        lua_pushlightuserdata(L, this);
        lua_setglobal(L, "light");
        run(R"(
            local function key(a, b)
                if type(a) == type(b) then return a < b end
                return type(a) == 'number'
            end
            function describe(v)
                if type(v) == 'string' then
                    return '"' .. v:gsub('[%c\128-\255]', function(c) return '\\' .. c:byte() end) .. '"'
                elseif type(v) == 'userdata' then
                    return v == light and 'light' or 'userdata ' .. tostring(v):gsub(':.*', '')
                elseif type(v) ~= 'table' then
                    return textOf(v)
                end
                local keys, out = {}, {}
                for k in pairs(v) do keys[#keys + 1] = k end
                table.sort(keys, key)
                for i, k in ipairs(keys) do
                    out[i] = (k == i and '' or textOf(k) .. '=') .. describe(v[k])
                end
                return '{' .. table.concat(out, ',') .. '}'
            end
            function seen(...)
                local out = {}
                for i = 1, select('#', ...) do out[i] = describe((select(i, ...))) end
                what = table.concat(out, ' ')
                return true
            end
        )");
    }

    /// Tests leave their own values; what an operation leaves is caught by `SameHeight`.
    void TearDown() override { lua_settop(L, 0); }

    /// What `seen` was given last.
    std::string whatWasSeen() { return shown("what"); }

    /// The description of the value on top, which is popped.
    std::string popDescribed()
    {
        lua_getglobal(L, "describe");
        lua_insert(L, -2);
        EXPECT_EQ(lua_pcall(L, 1, 1, 0), 0) << lua_tostring(L, -1);
        std::string text = lua_tostring(L, -1);
        lua_pop(L, 1);
        return text;
    }

    /// Pushes the value of an expression; its index.
    int push(const std::string& expression)
    {
        run("return " + expression, 1);
        return lua_gettop(L);
    }

    /// Defines the global function `answer`, which returns these values.
    void answer(const std::string& values) { run("function answer() return " + values + " end"); }
};

/// Expects the stack as high at the end of the scope as it is now.
class SameHeight {
public:
    explicit SameHeight(lua_State* L) : state_(L), top_(lua_gettop(L)) {}
    ~SameHeight() { EXPECT_EQ(lua_gettop(state_), top_) << "values left on the stack"; }
    SameHeight(const SameHeight&) = delete;
    SameHeight& operator=(const SameHeight&) = delete;

private:
    lua_State* state_;
    int top_;
};

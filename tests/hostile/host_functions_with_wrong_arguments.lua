function main()
    for name, f in pairs(glib) do
        if type(f) == "function" then
            pcall(f)
            pcall(f, nil, {}, "x", 0 / 0, 2 ^ 63, newproxy(true), coroutine.create(f))
            pcall(f, 1e308, -1e308)
        end
    end
    for _, argument in ipairs({1 / 0, "9223372036854775808", "x", {}, "1e5"}) do pcall(int64, argument) end
    return {}
end

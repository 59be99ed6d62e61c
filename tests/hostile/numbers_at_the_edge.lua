local extremes = {0, -1, 2 ^ 31, -2 ^ 31, 2 ^ 53, 1e308, -1e308, 1 / 0, -1 / 0, 0 / 0}
function main()
    for _, n in ipairs(extremes) do
        pcall(string.byte, "abc", n, n)
        pcall(string.sub, "abc", n, -n)
        pcall(string.char, n)
        pcall(string.format, "%d %x %c %g %5.3f", n, n, n, n, n)
        pcall(select, n, 1, 2, 3)
        pcall(table.concat, {}, "", n, n)
        pcall(table.remove, {}, n)
        pcall(math.random, n)
        pcall(setfenv, n, {})
        pcall(getfenv, n)
        pcall(collectgarbage, "setpause", n)
        pcall(error, "x", n)
        pcall(tonumber, "1", n)
    end
    collectgarbage("setpause", 200)
    return {}
end

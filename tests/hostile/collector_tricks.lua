function main()
    for _, option in ipairs({"collect", "count", "step", "stop", "restart"}) do collectgarbage(option, -1) end
    collectgarbage("setpause", -1000)
    collectgarbage("setstepmul", 0)
    for i = 1, 10000 do local t = {{}} end
    collectgarbage("setpause", 200)
    collectgarbage("setstepmul", 200)
    return {}
end

function main()
    local co
    co = coroutine.create(function() coroutine.resume(co) coroutine.wrap(function() coroutine.resume(co) end)() end)
    coroutine.resume(co)
    coroutine.resume(co)
    pcall(coroutine.yield, 1)
    local again
    again = coroutine.wrap(function() again() end)
    pcall(again)
    pcall(coroutine.create, print)
    local dead = coroutine.create(error)
    coroutine.resume(dead, {})
    coroutine.resume(dead)
    return {}
end

function main()
    local held = {}
    for i = 1, math.huge do
        held[i] = coroutine.create(function() coroutine.yield(string.rep("x", i)) end)
        coroutine.resume(held[i])
    end
end

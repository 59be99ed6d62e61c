function main()
    local one = coroutine.wrap(function() while true do coroutine.yield() end end)
    while true do one() end
end

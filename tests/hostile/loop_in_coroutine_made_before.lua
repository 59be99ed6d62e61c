local sleeper = coroutine.create(function()
    coroutine.yield()
    while true do pcall(function() while true do end end) end
end)
coroutine.resume(sleeper)
function main()
    coroutine.resume(sleeper)
    while true do end
end

function main()
    local proxy = newproxy(true)
    getmetatable(proxy).__gc = function() while true do local t = {} end end
    proxy = nil
    collectgarbage()
    while true do end
end

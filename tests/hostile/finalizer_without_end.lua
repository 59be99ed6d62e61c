function main()
    local proxy = newproxy(true)
    getmetatable(proxy).__gc = function() while true do end end
    proxy = nil
    collectgarbage()
    return {}
end

local depth = 0
local function make()
    depth = depth + 1
    local proxy = newproxy(true)
    getmetatable(proxy).__gc = function() if depth < 1000 then make() collectgarbage() end end
end
function main()
    make()
    collectgarbage()
    return {}
end

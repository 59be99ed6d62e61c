local depth = 0
local function read()
    depth = depth + 1
    if depth % 20 == 0 and depth < 2000 then load(read) end
    return depth < 2000 and "(" or nil
end
function main()
    load(read)
    return {}
end

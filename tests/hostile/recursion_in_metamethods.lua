local meta = {}
meta.__eq = function() return not (setmetatable({}, meta) == setmetatable({}, meta)) end
function main()
    return setmetatable({}, meta) == setmetatable({}, meta)
end

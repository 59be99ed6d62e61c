local meta = {}
meta.__tostring = function() return (tostring(setmetatable({}, meta))) end
function main()
    return (tostring(setmetatable({}, meta)))
end

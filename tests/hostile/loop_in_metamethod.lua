function main()
    local t = setmetatable({}, {__index = function(self, key) while true do end end})
    return t.field
end

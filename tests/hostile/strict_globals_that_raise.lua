setmetatable(_G, {
    __index = function(_, name) error("undeclared " .. tostring(name), 2) end,
    __newindex = function(_, name) error("undeclared " .. tostring(name), 2) end,
})
rawset(_G, "main", function() return someName end)

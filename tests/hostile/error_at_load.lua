error(setmetatable({}, {__tostring = function() error("again") end}))

getmetatable("").__index = function(s, key) return s[key .. "x"] end
getmetatable("").__add = error
debug.setmetatable(nil, {__index = function(_, key) return nil end, __call = function() return {} end})
debug.setmetatable(1, {__index = math, __call = error})
function main() return undefinedFunction() end

io, os, debug = nil, {exit = 1}, setmetatable({}, {__index = error})
io = setmetatable({}, {__index = error, __newindex = error})
function main() return {} end

keep = newproxy(true)
getmetatable(keep).__gc = function() while true do end end
function main() return {} end

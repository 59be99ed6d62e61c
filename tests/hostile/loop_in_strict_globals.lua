setmetatable(_G, {__index = function(_, name)
    while true do end
end})
function main() return undefinedName end

local function eat()
    local s = "x"
    while true do s = s .. s end
end
function main()
    while true do pcall(eat) end
end

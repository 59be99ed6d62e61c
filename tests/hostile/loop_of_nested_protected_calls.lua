local function forever() while true do end end
function main()
    while true do
        pcall(pcall, pcall, pcall, pcall, forever)
        xpcall(forever, forever)
    end
end

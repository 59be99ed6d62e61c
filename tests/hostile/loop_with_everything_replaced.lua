function main()
    local again = pcall
    pairs, type, error, pcall, tostring, setmetatable, glib, string, table = nil
    _G._G = nil
    while true do again(function() while true do end end) end
end

function main()
    xpcall(function() error("once") end, function() while true do end end)
end

function main()
    local t = {}
    for i = 1, 2000 do t[i] = i * 7919 % 1000 end
    pcall(table.sort, t, function() return true end)
    pcall(table.sort, t, function(a, b) return a ~= b end)
    pcall(table.sort, t, function(a, b) t[#t + 1] = a; if #t > 5000 then error("enough") end return a < b end)
    return {}
end

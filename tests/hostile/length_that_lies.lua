function main()
    local t = {}
    for i = 1, 32 do t[i] = i end
    for power = 6, 29 do t[2 ^ power] = 1 end
    return t
end

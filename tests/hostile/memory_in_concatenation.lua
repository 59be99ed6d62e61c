function main()
    local part = string.rep("x", 2 ^ 20)
    local parts = {}
    for i = 1, 64 do parts[i] = part end
    return table.concat(parts)
end

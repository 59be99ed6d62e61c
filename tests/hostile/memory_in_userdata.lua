function main()
    local held = {}
    for i = 1, math.huge do held[i] = newproxy(true) end
end

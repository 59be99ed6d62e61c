function main()
    for i = 1, math.huge do end
end

function main()
    while true do string.rep("ab", 1000) math.sin(1) tostring(nil) end
end

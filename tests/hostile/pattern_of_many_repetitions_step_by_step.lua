function main()
    for match in string.gmatch(string.rep("a", 300000), string.rep("a*", 300000)) do end
end

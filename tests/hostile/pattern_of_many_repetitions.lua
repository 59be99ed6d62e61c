function main()
    return string.find(string.rep("a", 300000), string.rep("a?", 300000))
end

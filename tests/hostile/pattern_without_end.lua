function main()
    return string.find(string.rep("a", 60), string.rep("a?", 60) .. string.rep("a", 60))
end

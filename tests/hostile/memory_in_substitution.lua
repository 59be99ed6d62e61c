function main()
    return (string.gsub(string.rep("x", 2 ^ 16), ".", string.rep("y", 2 ^ 12)))
end

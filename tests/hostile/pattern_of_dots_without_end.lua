function main()
    return string.match(string.rep("x", 300), string.rep(".-", 60) .. "y")
end

function main()
    return string.rep("abc", 2 ^ 30)
end

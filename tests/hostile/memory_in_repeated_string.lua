function main()
    return string.rep("abc", 2 ^ 28)
end

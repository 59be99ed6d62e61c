function main()
    local s = string.rep("x", 2 ^ 20)
    local format = string.rep("%s", 200)
    local arguments = {}
    for i = 1, 200 do arguments[i] = s end
    return string.format(format, unpack(arguments))
end

function main()
    local list = {}
    for _, n in ipairs({0 / 0, 1 / 0, -1 / 0, 1e300, 2 ^ 63, -2 ^ 31, 70000}) do
        for kind = 0, 60 do list[#list + 1] = {kind, n, n, n, {n, n, n}, {n, n, n}} end
        list[#list + 1] = {n, n}
    end
    return list
end

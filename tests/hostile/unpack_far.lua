function main()
    for _, bounds in ipairs({{0, 2 ^ 31 - 1}, {-2 ^ 31, 2 ^ 31 - 1}, {1, 2 ^ 30}, {2 ^ 31 - 3, 2 ^ 31 - 1}}) do
        pcall(unpack, {}, bounds[1], bounds[2])
    end
    local ok, problem = pcall(unpack, {}, 0, 2 ^ 31 - 1)
    assert(not ok and string.find(problem, "too many results to unpack", 1, true))
    return {}
end

function main()
    local function compare() table.sort({1, 2, 3}, compare) return true end
    compare()
end

function main()
    table.insert({}, -2 ^ 31, 1)
    return {}
end

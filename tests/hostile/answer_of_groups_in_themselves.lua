function main()
    local group = {0, 10}
    group[3] = group
    local deep = {}
    for i = 1, 100000 do deep = {deep} end
    return {group, deep, group}
end

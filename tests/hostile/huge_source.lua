function main()
    local f = loadstring("local t = {" .. string.rep("1,", 100000) .. "} return #t")
    assert(f and f() == 100000)
    return {}
end

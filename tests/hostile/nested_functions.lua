function main()
    assert(not loadstring(string.rep("function f() ", 1000) .. string.rep(" end", 1000)))
    return {}
end

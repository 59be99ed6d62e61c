function main()
    assert(not loadstring("return " .. string.rep("{", 5000) .. string.rep("}", 5000)))
    return {}
end

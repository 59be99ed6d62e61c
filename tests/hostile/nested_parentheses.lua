function main()
    assert(not loadstring("return " .. string.rep("(", 5000) .. "1" .. string.rep(")", 5000)))
    return {}
end

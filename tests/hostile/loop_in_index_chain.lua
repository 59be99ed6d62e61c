function main()
    local a, b = {}, {}
    setmetatable(a, {__index = b})
    setmetatable(b, {__index = a})
    return a.field
end

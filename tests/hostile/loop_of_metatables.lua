function main()
    local t = {}
    setmetatable(t, {__index = t})
    return t.field.field
end

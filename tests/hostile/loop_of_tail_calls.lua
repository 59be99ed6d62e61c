function main()
    local function again() return again() end
    return again()
end

function main()
    for byte = 0, 255 do
        pcall(string.format, "%" .. string.char(byte), 1)
        pcall(string.format, "%99.99" .. string.char(byte), 1e308)
        pcall(string.format, "%1000" .. string.char(byte), 1)
    end
    pcall(string.format, string.rep("%s", 1000))
    return {}
end

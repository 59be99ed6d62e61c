function main()
    error("\255\0\129%s%n" .. string.rep("%s", 100000))
end

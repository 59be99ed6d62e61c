function main()
    while true do end
end

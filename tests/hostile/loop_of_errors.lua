function main()
    while true do
        pcall(error, {})
    end
end

function main()
    error(newproxy(true))
end

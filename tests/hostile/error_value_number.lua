function main()
    error(0 / 0)
end

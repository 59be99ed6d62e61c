function main()
    error(main)
end

function main()
    error(false)
end

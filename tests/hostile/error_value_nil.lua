function main()
    error(nil)
end

function main()
    error(coroutine.create(main))
end

function main()
    coroutine.yield({})
end

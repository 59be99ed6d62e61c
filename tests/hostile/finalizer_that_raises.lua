function main()
    for i = 1, 100 do
        getmetatable(newproxy(true)).__gc = function() error("from a finalizer") end
    end
    for i = 1, 100 do pcall(collectgarbage) end
    return {}
end

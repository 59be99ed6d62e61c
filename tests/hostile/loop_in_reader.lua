function main()
    load(function() return " " end)
end

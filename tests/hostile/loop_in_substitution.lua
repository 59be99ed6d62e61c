function main()
    return (string.gsub("a", ".", function() while true do end end))
end

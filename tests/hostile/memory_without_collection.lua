function main()
    collectgarbage("stop")
    while true do local t = {1, 2, 3, 4} end
end

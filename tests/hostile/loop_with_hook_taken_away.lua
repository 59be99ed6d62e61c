function main()
    debug.sethook()
    while true do end
end

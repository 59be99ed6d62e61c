function main()
    local i = 0
    repeat i = i + 1 until i < 0
end

-- What the limits for scripts cost, loop by loop: some seconds' work each.
function arithmetic()
    local sum = 0
    for i = 1, 1.5e8 do sum = sum + i % 7 * 0.5 end
    return sum
end

function tables()
    local last
    for i = 1, 1.2e7 do last = {i, i + 1, i + 2} end
    return last[1]
end

function strings()
    local length = 0
    for i = 1, 3e6 do length = length + #string.format('%d;%d', i, i + 1):gsub(';', ', ') end
    return length
end

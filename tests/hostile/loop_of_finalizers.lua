local function make()
    getmetatable(newproxy(true)).__gc = make
end
function main()
    while true do make() collectgarbage("step") end
end

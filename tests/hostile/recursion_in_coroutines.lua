local function down() return (coroutine.wrap(down)()) end
function main()
    down()
end

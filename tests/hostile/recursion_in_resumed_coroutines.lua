local function down() return (select(2, coroutine.resume(coroutine.create(down)))) end
function main()
    down()
    return {}
end

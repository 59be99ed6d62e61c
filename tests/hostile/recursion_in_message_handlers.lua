local function down() return (xpcall(error, down)) end
function main()
    down()
    return {}
end

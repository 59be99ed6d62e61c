local function down() return (pcall(down)) end
function main()
    down()
    return {}
end

function main()
    local function down() return 1 + down() end
    return down()
end

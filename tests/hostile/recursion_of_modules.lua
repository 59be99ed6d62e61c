package.preload.endless = function()
    package.loaded.endless = nil
    return (require("endless"))
end
function main()
    require("endless")
end

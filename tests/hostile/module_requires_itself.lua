package.preload.circle = function() return require("circle") end
function main()
    require("circle")
end

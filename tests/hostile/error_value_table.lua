function main()
    error(setmetatable({}, {__tostring = error, __index = error}))
end

local meta = {__index = error, __newindex = error, __len = error, __call = error, __gc = error, __mode = "kv",
    __eq = error, __lt = error, __concat = error, __unm = error, __metatable = error}
function main()
    return setmetatable({setmetatable({1, 2}, meta), setmetatable({}, meta), [2 ^ 40] = {}}, meta)
end

function main() end
local rawset, globals = rawset, _G
for name in pairs(globals) do if name ~= "main" then rawset(globals, name, nil) end end

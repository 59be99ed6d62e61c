function main() end
for name in pairs(_G) do if name ~= "main" and name ~= "_G" then rawset(_G, name, nil) end end

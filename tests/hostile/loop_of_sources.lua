source = "return loadstring(source)()"
function main() return loadstring(source)() end

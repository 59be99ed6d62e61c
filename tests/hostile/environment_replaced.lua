setfenv(0, {})
setfenv(1, setmetatable({}, {__index = _G}))
function main() return {} end
_G = nil

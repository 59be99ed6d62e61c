function _ALERT() while true do end end
function main() error("first") end

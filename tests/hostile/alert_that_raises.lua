function _ALERT(text) error("alert: " .. text) end
function main() error("first") end

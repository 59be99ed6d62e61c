_G.param, _G.glb, _G.skey = 1, "x", print
_ALERT = 5
pairs, type, error, tostring, print, glib, package, string = 1, 2, 3, 4, 5, 6, 7, 8
function main() return {} end

local function down(s) return (string.gsub(s, ".", down)) end
function main()
    down("a")
end

param = { P1 = 10, P2 = 50 }
glb = { factor = 1 }
skey = { quantumUnit = {}, angleUnit = {} }

function main()
    local half = param.P1 / 2
    return { { 300, 5 }, { 400, "steel" }, { 2, { -half, 0, 0 }, { half, 0, 0 }, param.P2 / 2 } }
end

function broken()
    error("on purpose")
end

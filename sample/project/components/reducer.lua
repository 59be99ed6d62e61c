-- A concentric reducer for welding. It lies along x with the middle of its larger end in the origin.
local kind = require("kind")
local drawing = require("drawing")

param = {
    P1 = 114.3, -- larger end: outside diameter
    P2 = 3.6,   -- larger end: wall
    P3 = 88.9,  -- smaller end: outside diameter
    P4 = 3.2,   -- smaller end: wall
    P5 = 102,   -- length
    NAME = "同心异径管",
}
glb = { factor = 1, smrtlntype = "REDUCER" }
skey = { quantumUnit = {}, angleUnit = {} }

param_note = {
    P1 = { "大端外径", 114.3 },
    P2 = { "大端壁厚", 3.6 },
    P3 = { "小端外径", 88.9 },
    P4 = { "小端壁厚", 3.2 },
    P5 = { "长度", 102 },
    NAME = { "名称", "同心异径管" },
}

function main()
    local d = drawing.new()
    local first, second = { 0, 0, 0 }, { param.P5, 0, 0 }
    local outside, inside
    d:set(kind.COLOUR, 5)
    d:set(kind.MATERIAL, "碳钢")
    d:group(function()
        outside = d:add { kind.CONE, first, second, param.P1 / 2, param.P3 / 2 }
        inside = d:add { kind.CONE, first, second, param.P1 / 2 - param.P2, param.P3 / 2 - param.P4 }
    end)
    d:operate(kind.SUBTRACT, outside, inside)
    return d.records
end

function keypoint()
    return { { 1, 1, { 0, 0, 0 } }, { 1, 2, { param.P5, 0, 0 } } }
end

function symbol()
    local d = drawing.new()
    local length, large, small = param.P5, param.P1 / 2, param.P3 / 2
    d:set(kind.COLOUR, 3)
    local corners = { { 0, -large }, { 0, large }, { length, small }, { length, -small } }
    d:add { kind.POLYLINE, drawing.outline(corners), 0.5 * glb.factor }
    d:set(kind.LINE_TYPE, "CENTER")
    d:add { kind.LINE, { -length / 10, 0, 0 }, { length + length / 10, 0, 0 } }
    d:set(kind.LINE_TYPE)
    d:add { kind.TEXT, 1, { length / 2, -1.5 * large, 0 }, param.NAME, 0, 0.8, 12 * glb.factor, { 0, 0, 1 }, 2 }
    return d.records
end

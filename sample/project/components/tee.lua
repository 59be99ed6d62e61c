-- A reducing tee for welding. Its run lies along x about the origin, where the axes meet; the branch points along
-- y, turned about the run by P7.
local kind = require("kind")
local angle = require("angle")
local drawing = require("drawing")

param = {
    P1 = 88.9, -- run: outside diameter
    P2 = 3.2,  -- run: wall
    P3 = 60.3, -- branch: outside diameter
    P4 = 2.9,  -- branch: wall
    P5 = 86,   -- middle to each end of the run
    P6 = 76,   -- middle to the end of the branch
    P7 = 0,    -- turn of the branch about the run
    NAME = "异径三通",
}
glb = { factor = 1, smrtlntype = "TEE" }
skey = { quantumUnit = {}, angleUnit = { "P7" } }

param_note = {
    P1 = { "主管外径", 88.9 },
    P2 = { "主管壁厚", 3.2 },
    P3 = { "支管外径", 60.3 },
    P4 = { "支管壁厚", 2.9 },
    P5 = { "主管半长", 86 },
    P6 = { "支管长度", 76 },
    P7 = { "支管转角", 0 },
    NAME = { "名称", "异径三通" },
}

local function at(x, side)
    local s, c = angle.sincos(param.P7)
    return { x, side * c, side * s }
end

function main()
    local d = drawing.new()
    local run = { at(-param.P5, 0), at(param.P5, 0) }
    local branch = { at(0, 0), at(0, param.P6) }
    local outside, stub
    d:set(kind.COLOUR, 5)
    d:set(kind.MATERIAL, "碳钢")
    d:group(function()
        outside = d:add { kind.CYLINDER, run[1], run[2], param.P1 / 2 }
        stub = d:add { kind.CYLINDER, branch[1], branch[2], param.P3 / 2 }
    end)
    d:operate(kind.UNITE, outside, stub)
    d:operate(kind.SUBTRACT, outside, d:add { kind.CYLINDER, run[1], run[2], param.P1 / 2 - param.P2 })
    d:operate(kind.SUBTRACT, outside, d:add { kind.CYLINDER, branch[1], branch[2], param.P3 / 2 - param.P4 })
    return d.records
end

function keypoint()
    return { { 1, 1, at(-param.P5, 0) }, { 1, 2, at(param.P5, 0) }, { 1, 3, at(0, param.P6) } }
end

function needxdir()
    return { needxdir = { true, "支管方向" } }
end

function symbol()
    local d = drawing.new()
    d:set(kind.COLOUR, 3)
    d:set(kind.THICKNESS, 0.5 * glb.factor)
    d:add { kind.LINE, { -param.P5, 0, 0 }, { param.P5, 0, 0 } }
    d:add { kind.LINE, { 0, 0, 0 }, { 0, param.P6, 0 } }
    d:add { kind.CIRCLE, { 0, 0, 0 }, param.P3 / 8, { 0, 0, 1 } }
    d:set(kind.THICKNESS)
    d:add { kind.TEXT, 1, { 0, -param.P1 / 2, 0 }, param.NAME, 0, 0.8, 12 * glb.factor }
    return d.records
end

-- A flanged gate valve with a rising stem. The origin is the middle of the run, which lies along x; the stem
-- points along z, turned about the run by P11.
local kind = require("kind")
local angle = require("angle")
local drawing = require("drawing")
local flange = require("flange")

param = {
    P1 = 150,  -- face to face
    P2 = 165,  -- flange: diameter
    P3 = 20,   -- flange: thickness, raised face included
    P4 = 125,  -- flange: bolt circle
    P5 = 18,   -- flange: diameter of the bolt holes
    P6 = 4,    -- flange: number of bolts
    P7 = 102,  -- flange: diameter of the raised face
    P8 = 50,   -- bore
    P9 = 320,  -- height of the open valve above the run's axis
    P10 = 180, -- diameter of the handwheel
    P11 = 0,   -- turn of the stem about the run
    DN = 50,   -- nominal size, a number without a unit
    NAME = "闸阀",
    MAKER = [[永誠閥門]], -- in a long bracket: the second byte of one character is a backslash
}
glb = { factor = 1, smrtlntype = "VALVE" }
skey = { quantumUnit = { "P6", "DN" }, angleUnit = { "P11" } }

param_note = {
    P1 = { "结构长度", 150 },
    P2 = { "法兰外径", 165 },
    P3 = { "法兰厚度", 20 },
    P4 = { "螺栓孔中心圆直径", 125 },
    P5 = { "螺栓孔直径", 18 },
    P6 = { "螺栓数量", 4 },
    P7 = { "密封面直径", 102 },
    P8 = { "通径", 50 },
    P9 = { "开启高度", 320 },
    P10 = { "手轮直径", 180 },
    P11 = { "阀杆转角", 0 },
    DN = { "公称直径", 50 },
    NAME = { "名称", "闸阀" },
    angle = 90,
}

-- A place by its distance along the run, up the stem and across both.
local function at(x, up, across)
    local s, c = angle.sincos(param.P11)
    across = across or 0
    return { x, across * c - up * s, across * s + up * c }
end

local function flangeSize()
    return {
        diameter = param.P2, thickness = param.P3, circle = param.P4, hole = param.P5, bolts = param.P6,
        face = param.P7, rise = 3 * glb.factor,
    }
end

local function addCasting(d)
    local half, bore = param.P1 / 2, param.P8
    local size = flangeSize()
    local inner = half - size.thickness
    local body = d:add { kind.CYLINDER, at(-inner, 0), at(inner, 0), 0.66 * bore }
    local parts = { d:add { kind.OVAL, 0.25 * param.P1, 0.9 * bore, 1.125 * bore, at(0, 0), at(0, 1) } }
    for _, direction in ipairs { 1, -1 } do
        local face, disc = flange.add(d, -direction * half, direction, size)
        parts[#parts + 1] = face
        parts[#parts + 1] = disc
    end
    parts[#parts + 1] = d:add { kind.CYLINDER, at(0, 0), at(0, 1.6 * bore), 0.75 * bore }
    for _, part in ipairs(parts) do
        d:operate(kind.UNITE, body, part)
    end
    d:operate(kind.SUBTRACT, body, d:add { kind.CYLINDER, at(-half, 0), at(half, 0), bore / 2 })
    flange.addNuts(d, -half, 1, size)
    flange.addNuts(d, half, -1, size)
end

local function addYoke(d)
    local bore, x = param.P8, { 1, 0, 0 }
    local low, high = 1.6 * bore + 1.6 * param.P3, 0.85 * param.P9
    local leg, thick = (high + low) / 2, 0.2 * bore
    d:add { kind.CYLINDER, at(0, 1.6 * bore), at(0, low), 1.125 * bore }
    d:group(function()
        for _, side in ipairs { -1, 1 } do
            d:add { kind.BOX, thick, thick, high - low, at(0, leg, side * 0.6 * bore), x, at(0, 0, 1) }
        end
        d:add { kind.BOX, 2 * thick, 1.4 * bore, thick, at(0, high + thick / 2), x, at(0, 0, 1) }
    end)
    d:set(kind.MATERIAL, "不锈钢")
    d:add { kind.CYLINDER, at(0, low), at(0, param.P9), 0.2 * bore }
end

local function addHandwheel(d)
    local tube = param.P10 / 20
    local ring, height = param.P10 / 2 - tube, param.P9 - tube
    d:set(kind.COLOUR, 1)
    d:set(kind.MATERIAL, "球墨铸铁")
    d:group(function()
        d:add { kind.RING, ring, tube, at(0, height), at(ring, height), at(0, height, ring), 360 }
        for i = 0, 3 do
            local s, c = angle.sincos(i * 90)
            d:add { kind.CYLINDER, at(0, height), at(ring * c, height, ring * s), 0.5 * tube }
        end
    end)
end

function main()
    local d = drawing.new()
    d:set(kind.COLOUR, 5)
    d:set(kind.MATERIAL, "铸钢")
    addCasting(d)
    addYoke(d)
    addHandwheel(d)
    d:add { kind.PARAMETERS, { MAKER = param.MAKER } }
    return d.records
end

function keypoint()
    local half = param.P1 / 2
    return {
        { 1, 1, at(-half, 0) },
        { 1, 2, at(half, 0) },
        { 1, 3, at(0, param.P9 - param.P10 / 20) },
    }
end

-- The symbol in plan, in the plane z = 0: two triangles that meet in the middle, the stem and the handwheel.
function symbol()
    local d = drawing.new()
    local half, height, text = param.P1 / 2, param.P2 / 4, 12 * glb.factor
    d:set(kind.COLOUR, 3)
    d:set(kind.THICKNESS, 0.5 * glb.factor)
    local corners = { { -half, -height }, { -half, height }, { half, -height }, { half, height } }
    d:add { kind.POLYLINE, drawing.outline(corners) }
    d:add { kind.LINE, { 0, 0, 0 }, { 0, 2 * height, 0 } }
    d:add { kind.LINE, { -height, 2 * height, 0 }, { height, 2 * height, 0 } }
    d:set(kind.COLOUR, 2)
    d:set(kind.THICKNESS)
    d:set(kind.LINE_TYPE, "CENTER")
    d:add { kind.LINE, { -1.2 * half, 0, 0 }, { 1.2 * half, 0, 0 }, "CENTER", 2.5 }
    d:set(kind.LINE_TYPE)
    local label = string.format("%s DN%d", param.NAME, param.DN)
    d:add { kind.TEXT, 1, { 0, -2 * height, 0 }, label, 0, 0.8, text }
    return d.records
end

-- Whether the host has to ask for a direction, and what the direction is called.
function needxdir()
    return { needxdir = { true, "手轮方向" } }
end

-- The user has picked the place of the one flange: answers where the other one comes.
function quorgetparam_ui(picked)
    return 0, picked, { picked[1] + param.P1, picked[2], picked[3] }, { P11 = param.P11 }
end

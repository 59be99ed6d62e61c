-- A butt-welded elbow of 90 degrees. The origin is where the axes of its ends meet; the inlet lies at (-P3, 0, 0),
-- the outlet at (0, P3, 0), turned about the inlet's axis by P5.
local kind = require("kind")
local angle = require("angle")
local drawing = require("drawing")

param = {
    P1 = 60.3, -- outside diameter
    P2 = 2.9,  -- wall
    P3 = 76,   -- bend radius
    P4 = 0,    -- thickness of the insulation, 0 for none
    P5 = 0,    -- turn about the inlet's axis
    NAME = "90°„Õ‰Õ∑",
}
glb = { factor = 1, smrtlntype = "ELBOW" }
skey = { quantumUnit = {}, angleUnit = { "P5" } }

param_note = {
    P1 = { "Õ‚æ∂", 60.3 },
    P2 = { "±⁄∫Ò", 2.9 },
    P3 = { "Õ‰«˙∞Îæ∂", 76 },
    P4 = { "±£Œ¬≤„∫Ò∂»", 0 },
    P5 = { "◊™Ω«", 0 },
    NAME = { "√˚≥∆", "90°„Õ‰Õ∑" },
}

local function at(x, side)
    local s, c = angle.sincos(param.P5)
    return { x, side * c, side * s }
end

local function bend(radius, open)
    local r = param.P3
    return { kind.TORUS, r, radius, at(-r, r), at(-r, 0), at(0, r), 0, open }
end

function main()
    local d = drawing.new()
    d:set(kind.COLOUR, 5)
    d:set(kind.MATERIAL, "Ãº∏÷")
    local outside = d:add(bend(param.P1 / 2))
    local inside = d:add(bend(param.P1 / 2 - param.P2))
    d:operate(kind.SUBTRACT, outside, inside)
    if param.P4 > 0 then
        d:set(kind.COLOUR, 8)
        d:set(kind.MATERIAL, "—“√ﬁ")
        d:group(function()
            -- The insulation goes on along the pipes: no faces at its ends.
            d:add(bend(param.P1 / 2 + param.P4, true))
        end)
    end
    return d.records
end

function keypoint()
    return { { 1, 1, at(-param.P3, 0) }, { 1, 2, at(0, param.P3) } }
end

-- The bend in one line, dots where it is welded on, and the angle's mark dashed.
function symbol()
    local d = drawing.new()
    local r = param.P3
    d:set(kind.COLOUR, 3)
    d:set(kind.THICKNESS, 0.5 * glb.factor)
    d:add { kind.ARC, { -r, r, 0 }, r, 270, 360, { 0, 0, 1 } }
    d:add { kind.POINT, { -r, 0, 0 }, 33 }
    d:add { kind.POINT, { 0, r, 0 }, 33 }
    d:set(kind.THICKNESS)
    d:set(kind.LINE_TYPE, "DASHED")
    d:set(kind.LINE_TYPE_SCALE, 0.5)
    d:add { kind.LINES, { { -r, 0, 0 }, { 0, 0, 0 }, { 0, r, 0 } } }
    d:set(kind.LINE_TYPE)
    d:set(kind.LINE_TYPE_SCALE, 1)
    d:add { kind.TEXT, 0, { r / 10, 0, 0 }, param.NAME, { 1, 0, 0 }, 0.8, 12 * glb.factor }
    return d.records
end

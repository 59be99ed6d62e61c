-- A pipe shoe with U-bolts. The origin lies on the axis of the pipe, which runs along x; the shoe stands below on
-- what carries it, P2 under the pipe.
local kind = require("kind")
local angle = require("angle")
local drawing = require("drawing")

param = {
    P1 = 114.3, -- outside diameter of the pipe
    P2 = 100,   -- height from what carries the shoe to the pipe
    P3 = 250,   -- length along the pipe
    P4 = 160,   -- width of the base plate
    P5 = 8,     -- thickness of the plates
    P6 = 120,   -- angle of the pipe's round that lies in the bed
    P7 = 12,    -- diameter of the U-bolts
    P8 = 2,     -- number of the U-bolts
    NAME = "管托",
}
glb = { factor = 1, smrtlntype = "SUPPORT" }
skey = { quantumUnit = { "P8" }, angleUnit = { "P6" } }

param_note = {
    P1 = { "管道外径", 114.3 },
    P2 = { "支承高度", 100 },
    P3 = { "管托长度", 250 },
    P4 = { "底板宽度", 160 },
    P5 = { "板厚", 8 },
    P6 = { "包角", 120 },
    P7 = { "管卡直径", 12 },
    P8 = { "管卡数量", 2 },
    NAME = { "名称", "管托" },
}

local X, Y = { 1, 0, 0 }, { 0, 1, 0 }

-- Heights: what carries the shoe, the base plate's upper face, the underside of the bed, and the pipe's.
local function levels()
    local pipe = -param.P1 / 2
    local floor = pipe - param.P2
    return floor, floor + param.P5, pipe - 2 * param.P5, pipe
end

local function addShoe(d)
    local floor, plate, bed = levels()
    local length, width, thick = param.P3, param.P4, param.P5
    local half = angle.sincos(param.P6 / 2)
    local base = d:add { kind.BOX, length, width, thick, { 0, 0, floor + thick / 2 }, X, Y }
    -- Bevels under both ends let the shoe slide over edges.
    for _, direction in ipairs { 1, -1 } do
        d:operate(kind.SLICE, base, { { direction * length / 2, 0, floor + thick / 2 }, { direction, 0, -1 } })
    end
    d:add { kind.CORNER_BOX, length, thick, bed - plate, { -length / 2, -thick / 2, plate }, X, Y }
    d:add { kind.SADDLE, length, param.P1 * half, 2 * thick, { 0, 0, bed }, param.P1 / 2, param.P6 }
    d:group(function()
        for _, x in ipairs { -length / 2, length / 2 - thick } do
            local inner, outer = thick / 2, width / 2
            d:add { kind.WEDGE, { x, -outer, plate }, { x, -inner, plate }, { x, -inner, bed }, thick }
            d:add { kind.WEDGE, { x, inner, plate }, { x, outer, plate }, { x, inner, bed }, thick }
        end
    end)
end

local function addBolt(d, x)
    local floor, plate = levels()
    local rod = param.P7 / 2
    local ring = param.P1 / 2 + rod
    d:add { kind.RING, ring, rod, { x, 0, 0 }, { x, ring, 0 }, { x, 0, ring }, 180 }
    for _, y in ipairs { -ring, ring } do
        d:add { kind.CYLINDER, { x, y, 0 }, { x, y, floor }, rod }
        d:add { kind.HEXAGON, { x, y, plate }, { x, y, plate + 1.6 * rod }, { x + 1.5 * rod, y, plate }, 6 }
    end
end

function main()
    local d = drawing.new()
    d:set(kind.COLOUR, 6)
    d:set(kind.MATERIAL, "结构钢")
    addShoe(d)
    d:set(kind.COLOUR, 1)
    d:set(kind.MATERIAL, "不锈钢")
    d:group(function()
        for i = 1, param.P8 do
            d:group(function() addBolt(d, param.P3 * ((i - 0.5) / param.P8 - 0.5)) end)
        end
    end)
    return d.records
end

function keypoint()
    local floor = levels()
    return { { 1, 1, { 0, 0, 0 } }, { 1, 2, { 0, 0, floor } } }
end

-- The support from the pipe's end: the pipe, the shoe as a triangle, and hatched what carries it.
function symbol()
    local d = drawing.new()
    local floor, _, _, pipe = levels()
    local half, below = param.P4 / 2, floor - 2 * param.P5
    d:set(kind.COLOUR, 3)
    d:set(kind.THICKNESS, 0.5 * glb.factor)
    d:add { kind.CIRCLE, { 0, 0, 0 }, param.P1 / 2, { 0, 0, 1 } }
    d:add { kind.POLYLINE, drawing.outline { { 0, pipe }, { -half, floor }, { half, floor } } }
    d:set(kind.THICKNESS)
    d:set(kind.COLOUR, 8)
    local strip = { { -half, floor }, { half, floor }, { half, below }, { -half, below } }
    d:add { kind.HATCH, "ANSI31", drawing.outline(strip) }
    d:set(kind.COLOUR, 2)
    d:add { kind.TEXT, 0, { 1.1 * half, floor, 0 }, param.NAME, 0, 0.8, 12 * glb.factor }
    return d.records
end

-- A control valve's symbol on an isometric drawing, with its note. Sizes are those on the sheet. The host tells
-- where the symbol lies and how it is turned; a host that does not gets it flat about the origin: the run along x,
-- the stem along y.
glib.setpath() -- "isometric" belongs to the product's own scripts, in sys
local kind = require("kind")
local angle = require("angle")
local drawing = require("drawing")
local isometric = require("isometric")

param = {
    P1 = 16, -- length along the run
    P2 = 8,  -- height of the triangles
    P3 = 12, -- from the run to the actuator
    P4 = 10, -- diameter of the actuator
    DN = 50, -- nominal size, a number without a unit
    TAG = "FV-101",
    NAME = "气动调节阀",
}
glb = { factor = 1, smrtlntype = "VALVE" }
skey = { quantumUnit = { "DN" }, angleUnit = {} }

param_note = {
    P1 = { "图例长度", 16 },
    P2 = { "图例高度", 8 },
    P3 = { "阀杆长度", 12 },
    P4 = { "执行机构直径", 10 },
    DN = { "公称直径", 50 },
    TAG = { "位号", "FV-101" },
    NAME = { "名称", "气动调节阀" },
}

-- The legs that meet in the valve, by the host's numbers. Its points of the same numbers are where they end.
local INLET, OUTLET, STEM, AIR = 1, 2, 3, 4

-- The frame of what lies in the plane of the run and the stem; x points to the outlet, y up the stem.
local function bodyFrame()
    return isometric.frame(glib.getNormalIsoMat(INLET, STEM), glib.getDefaultIsoMat())
end

local function ends(body)
    local half = param.P1 / 2
    return body(-half, 0), body(half, 0), body(0, param.P3 + param.P4 / 2)
end

-- Two triangles that meet in the middle, the stem, and the pipes that come from where the host has them.
local function addBody(d, body)
    local half, height = param.P1 / 2, param.P2 / 2
    d:add { kind.LINES, {
        body(-half, -height), body(half, height), body(half, -height), body(-half, height), body(-half, -height),
    } }
    d:add { kind.LINE, body(0, 0), body(0, param.P3) }
    local inlet, outlet = ends(body)
    for number, place in ipairs { inlet, outlet } do
        local from = glib.getIsoPoint(number)
        if from then d:add { kind.LINE, from, place } end
        glib.setkpt(number, place)
    end
end

-- The dome of the diaphragm, a half round from the inlet's side over the stem to the outlet's.
local function addActuator(d)
    local dome = isometric.frame(glib.getArcIsoMat(INLET, STEM, OUTLET), glib.getDefaultMat())
    local radius = param.P4 / 2
    local round = {}
    for degrees = 0, 180, 15 do
        local s, c = angle.sincos(degrees)
        round[#round + 1] = dome(radius * c, param.P3 + radius * s)
    end
    round[#round + 1] = round[1]
    d:add { kind.LINES, round }
end

-- The positioner beside the stem, turned to its air, and the air's line, dashed.
local function addPositioner(d)
    local frame = isometric.frame(glib.getNormalIsoMat(INLET, OUTLET, STEM, AIR), glib.getDefaultMat())
    local low, high = 0.25 * param.P3, 0.5 * param.P3
    local side = high - low
    d:add { kind.LINES, {
        frame(0, low), frame(side, low), frame(side, high), frame(0, high), frame(0, low),
    } }
    local air = glib.getIsoPoint(AIR)
    if air then d:add { kind.LINE, frame(side, (low + high) / 2), air, "DASHED" } end
end

-- An arrow under the valve's inlet in the direction of the flow.
local function addFlow(d, body, view)
    local flow = glib.getIsoVgdir(INLET, OUTLET)
    if not flow then return end
    local barb, reach = 2 * glb.factor, param.P1 / 4
    -- Across the flow, in the plane that the viewer looks at.
    local across = {
        view[2] * flow[3] - view[3] * flow[2], view[3] * flow[1] - view[1] * flow[3],
        view[1] * flow[2] - view[2] * flow[1],
    }
    local middle = body(-reach, -0.9 * param.P2)
    local tail, tip = isometric.beside(middle, flow, -reach), isometric.beside(middle, flow, reach)
    local neck = isometric.beside(tip, flow, -barb)
    d:add { kind.LINES, { tail, tip, isometric.beside(neck, across, barb / 3) } }
    d:add { kind.LINE, tip, isometric.beside(neck, across, -barb / 3) }
end

-- The host's text style as a table. A host without one is taken for letters half as wide as high; a Chinese
-- character, two bytes, is then as wide as it is high.
local function noteStyle()
    local style = glib.getCurrentTxtstyle()
    if not style then
        local height = 3.5 * glb.factor
        return { height = height, factor = 1, length = function(text, size) return #text * size / 2 end }
    end
    style:setstyle("TAG")
    return {
        height = style:height(),
        factor = style:getfactor(),
        length = function(text, size)
            -- In its own height a style may have lengths of its own.
            if size == style:height() then return style:getlen(text) end
            return style:getlen_h(text, size)
        end,
    }
end

-- The tag, underlined, and the name below, each centred by its real length, and a leader to the valve.
local function addNote(d, body, view)
    local style = noteStyle()
    local reference = glib.getRefIsoMat()
    local frame = isometric.frame(reference, glib.getDefaultMat())
    -- A host that has no place for notes gets this one under the valve.
    local level = reference and 0 or -2 * param.P2
    local gap, longest = 0.3 * style.height, 0
    local function write(text, size, y)
        local length = style.length(text, size)
        d:add { kind.TEXT, 0, frame(-length / 2, level + y), text, 0, style.factor, size, view }
        longest = math.max(longest, length)
    end
    local small = 0.7 * style.height
    d:set(kind.COLOUR, 2)
    write(param.TAG, style.height, gap)
    write(string.format("%s DN%d", param.NAME, param.DN), small, -gap - small)
    local left, right = frame(-longest / 2, level), frame(longest / 2, level)
    d:add { kind.LINE, left, right }
    d:add { kind.LINE, body(0, 0), left }
end

function main()
    local d = drawing.new()
    local body = bodyFrame()
    local view = glib.getPsView() or { 0, 0, 1 }
    d:set(kind.COLOUR, 3)
    d:set(kind.THICKNESS, 0.5 * glb.factor)
    -- As long as the valve is only being placed it is no object yet, and drawn dashed.
    if not glib.getCurrentObjectPointer() then d:set(kind.LINE_TYPE, "DASHED") end
    addBody(d, body)
    addActuator(d)
    addPositioner(d)
    addFlow(d, body, view)
    d:set(kind.THICKNESS)
    d:set(kind.LINE_TYPE)
    addNote(d, body, view)
    local id = glib.getCurrentObjectId()
    if id then d:add { kind.PARAMETERS, { OBJECT = tostring(id) } } end
    return d.records
end

function keypoint()
    local inlet, outlet, top = ends(bodyFrame())
    return { { 1, INLET, inlet }, { 1, OUTLET, outlet }, { 1, STEM, top } }
end

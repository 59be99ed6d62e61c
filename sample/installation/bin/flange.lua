-- A flange with a raised face and the nuts of its bolts, for every component that has one.
local kind = require("kind")
local angle = require("angle")

local flange = {}

-- Adds the flange whose sealing face lies at (x, 0, 0) and which stands on the pipe's side of it: `direction`
-- is 1 when its body lies towards greater x, -1 otherwise. `size` gives, in drawing units: diameter, thickness
-- (with the raised face), face (its diameter), rise (its height), circle (of the bolts), hole, bolts (their
-- number, no length). Returns the indices of the raised face and of the disc.
function flange.add(d, x, direction, size)
    local shoulder = x + direction * size.rise
    local back = x + direction * size.thickness
    local face = d:add { kind.CYLINDER, { x, 0, 0 }, { shoulder, 0, 0 }, size.face / 2 }
    local disc = d:add { kind.CYLINDER, { shoulder, 0, 0 }, { back, 0, 0 }, size.diameter / 2 }
    return face, disc
end

-- Adds a nut on the flange's back for each bolt, as a group. Bolts stand off the centre lines.
function flange.addNuts(d, x, direction, size)
    local bolt = size.hole - size.hole / 9
    local width, height = 1.5 * bolt, 0.8 * bolt
    local back = x + direction * size.thickness
    local top = back + direction * height
    d:group(function()
        for i = 1, size.bolts do
            local s, c = angle.sincos((i - 0.5) * 360 / size.bolts)
            local y, z = size.circle / 2 * c, size.circle / 2 * s
            local flat = { back, y + width / 2 * c, z + width / 2 * s }
            d:add { kind.HEXAGON, { back, y, z }, { top, y, z }, flat, 6 }
        end
    end)
end

return flange

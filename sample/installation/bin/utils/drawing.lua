-- The list of records that a segment returns, and the index of each primitive in what becomes of it.
--
--     local d = drawing.new()
--     local body = d:add { kind.CYLINDER, { 0, 0, 0 }, { 0, 0, 100 }, 25 }
--     local bore = d:add { kind.CYLINDER, { 0, 0, 0 }, { 0, 0, 100 }, 20 }
--     d:operate(kind.SUBTRACT, body, bore)
--     return d.records
local kind = require("kind")

local drawing = {}
drawing.__index = drawing

function drawing.new()
    return setmetatable({ records = {}, count = 0 }, drawing)
end

local function append(list, record)
    list[#list + 1] = record
end

-- Adds a record that makes a primitive. Returns the primitive's index, counted from 0, by which operations
-- name it. Only records that are right may come here: a record that is passed over moves all later indices.
function drawing:add(record)
    append(self.records, record)
    self.count = self.count + 1
    return self.count - 1
end

-- Changes what the element `main` is by another element or, for a slice, by a plane { point, direction }.
function drawing:operate(operation, main, other)
    return self:add { kind.OPERATION, operation, main, other }
end

-- Sets an attribute of all that follows: kind.COLOUR, kind.MATERIAL and so on. Without a value it is reset.
function drawing:set(attribute, value)
    append(self.records, { attribute, value })
end

-- Adds what `build(drawing)` adds as one group.
function drawing:group(build)
    local outer = self.records
    self.records = {}
    build(self)
    append(outer, { kind.GROUP, self.records })
    self.records = outer
end

-- A closed polyline through points { x, y }, in the plane z = 0, as field of a polyline or hatch record.
function drawing.outline(points)
    local vertices = {}
    for i, point in ipairs(points) do
        vertices[i] = { 0, { point[1], point[2], 0 } }
    end
    append(vertices, { 0, { points[1][1], points[1][2], 0 } })
    return vertices
end

return drawing

-- Places of a symbol on the sheet of an isometric drawing.
local isometric = {}

-- The function that brings a place of the symbol, { x, y, z } or x, y, z, onto the sheet: by the matrix, four rows
-- that multiply the place as a column, or by the other one where the host knows no such matrix. Without any, places
-- stay what they are.
function isometric.frame(matrix, other)
    local rows = matrix or other
    return function(x, y, z)
        z = z or 0
        if not rows then return { x, y, z } end
        local place = {}
        for i = 1, 3 do
            local row = rows[i]
            place[i] = row[1] * x + row[2] * y + row[3] * z + row[4]
        end
        return place
    end
end

-- The place at a distance from another in a direction, whatever the direction's length is.
function isometric.beside(place, direction, distance)
    local x, y, z = direction[1], direction[2], direction[3]
    local scale = distance / math.sqrt(x * x + y * y + z * z)
    return { place[1] + scale * x, place[2] + scale * y, place[3] + scale * z }
end

return isometric

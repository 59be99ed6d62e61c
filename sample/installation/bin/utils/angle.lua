-- Sine and cosine of an angle in degrees, exact at multiples of 90, so that what should lie on an axis does.
local angle = {}

local right = { [0] = { 0, 1 }, [90] = { 1, 0 }, [180] = { 0, -1 }, [270] = { -1, 0 } }

function angle.sincos(degrees)
    local turned = degrees % 360
    local exact = right[turned]
    if exact then return exact[1], exact[2] end
    local radians = math.rad(turned)
    return math.sin(radians), math.cos(radians)
end

return angle

-- The codes of the records that a segment returns, by name.
return {
    CYLINDER = 2, BOX = 3, TORUS = 4, ECCENTRIC_CONE = 5, OVAL = 7, PRISM = 8, SADDLE = 9, SPHERE = 10,
    WEDGE = 14, CONE = 15, LINE = 16, ARC = 17, CIRCLE = 18, TEXT = 19, CORNER_BOX = 20, HEXAGON = 21,
    RING = 22, POLYLINE = 25, POINT = 26, LINES = 27, HATCH = 28, GROUP = 40, OPERATION = 41,
    PARAMETERS = 200, COLOUR = 300, MATERIAL = 400, THICKNESS = 500, LINE_TYPE = 600, LINE_TYPE_SCALE = 700,

    -- What an OPERATION does to its main element.
    UNITE = 1, SUBTRACT = 2, INTERSECT = 3, SLICE = 4,
}

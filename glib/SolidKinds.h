#pragma once

#include "Kind.h"

#include <QuorPrimary/QuorPrimaryFactories.h>

/// The rows of the kinds that make solids. What the arguments mean stands with the factories.
namespace quorlua::glib {

/// Hides the faces at the ends when the record's flag says so.
inline QuorPrimary3D* withOpenEnds(QuorPrimary3D* solid, const Maybe<bool>& open)
{
    constexpr int endsHidden = 2;
    if (solid && open.value) solid->setGSFlag(endsHidden);
    return solid;
}

// clang-format off
inline constexpr auto solidKinds = std::tuple(
    kind(2, "cylinder", atLeast(4), fields(P("start"), P("end"), N("radius"), opt(B("openEnds"))),
         "createQuorGraphy3DCylinder(P2, P3, N4, 32, false)", "openEnds true: setGSFlag(2)",
         [](auto& start, auto& end, double radius, auto& open) {
             return withOpenEnds(createQuorGraphy3DCylinder(start, end, radius, 32, false), open);
         }),
    kind(3, "box", atLeast(7),
         fields(N("xLength"), N("yLength"), N("zLength"), P("place"), V("xAxis"), V("yAxis")),
         "createQuorGraphy3DBox(N2, N3, N4, P5, V6, V7, false, 1)", "",
         [](double x, double y, double z, auto& place, auto& xAxis, auto& yAxis) {
             return createQuorGraphy3DBox(x, y, z, place, xAxis, yAxis, false, 1);
         }),
    kind(4, "torus", atLeast(7),
         fields(N("ringRadius"), N("tubeRadius"), P("centre"), P("start"), P("end"), I("side"),
                opt(B("openEnds"))),
         "createQuorGraphy3DTorus(N2, N3, P4, P5, P6, I7, 32, 32, false, 1)", "openEnds true: setGSFlag(2)",
         [](double ring, double tube, auto& centre, auto& start, auto& end, int side, auto& open) {
             return withOpenEnds(createQuorGraphy3DTorus(ring, tube, centre, start, end, side, 32, 32, false, 1), open);
         }),
    kind(5, "eccentric cone", atLeast(6),
         fields(P("start"), P("end"), N("startRadius"), N("endRadius"), V("normal"), opt(B("openEnds"))),
         "createQuorGraphy3DEcone(P2, P3, N4, N5, V6, 32, false)", "openEnds true: setGSFlag(2)",
         [](auto& start, auto& end, double startRadius, double endRadius, auto& normal, auto& open) {
             return withOpenEnds(createQuorGraphy3DEcone(start, end, startRadius, endRadius, normal, 32, false), open);
         }),
    kind(6, "sloped cylinder", atLeast(5), fields(P("start"), P("end"), N("radius"), V("endNormal")),
         "createQuorGraphy3DScylinder(P2, P3, N4, V5, 12, false)", "",
         [](auto& start, auto& end, double radius, auto& normal) {
             return createQuorGraphy3DScylinder(start, end, radius, normal, 12, false);
         }),
    kind(7, "oval", atLeast(6),
         fields(N("levelRadius"), N("steepRadius"), N("axisRadius"), P("centre"), V("axis")),
         "createQuorGraphy3DOval(N2, N3, N4, P5, V6, 32, 32, false)", "",
         [](double level, double steep, double along, auto& centre, auto& axis) {
             return createQuorGraphy3DOval(level, steep, along, centre, axis, 32, 32, false);
         }),
    kind(8, "prism", atLeast(5), fields(P("start"), P("end"), P("corner"), I("sides")),
         "createQuorGraphy3DPrism(P2, P3, P4, I5, false)", "",
         [](auto& start, auto& end, auto& corner, int sides) {
             return createQuorGraphy3DPrism(start, end, corner, sides, false);
         }),
    kind(9, "saddle", atLeast(7),
         fields(N("length"), N("width"), N("height"), P("base"), N("pipeRadius"), N("bedAngle")),
         "createQuorGraphy3DSaddle(N2, N3, N4, P5, N6, N7, 32, (1, 0, 0), (0, 1, 0), false, 1)", "",
         [](double length, double width, double height, auto& base, double radius, double angle) {
             return createQuorGraphy3DSaddle(length, width, height, base, radius, angle, 32, KxGeVector3D(1, 0, 0),
                                             KxGeVector3D(0, 1, 0), false, 1);
         }),
    kind(10, "sphere", atLeast(3), fields(P("centre"), N("radius")),
         "createQuorGraphy3DSphere(P2, N3, 12, false)", "",
         [](auto& centre, double radius) { return createQuorGraphy3DSphere(centre, radius, 12, false); }),
    kind(11, "square-to-circle", atLeast(8),
         fields(P("squareCentre"), V("xAxis"), N("width"), N("depth"), P("circleCentre"), V("circleNormal"),
                N("radius"), opt(V("yAxis"))),
         "createQuorGraphy3DSqucir(P2, V3, N4, N5, P6, V7, N8, 32, false, 1); with yAxis: "
         "createQuorGraphy3DSqucir_1(P2, V3, V9, N4, N5, P6, V7, N8, 32, false, 1)", "",
         [](auto& square, auto& xAxis, double width, double depth, auto& circle, auto& normal, double radius,
            auto& yAxis) {
             return yAxis ? createQuorGraphy3DSqucir_1(square, xAxis, yAxis.value, width, depth, circle, normal, radius,
                                                       32, false, 1)
                          : createQuorGraphy3DSqucir(square, xAxis, width, depth, circle, normal, radius, 32, false, 1);
         }),
    kind(12, "square cone", atLeast(11),
         fields(N("bottomX"), N("bottomY"), N("topX"), N("topY"), N("height"), P("base"), V("xAxis"), V("yAxis"),
                V("lean"), N("twist")),
         "createQuorGraphy3DSqucone(N2, N3, N4, N5, N6, P7, V8, V9, V10, N11, false)", "",
         [](double bottomX, double bottomY, double topX, double topY, double height, auto& base, auto& xAxis,
            auto& yAxis, auto& lean, double twist) {
             return createQuorGraphy3DSqucone(bottomX, bottomY, topX, topY, height, base, xAxis, yAxis, lean, twist,
                                              false);
         }),
    kind(13, "square torus", atLeast(9),
         fields(N("startWidth"), N("startHeight"), N("endWidth"), N("endHeight"), P("centre"), P("start"), P("end"),
                I("side")),
         "createQuorGraphy3DSqutorus(N2, N3, N4, N5, P6, P7, P8, I9, 20, false, 1)", "",
         [](double startWidth, double startHeight, double endWidth, double endHeight, auto& centre, auto& start,
            auto& end, int side) {
             return createQuorGraphy3DSqutorus(startWidth, startHeight, endWidth, endHeight, centre, start, end, side,
                                               20, false, 1);
         }),
    kind(14, "wedge", atLeast(5), fields(P("first"), P("second"), P("third"), N("height")),
         "createQuorGraphy3DWedge(P2, P3, P4, N5, false, 1)", "",
         [](auto& first, auto& second, auto& third, double height) {
             return createQuorGraphy3DWedge(first, second, third, height, false, 1);
         }),
    kind(15, "cone", atLeast(5),
         fields(P("start"), P("end"), N("startRadius"), N("endRadius"), opt(B("openEnds"))),
         "createQuorGraphy3DConcone(P2, P3, N4, N5, 32, false)", "openEnds true: setGSFlag(2)",
         [](auto& start, auto& end, double startRadius, double endRadius, auto& open) {
             return withOpenEnds(createQuorGraphy3DConcone(start, end, startRadius, endRadius, 32, false), open);
         }),
    kind(20, "box, second form", atLeast(7),
         fields(N("xLength"), N("yLength"), N("zLength"), P("place"), V("xAxis"), V("yAxis")),
         "createQuorGraphy3DBox1(N2, N3, N4, P5, V6, V7, false, 1)", "",
         [](double x, double y, double z, auto& place, auto& xAxis, auto& yAxis) {
             return createQuorGraphy3DBox1(x, y, z, place, xAxis, yAxis, false, 1);
         }),
    kind(21, "prism, second form", atLeast(5), fields(P("start"), P("end"), P("middle"), I("sides")),
         "createQuorGraphy3DPrism1(P2, P3, P4, I5, false)", "",
         [](auto& start, auto& end, auto& middle, int sides) {
             return createQuorGraphy3DPrism1(start, end, middle, sides, false);
         }),
    kind(22, "torus, second form", atLeast(7),
         fields(N("ringRadius"), N("tubeRadius"), P("centre"), P("start"), P("towards"), N("angle"),
                opt(B("openEnds"))),
         "createQuorGraphy3DTorus1(N2, N3, P4, P5, P6, N7, 20, 20, false, 1)", "openEnds true: setGSFlag(2)",
         [](double ring, double tube, auto& centre, auto& start, auto& towards, double angle, auto& open) {
             return withOpenEnds(
                 createQuorGraphy3DTorus1(ring, tube, centre, start, towards, angle, 20, 20, false, 1), open);
         }),
    kind(23, "square torus, second form", atLeast(9),
         fields(N("startWidth"), N("startHeight"), N("endWidth"), N("endHeight"), P("centre"), P("start"), V("axis"),
                N("angle")),
         "createQuorGraphy3DSqutorus1(N2, N3, N4, N5, P6, P7, V8, N9, 20, false, 1)", "",
         [](double startWidth, double startHeight, double endWidth, double endHeight, auto& centre, auto& start,
            auto& axis, double angle) {
             return createQuorGraphy3DSqutorus1(startWidth, startHeight, endWidth, endHeight, centre, start, axis,
                                                angle, 20, false, 1);
         }),
    kind(24, "polygon solid", atLeast(7),
         fields(P("origin"), V("xAxis"), V("yAxis"), V("extrusion"), N("height"), PL("outer"),
                optTable(required<LoopsField>("inner"))),
         "createQuorGraphy3DPolygon(P2, V3, V4, V5, N6, PL7, inner, 32, false, 1)", "",
         [](auto& origin, auto& xAxis, auto& yAxis, auto& extrusion, double height, auto& outer, auto& inner) {
             return createQuorGraphy3DPolygon(origin, xAxis, yAxis, extrusion, height, outer, inner, 32, false, 1);
         }),
    kind(29, "3D polyline", atLeast(2), fields(PL("vertices")), "createQuorGraphy3DPline(PL2)", "",
         [](auto& vertices) { return createQuorGraphy3DPline(vertices); }),
    kind(30, "revolution solid", atLeast(4),
         fields(P("axisPoint"), V("axis"), PL("profile"), opt(N("angle")).onlyLength(5)),
         "createQuorGraphy3DRevolve(P2, V3, PL4, N5, 32, false, 1); N5 is 360.0 unless the record has exactly 5 fields",
         "",
         [](auto& point, auto& axis, auto& profile, auto& angle) {
             return createQuorGraphy3DRevolve(point, axis, profile, angle ? angle.value : 360.0, 32, false, 1);
         }));
// clang-format on

} // namespace quorlua::glib

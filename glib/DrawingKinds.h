#pragma once

#include "Kind.h"

#include <QuorPrimary/QuorPrimaryFactories.h>
#include <memory>

/// The rows of the kinds that make drawings in lines, texts and references.
namespace quorlua::glib {

/// Sets the line type and its scale where the record gives them.
inline QuorPrimary2D* withLineType(QuorPrimary2D* drawing, const Maybe<const char*>& lineType,
                                   const Maybe<double>& scale)
{
    std::unique_ptr<QuorPrimary2D> made(drawing);
    if (made && lineType) made->setLineType(lineType.value);
    if (made && scale) made->setLTScale(scale.value);
    return made.release();
}

/// Both factories of texts, and what a record may set on one.
inline QuorPrimaryText* makeText(int justification, const KxGePoint3D& insertion, const char* text,
                                 const AngleOrDirection& lie, const Maybe<double>& scale,
                                 const Maybe<double>& height, const Maybe<KxGeVector3D>& normal,
                                 const Maybe<int>& flag)
{
    QuorPrimaryText* made = lie.isAngle ? createQuorText(justification, insertion, text, lie.angle)
                                        : createQuorText(justification, insertion, text, lie.direction);
    if (!made) return made;
    if (scale) made->setScale(scale.value);
    if (height) made->setHeight(height.value);
    if (normal) made->setNormal(normal.value);
    if (flag) made->setTxtFlag(flag.value);
    return made;
}

inline QuorPrimary2D* makeEllipse(const KxGePoint3D& centre, const KxGeVector3D& normal,
                                  const KxGeVector3D& majorAxis, double ratio, double start, double end,
                                  const Maybe<double>& thick, const Maybe<const char*>& lineType,
                                  const Maybe<double>& scale)
{
    QuorPrimary2D* made = createQuorEllipse(centre, normal, majorAxis, ratio, start, end);
    if (made && thick) made->setThick(thick.value);
    return withLineType(made, lineType, lineType ? scale : Maybe<double>{});
}

// clang-format off
inline constexpr auto drawingKinds = std::tuple(
    kind(16, "line", atLeast(3),
         fields(P("start"), P("end"), opt(S("lineType")).fromLength(4), opt(N("ltScale")).fromLength(4)),
         "createQuorLine(P2, P3)", "length at least 4: lineType given: setLineType; ltScale given: setLTScale",
         [](auto& start, auto& end, auto& lineType, auto& scale) {
             return withLineType(createQuorLine(start, end), lineType, scale);
         }),
    kind(17, "arc", atLeast(6),
         fields(P("centre"), N("radius"), N("startAngle"), N("endAngle"), V("normal"), opt(S("lineType")),
                opt(N("ltScale"))),
         "createQuorArc(P2, N3, N4, N5, V6)", "lineType given: setLineType; ltScale given: setLTScale",
         [](auto& centre, double radius, double start, double end, auto& normal, auto& lineType, auto& scale) {
             return withLineType(createQuorArc(centre, radius, start, end, normal), lineType, scale);
         }),
    kind(18, "circle", atLeast(4),
         fields(P("centre"), N("radius"), V("normal"), opt(S("lineType")),
                opt(N("ltScale"))),
         "createQuorCirc(P2, N3, V4)", "lineType given: setLineType; ltScale given: setLTScale",
         [](auto& centre, double radius, auto& normal, auto& lineType, auto& scale) {
             return withLineType(createQuorCirc(centre, radius, normal), lineType, scale);
         }),
    kind(19, "text", atLeast(5),
         fields(I("justification"), P("insertion"), S("text"), required<AngleOrDirectionField>("angleOrDirection"),
                opt(N("scale")), opt(N("height")), opt(V("normal")),
                opt(I("txtFlag"))),
         "createQuorText(I2, P3, S4, N5); field 5 a direction: createQuorText(I2, P3, S4, V5)",
         "scale given: setScale; height given: setHeight; normal given: setNormal; txtFlag given: setTxtFlag",
         [](int justification, auto& insertion, auto text, auto& lie, auto& scale, auto& height, auto& normal,
            auto& flag) { return makeText(justification, insertion, text, lie, scale, height, normal, flag); }),
    kind(25, "2D polyline", atLeast(2),
         fields(PL("vertices"), opt(N("width")), opt(S("lineType")).fromLength(4),
                opt(N("ltScale")).fromLength(4)),
         "createQuorPline2D(PL2, N3); N3 is 0.0 when missing",
         "length at least 4: lineType given: setLineType; ltScale given: setLTScale",
         [](auto& vertices, auto& width, auto& lineType, auto& scale) {
             return withLineType(createQuorPline2D(vertices, width.value), lineType, scale);
         }),
    kind(26, "point", exactly(3), fields(P("point"), I("style")), "createQuorPoint(P2, I3); I3 as a 16-bit integer", "",
         [](auto& point, int style) { return createQuorPoint(point, static_cast<short>(style)); }),
    kind(27, "line array", atLeast(2),
         fields(required<PointsField>("points"), opt(B("unused")), opt(S("lineType")),
                opt(N("ltScale"))),
         "createQuorLineArr(points, true)", "lineType given: setLineType; ltScale above 0: setLTScale",
         [](auto& points, auto&, auto& lineType, auto& scale) {
             Maybe<double> positive = scale;
             positive.given = scale && scale.value > 0;
             return withLineType(createQuorLineArr(points, true), lineType, positive);
         }),
    kind(31, "ellipse", atLeast(7, messages::ellipseLength.text()),
         fields(P("centre", messages::ellipseCentre.text()), V("normal", messages::ellipseNormal.text()),
                V("majorAxis", messages::ellipseMajorAxis.text()), N("ratio", messages::ellipseRatio.text()),
                N("startAngle", messages::ellipseStart.text()), N("endAngle", messages::ellipseEnd.text()),
                opt(N("thick")), opt(S("lineType")), opt(N("ltScale"))),
         "createQuorEllipse(P2, V3, V4, N5, N6, N7)",
         "thick given: setThick; lineType given: setLineType, and then ltScale given: setLTScale",
         [](auto& centre, auto& normal, auto& axis, double ratio, double start, double end, auto& thick,
            auto& lineType, auto& scale) {
             return makeEllipse(centre, normal, axis, ratio, start, end, thick, lineType, scale);
         }),
    kind(32, "reference", atLeast(6), fields(S("library"), S("block"), P("insertion"), V("xAxis"), V("yAxis")),
         "createCadReference(S2, S3, P4, V5, V6)", "",
         [](auto library, auto block, auto& insertion, auto& xAxis, auto& yAxis) {
             return createCadReference(library, block, insertion, xAxis, yAxis);
         }));

/// The one kind whose factory needs more than its fields.
inline constexpr auto hatchKind =
    kind(28, "hatch", atLeast(3), fields(S("pattern"), PL("outer"), optTable(PL("inner")).onlyLength(4)),
         "createQuorHatch(S2, PL3, PL4, angle, scale); PL4 is empty when missing; angle and scale are 0.0 and 1.0, or the "
         "numbers on the caller's stack at 5 and 6", "",
         [](const Record& record, auto pattern, auto& outer, auto& inner) {
             return createQuorHatch(pattern, outer, inner, record.hatch.angle, record.hatch.scale);
         });
// clang-format on

} // namespace quorlua::glib

#pragma once

/// Factories of solids. QuorPrimaryFactories.h says what all factories share and what "place", "direction",
/// "size", "extent", "angle" and "polyline" demand of an argument.
///
/// Arguments that many of them take; all values are kept:
/// - facets: integer, how many flat pieces stand for a full turn when the solid is shown faceted. Doubly
///   curved solids take one number around and one across. The exact form is the same whatever the number.
/// - hidden: boolean, true when the solid only takes part in operations and is not shown itself
/// - level: integer, the level of detail at which it is shown; 1 is the usual one

#include <KxGeBasic/KxGePoint3D.h>
#include <KxGeBasic/QuorPolyDesc.h>
#include <QuorPrimary/QuorPrimary.h>
#include <vector>

/// A round cylinder with both ends at right angles to its axis.
/// - start, end: places apart, the centres of the ends
/// - radius: size
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DCylinder(const KxGePoint3D& start, const KxGePoint3D& end,
                                                          double radius, int facets, bool hidden);

/// A box about its centre.
/// - xLength, yLength, zLength: sizes along the three axes
/// - centre: place
/// - xAxis, yAxis: directions; the third axis is their vector product
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DBox(double xLength, double yLength, double zLength,
                                                     const KxGePoint3D& centre, const KxGeVector3D& xAxis,
                                                     const KxGeVector3D& yAxis, bool hidden, int level);

/// A box from one of its corners.
/// - corner: place, from which all three lengths run along the axes; the others as for a box about its centre
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DBox1(double xLength, double yLength, double zLength,
                                                      const KxGePoint3D& corner, const KxGeVector3D& xAxis,
                                                      const KxGeVector3D& yAxis, bool hidden, int level);

/// A part of a round ring between two places, such as a pipe bend.
/// - ringRadius: extent, from the centre to the middle of the tube; with 0 the tube turns about its own
///   diameter
/// - tubeRadius: size
/// - centre: place
/// - start, end: places apart from the centre; the ring begins on the ray from the centre through the one and
///   ends on the ray through the other. They may be equal: a full ring.
/// - side: integer, 0 for the shorter of the two parts, anything else for the longer
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DTorus(double ringRadius, double tubeRadius,
                                                       const KxGePoint3D& centre, const KxGePoint3D& start,
                                                       const KxGePoint3D& end, int side, int facetsAround,
                                                       int facetsAcross, bool hidden, int level);

/// A part of a round ring over an angle.
/// - ringRadius, tubeRadius, centre: as for a ring between two places
/// - start: place apart from the centre; the ring begins on the ray from the centre through it
/// - towards: place apart from the centre; with the centre and the start it spans the ring's plane, and a
///   positive angle turns from the start to its side
/// - angle: angle of the ring. 0 is null.
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DTorus1(double ringRadius, double tubeRadius,
                                                        const KxGePoint3D& centre, const KxGePoint3D& start,
                                                        const KxGePoint3D& towards, double angle,
                                                        int facetsAround, int facetsAcross, bool hidden,
                                                        int level);

/// A cone whose ends are parallel and need not face each other.
/// - start, end: places apart, the centres of the ends
/// - startRadius, endRadius: extents; null when both are 0
/// - normal: direction of both ends' planes
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DEcone(const KxGePoint3D& start, const KxGePoint3D& end,
                                                       double startRadius, double endRadius,
                                                       const KxGeVector3D& normal, int facets, bool hidden);

/// A round cylinder whose second end is cut at a slope.
/// - start, end: places apart, the centres of the ends
/// - radius: size
/// - endNormal: direction of the second end's plane
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DScylinder(const KxGePoint3D& start, const KxGePoint3D& end,
                                                           double radius, const KxGeVector3D& endNormal,
                                                           int facets, bool hidden);

/// An egg-shaped body with three half axes at right angles to each other.
/// - levelRadius, steepRadius: sizes, the half axes across the axis: the first lies level (along x for an
///   upright axis), the second at right angles to it
/// - axisRadius: size, the half axis along the axis
/// - centre: place
/// - axis: direction
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DOval(double levelRadius, double steepRadius,
                                                      double axisRadius, const KxGePoint3D& centre,
                                                      const KxGeVector3D& axis, int facetsAround,
                                                      int facetsAcross, bool hidden);

/// A prism over a regular polygon.
/// - start, end: places apart, the centres of the ends
/// - corner: place apart from the start, a corner of the polygon there
/// - sides: integer, how many sides the polygon has. Negative and 0 are null; 1 and 2 are kept.
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DPrism(const KxGePoint3D& start, const KxGePoint3D& end,
                                                       const KxGePoint3D& corner, int sides, bool hidden);

/// A prism over a regular polygon of a given width across its sides.
/// - middle: place apart from the start, the middle of one of the polygon's sides; the others as for a prism
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DPrism1(const KxGePoint3D& start, const KxGePoint3D& end,
                                                        const KxGePoint3D& middle, int sides, bool hidden);

/// A block with a round bed for a pipe in its upper face.
/// - length: size along the pipe
/// - width: size across the pipe
/// - height: size from the base to the bed's deepest line
/// - base: place, the centre of the base
/// - pipeRadius: extent; with 0 the block has no bed
/// - bedAngle: angle of the pipe's round that the bed touches
/// - along, across: directions of the length and of the width; the height runs along their vector product
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DSaddle(double length, double width, double height,
                                                        const KxGePoint3D& base, double pipeRadius,
                                                        double bedAngle, int facets,
                                                        const KxGeVector3D& along, const KxGeVector3D& across,
                                                        bool hidden, int level);

/// A sphere.
/// - centre: place
/// - radius: size
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DSphere(const KxGePoint3D& centre, double radius, int facets,
                                                        bool hidden);

/// A transition from a rectangle to a circle, the rectangle at right angles to the line between the centres.
/// - squareCentre: place
/// - xAxis: direction of the rectangle's width
/// - width, depth: extents of the rectangle. Null when one of them and the radius are 0.
/// - circleCentre: place apart from the rectangle's centre
/// - circleNormal: direction of the circle's plane
/// - radius: extent
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DSqucir(const KxGePoint3D& squareCentre,
                                                        const KxGeVector3D& xAxis, double width, double depth,
                                                        const KxGePoint3D& circleCentre,
                                                        const KxGeVector3D& circleNormal, double radius,
                                                        int facets, bool hidden, int level);

/// A transition from a rectangle in any plane to a circle.
/// - yAxis: direction of the rectangle's depth; the others as for the plain transition
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DSqucir_1(const KxGePoint3D& squareCentre,
                                                          const KxGeVector3D& xAxis,
                                                          const KxGeVector3D& yAxis, double width,
                                                          double depth, const KxGePoint3D& circleCentre,
                                                          const KxGeVector3D& circleNormal, double radius,
                                                          int facets, bool hidden, int level);

/// A body between two rectangles of parallel planes.
/// - bottomX, bottomY: extents of the lower rectangle
/// - topX, topY: extents of the upper rectangle. Null when both x extents or both y extents are 0.
/// - height: size, the distance of the planes
/// - base: place, the lower rectangle's centre
/// - xAxis, yAxis: directions of the extents
/// - lean: direction from the lower centre to the upper
/// - twist: angle that the upper rectangle is turned by in its plane
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DSqucone(double bottomX, double bottomY, double topX,
                                                         double topY, double height, const KxGePoint3D& base,
                                                         const KxGeVector3D& xAxis, const KxGeVector3D& yAxis,
                                                         const KxGeVector3D& lean, double twist, bool hidden);

/// A part of a ring of rectangular section between two places, such as a duct bend. The section changes
/// evenly.
/// - startWidth, startHeight: extents of the section where the ring begins, in the ring's plane and across it
/// - endWidth, endHeight: extents of the section where it ends. Null when both widths or both heights are 0.
/// - centre: place
/// - start, end: places apart from the centre, the middle of the section where the ring begins, and a place
///   on the ray from the centre where it ends. They may be equal: a full ring.
/// - side: integer, 0 for the shorter of the two parts, anything else for the longer
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DSqutorus(double startWidth, double startHeight,
                                                          double endWidth, double endHeight,
                                                          const KxGePoint3D& centre, const KxGePoint3D& start,
                                                          const KxGePoint3D& end, int side, int facets,
                                                          bool hidden, int level);

/// A part of a ring of rectangular section over an angle.
/// - the four extents, centre, start: as for such a ring between two places
/// - axis: direction that the ring turns about
/// - angle: angle of the ring. 0 is null.
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DSqutorus1(double startWidth, double startHeight,
                                                           double endWidth, double endHeight,
                                                           const KxGePoint3D& centre,
                                                           const KxGePoint3D& start, const KxGeVector3D& axis,
                                                           double angle, int facets, bool hidden, int level);

/// A three-sided prism over a triangle.
/// - first, second, third: places, each apart from the others: the triangle's corners
/// - height: size, at right angles to the triangle, to the side from which the corners run anti-clockwise
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DWedge(const KxGePoint3D& first, const KxGePoint3D& second,
                                                       const KxGePoint3D& third, double height, bool hidden,
                                                       int level);

/// A cone whose ends are at right angles to its axis.
/// - start, end: places apart, the centres of the ends
/// - startRadius, endRadius: extents; null when both are 0
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DConcone(const KxGePoint3D& start, const KxGePoint3D& end,
                                                         double startRadius, double endRadius, int facets,
                                                         bool hidden);

/// A body over an area with holes.
/// - origin: place of the area's own origin
/// - xAxis, yAxis: directions that the vertices' x and y run along
/// - extrusion: direction that the area is drawn out along
/// - height: size, the length of that way
/// - outer: polyline around the area. One without any vertex is null.
/// - inner: polylines around the holes; there may be none, and each may be empty
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DPolygon(const KxGePoint3D& origin, const KxGeVector3D& xAxis,
                                                         const KxGeVector3D& yAxis,
                                                         const KxGeVector3D& extrusion, double height,
                                                         const std::vector<QuorPolyDesc>& outer,
                                                         const std::vector<std::vector<QuorPolyDesc>>& inner,
                                                         int facets, bool hidden, int level);

/// A polyline in space. It is no body but takes a material as bodies do.
/// - vertices: polyline; it may be empty
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DPline(const std::vector<QuorPolyDesc>& vertices);

/// A body that an area leaves when it turns about an axis.
/// - axisPoint: place on the axis
/// - axis: direction
/// - profile: polyline around the area. One without any vertex is null.
/// - angle: angle of the turn. 0 is null.
QUORPRIMARY_API QuorPrimary3D* createQuorGraphy3DRevolve(const KxGePoint3D& axisPoint,
                                                         const KxGeVector3D& axis,
                                                         const std::vector<QuorPolyDesc>& profile,
                                                         double angle, int facets, bool hidden, int level);

#pragma once

/// Factories of drawings in lines, of texts and of references. QuorPrimaryFactories.h says what all factories
/// share and what "place", "direction", "extent", "angle" and "polyline" demand of an argument.

#include <KxGeBasic/KxGePoint3D.h>
#include <KxGeBasic/QuorPolyDesc.h>
#include <QuorPrimary/QuorPrimary.h>
#include <vector>

/// A straight line.
/// - start, end: places; they may be equal
QUORPRIMARY_API QuorPrimary2D* createQuorLine(const KxGePoint3D& start, const KxGePoint3D& end);

/// A circular arc.
/// - centre: place
/// - radius: extent
/// - startAngle, endAngle: angles from the plane's first axis. The arc runs from the one to the other
///   anti-clockwise; equal angles are kept.
/// - normal: direction of the plane
QUORPRIMARY_API QuorPrimary2D* createQuorArc(const KxGePoint3D& centre, double radius, double startAngle,
                                             double endAngle, const KxGeVector3D& normal);

/// A full circle.
/// - centre: place
/// - radius: extent
/// - normal: direction of the plane
QUORPRIMARY_API QuorPrimary2D* createQuorCirc(const KxGePoint3D& centre, double radius,
                                              const KxGeVector3D& normal);

/// A line of text that is turned by an angle.
/// - justification: integer, where the insertion place lies in the text's box: 0 to 2 left, middle, right on
///   the base line; the application may use others
/// - insertion: place
/// - text: bytes of the host's code page
/// - angle: angle from the plane's first axis to the direction of reading
QUORPRIMARY_API QuorPrimaryText* createQuorText(int justification, const KxGePoint3D& insertion,
                                                const char* text, double angle);

/// A line of text that runs along a direction.
/// - justification, insertion, text: as above
/// - direction: direction of reading
QUORPRIMARY_API QuorPrimaryText* createQuorText(int justification, const KxGePoint3D& insertion,
                                                const char* text, const KxGeVector3D& direction);

/// A polyline in a plane.
/// - vertices: polyline; it may be empty
/// - width: extent, the width of segments whose vertices give none
QUORPRIMARY_API QuorPrimary2D* createQuorPline2D(const std::vector<QuorPolyDesc>& vertices, double width);

/// A marked point.
/// - point: place
/// - style: integer, the mark that is drawn
QUORPRIMARY_API QuorPrimary2D* createQuorPoint(const KxGePoint3D& point, short style);

/// Several straight lines in one.
/// - points: places; there may be none
/// - connected: boolean: true joins every point to the one before it, false takes the points in pairs
QUORPRIMARY_API QuorPrimary2D* createQuorLineArr(const std::vector<KxGePoint3D>& points, bool connected);

/// An area filled with a pattern.
/// - pattern: text, the pattern's name
/// - outer: polyline around the area; it may be empty
/// - inner: polyline around the part that is left out; empty when the whole area is filled
/// - angle: angle that the pattern is turned by
/// - scale: a factor for the pattern. Null unless it is finite; a negative one mirrors, and 0 is kept, too.
QUORPRIMARY_API QuorPrimary2D* createQuorHatch(const char* pattern, const std::vector<QuorPolyDesc>& outer,
                                               const std::vector<QuorPolyDesc>& inner, double angle,
                                               double scale);

/// An ellipse or a part of one.
/// - centre: place
/// - normal: direction of the plane
/// - majorAxis: from the centre to the end of the longer half axis: its length counts. Null unless its
///   components are finite and one of them is not 0.
/// - ratio: the shorter half axis as a part of the longer. Null unless it is finite and not negative; 0 is
///   kept.
/// - startAngle, endAngle: angles from the major axis. The ellipse runs from the one to the other
///   anti-clockwise; equal angles are kept.
QUORPRIMARY_API QuorPrimary2D* createQuorEllipse(const KxGePoint3D& centre, const KxGeVector3D& normal,
                                                 const KxGeVector3D& majorAxis, double ratio,
                                                 double startAngle, double endAngle);

/// A block of another drawing, shown in place. It is neither a solid nor a drawing in lines and takes a
/// colour only.
/// - library: text, the file that holds the block
/// - block: text, the block's name
/// - insertion: place of the block's origin
/// - xAxis, yAxis: directions of the block's axes. They need not be at right angles.
QUORPRIMARY_API QuorPrimary* createCadReference(const char* library, const char* block,
                                                const KxGePoint3D& insertion, const KxGeVector3D& xAxis,
                                                const KxGeVector3D& yAxis);

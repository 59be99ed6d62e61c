#pragma once

#include <KxGeBasic/KxGePoint3D.h>

/// One vertex of a polyline and the segment that leaves it. The order of the fields is fixed. A new record is
/// the start of a straight hair line at the origin.
struct QuorPolyDesc {
    /// Kind of the segment that leaves this vertex: 0 straight, 1 arc. Other values are the application's
    /// own.
    int kind = 0;
    /// Width of the drawn segment where it starts and where it ends; 0 is a hair line.
    double startWidth = 0.0;
    double endWidth = 0.0;
    /// Tangent of a quarter of the arc's angle, positive to the left; used when `kind` is 1.
    double bulge = 0.0;
    KxGePoint3D point;

    friend bool operator==(const QuorPolyDesc&, const QuorPolyDesc&) = default;
};

/// Writes `{kind, startWidth, endWidth, bulge, (x, y, z)}`. See KxGePrint.h for how the numbers look.
KXGEBASIC_API std::ostream& operator<<(std::ostream& out, const QuorPolyDesc& value);

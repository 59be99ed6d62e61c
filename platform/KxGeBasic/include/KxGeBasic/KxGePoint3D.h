#pragma once

#include <KxGeBasic/Export.h>
#include <iosfwd>

/// Three bare coordinates: what points and vectors have in common when they cross into another system.
struct QuorPoint {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    friend bool operator==(const QuorPoint&, const QuorPoint&) = default;
};

/// A place in space. Starts at the origin.
class KxGePoint3D {
public:
    KxGePoint3D() = default;
    KxGePoint3D(double x, double y, double z) : coordinates_{x, y, z} {}

    void set(double x, double y, double z) { coordinates_ = {x, y, z}; }

    /// The coordinates; the reference lives as long as this point and follows its changes.
    const QuorPoint& toQuorPoint() const { return coordinates_; }

    /// Exact: no tolerance, and a point with a NaN coordinate equals nothing.
    friend bool operator==(const KxGePoint3D&, const KxGePoint3D&) = default;

private:
    QuorPoint coordinates_;
};

/// A direction with a length. Starts as the zero vector.
class KxGeVector3D {
public:
    KxGeVector3D() = default;
    KxGeVector3D(double x, double y, double z) : coordinates_{x, y, z} {}

    void set(double x, double y, double z) { coordinates_ = {x, y, z}; }

    /// The components; the reference lives as long as this vector and follows its changes.
    const QuorPoint& toQuorPoint() const { return coordinates_; }

    /// Exact: no tolerance, and a vector with a NaN component equals nothing.
    friend bool operator==(const KxGeVector3D&, const KxGeVector3D&) = default;

private:
    QuorPoint coordinates_;
};

/// Write `(x, y, z)`. See KxGePrint.h for how the numbers look.
KXGEBASIC_API std::ostream& operator<<(std::ostream& out, const QuorPoint& value);
KXGEBASIC_API std::ostream& operator<<(std::ostream& out, const KxGePoint3D& value);
KXGEBASIC_API std::ostream& operator<<(std::ostream& out, const KxGeVector3D& value);

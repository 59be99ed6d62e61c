#pragma once

#include <KxGeBasic/Export.h>
#include <array>
#include <iosfwd>

/// A 4x4 matrix of doubles, row-major, rows and columns counted from 0. Starts as the identity. A row or
/// column that is not 0 to 3 is the caller's error and not checked.
class KxGeMatrix3D {
public:
    KxGeMatrix3D() : rows_{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}} {}

    /// Stores the four numbers of a row into the four references. `row` is 0 to 3.
    void getRow(int row, double& a, double& b, double& c, double& d) const
    {
        const auto& source = rows_[static_cast<unsigned>(row)];
        a = source[0], b = source[1], c = source[2], d = source[3];
    }

    /// Replaces the four numbers of a row. `row` is 0 to 3.
    void setRow(int row, double a, double b, double c, double d)
    {
        rows_[static_cast<unsigned>(row)] = {a, b, c, d};
    }

    /// The number at a row and a column, each 0 to 3.
    double operator()(int row, int column) const
    {
        return rows_[static_cast<unsigned>(row)][static_cast<unsigned>(column)];
    }
    double& operator()(int row, int column)
    {
        return rows_[static_cast<unsigned>(row)][static_cast<unsigned>(column)];
    }

    friend bool operator==(const KxGeMatrix3D&, const KxGeMatrix3D&) = default;

private:
    std::array<std::array<double, 4>, 4> rows_;
};

/// Writes the four rows, each `(a, b, c, d)`, in brackets and parted by commas. See KxGePrint.h for the
/// numbers.
KXGEBASIC_API std::ostream& operator<<(std::ostream& out, const KxGeMatrix3D& value);

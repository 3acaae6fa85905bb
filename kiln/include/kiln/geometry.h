// Points, boxes and affine transforms. All coordinates are 64-bit, in scene units.
#pragma once

#include <kiln/platform.h>

#include <algorithm>
#include <array>

/// A point or a vector.
struct Point3 {
    double x = 0;
    double y = 0;
    double z = 0;

    constexpr bool operator==(const Point3&) const = default;
};

/// A normal, or a texture coordinate (u, v, w), for which single precision is enough: meshes have
/// many of them.
struct Point3f {
    float x = 0;
    float y = 0;
    float z = 0;

    constexpr Point3f() = default;
    constexpr Point3f(float first, float second, float third) : x(first), y(second), z(third) {}
    /// Rounds.
    constexpr explicit Point3f(const Point3& p)
        : x(static_cast<float>(p.x)), y(static_cast<float>(p.y)), z(static_cast<float>(p.z)) {}
    constexpr operator Point3() const { return {x, y, z}; }

    constexpr bool operator==(const Point3f&) const = default;
};

constexpr Point3 operator+(const Point3& a, const Point3& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
constexpr Point3 operator-(const Point3& a, const Point3& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
constexpr Point3 operator-(const Point3& a) {
    return {-a.x, -a.y, -a.z};
}
constexpr Point3 operator*(const Point3& a, double s) {
    return {a.x * s, a.y * s, a.z * s};
}
constexpr Point3 operator*(double s, const Point3& a) {
    return a * s;
}

constexpr double DotProd(const Point3& a, const Point3& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
constexpr Point3 CrossProd(const Point3& a, const Point3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
/// Euclidean length.
KILNAPI double Length(const Point3& a);
/// `a` at length one; (0, 0, 0) stays as it is.
KILNAPI Point3 Normalize(const Point3& a);

/// An axis-aligned box; empty until a point is added.
class Box3 {
public:
    bool IsEmpty() const noexcept { return empty_; }
    /// The corners; both (0, 0, 0) while the box is empty.
    const Point3& Min() const noexcept { return min_; }
    const Point3& Max() const noexcept { return max_; }
    Point3 Center() const noexcept { return (min_ + max_) * 0.5; }

    Box3& operator+=(const Point3& point) noexcept {
        if (empty_) {
            min_ = max_ = point;
            empty_ = false;
            return *this;
        }
        min_ = {std::min(min_.x, point.x), std::min(min_.y, point.y), std::min(min_.z, point.z)};
        max_ = {std::max(max_.x, point.x), std::max(max_.y, point.y), std::max(max_.z, point.z)};
        return *this;
    }
    Box3& operator+=(const Box3& other) noexcept {
        if (!other.empty_) *this += other.min_, *this += other.max_;
        return *this;
    }

private:
    Point3 min_;
    Point3 max_;
    bool empty_ = true;
};

/// An affine transform of row vectors: p' = p * M. Rows 0 to 2 are the images of the axes, row 3
/// is the translation. `A * B` applies A first, then B.
class Matrix3 {
public:
    /// The identity.
    constexpr Matrix3() = default;
    constexpr Matrix3(const Point3& xAxis, const Point3& yAxis, const Point3& zAxis,
                      const Point3& translation)
        : rows_{xAxis, yAxis, zAxis, translation} {}

    const Point3& GetRow(int row) const { return rows_[static_cast<unsigned>(row)]; }
    void SetRow(int row, const Point3& value) { rows_[static_cast<unsigned>(row)] = value; }
    const Point3& GetTrans() const { return rows_[3]; }
    void SetTrans(const Point3& translation) { rows_[3] = translation; }
    void IdentityMatrix() { *this = Matrix3(); }
    /// Exactly the identity, bit for bit but for the sign of zero.
    bool IsIdentity() const { return *this == Matrix3(); }

    constexpr bool operator==(const Matrix3&) const = default;

    /// Transforms a point (with the translation).
    KILNAPI Point3 PointTransform(const Point3& point) const;
    /// Transforms a vector (without the translation).
    KILNAPI Point3 VectorTransform(const Point3& vector) const;
    /// The determinant of the upper three rows; 0 when the transform cannot be inverted.
    KILNAPI double Determinant() const;

private:
    std::array<Point3, 4> rows_{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}}};
};

/// Applies `first`, then `second`.
KILNAPI Matrix3 operator*(const Matrix3& first, const Matrix3& second);

/// Whether `Inverse` can invert `matrix`: finite, and the determinant and its reciprocal are not 0.
KILNAPI bool IsInvertible(const Matrix3& matrix);
/// The inverse transform; the identity when there is none.
KILNAPI Matrix3 Inverse(const Matrix3& matrix);

KILNAPI Matrix3 TransMatrix(const Point3& translation);
KILNAPI Matrix3 ScaleMatrix(const Point3& factors);
/// Counter-clockwise rotation about an axis of unit length, in radians.
KILNAPI Matrix3 RotAngleAxisMatrix(const Point3& axis, double radians);

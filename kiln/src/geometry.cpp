#include <kiln/geometry.h>

#include <cmath>

double Length(const Point3& a) {
    return std::sqrt(DotProd(a, a));
}

Point3 Normalize(const Point3& a) {
    const double length = Length(a);
    return length > 0 ? Point3{a.x / length, a.y / length, a.z / length} : a;
}

Point3 Matrix3::VectorTransform(const Point3& vector) const {
    return rows_[0] * vector.x + rows_[1] * vector.y + rows_[2] * vector.z;
}

Point3 Matrix3::PointTransform(const Point3& point) const {
    return VectorTransform(point) + rows_[3];
}

double Matrix3::Determinant() const {
    return DotProd(rows_[0], CrossProd(rows_[1], rows_[2]));
}

Matrix3 operator*(const Matrix3& first, const Matrix3& second) {
    return {second.VectorTransform(first.GetRow(0)), second.VectorTransform(first.GetRow(1)),
            second.VectorTransform(first.GetRow(2)), second.PointTransform(first.GetRow(3))};
}

bool IsInvertible(const Matrix3& matrix) {
    for (int row = 0; row < 4; ++row) {
        const Point3& p = matrix.GetRow(row);
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z)) return false;
    }
    const double determinant = matrix.Determinant();
    return determinant != 0 && std::isfinite(determinant) && std::isfinite(1 / determinant);
}

Matrix3 Inverse(const Matrix3& matrix) {
    if (!IsInvertible(matrix)) return {};
    const double scale = 1 / matrix.Determinant();
    const Point3& x = matrix.GetRow(0);
    const Point3& y = matrix.GetRow(1);
    const Point3& z = matrix.GetRow(2);
    // The cofactors' vectors are the columns of the inverse.
    const Point3 a = CrossProd(y, z) * scale;
    const Point3 b = CrossProd(z, x) * scale;
    const Point3 c = CrossProd(x, y) * scale;
    Matrix3 inverse({a.x, b.x, c.x}, {a.y, b.y, c.y}, {a.z, b.z, c.z}, {});
    inverse.SetTrans(-inverse.VectorTransform(matrix.GetTrans()));
    return inverse;
}

Matrix3 TransMatrix(const Point3& translation) {
    Matrix3 matrix;
    matrix.SetTrans(translation);
    return matrix;
}

Matrix3 ScaleMatrix(const Point3& factors) {
    return {{factors.x, 0, 0}, {0, factors.y, 0}, {0, 0, factors.z}, {}};
}

Matrix3 RotAngleAxisMatrix(const Point3& axis, double radians) {
    const double c = std::cos(radians);
    const double s = std::sin(radians);
    const auto rotated = [&](const Point3& p) {
        return p * c + CrossProd(axis, p) * s + axis * (DotProd(axis, p) * (1 - c));
    };
    return {rotated({1, 0, 0}), rotated({0, 1, 0}), rotated({0, 0, 1}), {}};
}

#include "transforms.h"

#include "bytes.h"

#include <quillon/fltopcode.h>

#include <cmath>
#include <numbers>

namespace interchange {

namespace {

// Every record but the matrices has 4 reserved bytes before its numbers.
constexpr std::size_t kFirst = 8;
constexpr std::size_t kPoint = 24;

Point3 pointAt(FileBytes record, std::size_t offset) {
    return {float64At(record, offset), float64At(record, offset + 8),
            float64At(record, offset + 16)};
}

Point3 vectorAt(FileBytes record, std::size_t offset) {
    return {float32At(record, offset), float32At(record, offset + 4),
            float32At(record, offset + 8)};
}

double radiansAt(FileBytes record, std::size_t offset) {
    return double{float32At(record, offset)} * std::numbers::pi / 180;
}

/// `inner`, as seen from `center` instead of from the origin.
Matrix3 about(const Point3& center, const Matrix3& inner) {
    return TransMatrix(-center) * inner * TransMatrix(center);
}

Matrix3 rotation(const Point3& axis, double angle) {
    const Point3 direction = Normalize(axis);
    return Length(direction) > 0.5 ? RotAngleAxisMatrix(direction, angle) : Matrix3();
}

/// The affine part of a matrix, which is for row vectors as the host's matrices are.
Matrix3 matrixOf(FileBytes record) {
    Matrix3 matrix;
    for (int row = 0; row < 4; ++row) {
        matrix.SetRow(row, vectorAt(record, 4 + static_cast<std::size_t>(row) * 16));
    }
    return matrix;
}

Matrix3 rotationAboutEdge(FileBytes record) {
    const Point3 from = pointAt(record, kFirst);
    const Point3 to = pointAt(record, kFirst + kPoint);
    return about(from, rotation(to - from, radiansAt(record, kFirst + 2 * kPoint)));
}

Matrix3 translation(FileBytes record) {
    return TransMatrix(pointAt(record, kFirst + kPoint));
}

Matrix3 scaling(FileBytes record) {
    return about(pointAt(record, kFirst), ScaleMatrix(vectorAt(record, kFirst + kPoint)));
}

Matrix3 rotationAboutPoint(FileBytes record) {
    const std::size_t axis = kFirst + kPoint;
    return about(pointAt(record, kFirst),
                 rotation(vectorAt(record, axis), radiansAt(record, axis + 12)));
}

/// Stretches by `factor` along a direction of unit length.
Matrix3 stretch(const Point3& direction, double factor) {
    const auto image = [&](const Point3& axis) {
        return axis + direction * (DotProd(axis, direction) * (factor - 1));
    };
    return {image({1, 0, 0}), image({0, 1, 0}), image({0, 0, 1}), {}};
}

/// Scales about a centre, altogether and along the line to a reference point, and turns that line
/// towards another point.
Matrix3 rotationAndScaleToPoint(FileBytes record) {
    const Point3 center = pointAt(record, kFirst);
    const Point3 reference = pointAt(record, kFirst + kPoint) - center;
    const Point3 target = pointAt(record, kFirst + 2 * kPoint) - center;
    const std::size_t factors = kFirst + 3 * kPoint;
    const double overall = float32At(record, factors);
    const Matrix3 scale = stretch(Normalize(reference), float32At(record, factors + 4)) *
                          ScaleMatrix({overall, overall, overall});
    return about(center,
                 scale * rotation(CrossProd(reference, target), radiansAt(record, factors + 8)));
}

/// The frame of an origin, a point on its x axis and a point on the side of its y axis.
Matrix3 frame(const Point3& origin, const Point3& align, const Point3& track) {
    const Point3 x = Normalize(align - origin);
    const Point3 z = Normalize(CrossProd(x, track - origin));
    return {x, CrossProd(z, x), z, origin};
}

/// Moves three points onto three others, without a change of size.
Matrix3 put(FileBytes record) {
    const auto point = [&](std::size_t index) { return pointAt(record, kFirst + index * kPoint); };
    const Matrix3 from = frame(point(0), point(1), point(2));
    const Matrix3 to = frame(point(3), point(4), point(5));
    return IsInvertible(from) && IsInvertible(to) ? Inverse(from) * to : Matrix3();
}

struct Transform {
    std::uint16_t opcode;
    std::size_t length;  ///< of the shortest record that says all
    Matrix3 (*read)(FileBytes record);
};

constexpr Transform kTransforms[] = {
    {kFltMatrix, 68, matrixOf},
    {kFltRotateAboutEdge, 60, rotationAboutEdge},
    {kFltTranslate, 56, translation},
    {kFltScale, 44, scaling},
    {kFltRotateAboutPoint, 48, rotationAboutPoint},
    {kFltRotateScaleAboutPoint, 92, rotationAndScaleToPoint},
    {kFltPut, 152, put},
    {kFltGeneralMatrix, 68, matrixOf},
};

const Transform* transformOf(std::uint16_t opcode) noexcept {
    for (const Transform& transform : kTransforms) {
        if (transform.opcode == opcode) return &transform;
    }
    return nullptr;
}

bool isFinite(const Matrix3& matrix) {
    double sum = 0;
    for (int row = 0; row < 4; ++row) {
        const Point3& values = matrix.GetRow(row);
        sum += values.x * 0 + values.y * 0 + values.z * 0;
    }
    return sum == 0;
}

}  // namespace

bool isTransform(std::uint16_t opcode) noexcept {
    return transformOf(opcode) != nullptr;
}

void TransformReader::take(FileBytes record) {
    const Transform* const transform = transformOf(uint16At(record, 0));
    if (transform == nullptr || record.size() < transform->length) return;
    const Matrix3 step = transform->read(record);
    if (!isFinite(step)) return;
    if (transform->opcode != kFltMatrix) {
        const Matrix3 product = steps_ * step;
        if (isFinite(product)) steps_ = product;
    } else if (!matrix_) {
        matrix_ = step;
    }
}

Matrix3 keptPlace(const Kept& kept) {
    TransformReader transforms;
    forEachPiece(kept.pieces, [&](const RecordWalk& walk, bool opaque) {
        if (!opaque) transforms.take(walk.record());
    });
    return transforms.result();
}

Matrix3 TransformReader::result() const noexcept {
    if (!matrix_) return steps_;
    Matrix3 precise = *matrix_;
    for (int row = 0; row < 4; ++row) {
        if (Point3f(steps_.GetRow(row)) == Point3f(precise.GetRow(row))) {
            precise.SetRow(row, steps_.GetRow(row));
        }
    }
    return precise;
}

namespace {

void beginRecord(std::uint16_t opcode, std::size_t length, std::vector<std::uint8_t>& bytes) {
    const std::size_t start = bytes.size();
    bytes.resize(start + length);
    put16(&bytes[start], opcode);
    put16(&bytes[start + 2], static_cast<std::uint16_t>(length));
}

void putMatrix(std::uint16_t opcode, const Matrix3& matrix, std::vector<std::uint8_t>& bytes) {
    constexpr std::size_t kLength = 72;  // padded to a multiple of 8
    beginRecord(opcode, kLength, bytes);
    std::uint8_t* row = &bytes[bytes.size() - kLength + 4];
    for (int i = 0; i < 4; ++i, row += 16) {
        const Point3f values(matrix.GetRow(i));
        putFloat32(row, values.x);
        putFloat32(row + 4, values.y);
        putFloat32(row + 8, values.z);
        putFloat32(row + 12, i == 3 ? 1.0F : 0.0F);
    }
}

void putTranslation(const Point3& by, std::vector<std::uint8_t>& bytes) {
    constexpr std::size_t kLength = kFirst + 2 * kPoint;
    beginRecord(kFltTranslate, kLength, bytes);
    std::uint8_t* const delta = &bytes[bytes.size() - kPoint];
    putFloat64(delta, by.x);
    putFloat64(delta + 8, by.y);
    putFloat64(delta + 16, by.z);
}

}  // namespace

void putPlace(const Matrix3& place, std::vector<std::uint8_t>& bytes) {
    putMatrix(kFltMatrix, place, bytes);
    const Point3& position = place.GetTrans();
    if (Point3(Point3f(position)) == position) return;
    Matrix3 linear = place;
    linear.SetTrans({});
    if (!linear.IsIdentity()) putMatrix(kFltGeneralMatrix, linear, bytes);
    putTranslation(position, bytes);
}

}  // namespace interchange

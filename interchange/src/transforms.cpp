#include "transforms.h"

#include <quillon/fltopcode.h>
#include <quillon/fltstream.h>
#include <quillon/flttransform.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <numbers>

namespace interchange {

namespace {

Point3 pointOf(const FltPoint3d& point) {
    return {point.x, point.y, point.z};
}

Point3 pointOf(const FltPoint3f& point) {
    return {point.x, point.y, point.z};
}

double radians(float degrees) {
    return double{degrees} * std::numbers::pi / 180;
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
template <typename Record>
Matrix3 matrixOf(const Record& record) {
    Matrix3 matrix;
    for (int row = 0; row < 4; ++row) {
        const auto& [x, y, z, w] = record.rows[row];
        matrix.SetRow(row, {x, y, z});
    }
    return matrix;
}

Matrix3 rotationAboutEdge(const FltRotateAboutEdge& record) {
    const Point3 from = pointOf(record.from);
    return about(from, rotation(pointOf(record.to) - from, radians(record.angle)));
}

Matrix3 translation(const FltTranslate& record) {
    return TransMatrix(pointOf(record.delta));
}

Matrix3 scaling(const FltScale& record) {
    return about(pointOf(record.center), ScaleMatrix(pointOf(record.factors)));
}

Matrix3 rotationAboutPoint(const FltRotateAboutPoint& record) {
    return about(pointOf(record.center), rotation(pointOf(record.axis), radians(record.angle)));
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
Matrix3 rotationAndScaleToPoint(const FltRotateScaleToPoint& record) {
    const Point3 center = pointOf(record.center);
    const Point3 reference = pointOf(record.reference) - center;
    const Point3 target = pointOf(record.target) - center;
    const double overall = record.overallScale;
    const Matrix3 scale = stretch(Normalize(reference), record.scaleAlongLine) *
                          ScaleMatrix({overall, overall, overall});
    return about(center, scale * rotation(CrossProd(reference, target), radians(record.angle)));
}

/// The frame of an origin, a point on its x axis and a point on the side of its y axis.
Matrix3 frame(const Point3& origin, const Point3& align, const Point3& track) {
    const Point3 x = Normalize(align - origin);
    const Point3 z = Normalize(CrossProd(x, track - origin));
    return {x, CrossProd(z, x), z, origin};
}

/// Moves three points onto three others, without a change of size.
Matrix3 put(const FltPut& record) {
    const Matrix3 from =
        frame(pointOf(record.fromOrigin), pointOf(record.fromAlign), pointOf(record.fromTrack));
    const Matrix3 to =
        frame(pointOf(record.toOrigin), pointOf(record.toAlign), pointOf(record.toTrack));
    return IsInvertible(from) && IsInvertible(to) ? Inverse(from) * to : Matrix3();
}

/// The transform of a record; none when it ends before its last field.
template <typename Record, auto lastField, auto transformOf>
std::optional<Matrix3> read(const FltRecordView& bytes) {
    Record record;
    if (bytes.length() < record.lengthThrough(&(record.*lastField))) return std::nullopt;
    record.readBytes(bytes.bytes(), 0);
    return transformOf(record);
}

struct Transform {
    std::uint16_t opcode;
    std::optional<Matrix3> (*read)(const FltRecordView& record);
};

constexpr Transform kTransforms[] = {
    {kFltMatrix, read<FltMatrix, &FltMatrix::rows, matrixOf<FltMatrix>>},
    {kFltRotateAboutEdge, read<FltRotateAboutEdge, &FltRotateAboutEdge::angle, rotationAboutEdge>},
    {kFltTranslate, read<FltTranslate, &FltTranslate::delta, translation>},
    {kFltScale, read<FltScale, &FltScale::factors, scaling>},
    {kFltRotateAboutPoint,
     read<FltRotateAboutPoint, &FltRotateAboutPoint::angle, rotationAboutPoint>},
    {kFltRotateScaleAboutPoint,
     read<FltRotateScaleToPoint, &FltRotateScaleToPoint::angle, rotationAndScaleToPoint>},
    {kFltPut, read<FltPut, &FltPut::toTrack, put>},
    {kFltGeneralMatrix,
     read<FltGeneralMatrix, &FltGeneralMatrix::rows, matrixOf<FltGeneralMatrix>>},
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

void TransformReader::take(const FltRecordView& record) {
    const Transform* const transform = transformOf(record.opcode());
    if (transform == nullptr) return;
    const std::optional<Matrix3> step = transform->read(record);
    if (!step || !isFinite(*step)) return;
    if (transform->opcode != kFltMatrix) {
        const Matrix3 product = steps_ * *step;
        if (isFinite(product)) steps_ = product;
    } else if (!matrix_) {
        matrix_ = step;
    }
}

Matrix3 keptPlace(const SourceRecords& kept) {
    TransformReader transforms;
    for (const SourceRecord& entry : kept.attached) {
        if (!entry.isOpaque) transforms.take(entry.record);
    }
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

template <typename Record>
void writeMatrix(FltStream& stream, const Matrix3& matrix) {
    Record record;
    for (int i = 0; i < 4; ++i) {
        const Point3f values(matrix.GetRow(i));
        std::ranges::copy(std::initializer_list<float>{values.x, values.y, values.z},
                          record.rows[i]);
    }
    record.write(stream);
}

}  // namespace

void writePlace(FltStream& stream, const Matrix3& place) {
    writeMatrix<FltMatrix>(stream, place);
    const Point3& position = place.GetTrans();
    if (Point3(Point3f(position)) == position) return;
    Matrix3 linear = place;
    linear.SetTrans({});
    if (!linear.IsIdentity()) writeMatrix<FltGeneralMatrix>(stream, linear);
    FltTranslate translation;
    translation.delta = {position.x, position.y, position.z};
    translation.write(stream);
}

}  // namespace interchange

// The records that place a node, as transforms of the host.
#pragma once

#include "kept.h"

#include <kiln/geometry.h>

#include <optional>

namespace interchange {

/// Whether records of `opcode` place the node that they follow.
bool isTransform(std::uint16_t opcode) noexcept;

/// Works out how the transform records of a node, taken one after the other, place it.
///
/// A matrix record is the whole placement; the records that follow it only tell how it came about.
/// Without one, the others apply in their order.
class TransformReader {
public:
    /// Takes a record of any opcode; those that are no transforms, too short, or with numbers that
    /// are not finite change nothing.
    void take(FileBytes record);
    /// The placement; the identity when nothing was said.
    const Matrix3& result() const noexcept { return matrix_ ? *matrix_ : steps_; }

private:
    std::optional<Matrix3> matrix_;
    Matrix3 steps_;
};

/// How what is kept on a node places it.
Matrix3 keptPlace(const Kept& kept);

/// The body of a matrix record, 16 floats, for that placement. Into 64 bytes at `place`.
void putMatrix(std::uint8_t* place, const Matrix3& matrix) noexcept;

}  // namespace interchange

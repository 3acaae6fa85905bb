// The records that place a node, as transforms of the host.
#pragma once

#include "sourcerecords.h"

#include <kiln/geometry.h>
#include <quillon/fltrecordrange.h>

#include <optional>

class FltStream;

namespace interchange {

/// Whether records of `opcode` place the node that they follow.
bool isTransform(std::uint16_t opcode) noexcept;

/// Works out how the transform records of a node, taken one after the other, place it.
///
/// A matrix record is the whole placement, in single precision; the records that follow it only
/// tell how it came about, and some of their numbers are doubles. Where both say the same as far as
/// single precision goes, theirs count. Without a matrix, the others apply in their order.
class TransformReader {
public:
    /// Takes a record of any opcode; those that are no transforms, too short, or with numbers that
    /// are not finite change nothing.
    void take(const FltRecordView& record);
    /// The placement; the identity when nothing was said.
    Matrix3 result() const noexcept;

private:
    std::optional<Matrix3> matrix_;
    Matrix3 steps_;
};

/// How what is kept on a node places it.
Matrix3 keptPlace(const SourceRecords& kept);

/// Writes the records that place a node: a matrix and, where that would round the position, the
/// steps that lead to it, the last of which has it in doubles.
void writePlace(FltStream& stream, const Matrix3& place);

}  // namespace interchange

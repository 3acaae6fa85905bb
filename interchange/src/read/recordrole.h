// What the records of a file mean for its index.
#pragma once

#include <cstdint>

namespace interchange {

/// What a record means for the index.
enum class RecordRole : std::uint8_t {
    kUnknown,
    kNode,  ///< becomes a node of the scene
    kPush,
    kPop,
    kLongId,
    kVertexPalette,
    kVertex,
    kVertexList,
    kContinuation,
    kColorPalette,
    kLightPalette,
    kTexture,
    kOther,  ///< known, and kept with the node that it follows
};

/// The role of the records of `opcode`.
RecordRole roleOf(std::uint16_t opcode) noexcept;

}  // namespace interchange

// Opcodes of the published format that the record library has no name for.
#pragma once

#include <quillon/fltopcode.h>

#include <cstdint>

namespace interchange {

inline constexpr std::uint16_t kContinuation = 23;
inline constexpr std::uint16_t kMesh = 84;
inline constexpr std::uint16_t kLocalVertexPool = 85;
inline constexpr std::uint16_t kMeshPrimitive = 86;
inline constexpr std::uint16_t kIndexedLightPoint = 130;
inline constexpr std::uint16_t kLightPointSystem = 131;

/// Whether a node of that kind is a string of light points: a vertex list and no polygon. The two
/// kinds differ in where they say how the points shine, in their record or in palettes.
inline constexpr bool isLightPoint(std::uint16_t kind) noexcept {
    return kind == kFltLightPoint || kind == kIndexedLightPoint;
}

}  // namespace interchange

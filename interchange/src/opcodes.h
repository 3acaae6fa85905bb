// Opcodes of the published format that the record library has no name for.
#pragma once

#include <cstdint>

namespace interchange {

inline constexpr std::uint16_t kContinuation = 23;
inline constexpr std::uint16_t kMesh = 84;
inline constexpr std::uint16_t kLocalVertexPool = 85;
inline constexpr std::uint16_t kMeshPrimitive = 86;
inline constexpr std::uint16_t kIndexedLightPoint = 130;
inline constexpr std::uint16_t kLightPointSystem = 131;

}  // namespace interchange

// Offsets and values of the published format that several parts of import and export need.
#pragma once

#include <cstddef>
#include <cstdint>

namespace interchange {

/// Bytes of a record's opcode and length, ahead of everything that it holds.
inline constexpr std::uint32_t kRecordHeader = 4;

/// In the flags of a face.
inline constexpr std::uint32_t kFaceNoColor = 0x40000000;
inline constexpr std::uint32_t kFaceNoAlternate = 0x20000000;

/// The light modes of a face.
inline constexpr std::uint8_t kVertexColor = 1;
inline constexpr std::uint8_t kLitByFaceColor = 2;
inline constexpr std::uint8_t kLitByVertexColor = 3;
/// Whether lights shine on a face of that mode, for which its vertices need normals.
inline constexpr bool isLit(std::uint8_t lightMode) noexcept {
    return lightMode == kLitByFaceColor || lightMode == kLitByVertexColor;
}

/// A texture palette record: file name, index, place in the palette's window.
inline constexpr std::size_t kTextureNameLength = 200;
inline constexpr std::size_t kTextureIndex = kRecordHeader + kTextureNameLength;
inline constexpr std::size_t kTextureIndexEnd = kTextureIndex + 4;

/// A material palette record: index, name, flags, then colours of three numbers, shininess, alpha.
inline constexpr std::size_t kMaterialIndex = 4;
inline constexpr std::size_t kMaterialName = 12;
inline constexpr std::size_t kMaterialAmbient = 24;
inline constexpr std::size_t kMaterialDiffuse = 36;
inline constexpr std::size_t kMaterialEmissive = 60;
inline constexpr std::size_t kMaterialAlpha = 76;
inline constexpr std::size_t kMaterialAlphaEnd = 80;

}  // namespace interchange

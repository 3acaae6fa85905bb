// What faces and meshes say of their surface.
#pragma once

#include <cstdint>

/// Bits of the flags of a face or a mesh.
enum FltSurfaceFlag : std::uint32_t {
    kFltSurfaceNoColor = 0x40000000,
    kFltSurfaceNoAlternateColor = 0x20000000,
    kFltSurfacePackedColors = 0x10000000,  ///< the packed colors count, and not the indices
    kFltSurfaceHidden = 0x04000000,
};

/// The light modes of a face or a mesh: whose color it shows, and whether lights shine on it, for
/// which its vertices need normals.
enum FltLightMode : std::uint8_t {
    kFltFaceColor = 0,
    kFltVertexColors = 1,
    kFltLitFaceColor = 2,
    kFltLitVertexColors = 3,
};

constexpr bool fltIsLit(std::uint8_t lightMode) noexcept {
    return lightMode == kFltLitFaceColor || lightMode == kFltLitVertexColors;
}
constexpr bool fltShowsVertexColors(std::uint8_t lightMode) noexcept {
    return lightMode == kFltVertexColors || lightMode == kFltLitVertexColors;
}

/// What is drawn of a face or a mesh. Greater draw types are those of light points.
enum FltDrawType : std::uint8_t {
    kFltSolidOneSided = 0,
    kFltSolidTwoSided = 1,
    kFltClosedOutline = 2,
    kFltOpenOutline = 3,
    kFltSolidAndOutline = 4,
};

/// How the picture on a face or a mesh is blended, and whether it turns to the viewer.
enum FltTemplate : std::uint8_t {
    kFltOpaque = 0,
    kFltFixedBlended = 1,
    kFltAxisBlended = 2,
    kFltPointBlended = 4,
};

/// The greatest value of the transparency of a face or a mesh.
inline constexpr std::uint16_t kFltFullTransparency = 0xFFFF;

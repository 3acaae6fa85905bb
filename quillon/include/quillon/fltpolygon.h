// What faces and meshes share: how polygons look.
#pragma once

#include <quillon/fltpackedcolor.h>
#include <quillon/fltrecord.h>
#include <quillon/fltsurface.h>

/// The fields that a face and a mesh have in common, which is all that their records hold.
class FltPolygonRec : public FltNamedRec {
public:
    /// In `flags`: the packed colors count, and not the indices.
    static constexpr std::uint32_t kPackedColors = kFltSurfacePackedColors;

    std::int32_t irColorCode = 0;
    std::int16_t relativePriority = 0;
    std::uint8_t drawType = 0;
    std::uint8_t textureWhite = 0;
    std::int16_t colorNameIndex = -1;
    std::int16_t alternateColorNameIndex = -1;
    std::uint8_t billboard = 0;
    std::int16_t detailTextureIndex = -1;
    std::int16_t textureIndex = -1;
    std::int16_t materialIndex = -1;
    std::int16_t surfaceMaterialCode = 0;
    std::int16_t featureId = 0;
    std::int32_t irMaterialCode = 0;
    std::uint16_t transparency = 0;
    std::uint8_t lodGenerationControl = 0;
    std::uint8_t lineStyleIndex = 0;
    std::uint32_t flags = kFltSurfaceNoColor | kFltSurfaceNoAlternateColor;
    std::uint8_t lightMode = kFltFaceColor;
    FltPackedColor packedPrimaryColor{0xFF, 0xFF, 0xFF, 0xFF};
    FltPackedColor packedAlternateColor{0xFF, 0xFF, 0xFF, 0xFF};
    std::int16_t textureMappingIndex = -1;
    std::uint32_t primaryColorIndex = 0;
    std::uint32_t alternateColorIndex = 0;
};

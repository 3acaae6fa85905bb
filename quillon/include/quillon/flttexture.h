// Textures and how they are mapped.
#pragma once

#include <quillon/fltrecordof.h>

#include <vector>

/// Texture palette entry: a picture file.
class FltTexture : public FltRecordOf<FltTexture, FltPaletteRec, kFltTexture> {
public:
    char fileName[200] = {};    ///< NUL-padded
    std::int32_t index = 0;     ///< by which faces name it
    std::int32_t paletteX = 0;  ///< place in the palette's window
    std::int32_t paletteY = 0;
};

/// Texture mapping palette entry: the tool that put texture coordinates onto faces.
class FltTextureMapping
    : public FltRecordOf<FltTextureMapping, FltPaletteRec, kFltTextureMappingPalette> {
public:
    std::int32_t index = 0;
    char name[20] = {};  ///< NUL-padded
    std::int32_t type =
        0;  ///< 0 none, 1 put, 2 four-point put, 4 spherical, 5 radial, 6 environment
    std::int32_t isWarped = 0;
    double matrix[4][4] = {};              ///< of types 1 and 2
    std::vector<std::uint8_t> parameters;  ///< of the type's own, as they stand in the file
};

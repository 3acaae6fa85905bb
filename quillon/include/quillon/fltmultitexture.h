// Texture layers above the first.
#pragma once

#include <quillon/fltgeometry.h>
#include <quillon/fltrecordof.h>

#include <cstddef>
#include <span>
#include <vector>

/// One texture layer of a face or mesh.
struct FltTextureLayer {
    static constexpr std::uint16_t kNone = 0xFFFF;  ///< an index that names nothing
    static constexpr std::uint16_t kBumpMap = 1;    ///< an effect; 0 is that of the texture

    std::uint16_t textureIndex = 0;
    std::uint16_t effect = 0;
    std::uint16_t mappingIndex = 0;
    std::uint16_t data = 0;  ///< for programs' own use
};

/// The texture layers 1 to 7 of the face or mesh before it.
class FltMultiTexture : public FltRecordOf<FltMultiTexture, FltAncillaryRec, kFltMultiTexture> {
public:
    /// The layers there are, layer 1 being the most significant bit.
    std::uint32_t mask = 0;
    std::vector<FltTextureLayer> layers;  ///< one for each bit, in their order
};

/// The texture coordinates of those layers for the vertex list before it. A list that one record
/// cannot hold goes on in continuation records.
class FltUvList : public FltRecordOf<FltUvList, FltAncillaryRec, kFltUvList> {
public:
    std::uint32_t mask = 0;  ///< as in `FltMultiTexture`
    /// Vertex by vertex, within each the layers of the mask; for morphing vertices the coordinates
    /// at 0 % and at 100 % of each.
    std::vector<FltTextureCoordinates> coordinates;

    /// Whether `record`, header included, has coordinates for a vertex list of so many corners,
    /// which may morph, and no more; also when it ends before its mask.
    static bool fits(std::span<const std::uint8_t> record, std::size_t corners);
};

// The vertex records.
#pragma once

#include <quillon/fltgeometry.h>
#include <quillon/fltopcode.h>
#include <quillon/fltpackedcolor.h>
#include <quillon/fltrecord.h>

#include <cstdint>

/// Bits of a vertex's flags.
enum FltVertexFlag : std::uint16_t {
    kFltVertexStartsHardEdge = 0x8000,
    kFltVertexNormalFrozen = 0x4000,
    kFltVertexNoColor = 0x2000,
    kFltVertexPackedColor = 0x1000,  ///< the packed color counts, and not the index
};

/// Vertex of the vertex palette, of any of the four kinds: with or without a normal, with or
/// without texture coordinates. The kind is the opcode; reading sets it from the record's, and
/// throws `AviaryAssertion` for a record that is no vertex.
class FltVertex : public FltPaletteRec {
public:
    explicit FltVertex(bool withNormal = false, bool withTexture = false) noexcept
        : hasNormal(withNormal), hasTexture(withTexture) {}

    static constexpr bool isVertex(std::uint16_t opcode) noexcept {
        return opcode >= kFltVertexWithColor && opcode <= kFltVertexWithTexture;
    }

    std::uint16_t opcode() const override;
    void writeToken(FltToken& token, std::uint32_t revision) const override;
    void readToken(FltToken& token, std::uint32_t revision) override;
    void visitFields(FltFieldVisitor& visitor) const override;

    bool hasNormal;
    bool hasTexture;
    std::int16_t colorNameIndex = -1;
    std::uint16_t flags = kFltVertexNoColor;
    FltPoint3d position;
    FltPoint3f normal;              ///< of vertices with a normal
    FltTextureCoordinates texture;  ///< of vertices with texture coordinates
    FltPackedColor packedColor{0xFF, 0xFF, 0xFF, 0xFF};
    std::uint32_t colorIndex = 0xFFFFFFFF;  ///< into the color palette
};

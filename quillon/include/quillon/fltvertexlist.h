// The vertex palette and the lists that name its vertices.
#pragma once

#include <quillon/fltbyteorder.h>
#include <quillon/fltrecordof.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// Start of the vertex palette; the vertices follow as records of their own.
class FltVertexPalette : public FltRecordOf<FltVertexPalette, FltPaletteRec, kFltVertexPalette> {
public:
    /// Bytes of this record and of all its vertices.
    std::uint32_t length = 8;
};

/// The vertices of a face or a light point, in order. A list that one record cannot hold goes on in
/// continuation records.
class FltVertexList : public FltRecordOf<FltVertexList, FltPrimaryRec, kFltVertexList> {
public:
    /// Bytes from the start of the vertex palette's own record to that of each vertex.
    std::vector<std::uint32_t> offsets;
};

/// A corner of a face that morphs with the distance.
struct FltMorphCorner {
    std::uint32_t offset0 = 0;    ///< vertex at 0 % of the transition, by its palette offset
    std::uint32_t offset100 = 0;  ///< vertex at 100 %
};

/// The vertices of a face that morphs with the distance.
class FltMorphVertexList
    : public FltRecordOf<FltMorphVertexList, FltPrimaryRec, kFltMorphVertexList> {
public:
    std::vector<FltMorphCorner> corners;
};

/// Whether a node of `opcode` is a string of light points: a vertex list without a polygon. The two
/// kinds differ in where they say how the points shine, in their record or in palettes.
constexpr bool fltIsLightPoint(std::uint16_t opcode) noexcept {
    return opcode == kFltLightPoint || opcode == kFltIndexedLightPoint;
}

/// The palette offsets in the body of a vertex list, of a morph vertex list, which has two for each
/// corner, or of what continues one: as the classes above hold them, read where they stand.
class FltVertexOffsets {
public:
    explicit FltVertexOffsets(std::span<const std::uint8_t> body) noexcept : body_(body) {}

    std::size_t size() const noexcept { return body_.size() / sizeof(std::uint32_t); }
    /// One of them; `i` is below `size()`.
    std::uint32_t operator[](std::size_t i) const noexcept {
        std::uint32_t offset = 0;
        fltLoadBigEndian(body_.data() + i * sizeof offset, offset);
        return offset;
    }

    /// How many of them a corner has, in the list of `opcode`.
    static constexpr std::size_t perCorner(std::uint16_t opcode) noexcept {
        return opcode == kFltMorphVertexList ? 2 : 1;
    }

    /// Whether the body ends with a whole corner of the list of `opcode`.
    bool areWhole(std::uint16_t opcode) const noexcept {
        return body_.size() % (perCorner(opcode) * sizeof(std::uint32_t)) == 0;
    }

private:
    std::span<const std::uint8_t> body_;
};

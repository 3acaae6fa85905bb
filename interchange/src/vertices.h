// Vertex records: position, colour, and by kind a normal and texture coordinates.
#pragma once

#include <interchange/outline.h>

#include <kiln/geometry.h>
#include <kiln/platform.h>
#include <quillon/fltopcode.h>

#include <span>
#include <vector>

class FltColorPalette;
struct Mesh;

namespace interchange {

/// Whether vertices of kind `opcode` have a normal, or texture coordinates.
inline bool isWithNormal(std::uint16_t opcode) noexcept {
    return opcode == kFltVertexWithNormal || opcode == kFltVertexWithTextureAndNormal;
}
inline bool isWithTexture(std::uint16_t opcode) noexcept {
    return opcode == kFltVertexWithTexture || opcode == kFltVertexWithTextureAndNormal;
}

/// Where the parts of a vertex record are.
inline constexpr std::size_t kVertexPosition = 8;
inline constexpr std::size_t kVertexNormal = 32;
inline constexpr std::size_t kVertexNormalSize = 12;
inline constexpr std::size_t kVertexTextureSize = 8;
inline std::size_t vertexTexture(std::uint16_t opcode) noexcept {
    return isWithNormal(opcode) ? kVertexNormal + kVertexNormalSize : kVertexNormal;
}

/// What a vertex without a colour has in a mesh with colours.
inline constexpr COLORREF kVertexWhite = 0xFFFFFF;

/// How much of a vertex record is kept, twice what the longest kind needs. Every corner has its own
/// copy, and 4 bytes of a list are enough for a corner.
inline constexpr std::size_t kLongestVertex = 128;

/// Where a vertex of that kind has its packed colour; the index into the palette follows.
inline std::size_t packedColorOffset(std::uint16_t opcode) noexcept {
    return vertexTexture(opcode) + (isWithTexture(opcode) ? kVertexTextureSize : 0);
}

/// What vertex records hold beside coordinates and normal, for the corners of one mesh: kind,
/// length, colour name, flags, colour, and whatever follows within the first `kLongestVertex`
/// bytes.
///
/// As bytes: one entry for each vertex, or a single one for all when they are alike. An entry is
/// the record without its position, normal and texture coordinates. Nothing at all stands for
/// vertices as the exporter makes them from the mesh alone, those of lit faces with normals.
class VertexTails {
public:
    /// The bytes for a mesh made of `vertices`, of which one will do when they are alike, of a face
    /// that is lit or of anything else; empty when it needs none. Valid until the tails change.
    FileBytes bytesFor(const Mesh& mesh, bool lit, std::span<const FileBytes> vertices);

    /// Takes tails that were kept for a mesh; bytes that do not fit it are taken as nothing.
    void read(FileBytes bytes, const Mesh& mesh);

    /// Puts the record of the mesh's vertex `index`, with its texture coordinates `texture`
    /// (null for none), together. Where the mesh has no normals and nothing was kept, it gets
    /// `normal` (null for none). Colour indices are those of `colorPalette`;
    /// a vertex whose colour in the mesh is another gets that one. Valid until the next call.
    FileBytes vertex(const Mesh& mesh, std::uint32_t index, const Point3f* texture,
                     const Point3f* normal, const FltColorPalette& colorPalette);

private:
    void clear() noexcept;
    void append(FileBytes vertex);
    FileBytes tail(std::size_t index) const noexcept;
    bool fits(const Mesh& mesh) const noexcept;

    std::vector<std::uint8_t> bytes_;    ///< the entries
    std::vector<std::uint32_t> starts_;  ///< of the entries in `bytes_`
    std::vector<std::uint8_t> record_;
};

}  // namespace interchange

// Vertex records: position, colour, and by kind a normal and texture coordinates.
#pragma once

#include <interchange/outline.h>

#include <kiln/geometry.h>
#include <kiln/platform.h>

#include <vector>

struct Mesh;

namespace interchange {

/// Whether a vertex record is of a kind with a normal, or with texture coordinates, and long enough
/// to have them.
bool hasNormal(FileBytes vertex) noexcept;
bool hasTexture(FileBytes vertex) noexcept;

/// What a vertex record holds. It must have its position.
Point3 positionOf(FileBytes vertex) noexcept;
Point3f normalOf(FileBytes vertex) noexcept;
/// u and v; w is 0.
Point3f textureOf(FileBytes vertex) noexcept;

/// What a vertex without a colour has in a mesh with colours.
inline constexpr COLORREF kVertexWhite = 0xFFFFFF;

/// How much of a vertex record is kept, twice what the longest kind needs. Every corner has its own
/// copy, and 4 bytes of a list are enough for a corner.
inline constexpr std::size_t kLongestVertex = 128;

/// Where a vertex of that kind has its packed colour; the index into the palette follows.
std::size_t packedColorOffset(std::uint16_t opcode) noexcept;

/// What vertex records hold beside coordinates and normal, for the corners of one mesh: kind,
/// length, colour name, flags, colour, and whatever follows within the first `kLongestVertex`
/// bytes.
///
/// As bytes: one entry for each vertex, or a single one for all when they are alike. An entry is
/// the record without its position, normal and texture coordinates. Nothing at all stands for
/// vertices as the exporter makes them from the mesh alone.
class VertexTails {
public:
    /// Starts with the tails of vertices that are about to be read.
    void clear() noexcept;
    void append(FileBytes vertex);
    /// The bytes for a mesh, empty when it needs none. Valid until the tails change.
    FileBytes bytesFor(const Mesh& mesh);

    /// Takes tails that were kept for a mesh; bytes that do not fit it are taken as nothing.
    void read(FileBytes bytes, const Mesh& mesh);

    /// Puts the record of the mesh's vertex `index`, with its texture coordinates `texture`
    /// (null for none), together. Colour indices are those of `colorPalette`, a record or empty;
    /// a vertex whose colour in the mesh is another gets that one. Valid until the next call.
    FileBytes vertex(const Mesh& mesh, std::uint32_t index, const Point3f* texture,
                     FileBytes colorPalette);

private:
    FileBytes tail(std::size_t index) const noexcept;
    bool fits(const Mesh& mesh) const noexcept;

    std::vector<std::uint8_t> bytes_;    ///< the entries
    std::vector<std::uint32_t> starts_;  ///< of the entries in `bytes_`
    std::vector<std::uint8_t> record_;
};

}  // namespace interchange

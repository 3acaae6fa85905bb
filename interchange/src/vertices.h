// Vertex records: position, color, and by kind a normal and texture coordinates.
#pragma once

#include <interchange/fileindex.h>

#include <kiln/geometry.h>
#include <kiln/platform.h>

#include <array>
#include <span>
#include <vector>

class FltColorPalette;
struct Mesh;

namespace interchange {

/// What a vertex without a color has in a mesh with colors.
inline constexpr COLORREF kVertexWhite = 0xFFFFFF;

/// How much of a vertex record is kept, twice what the longest kind needs. Every corner has its own
/// copy, and 4 bytes of a list are enough for a corner.
inline constexpr std::size_t kLongestVertex = 128;

/// What vertex records hold beside coordinates and normal, for the corners of one mesh: kind,
/// length, color name, flags, color, and whatever follows within the first `kLongestVertex`
/// bytes.
///
/// Their form as bytes is that of `fltkilnutil/vertextails.h`. Nothing at all stands for vertices
/// as the exporter makes them from the mesh alone, those of lit faces with normals.
class VertexTails {
public:
    /// The bytes for a mesh made of `vertices`, of which one will do when they are alike, of a face
    /// that is lit or of anything else; empty when it needs none. Valid until the tails change.
    FileBytes bytesFor(const Mesh& mesh, bool lit, std::span<const FileBytes> vertices);

    /// Takes tails that were kept for a mesh; bytes that do not fit it are taken as nothing.
    void read(FileBytes bytes, const Mesh& mesh);

    /// Appends the record of the mesh's vertex `index`, with its texture coordinates `texture`
    /// (null for none), to `bytes`. Where the mesh has no normals and nothing was kept, it gets
    /// `normal` (null for none). Color indices are those of `colorPalette`; a vertex whose color
    /// in the mesh is another gets that one.
    void appendVertex(const Mesh& mesh, std::uint32_t index, const Point3f* texture,
                      const Point3f* normal, const FltColorPalette& colorPalette,
                      std::vector<std::uint8_t>& bytes);

private:
    void clear() noexcept;
    bool isMade(const Mesh& mesh, bool lit, std::span<const FileBytes> vertices);
    void appendTail(FileBytes vertex);
    FileBytes tail(std::size_t index) const noexcept;
    bool fits(const Mesh& mesh) const noexcept;
    FileBytes ownVertex(bool withNormal, bool withTexture);
    FileBytes keptVertex(std::size_t index);

    std::vector<std::uint8_t> bytes_;    ///< the entries
    std::vector<std::uint32_t> starts_;  ///< of the entries in `bytes_`
    /// What the exporter makes itself, by kind, without color and coordinates.
    std::array<std::vector<std::uint8_t>, 4> own_;
    std::vector<std::uint8_t> record_;  ///< of the entry `recordOf_`, without coordinates
    std::size_t recordOf_ = kNone;
};

}  // namespace interchange

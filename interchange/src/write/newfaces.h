// Faces of meshes that were made in the scene: what they look like in a file.
#pragma once

#include <kiln/platform.h>
#include <quillon/fltface.h>

#include <cstdint>
#include <optional>

class FltToken;
class INode;
class KilnFace;
struct Mesh;

namespace interchange {

class FilePalettes;

/// What a mesh's node says about its faces where their record does not.
struct NewFace {
    std::optional<COLORREF> color;  ///< nothing when nobody chose one, or the vertices have some
    std::int16_t material = -1;     ///< index into the palette
    bool isSuperFace = false;       ///< further polygons are subfaces of the first
    bool isUnwritten = false;       ///< nothing says what light does with it
};

/// The color that the node's wires were given is its faces' too; the one that every node begins
/// with counts only where there is no record. With the mark for it, it is that of a new material.
/// Throws `ExportError` when the palette is full.
NewFace newFaceOf(INode& node, const Mesh& mesh, const KilnFace& options, FilePalettes& palettes);

/// Whether nobody has given the face a color.
bool isColorless(const FltFace& face) noexcept;

/// Puts `face` into `token` for a file of `revision` with what `look` says; what was edited in the
/// record stays.
void layOutNewFace(FltFace face, const NewFace& look, std::uint32_t revision, FltToken& token);

}  // namespace interchange

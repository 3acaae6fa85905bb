// What the importer keeps of the vertices of a polygon beside their coordinates.
//
// Entries stand one behind the other, one for each vertex of the node's mesh, or a single one for
// all when they are alike. An entry is the vertex record without its position, normal and texture
// coordinates: what stands before the position, which is the same for all kinds, and what stands
// from the color on.
#pragma once

#include <fltkilnutil/sourcerecords.h>
#include <quillon/fltrecordbytes.h>
#include <quillon/fltvertexview.h>

#include <optional>

namespace fltkilnutil {

/// Bytes of an entry that stand before the rest.
inline std::size_t vertexTailHeadSize() noexcept {
    return FltVertexView::layoutOf(kFltVertexWithColor).position.begin;
}

/// Where the rest of an entry stands in the record of a vertex of that opcode.
inline std::size_t vertexTailColorPlace(std::uint16_t opcode) noexcept {
    return FltVertexView::layoutOf(opcode).packedColor.begin;
}

/// The entry at the start of `bytes`; empty where they do not begin with a whole one.
FileBytes vertexTailAt(FileBytes bytes) noexcept;

/// The color index by which the vertex of an entry gets its color; none when that is packed, or
/// there is none.
std::optional<std::uint32_t> vertexTailColorIndex(FileBytes tail) noexcept;

/// Gives the vertex of an entry that has such an index another one.
void setVertexTailColorIndex(std::span<std::uint8_t> tail, std::uint32_t index) noexcept;

}  // namespace fltkilnutil

// The colours that faces and vertices show.
#pragma once

#include <interchange/outline.h>

#include <kiln/platform.h>

#include <optional>
#include <span>

class FltFace;

namespace interchange {

// Flags of a vertex.
inline constexpr std::uint16_t kVertexNoColor = 0x2000;
inline constexpr std::uint16_t kVertexPackedColor = 0x1000;

/// The face's primary colour: its packed one, or the one that it names in the colour palette, a
/// record or empty, by entry and intensity. Nothing when the face has no colour, or names one that
/// is not there.
std::optional<COLORREF> colorOf(const FltFace& face, FileBytes palette);

/// The colour that an index names in the palette.
std::optional<COLORREF> indexedColor(std::uint32_t index, FileBytes palette);

/// The same for a vertex record.
std::optional<COLORREF> vertexColor(FileBytes vertex, FileBytes palette);

/// Gives a vertex record that packed colour, as far as the record is long enough to hold it.
void setVertexColor(std::span<std::uint8_t> vertex, COLORREF color);

/// The colour as a packed one, opaque: from the most significant byte alpha, blue, green, red.
std::uint32_t packedColorOf(COLORREF color) noexcept;

}  // namespace interchange

// The colors that vertices show.
#pragma once

#include <fltkilnutil/indexedcolor.h>
#include <interchange/fileindex.h>

#include <kiln/platform.h>
#include <quillon/fltcolorpalette.h>
#include <quillon/fltvertexview.h>

#include <optional>
#include <span>

namespace interchange {

using fltkilnutil::indexedColor;

/// The color of a vertex: its packed one, or the one that it names in the palette. None when it has
/// no color, or names one that is not there.
std::optional<COLORREF> vertexColor(const FltVertexView& vertex, const FltColorPalette& palette);

/// Puts that packed color into a vertex record, as far as the record is long enough to hold it.
void setVertexColor(std::span<std::uint8_t> vertex, COLORREF color);

/// The color as a packed one, opaque: from the most significant byte alpha, blue, green, red.
std::uint32_t packedColorOf(COLORREF color) noexcept;

}  // namespace interchange

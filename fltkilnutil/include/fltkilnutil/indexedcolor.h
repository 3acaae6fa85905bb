// Colors by their index in the color palette.
#pragma once

#include <kiln/platform.h>
#include <quillon/fltcolorpalette.h>
#include <quillon/fltpolygon.h>

#include <cstdint>
#include <optional>

namespace fltkilnutil {

/// The host's form of a color.
constexpr COLORREF colorRefOf(const FltPackedColor& color) noexcept {
    return static_cast<COLORREF>(color.red | std::uint32_t{color.green} << 8 |
                                 std::uint32_t{color.blue} << 16);
}

/// `color` at an intensity from 0 to 127, which is full.
COLORREF shadeOf(const FltPackedColor& color, std::uint32_t intensity) noexcept;

/// The color that an index names in the palette. One that is not whole counts as none.
std::optional<COLORREF> indexedColor(std::uint32_t index, const FltColorPalette& palette);

/// The primary color of a face or mesh: its packed one, or the one that it names in the palette by
/// entry and intensity. None when it has no color, or names one that is not there.
std::optional<COLORREF> surfaceColor(const FltPolygonRec& surface, const FltColorPalette& palette);

}  // namespace fltkilnutil

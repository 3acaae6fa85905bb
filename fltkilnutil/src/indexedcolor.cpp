#include <fltkilnutil/indexedcolor.h>

namespace fltkilnutil {

COLORREF shadeOf(const FltPackedColor& color, std::uint32_t intensity) noexcept {
    constexpr std::uint32_t kFull = FltColorPalette::kFullIntensity;
    const auto shade = [&](std::uint32_t component) {
        return static_cast<std::uint8_t>((component * intensity + kFull / 2) / kFull);
    };
    return colorRefOf({0, shade(color.blue), shade(color.green), shade(color.red)});
}

std::optional<COLORREF> indexedColor(std::uint32_t index, const FltColorPalette& palette) {
    if (!palette.isWhole()) return std::nullopt;
    const auto entry = palette.entryOf(index);
    if (!entry) return std::nullopt;
    const FltPackedColor& color = palette.entry(*entry);
    return palette.hasIntensities(*entry) ? shadeOf(color, index & FltColorPalette::kFullIntensity)
                                          : colorRefOf(color);
}

std::optional<COLORREF> surfaceColor(const FltPolygonRec& surface, const FltColorPalette& palette) {
    if (surface.flags & kFltSurfacePackedColors) return colorRefOf(surface.packedPrimaryColor);
    if (surface.flags & kFltSurfaceNoColor) return std::nullopt;
    return indexedColor(surface.primaryColorIndex, palette);
}

}  // namespace fltkilnutil

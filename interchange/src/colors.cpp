#include "colors.h"

#include "bytes.h"
#include "layouts.h"
#include "vertices.h"

#include <quillon/fltface.h>

namespace interchange {

namespace {

// The palette: 1024 entries of 4 bytes (alpha, blue, green, red) after 128 reserved ones. An index
// holds the entry in its upper bits and the intensity in its lower 7.
constexpr std::uint32_t kPaletteEntries = 1024;
constexpr std::uint32_t kPaletteStart = 132;
constexpr std::uint32_t kPaletteEnd = kPaletteStart + 4 * kPaletteEntries;
constexpr std::uint32_t kIntensityBits = 7;
constexpr std::uint32_t kFullIntensity = 127;

constexpr COLORREF colorRef(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    return static_cast<COLORREF>(red | green << 8 | blue << 16);
}

}  // namespace

std::optional<COLORREF> indexedColor(std::uint32_t index, FileBytes palette) {
    const std::uint32_t entry = index >> kIntensityBits;
    if (entry >= kPaletteEntries) return std::nullopt;
    if (palette.size() < kPaletteEnd) return std::nullopt;  // none, or that of an older format
    const FileBytes color = palette.subspan(kPaletteStart + 4 * entry, 4);
    const std::uint32_t intensity = index & kFullIntensity;
    const auto shade = [&](std::size_t component) {
        return (color[component] * intensity + kFullIntensity / 2) / kFullIntensity;
    };
    return colorRef(shade(3), shade(2), shade(1));
}

std::optional<COLORREF> colorOf(const FltFace& face, FileBytes palette) {
    if (face.flags & FltFace::kPackedColors) {
        const FltPackedColor& color = face.packedPrimaryColor;
        return colorRef(color.red, color.green, color.blue);
    }
    if (face.flags & kFaceNoColor) return std::nullopt;
    return indexedColor(face.primaryColorIndex, palette);
}

std::optional<COLORREF> vertexColor(FileBytes vertex, FileBytes palette) {
    const std::size_t color = packedColorOffset(uint16At(vertex, 0));
    const std::uint16_t flags = uint16At(vertex, 6);
    if (vertex.size() < color + 4 || flags & kVertexNoColor) return std::nullopt;
    if (flags & kVertexPackedColor) {
        return colorRef(vertex[color + 3], vertex[color + 2], vertex[color + 1]);
    }
    if (vertex.size() < color + 8) return std::nullopt;
    return indexedColor(uint32At(vertex, color + 4), palette);
}

void setVertexColor(std::span<std::uint8_t> vertex, COLORREF color) {
    const std::size_t place = packedColorOffset(uint16At(vertex, 0));
    if (vertex.size() < place + 4) return;
    const auto flags = static_cast<std::uint16_t>(uint16At(vertex, 6) & ~kVertexNoColor);
    put16(&vertex[6], flags | kVertexPackedColor);
    put32(&vertex[place], packedColorOf(color));
}

std::uint32_t packedColorOf(COLORREF color) noexcept {
    constexpr std::uint32_t kOpaque = 0xFF000000;
    return kOpaque | (color & 0xFFFFFF);  // both have red in the lowest byte
}

}  // namespace interchange

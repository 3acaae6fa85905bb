#include "colors.h"

#include <quillon/fltface.h>
#include <quillon/fltopcode.h>

namespace interchange {

namespace {

constexpr std::uint32_t kNoColor = 0x40000000;
constexpr std::uint32_t kPackedColor = 0x10000000;

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

std::optional<COLORREF> paletteColor(std::uint32_t index, FileBytes bytes, std::uint32_t palette) {
    const std::uint32_t entry = index >> kIntensityBits;
    if (palette == 0 || entry >= kPaletteEntries) return std::nullopt;
    const FileBytes record = recordAt(bytes, palette);
    if (record.size() < kPaletteEnd) return std::nullopt;  // the palette of an older format
    const FileBytes color = record.subspan(kPaletteStart + 4 * entry, 4);
    const std::uint32_t intensity = index & kFullIntensity;
    const auto shade = [&](std::size_t component) {
        return (color[component] * intensity + kFullIntensity / 2) / kFullIntensity;
    };
    return colorRef(shade(3), shade(2), shade(1));
}

/// Where a vertex of that kind has its packed colour; the index follows.
std::size_t packedColorOffset(std::uint16_t opcode) {
    switch (opcode) {
        case kFltVertexWithNormal:
            return 44;
        case kFltVertexWithTextureAndNormal:
            return 52;
        case kFltVertexWithTexture:
            return 40;
        default:
            return 32;
    }
}

}  // namespace

std::optional<COLORREF> colorOf(const FltFace& face, FileBytes bytes, const Outline& outline) {
    if (face.flags & kPackedColor) {
        const FltPackedColor& color = face.packedPrimaryColor;
        return colorRef(color.red, color.green, color.blue);
    }
    if (face.flags & kNoColor) return std::nullopt;
    return paletteColor(face.primaryColorIndex, bytes, outline.colorPalette);
}

std::optional<COLORREF> vertexColor(std::uint32_t vertex, FileBytes bytes, const Outline& outline) {
    constexpr std::uint16_t kVertexNoColor = 0x2000;
    constexpr std::uint16_t kVertexPackedColor = 0x1000;
    const FileBytes record = recordAt(bytes, vertex);
    const std::size_t color = packedColorOffset(uint16At(record, 0));
    const std::uint16_t flags = uint16At(record, 6);
    if (record.size() < color + 4 || flags & kVertexNoColor) return std::nullopt;
    if (flags & kVertexPackedColor) {
        return colorRef(record[color + 3], record[color + 2], record[color + 1]);
    }
    if (record.size() < color + 8) return std::nullopt;
    return paletteColor(uint32At(record, color + 4), bytes, outline.colorPalette);
}

}  // namespace interchange

#include "colors.h"

#include <quillon/fltbyteorder.h>
#include <quillon/fltvertex.h>

namespace interchange {

std::optional<COLORREF> vertexColor(const FltVertexView& vertex, const FltColorPalette& palette) {
    const std::uint16_t flags = vertex.flags();
    if (!vertex.hasPackedColor() || flags & kFltVertexNoColor) return std::nullopt;
    if (flags & kFltVertexPackedColor) return fltkilnutil::colorRefOf(vertex.packedColor());
    if (!vertex.hasColorIndex()) return std::nullopt;
    return indexedColor(vertex.colorIndex(), palette);
}

void setVertexColor(std::span<std::uint8_t> vertex, COLORREF color) {
    const FltVertexView view(vertex);
    if (!view.hasPackedColor()) return;
    const auto flags = static_cast<std::uint16_t>(view.flags() & ~kFltVertexNoColor);
    const FltVertexView::Layout& layout = view.layout();
    fltStoreBigEndian(&vertex[layout.flags.begin],
                      static_cast<std::uint16_t>(flags | kFltVertexPackedColor));
    fltStoreBigEndian(&vertex[layout.packedColor.begin], packedColorOf(color));
}

std::uint32_t packedColorOf(COLORREF color) noexcept {
    constexpr std::uint32_t kOpaque = 0xFF000000;
    return kOpaque | (color & 0xFFFFFF);  // both have red in the lowest byte
}

}  // namespace interchange

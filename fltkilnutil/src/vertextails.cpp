#include <fltkilnutil/vertextails.h>

namespace fltkilnutil {

namespace {

std::size_t colorIndexPlace(std::uint16_t opcode) noexcept {
    return vertexTailHeadSize() + FltVertexView::layoutOf(opcode).colorIndex.begin -
           vertexTailColorPlace(opcode);
}

}  // namespace

FileBytes vertexTailAt(FileBytes bytes) noexcept {
    const std::size_t head = vertexTailHeadSize();
    if (bytes.size() < head) return {};
    const FltRecordHead stated = fltRecordHead(bytes);
    if (!FltVertex::isVertex(stated.opcode) || stated.length < FltVertexView::kShortest) return {};
    const std::size_t color = vertexTailColorPlace(stated.opcode);
    const std::size_t size = head + (stated.length > color ? stated.length - color : 0);
    return size <= bytes.size() ? bytes.first(size) : FileBytes();
}

std::optional<std::uint32_t> vertexTailColorIndex(FileBytes tail) noexcept {
    const std::uint16_t opcode = fltRecordHead(tail).opcode;
    const FltVertexView::Layout& layout = FltVertexView::layoutOf(opcode);
    const std::size_t place = colorIndexPlace(opcode);
    std::uint16_t flags = 0;
    std::uint32_t index = 0;
    if (tail.size() < place + sizeof index) return std::nullopt;
    fltLoadBigEndian(&tail[layout.flags.begin], flags);
    if (flags & (kFltVertexPackedColor | kFltVertexNoColor)) return std::nullopt;
    fltLoadBigEndian(&tail[place], index);
    return index;
}

void setVertexTailColorIndex(std::span<std::uint8_t> tail, std::uint32_t index) noexcept {
    if (!vertexTailColorIndex(tail)) return;
    fltStoreBigEndian(&tail[colorIndexPlace(fltRecordHead(tail).opcode)], index);
}

}  // namespace fltkilnutil

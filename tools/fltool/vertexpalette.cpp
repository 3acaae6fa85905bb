#include "vertexpalette.h"

#include <quillon/fltvertex.h>
#include <quillon/fltvertexlist.h>

#include <algorithm>

namespace fltool {

std::string VertexPalette::meet(FltFileReader& reader) {
    if (reader.opcode() == kFltVertexPalette) return begin(reader);
    if (!FltVertex::isVertex(reader.opcode())) {
        open_ = false;
        return {};
    }
    if (!open_) return "a vertex outside the vertex palette";
    vertices_.push_back(size_);
    size_ += reader.length();
    return {};
}

std::string VertexPalette::begin(FltFileReader& reader) {
    if (exists_) return "a second vertex palette";
    exists_ = open_ = true;
    offset_ = reader.offset();
    size_ = reader.length();
    FltVertexPalette record;
    record.readFromFile(&reader.token());
    statedSize_ = record.length;
    return {};
}

std::string VertexPalette::finish() const {
    if (!exists_ || statedSize_ == size_) return {};
    return "the vertex palette says that it is " + std::to_string(statedSize_) +
           " bytes long; it is " + std::to_string(size_);
}

bool VertexPalette::hasVertexAt(std::uint32_t offset) const {
    return std::binary_search(vertices_.begin(), vertices_.end(), offset);
}

std::string VertexPalette::judgeList(FltFileReader& reader, std::uint16_t opcode) const {
    if (!exists_) return "a vertex list before any vertex palette";
    const FltVertexOffsets offsets(reader.body());
    if (!offsets.areWhole(opcode)) return "a vertex list whose length is not one of whole entries";
    std::size_t wrong = 0;
    std::uint32_t first = 0;
    for (std::size_t i = 0; i < offsets.size(); ++i)
        if (!hasVertexAt(offsets[i]) && wrong++ == 0) first = offsets[i];
    if (wrong == 0) return {};
    const std::string more = wrong == 1 ? "" : " and " + std::to_string(wrong - 1) + " more";
    return "vertex offset " + std::to_string(first) + more + ": no vertex of the palette there";
}

}  // namespace fltool

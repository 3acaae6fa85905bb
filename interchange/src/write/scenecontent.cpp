#include "scenecontent.h"

namespace interchange {

void NodePolygons::begin(std::uint32_t node) {
    node_ = node;
    ofNode_[node] = {static_cast<std::uint32_t>(ends_.size()), 0};
}

void NodePolygons::end() {
    ends_.push_back(static_cast<std::uint32_t>(corners_.size()));
    ++ofNode_[node_].count;
}

std::span<const std::uint32_t> NodePolygons::corners(std::uint32_t node,
                                                     std::uint32_t polygon) const {
    const std::uint32_t at = ofNode_[node].first + polygon;
    const std::uint32_t start = at == 0 ? 0 : ends_[at - 1];
    return std::span(corners_).subspan(start, ends_[at] - start);
}

}  // namespace interchange

#include <workbench/scenemodel.h>

namespace workbench {

void SceneModel::clear() {
    items_.clear();
    vertices_.clear();
    triangles_.clear();
    marks_.clear();
    box_ = helperBox_ = {};
}

ItemIndex SceneModel::beginItem() {
    Item item;
    item.firstVertex = static_cast<std::uint32_t>(vertices_.size());
    item.firstTriangle = static_cast<std::uint32_t>(triangles_.size());
    items_.push_back(item);
    return static_cast<ItemIndex>(items_.size() - 1);
}

std::uint32_t SceneModel::addVertex(Vec3 world) {
    vertices_.push_back(world);
    return items_.back().vertexCount++;
}

void SceneModel::addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, Colour colour,
                             std::uint8_t edges) {
    Item& item = items_.back();
    if (std::max({a, b, c}) >= item.vertexCount) return;
    const std::uint32_t base = item.firstVertex;
    const Vec3 p = vertices_[base + a], q = vertices_[base + b], r = vertices_[base + c];
    if (!isFinite(p) || !isFinite(q) || !isFinite(r)) return;
    const Vec3 normal = normalised(cross(q - p, r - p));
    triangles_.push_back({{base + a, base + b, base + c}, colour, normal, edges});
    ++item.triangleCount;
    item.box.add(p);
    item.box.add(q);
    item.box.add(r);
}

void SceneModel::addMark(MarkKind kind, Vec3 world, Colour colour) {
    if (!isFinite(world)) return;
    marks_.push_back({world, colour, static_cast<ItemIndex>(items_.size() - 1), kind});
    items_.back().box.add(world);
    (kind == MarkKind::kHelper ? helperBox_ : box_).add(world);
}

void SceneModel::endItem() {
    Item& item = items_.back();
    item.selectionBox = item.box;
    if (item.box.empty()) return;
    item.sphereCentre = item.box.centre();
    item.sphereRadius = length(item.box.max - item.sphereCentre);
    if (item.triangleCount > 0) box_.include(item.box);
}

Box SceneModel::selectedBox() const {
    Box box;
    for (const Item& item : items_)
        if (item.selected) box.include(item.selectionBox);
    return box;
}

}  // namespace workbench

#include <render/scenemodel.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace render {

void SceneModel::clear() {
    items_.clear();
    vertices_.clear();
    finishes_.clear();
    triangles_.clear();
    surfaces_.assign(1, {});
    texturePlaces_.clear();
    hasTranslucent_ = false;
    marks_.clear();
    lightLooks_.assign(1, {});
    changes_ = false;
    lights_.clear();
    ranges_.assign(1, {});
    placements_.clear();
    levels_.clear();
    sample_ = kNoItem;
    isPlain_ = true;
    weight_ = 0;
    levelsHidden_ = false;
    box_ = helperBox_ = {};
}

ItemIndex SceneModel::beginItem() {
    Item item;
    item.firstVertex = static_cast<std::uint32_t>(vertices_.size());
    item.firstTriangle = static_cast<std::uint32_t>(triangles_.size());
    items_.push_back(item);
    return static_cast<ItemIndex>(items_.size() - 1);
}

// The first vertex is the item's origin: the others are near it, however far away the world's is.
std::uint32_t SceneModel::addVertex(Vec3d world) {
    Item& item = items_.back();
    if (item.vertexCount == 0 && isFinite(world)) item.origin = world;
    vertices_.push_back(toFloat(world - item.origin));
    return item.vertexCount++;
}

void SceneModel::setFinishes(std::span<const Finish> finishes) {
    Item& item = items_.back();
    if (finishes.size() != item.vertexCount) return;
    item.hasFinish = true;
    item.firstFinish = static_cast<std::uint32_t>(finishes_.size());
    finishes_.insert(finishes_.end(), finishes.begin(), finishes.end());
}

// Neighbours often look alike; of far more surfaces than that nobody has a use.
void SceneModel::setSurface(const Surface& surface) {
    if (surface != surfaces_.back()) surfaces_.push_back(surface);
    Item& item = items_.back();
    item.surface = static_cast<std::uint32_t>(surfaces_.size() - 1);
    item.isTextured = surface.texture != nullptr;
    item.firstTexturePlace = static_cast<std::uint32_t>(texturePlaces_.size());
    hasTranslucent_ = hasTranslucent_ || surface.isTranslucent();
}

void SceneModel::addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, Color color,
                             std::uint8_t edges, const TexturePlace* places) {
    Item& item = items_.back();
    if (std::max({a, b, c}) >= item.vertexCount) return;
    const std::uint32_t base = item.firstVertex;
    const Vec3 p = vertices_[base + a], q = vertices_[base + b], r = vertices_[base + c];
    if (!isFinite(p) || !isFinite(q) || !isFinite(r)) return;
    const Vec3 normal = normalised(cross(q - p, r - p));
    triangles_.push_back({{base + a, base + b, base + c}, color, normal, edges});
    ++item.triangleCount;
    if (item.isTextured) {
        for (int i = 0; i < 3; ++i) texturePlaces_.push_back(places ? places[i] : TexturePlace{});
    }
    for (const Vec3 corner : {p, q, r}) item.box.add(item.origin + corner);
}

RangeIndex SceneModel::addRange(const Range& range) {
    ranges_.push_back(range);
    return static_cast<RangeIndex>(ranges_.size() - 1);
}

void SceneModel::addMark(MarkKind kind, Vec3d world, Color color, ItemIndex item) {
    if (!isFinite(world)) return;
    marks_.push_back({world, color, item, kind, 0, {}});
    items_[item].box.add(world);
    (isShownAlways(kind) ? box_ : helperBox_).add(world);
    if (isShownAlways(kind)) isPlain_ = false;
}

std::uint32_t SceneModel::addLightLook(const LightPointLook& look) {
    changes_ = changes_ || look.changes();
    lightLooks_.push_back(look);
    return static_cast<std::uint32_t>(lightLooks_.size() - 1);
}

void SceneModel::addLightPoint(Vec3d world, Color color, std::uint32_t look, Vec3 normal) {
    const std::size_t before = marks_.size();
    addMark(MarkKind::kLightPoint, world, color);
    if (marks_.size() == before) return;
    marks_.back().look = look;
    if (isFinite(normal)) marks_.back().normal = normalised(normal);
}

void SceneModel::addLight(const Light& light) {
    if (isFinite(light.position) && isFinite(light.direction) && isFinite(light.strength))
        lights_.push_back(light);
}

void SceneModel::setPlacement(Placement placement) {
    const SceneModel& model = *placement.model;
    if (model.box_.empty() || !placement.place.isFinite()) return;
    Item& item = items_.back();
    const Box around = placement.place.box(model.box_);
    if (!isFinite(around.min) || !isFinite(around.max)) return;
    item.box = around;
    item.placement = static_cast<PlacementIndex>(placements_.size());
    weight_ += std::min(model.weight_, std::numeric_limits<std::uint64_t>::max() - 1 - weight_);
    changes_ = changes_ || model.changes_;
    hasTranslucent_ = hasTranslucent_ || model.hasTranslucent_ || placement.opacity < 1;
    placements_.push_back(std::move(placement));
}

// An edge that two triangles share is drawn once.
void SceneModel::dropDoubleEdges(const Item& item) {
    seenEdges_.clear();
    for (std::uint32_t t = item.firstTriangle; t < item.firstTriangle + item.triangleCount; ++t) {
        for (unsigned edge = 0; edge < 3; ++edge) {
            if ((triangles_[t].edges >> edge & 1) == 0) continue;
            const std::uint64_t a = triangles_[t].vertex[edge];
            const std::uint64_t b = triangles_[t].vertex[(edge + 1) % 3];
            seenEdges_.push_back({std::min(a, b) << 32 | std::max(a, b), t, edge});
        }
    }
    std::sort(seenEdges_.begin(), seenEdges_.end());
    for (std::size_t i = 1; i < seenEdges_.size(); ++i) {
        const SeenEdge& edge = seenEdges_[i];
        if (edge.ends != seenEdges_[i - 1].ends) continue;
        std::uint8_t& edges = triangles_[edge.triangle].edges;
        edges = static_cast<std::uint8_t>(edges & ~(1u << edge.edge));
    }
}

void SceneModel::endItem() {
    Item& item = items_.back();
    if (item.triangleCount > 1) dropDoubleEdges(item);
    item.selectionBox = item.box;
    if (!item.box.empty()) {
        item.sphereCentre = item.box.centre();
        if (item.triangleCount > 0) item.front = triangles_[item.firstTriangle].normal;
        item.sphereRadius = static_cast<float>(length(item.box.max - item.sphereCentre));
    }
    if (item.hasSurface()) {
        box_.include(item.box);
        if (sample_ == kNoItem) sample_ = static_cast<ItemIndex>(items_.size() - 1);
        isPlain_ = isPlain_ && blockOf(static_cast<ItemIndex>(items_.size() - 1)).isPlain;
    }
    if (weight_ < std::numeric_limits<std::uint64_t>::max()) ++weight_;
    addBlocks();
}

/// Of one item.
Block SceneModel::blockOf(ItemIndex index) const {
    const Item& item = items_[index];
    Block block;
    if (!item.hasSurface()) return block;
    block.box = item.box;
    block.sample = index;
    block.isPlain = item.hours == kAllHours && item.range == 0;
    if (item.placement == kNoPlacement)
        block.isPlain = block.isPlain && !surfaceOf(item).isTranslucent();
    else
        block.isPlain = block.isPlain && placements_[item.placement].model->isPlain_ &&
                        placements_[item.placement].opacity >= 1;
    return block;
}

/// Adds the blocks that the last item completes.
void SceneModel::addBlocks() {
    std::size_t count = items_.size();
    for (std::size_t level = 0; count % kInBlock == 0; ++level) {
        Block all;
        for (std::size_t i = count - kInBlock; i < count; ++i) {
            const Block part =
                level == 0 ? blockOf(static_cast<ItemIndex>(i)) : levels_[level - 1][i];
            if (part.sample == kNoItem) continue;
            all.box.include(part.box);
            if (all.sample == kNoItem) all.sample = part.sample;
            all.isPlain = all.isPlain && part.isPlain;
        }
        if (all.sample != kNoItem) {
            all.centre = all.box.centre();
            all.radius = static_cast<float>(length(all.box.max - all.centre));
        }
        if (level == levels_.size()) levels_.emplace_back();
        levels_[level].push_back(all);
        count = levels_[level].size();
    }
}

Box SceneModel::selectedBox() const {
    Box box;
    for (const Item& item : items_)
        if (item.selected) box.include(item.selectionBox);
    return box;
}

}  // namespace render

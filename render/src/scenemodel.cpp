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
    layers_.assign(1, {});
    texturePlaces_.clear();
    marks_.clear();
    lightLooks_.assign(1, {});
    lightSteps_.clear();
    lightStepCount_ = 0;
    changes_ = false;
    lights_.clear();
    moved_.clear();
    marksMoved_ = false;
    ranges_.assign(1, {});
    placements_.clear();
    levels_.clear();
    sample_ = kNoItem;
    isPlain_ = true;
    weight_ = 0;
    levelsHidden_ = false;
    chosen_ = 0;
    standIn_.reset();
    open_ = kNoItem;
    reopened_.reset();
    fits_ = true;
    waste_ = 0;
    box_ = shownMarkBox_ = helperBox_ = {};
}

ItemIndex SceneModel::beginItem() {
    Item item;
    item.firstVertex = static_cast<std::uint32_t>(vertices_.size());
    item.firstTriangle = static_cast<std::uint32_t>(triangles_.size());
    items_.push_back(item);
    reopened_.reset();
    standIn_.reset();
    return open_ = static_cast<ItemIndex>(items_.size() - 1);
}

bool SceneModel::reopenItem(ItemIndex index) {
    Item& item = items_[index];
    // Marks are in the order of their items.
    const auto first = std::ranges::lower_bound(marks_, index, {}, &Mark::item);
    const bool hasMark = first != marks_.end() && first->item == index;
    if (hasMark && first->kind == MarkKind::kLightPoint) return false;
    const SceneModel* const placed =
        item.placement == kNoPlacement ? nullptr : placements_[item.placement].model.get();
    if (placed && placed->changes_) return false;
    fits_ = fits_ && !(reopened_ && reopened_->hasMark);
    --weight_;
    if (placed) weight_ -= placed->weight_;
    reopened_ = {item, static_cast<std::size_t>(first - marks_.begin()), hasMark};
    standIn_.reset();
    open_ = index;
    Item emptied;
    emptied.firstVertex = static_cast<std::uint32_t>(vertices_.size());
    emptied.firstTriangle = static_cast<std::uint32_t>(triangles_.size());
    emptied.selected = item.selected;
    emptied.outlined = item.outlined;
    item = emptied;
    return true;
}

// The first vertex is the item's origin: the others are near it, however far away the world's is.
std::uint32_t SceneModel::addVertex(Vec3d world) {
    Item& item = items_[open_];
    if (item.vertexCount == 0 && isFinite(world)) item.origin = world;
    vertices_.push_back(toFloat(world - item.origin));
    return item.vertexCount++;
}

void SceneModel::setFinishes(std::span<const Finish> finishes) {
    Item& item = items_[open_];
    if (finishes.size() != item.vertexCount) return;
    item.hasFinish = true;
    item.firstFinish = static_cast<std::uint32_t>(finishes_.size());
    finishes_.insert(finishes_.end(), finishes.begin(), finishes.end());
}

// As with surfaces.
std::uint32_t SceneModel::addLayers(const TextureLayers& layers) {
    if (layers.empty()) return 0;
    if (layers != layers_.back()) layers_.push_back(layers);
    return static_cast<std::uint32_t>(layers_.size() - 1);
}

// Neighbours often look alike; of far more surfaces than that nobody has a use.
void SceneModel::setSurface(const Surface& surface) {
    Item& item = items_[open_];
    if (reopened_ && surface == surfaces_[reopened_->item.surface]) {
        item.surface = reopened_->item.surface;
    } else {
        if (surface != surfaces_.back()) surfaces_.push_back(surface);
        item.surface = static_cast<std::uint32_t>(surfaces_.size() - 1);
        if (reopened_) ++waste_;
    }
    item.isTextured = surface.texture || surface.layers != 0;
    item.layerCount = static_cast<std::uint8_t>(layersOf(surface).count);
    item.firstTexturePlace = static_cast<std::uint32_t>(texturePlaces_.size());
}

void SceneModel::addTriangle(std::uint32_t a, std::uint32_t b, std::uint32_t c, Color color,
                             std::uint8_t edges, const TexturePlace* places) {
    Item& item = items_[open_];
    if (std::max({a, b, c}) >= item.vertexCount) return;
    const std::uint32_t base = item.firstVertex;
    const Vec3 p = vertices_[base + a], q = vertices_[base + b], r = vertices_[base + c];
    if (!isFinite(p) || !isFinite(q) || !isFinite(r)) return;
    const Vec3 normal = normalised(cross(q - p, r - p));
    triangles_.push_back({{base + a, base + b, base + c}, color, normal, edges});
    ++item.triangleCount;
    for (std::size_t i = 0; i < item.placesOfTriangle(); ++i)
        texturePlaces_.push_back(places ? places[i] : TexturePlace{});
    for (const Vec3 corner : {p, q, r}) item.box.add(item.origin + corner);
}

RangeIndex SceneModel::addRange(const Range& range) {
    ranges_.push_back(range);
    return static_cast<RangeIndex>(ranges_.size() - 1);
}

void SceneModel::addMark(MarkKind kind, Vec3d world, Color color, ItemIndex item) {
    if (!isFinite(world)) return;
    const Mark mark{world, color, item, kind, 0, {}};
    items_[item].box.add(world);
    if (reopened_) return replaceMark(mark);
    marks_.push_back(mark);
    (isShownAlways(kind) ? shownMarkBox_ : helperBox_).add(world);
    if (!isShownAlways(kind)) return;
    box_.add(world);
    isPlain_ = false;
}

/// An item that had no mark, or has another number of them now, does not fit in.
void SceneModel::replaceMark(const Mark& mark) {
    Mark* const old = reopened_->hasMark ? &marks_[reopened_->mark] : nullptr;
    fits_ = fits_ && old && isShownAlways(old->kind) == isShownAlways(mark.kind);
    if (!fits_) return;
    reopened_->hasMark = false;
    const bool shownAlways = isShownAlways(mark.kind);
    Box& around = shownAlways ? shownMarkBox_ : helperBox_;
    const bool wasAtRim = around.isAtRim(old->position);
    *old = mark;
    around.add(mark.position);
    if (wasAtRim) around = boxOfMarks(shownAlways);
}

Box SceneModel::boxOfMarks(bool shownAlways) const {
    Box box;
    for (const Mark& mark : marks_)
        if (isShownAlways(mark.kind) == shownAlways) box.add(mark.position);
    return box;
}

std::uint32_t SceneModel::addLightLook(const LightPointLook& look) {
    // Memory for a few hundred of the longest, or for ten thousands as they are.
    constexpr std::size_t kMostSteps = 4'000'000;
    // Neighbours change in a few ways, by turns.
    constexpr std::ptrdiff_t kFew = 16;
    LightPointLook added = look;
    if (const std::span steps(look.steps, look.stepCount); !steps.empty()) {
        const auto end = lightSteps_.rend();
        const auto few = lightSteps_.rbegin() + std::min(kFew, end - lightSteps_.rbegin());
        const auto known = std::find_if(lightSteps_.rbegin(), few, [&](const auto& one) {
            return std::ranges::equal(*one, steps);
        });
        if (known != few) {
            added.steps = (*known)->data();
        } else if (steps.size() <= kMostSteps - lightStepCount_) {
            lightStepCount_ += steps.size();
            lightSteps_.push_back(
                std::make_shared<const std::vector<LightPointStep>>(steps.begin(), steps.end()));
            added.steps = lightSteps_.back()->data();
        } else {
            added.steps = nullptr;
            added.stepCount = 0;
            added.period = 0;
        }
    }
    changes_ = changes_ || added.changes();
    lightLooks_.push_back(added);
    return static_cast<std::uint32_t>(lightLooks_.size() - 1);
}

void SceneModel::addLightPoint(Vec3d world, Color color, std::uint32_t look, Vec3 normal) {
    if (reopened_) fits_ = false;
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
    Item& item = items_[open_];
    const Box around = placement.place.box(model.box_);
    if (!isFinite(around.min) || !isFinite(around.max)) return;
    item.box = around;
    weight_ += std::min(model.weight_, std::numeric_limits<std::uint64_t>::max() - 1 - weight_);
    changes_ = changes_ || model.changes_;
    if (reopened_ && reopened_->item.placement != kNoPlacement) {
        item.placement = reopened_->item.placement;
        placements_[item.placement] = std::move(placement);
        return;
    }
    item.placement = static_cast<PlacementIndex>(placements_.size());
    placements_.push_back(std::move(placement));
}

// An edge that two triangles share is drawn once.
void SceneModel::dropDoubleEdges(const Item& item) {
    seenEdges_.clear();
    for (std::uint32_t t = item.firstTriangle; t < item.firstTriangle + item.triangleCount; ++t) {
        for (unsigned edge = 0; edge < 3; ++edge) {
            if ((triangles_[t].edges >> edge & 1) == 0) continue;
            const std::uint32_t a = triangles_[t].vertex[edge];
            const std::uint32_t b = triangles_[t].vertex[(edge + 1) % 3];
            seenEdges_.push_back({endsOf(a, b), t, edge});
        }
    }
    std::sort(seenEdges_.begin(), seenEdges_.end());
    for (std::size_t i = 1; i < seenEdges_.size(); ++i) {
        const SeenEdge& edge = seenEdges_[i];
        if (edge.ends != seenEdges_[i - 1].ends) continue;
        std::uint8_t& edges = triangles_[edge.triangle].edges;
        edges = static_cast<std::uint8_t>((edges & ~(1u << edge.edge)) |
                                          1u << (edge.edge + Triangle::kSharedShift));
    }
}

/// Puts what the item has where it was before, if it is not more; otherwise that is left behind.
void SceneModel::takeOldPlace(Item& item) {
    const Item& old = reopened_->item;
    const auto placesOf = [](const Item& one) {
        return one.placesOfTriangle() * one.triangleCount;
    };
    const auto finishesOf = [](const Item& one) { return one.hasFinish ? one.vertexCount : 0; };
    if (item.vertexCount > old.vertexCount || item.triangleCount > old.triangleCount ||
        placesOf(item) > placesOf(old) || finishesOf(item) > finishesOf(old)) {
        waste_ += old.vertexCount + old.triangleCount;
        return;
    }
    const auto move = [](auto& all, std::size_t from, std::size_t count, std::uint32_t& first,
                         std::uint32_t to) {
        if (count > 0)
            std::copy_n(all.begin() + static_cast<std::ptrdiff_t>(from), count,
                        all.begin() + static_cast<std::ptrdiff_t>(to));
        all.resize(from);
        first = to;
    };
    for (Triangle& triangle : std::span(triangles_).subspan(item.firstTriangle))
        for (std::uint32_t& vertex : triangle.vertex)
            vertex = vertex - item.firstVertex + old.firstVertex;
    move(vertices_, item.firstVertex, item.vertexCount, item.firstVertex, old.firstVertex);
    move(triangles_, item.firstTriangle, item.triangleCount, item.firstTriangle, old.firstTriangle);
    if (item.hasFinish)
        move(finishes_, item.firstFinish, finishesOf(item), item.firstFinish, old.firstFinish);
    if (item.isTextured)
        move(texturePlaces_, item.firstTexturePlace, placesOf(item), item.firstTexturePlace,
             old.firstTexturePlace);
}

/// What is known from the item's triangles and its box.
void SceneModel::measure(Item& item) const {
    if (item.box.empty()) return;
    item.sphereCentre = item.box.centre();
    if (item.triangleCount > 0) item.front = triangles_[item.firstTriangle].normal;
    item.sphereRadius = static_cast<float>(length(item.box.max - item.sphereCentre));
}

void SceneModel::endItem() {
    Item& item = items_[open_];
    if (item.triangleCount > 1) dropDoubleEdges(item);
    if (reopened_) takeOldPlace(item);
    item.selectionBox = item.box;
    measure(item);
    if (weight_ < std::numeric_limits<std::uint64_t>::max()) ++weight_;
    if (reopened_) {
        std::size_t block = open_;
        for (std::size_t level = 0; level < levels_.size(); ++level) {
            block /= kInBlock;
            if (block < levels_[level].size()) levels_[level][block] = blockAt(level, block);
        }
        return;
    }
    if (item.hasSurface()) {
        box_.include(item.box);
        if (sample_ == kNoItem) sample_ = open_;
        isPlain_ = isPlain_ && blockOf(open_).isPlain;
    }
    addBlocks();
}

bool SceneModel::endReopening() {
    if (reopened_) fits_ = fits_ && !reopened_->hasMark;
    reopened_.reset();
    addUpBlocks();
    const std::size_t allowed = (vertices_.size() + triangles_.size()) / 2;
    return fits_ && waste_ <= std::max<std::size_t>(allowed, 10'000);
}

/// What the model says of all its items.
void SceneModel::addUpBlocks() {
    box_ = shownMarkBox_;
    sample_ = kNoItem;
    isPlain_ = shownMarkBox_.empty();
    const auto add = [this](const Block& part) {
        if (part.sample == kNoItem) return false;
        box_.include(part.box);
        if (sample_ == kNoItem) sample_ = part.sample;
        isPlain_ = isPlain_ && part.isPlain;
        return false;
    };
    walk(add, [&](ItemIndex index) { add(blockOf(index)); });
}

// ---------------------------------------------------------------- moving

bool SceneModel::moveItem(ItemIndex index, std::span<const Vec3d> vertices,
                          std::span<const Vec3> normals) {
    Item& item = items_[index];
    if (vertices.size() != item.vertexCount) return false;
    for (const Vec3d& vertex : vertices)
        if (!isFinite(vertex)) return false;
    moved_.push_back(index);
    const Box before = std::exchange(item.box, {});
    if (vertices.empty()) return true;
    const Vec3d origin = std::exchange(item.origin, vertices.front());
    bool isShifted = true;
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        Vec3& vertex = vertices_[item.firstVertex + i];
        const Vec3 moved = toFloat(vertices[i] - item.origin);
        isShifted = isShifted && vertex == moved;
        vertex = moved;
    }
    constexpr float kMost = std::numeric_limits<float>::max();
    Vec3 low{kMost, kMost, kMost}, high = low * -1.f;
    std::span<Triangle> turned =
        std::span(triangles_).subspan(item.firstTriangle, item.triangleCount);
    if (isShifted && !before.empty() && marksOf(index).empty()) {
        low = toFloat(before.min - origin);
        high = toFloat(before.max - origin);
        turned = {};
    }
    for (Triangle& triangle : turned) {
        const auto [a, b, c] = triangle.vertex;
        const Vec3 p = vertices_[a], q = vertices_[b], r = vertices_[c];
        triangle.normal = normalised(cross(q - p, r - p));
        for (const Vec3 corner : {p, q, r}) {
            low = {std::min(low.x, corner.x), std::min(low.y, corner.y), std::min(low.z, corner.z)};
            high = {std::max(high.x, corner.x), std::max(high.y, corner.y),
                    std::max(high.z, corner.z)};
        }
    }
    if (item.triangleCount > 0) {
        item.box.add(item.origin + low);
        item.box.add(item.origin + high);
    }
    if (!item.hasFinish || normals.size() != vertices.size()) return true;
    for (std::size_t i = 0; i < normals.size(); ++i) {
        Vec3& normal = finishes_[item.firstFinish + i].normal;
        if (dot(normal, normal) > 0 && isFinite(normals[i])) normal = normals[i];
    }
    return true;
}

/// They are in the order of their items.
std::span<const Mark> SceneModel::marksOf(ItemIndex item) const {
    const auto first = std::ranges::lower_bound(marks_, item, {}, &Mark::item);
    const auto end = std::ranges::upper_bound(marks_, item, {}, &Mark::item);
    return {marks_.data() + (first - marks_.begin()), static_cast<std::size_t>(end - first)};
}

bool SceneModel::moveMarks(ItemIndex item, std::span<const Vec3d> places,
                           std::span<const Vec3> normals) {
    const std::span<const Mark> old = marksOf(item);
    if (places.size() != old.size() || (!normals.empty() && normals.size() != places.size()))
        return false;
    if (places.empty()) return true;
    marksMoved_ = true;
    Mark* mark = marks_.data() + (old.data() - marks_.data());
    for (std::size_t i = 0; i < places.size(); ++i, ++mark) {
        if (!isFinite(places[i])) return false;
        mark->position = places[i];
        items_[item].box.add(places[i]);
        if (!normals.empty() && isFinite(normals[i])) mark->normal = normalised(normals[i]);
    }
    return true;
}

bool SceneModel::movePlacement(ItemIndex index, const Place& place) {
    Item& item = items_[index];
    if (item.placement == kNoPlacement || !place.isFinite()) return false;
    Placement& placement = placements_[item.placement];
    const Box around = place.box(placement.model->box_);
    if (!isFinite(around.min) || !isFinite(around.max)) return false;
    placement.place = place;
    item.box = item.selectionBox = around;
    moved_.push_back(index);
    return true;
}

bool SceneModel::moveLight(std::size_t light, Vec3d position, Vec3 direction) {
    if (light >= lights_.size() || !isFinite(position) || !isFinite(direction)) return false;
    lights_[light].position = position;
    lights_[light].direction = direction;
    return true;
}

// Each block is added up once, however many of its items have moved.
void SceneModel::endMoving() {
    standIn_.reset();
    for (const std::size_t index : moved_) measure(items_[index]);
    std::ranges::sort(moved_);
    for (std::size_t level = 0; level < levels_.size(); ++level) {
        for (std::size_t& index : moved_) index /= kInBlock;
        moved_.erase(std::unique(moved_.begin(), moved_.end()), moved_.end());
        while (!moved_.empty() && moved_.back() >= levels_[level].size()) moved_.pop_back();
        for (const std::size_t block : moved_) levels_[level][block] = blockAt(level, block);
    }
    moved_.clear();
    if (std::exchange(marksMoved_, false)) {
        shownMarkBox_ = boxOfMarks(true);
        helperBox_ = boxOfMarks(false);
    }
    addUpBlocks();
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
        block.isPlain = block.isPlain && !surfaceOf(item).isTranslucent() &&
                        surfaceOf(item).lineWidth <= kThinLine;
    else
        block.isPlain = block.isPlain && placements_[item.placement].model->isPlain_ &&
                        placements_[item.placement].opacity >= 1;
    return block;
}

/// Of the items, or of the blocks of the level below, that the block consists of.
Block SceneModel::blockAt(std::size_t level, std::size_t index) const {
    Block all;
    for (std::size_t i = index * kInBlock; i < (index + 1) * kInBlock; ++i) {
        const Block part = level == 0 ? blockOf(static_cast<ItemIndex>(i)) : levels_[level - 1][i];
        if (part.sample == kNoItem) continue;
        all.box.include(part.box);
        if (all.sample == kNoItem) all.sample = part.sample;
        all.isPlain = all.isPlain && part.isPlain;
    }
    if (all.sample != kNoItem) {
        all.centre = all.box.centre();
        all.radius = static_cast<float>(length(all.box.max - all.centre));
    }
    return all;
}

/// Adds the blocks that the last item completes.
void SceneModel::addBlocks() {
    std::size_t count = items_.size();
    for (std::size_t level = 0; count % kInBlock == 0; ++level) {
        if (level == levels_.size()) levels_.emplace_back();
        levels_[level].push_back(blockAt(level, count / kInBlock - 1));
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

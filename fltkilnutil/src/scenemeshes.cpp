#include "scenemeshes.h"

#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/sourcerecords.h>
#include <quillon/fltopcode.h>
#include <quillon/fltrecordbytes.h>
#include <quillon/fltvertexlist.h>
#include <quillon/fltvertexview.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <new>
#include <utility>

namespace fltkilnutil {

namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;

TriObject* meshObjectOf(INode& node) {
    Object* const object = node.GetObjectRef();
    if (object == nullptr || object->ClassID() != TRIOBJ_CLASS_ID) return nullptr;
    auto* const shown = static_cast<TriObject*>(object);
    return shown->GetMesh().faces.IsEmpty() || !shown->GetMesh().IsConsistent() ? nullptr : shown;
}

/// What the node's file says of each corner beside the vertices themselves.
struct KeptCorners {
    bool morph = false;
    bool layers = false;
};

KeptCorners keptCorners(const SourceRecords& kept) {
    KeptCorners found;
    for (const SourceRecord& entry : kept.attached) {
        if (entry.isOpaque) continue;
        found.morph = found.morph || entry.record.opcode() == kFltMorphVertexList;
        found.layers = found.layers || entry.record.opcode() == kFltUvList;
    }
    return found;
}

/// An entry has what stands in a record before its position, which is the same for all kinds, and
/// what stands from the color on.
std::size_t entrySize(const FltRecordHead& head) noexcept {
    const std::size_t start = FltVertexView::layoutOf(kFltVertexWithColor).position.begin;
    const std::size_t color = FltVertexView::layoutOf(head.opcode).packedColor.begin;
    return start + (head.length > color ? head.length - color : 0);
}

/// Where the entries of corners begin that are kept on a node, one for each vertex or one for all;
/// false for damaged bytes.
bool readCornerEntries(std::span<const std::uint8_t> bytes, std::vector<std::uint32_t>& starts) {
    const std::size_t headSize = FltVertexView::layoutOf(kFltVertexWithColor).position.begin;
    starts.clear();
    std::size_t at = 0;
    while (bytes.size() - at >= headSize) {
        const FltRecordHead head = fltRecordHead(bytes.subspan(at));
        if (!FltVertex::isVertex(head.opcode) || head.length < FltVertexView::kShortest ||
            entrySize(head) > bytes.size() - at)
            break;
        starts.push_back(static_cast<std::uint32_t>(at));
        at += entrySize(head);
    }
    if (at != bytes.size()) starts.clear();
    return !starts.empty();
}

}  // namespace

std::vector<INode*> nodesIn(std::span<INode* const> tops) {
    // Those below another one come with that. What is known of the nodes above is kept, so that
    // each is asked once.
    const std::unordered_set<const INode*> wanted(tops.begin(), tops.end());
    std::unordered_map<const INode*, bool> isBelow;
    std::vector<const INode*> way;
    const auto isBelowAnother = [&](INode* top) {
        way.clear();
        bool below = false;
        for (const INode* at = top;; at = at->GetParentNode()) {
            const INode* const above = at->GetParentNode();
            if (above == nullptr) break;
            if (const auto found = isBelow.find(at); found != isBelow.end()) {
                below = found->second;
                break;
            }
            way.push_back(at);
            if (wanted.contains(above)) {
                below = true;
                break;
            }
        }
        for (const INode* const at : way) isBelow[at] = below;
        return below;
    };
    std::vector<INode*> nodes;
    std::unordered_set<const INode*> known;
    for (INode* const top : tops) {
        if (top == nullptr || isBelowAnother(top) || !known.insert(top).second) continue;
        ForEachInSubtree(top, [&](INode& node) {
            if (!node.IsRootNode()) nodes.push_back(&node);
        });
    }
    return nodes;
}

std::vector<SceneMesh> meshesOf(Interface& host, const std::vector<INode*>& nodes,
                                std::uint32_t& passedOver) {
    std::vector<SceneMesh> meshes;
    std::unordered_map<const Object*, int> uses;
    bool isShared = false;
    SourceRecordsReader reader;
    for (INode* const node : nodes) {
        TriObject* const object = meshObjectOf(*node);
        FltNodeKind kind{};
        if (object == nullptr || !fltGetKind(node, true, kind)) continue;
        const auto opcode = static_cast<std::uint16_t>(kind);
        if (fltIsLightPoint(opcode)) continue;
        const KeptCorners kept = keptCorners(reader.read(*node));
        // A mesh record's polygons stand in records of their own.
        if (opcode == kFltMesh || kept.morph) {
            ++passedOver;
            continue;
        }
        isShared = isShared || object->NumReferences() > 1;
        if (uses[object]++ == 0) meshes.push_back({node, object, kept.layers});
    }
    if (!isShared) return meshes;
    // The history refers to objects too, so that the nodes have to be counted.
    std::unordered_map<const Object*, int> others = uses;
    ForEachInSubtree(host.GetRootNode(), [&](INode& node) {
        if (const auto found = others.find(node.GetObjectRef()); found != others.end())
            --found->second;
    });
    std::erase_if(meshes, [&](const SceneMesh& mesh) {
        if (others[mesh.object] >= 0) return false;
        passedOver += static_cast<std::uint32_t>(uses[mesh.object]);
        return true;
    });
    return meshes;
}

bool putMesh(const SceneMesh& at, Mesh&& mesh, const VertexOrder* order) {
    if (mesh == at.mesh()) return false;
    if (!at.object->AboutToChange()) throw std::bad_alloc();
    at.object->GetMesh() = std::move(mesh);
    if (order != nullptr) takeCorners(*at.node, *order);
    at.node->InvalidateWS();
    return true;
}

void takeCorners(INode& node, const VertexOrder& order) {
    const FileBytes bytes = sourceChunk(node, SourceChunk::corners);
    std::vector<std::uint32_t> starts;
    if (!readCornerEntries(bytes, starts) || starts.size() == 1) return;
    starts.push_back(static_cast<std::uint32_t>(bytes.size()));
    std::vector<std::uint8_t> taken;
    for (const std::uint32_t vertex : order) {
        if (vertex + 1 >= starts.size()) return;
        const FileBytes entry = bytes.subspan(starts[vertex], starts[vertex + 1] - starts[vertex]);
        taken.insert(taken.end(), entry.begin(), entry.end());
    }
    if (std::ranges::equal(taken, bytes)) return;
    storeSourceChunk(node, SourceChunk::corners, taken);
}

std::uint32_t PointGrid::findIn(std::uint64_t cell, const Point3& point) const {
    const auto first = first_.find(cell);
    if (first == first_.end()) return kNone;
    std::uint32_t found = kNone;
    for (std::uint32_t i = first->second; i != kNone; i = next_[i])
        if (points_[i] == point || Length(points_[i] - point) <= distance_)
            found = std::min(found, i);
    return found;
}

/// Cells are twice as wide as the distance, so that points within it lie in the same one or in
/// those at the sides to which the point is nearer.
std::uint32_t PointGrid::add(const Point3& point) {
    const auto number = static_cast<std::uint32_t>(points_.size());
    const double coordinates[] = {point.x, point.y, point.z};
    std::array<std::array<double, 2>, 3> sidesOf{};
    const bool isFinite = std::isfinite(point.x + point.y + point.z);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double place =
            distance_ > 0 ? coordinates[axis] / (2 * distance_) : coordinates[axis];
        const double cell = distance_ > 0 ? std::floor(place) : place + 0.0;
        sidesOf[axis] = {cell, place - cell < 0.5 ? cell - 1 : cell + 1};
    }
    const auto hashOf = [&](unsigned which) {
        std::uint64_t hash = 0;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double cell = sidesOf[axis][which >> axis & 1];
            hash =
                (hash ^ std::bit_cast<std::uint64_t>(cell == 0 ? 0.0 : cell)) * 0x9E3779B97F4A7C15;
            hash ^= hash >> 29;
        }
        return hash;
    };
    const unsigned cells = distance_ > 0 ? 8 : 1;
    std::uint32_t found = kNone;
    for (unsigned which = 0; isFinite && which < cells; ++which)
        found = std::min(found, findIn(hashOf(which), point));
    if (found != kNone) return found;
    points_.push_back(point);
    next_.push_back(kNone);
    if (!isFinite) return number;
    const auto [cell, isFirst] = first_.try_emplace(hashOf(0), number);
    if (!isFirst) next_[number] = std::exchange(cell->second, number);
    return number;
}

}  // namespace fltkilnutil

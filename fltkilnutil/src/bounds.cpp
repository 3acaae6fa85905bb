#include "scenemeshes.h"

#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/sourcerecords.h>
#include <quillon/fltbounds.h>
#include <quillon/fltgroup.h>
#include <quillon/fltlod.h>
#include <quillon/flttoken.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

namespace fltkilnutil {

namespace {

FltPoint3d pointOf(const Point3& p) noexcept {
    return {p.x, p.y, p.z};
}

/// The boxes around what nodes show, each in the space of its node's parent.
class SubtreeBoxes {
public:
    /// Of all nodes at and below `tops`.
    explicit SubtreeBoxes(std::span<INode* const> tops) {
        const std::vector<INode*> nodes = nodesIn(tops);
        for (const INode* const node : nodes) boxes_.try_emplace(node);
        // Children stand behind their parents.
        for (auto node = nodes.rbegin(); node != nodes.rend(); ++node) {
            Box3& box = boxes_[*node];
            box = moved(box, **node);
            addMesh(**node, box);
            const auto above = boxes_.find((*node)->GetParentNode());
            if (above != boxes_.end()) above->second += box;
        }
    }

    Box3 at(const INode* node) const {
        const auto found = boxes_.find(node);
        return found == boxes_.end() ? Box3() : found->second;
    }

private:
    static void add(Box3& box, const Point3& point) {
        if (std::isfinite(point.x + point.y + point.z)) box += point;
    }

    /// Of the children's boxes, which are in the node's own space.
    static Box3 moved(const Box3& box, INode& node) {
        const Matrix3 place = node.GetLocalTM(0);
        if (box.IsEmpty() || place.IsIdentity()) return box;
        Box3 result;
        for (unsigned corner = 0; corner < 8; ++corner)
            add(result, place.PointTransform({corner & 1 ? box.Max().x : box.Min().x,
                                              corner & 2 ? box.Max().y : box.Min().y,
                                              corner & 4 ? box.Max().z : box.Min().z}));
        return result;
    }

    static void addMesh(INode& node, Box3& box) {
        const Object* const object = node.EvalWorldState(0).obj;
        if (object == nullptr || !object->CanConvertToType(TRIOBJ_CLASS_ID)) return;
        const Matrix3 place = node.GetLocalTM(0);
        if (object->ClassID() == TRIOBJ_CLASS_ID) {
            for (const Point3& vertex : static_cast<const TriObject*>(object)->GetMesh().verts)
                add(box, place.PointTransform(vertex));
        } else {
            box += moved(object->GetLocalBoundBox(0), node);
        }
    }

    std::unordered_map<const INode*, Box3> boxes_;
};

/// One whose center is somewhere.
bool isLod(INode* node, FltLod& lod) {
    FltNodeKind kind{};
    return fltGetKind(node, false, kind) && kind == FltNodeKind::Lod && fltGetRecord(node, lod) &&
           std::isfinite(lod.centerX + lod.centerY + lod.centerZ);
}

std::vector<std::uint8_t> bytesOf(const FltRecord& record, std::uint32_t revision) {
    FltToken token;
    record.writeToken(token, revision);
    token.finish();
    return {token.data(), token.data() + token.length()};
}

bool isFrozen(INode& node) {
    FltNodeKind kind{};
    FltGroup group;
    return fltGetKind(&node, false, kind) && kind == FltNodeKind::Group &&
           fltGetRecord(&node, group) &&
           (static_cast<std::uint32_t>(group.flags) & FltGroup::kFrozenVolume) != 0;
}

// The volumes around a box. Their center stands in a record of its own when that is `apart`.
FltBoundingBox fitted(FltBoundingBox volume, const Box3& box, bool) {
    volume.lowest = pointOf(box.Min());
    volume.highest = pointOf(box.Max());
    return volume;
}
FltBoundingSphere fitted(FltBoundingSphere volume, const Box3& box, bool apart) {
    volume.radius = Length(box.Max() - box.Min()) / 2;
    if (!apart || !volume.center.empty()) volume.center = {pointOf(box.Center())};
    return volume;
}
FltBoundingCylinder fitted(FltBoundingCylinder volume, const Box3& box, bool apart) {
    const Point3 size = box.Max() - box.Min();
    volume.radius = std::hypot(size.x, size.y) / 2;
    volume.height = size.z;
    if (!apart || !volume.center.empty()) volume.center = {pointOf(box.Center())};
    return volume;
}
FltBoundingCenter fitted(FltBoundingCenter volume, const Box3& box, bool) {
    volume.center = pointOf(box.Center());
    return volume;
}
FltBoundingOrientation fitted(const FltBoundingOrientation&, const Box3&, bool) {
    return {};
}

template <typename Volume>
bool fit(const SourceRecord& entry, const Box3& box, bool apart, SourceRecordsEdit& edit) {
    if (entry.isOpaque || entry.record.opcode() != Volume::kOpcode) return false;
    const std::uint32_t revision = edit.kept().revision;
    Volume volume;
    volume.readBytes(entry.record.bytes(), revision);
    const std::vector<std::uint8_t> before = bytesOf(volume, revision);
    const std::vector<std::uint8_t> after = bytesOf(fitted(volume, box, apart), revision);
    if (after != before) edit.replace(entry.record, after);
    return after != before;
}

bool fitVolumes(INode& node, const Box3& box) {
    SourceRecordsEdit edit(node);
    const std::vector<SourceRecord>& attached = edit.kept().attached;
    const bool apart = std::ranges::any_of(attached, [](const SourceRecord& entry) {
        return !entry.isOpaque && entry.record.opcode() == kFltBoundingCenter;
    });
    bool isChanged = false;
    for (const SourceRecord& entry : attached)
        isChanged |= fit<FltBoundingBox>(entry, box, apart, edit) ||
                     fit<FltBoundingSphere>(entry, box, apart, edit) ||
                     fit<FltBoundingCylinder>(entry, box, apart, edit) ||
                     fit<FltBoundingCenter>(entry, box, apart, edit) ||
                     fit<FltBoundingOrientation>(entry, box, apart, edit);
    edit.store(edit.kept().revision);
    return isChanged;
}

/// Levels below one node with one center, by that.
using Sets =
    std::map<std::tuple<INode*, double, double, double>, std::vector<std::pair<INode*, FltLod>>>;

/// The sets in which `levels` are.
Sets setsOf(std::span<INode* const> levels) {
    std::unordered_set<const INode*> parents;
    Sets all;
    for (INode* const level : levels) {
        INode* const parent = level->GetParentNode();
        if (!parents.insert(parent).second) continue;
        for (int i = 0; i < parent->NumberOfChildren(); ++i) {
            INode* const child = parent->GetChildNode(i);
            if (FltLod lod; isLod(child, lod))
                all[{parent, lod.centerX, lod.centerY, lod.centerZ}].emplace_back(child, lod);
        }
    }
    Sets wanted;
    for (INode* const level : levels)
        if (FltLod lod; isLod(level, lod)) {
            const auto found =
                all.find({level->GetParentNode(), lod.centerX, lod.centerY, lod.centerZ});
            if (found != all.end()) wanted.insert(*found);
        }
    return wanted;
}

}  // namespace

std::uint32_t centerLevels(std::span<INode* const> levels) {
    const Sets sets = setsOf(levels);
    std::vector<INode*> members;
    for (const auto& [key, set] : sets)
        for (const auto& [level, lod] : set) members.push_back(level);
    const SubtreeBoxes boxes(members);
    std::uint32_t changed = 0;
    for (const auto& [key, set] : sets) {
        Box3 box;
        for (const auto& [level, lod] : set) box += boxes.at(level);
        if (box.IsEmpty()) continue;
        const Point3 center = box.Center();
        for (auto [level, lod] : set) {
            if (Point3{lod.centerX, lod.centerY, lod.centerZ} == center) continue;
            lod.centerX = center.x;
            lod.centerY = center.y;
            lod.centerZ = center.z;
            if (fltPutRecord(level, lod)) ++changed;
        }
    }
    return changed;
}

GeometryResult fitBounds(std::span<INode* const> tops) {
    GeometryResult result;
    std::vector<INode*> levels;
    const std::vector<INode*> nodes = nodesIn(tops);
    const SubtreeBoxes boxes(tops);
    for (INode* const node : nodes) {
        if (FltLod lod; isLod(node, lod) &&
                        (static_cast<std::uint32_t>(lod.flags) & FltLod::kFrozenCenter) == 0)
            levels.push_back(node);
        const Box3 box = boxes.at(node);
        if (!box.IsEmpty() && !isFrozen(*node) && fitVolumes(*node, box)) ++result.changed;
    }
    result.changed += centerLevels(levels);
    return result;
}

}  // namespace fltkilnutil

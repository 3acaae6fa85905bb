#include "scenemeshes.h"

#include <fltkilnutil/fltfields.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/sourcerecords.h>
#include <quillon/fltbounds.h>
#include <quillon/fltbsp.h>
#include <quillon/fltclipregion.h>
#include <quillon/fltdof.h>
#include <quillon/fltfilebeads.h>
#include <quillon/fltheader.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltmesh.h>
#include <quillon/flttoken.h>
#include <quillon/fltunits.h>
#include <quillon/fltvertexedit.h>
#include <quillon/fltvertexview.h>

#include <algorithm>
#include <charconv>
#include <new>
#include <stdexcept>
#include <utility>

namespace fltkilnutil {

namespace {

/// Lengths in other units. A number that marks what was never set stays.
class Scale {
public:
    explicit Scale(double factor) : factor_(factor) {}

    double of(double length) const noexcept { return length * factor_; }
    Point3 of(const Point3& p) const noexcept { return p * factor_; }
    FltPoint3d of(const FltPoint3d& p) const noexcept { return {of(p.x), of(p.y), of(p.z)}; }
    void operator()(auto&... lengths) const noexcept { ((lengths = of(lengths)), ...); }
    void unless(double mark, auto&... lengths) const noexcept {
        ((lengths = lengths == mark ? lengths : of(lengths)), ...);
    }

private:
    double factor_;
};

// What the records of nodes have in the database's units.
void scale(FltHeader& header, const Scale& to) {
    to(header.southWestX, header.southWestY, header.deltaX, header.deltaY, header.deltaZ,
       header.radius);
}
void scale(FltLod& lod, const Scale& to) {
    to(lod.switchInDistance, lod.switchOutDistance, lod.transitionRange, lod.centerX, lod.centerY,
       lod.centerZ);
}
void scale(FltDof& dof, const Scale& to) {
    to(dof.origin, dof.pointOnXAxis, dof.pointInXyPlane);
    to(dof.xTranslationMin, dof.xTranslationMax, dof.xTranslationCurrent,
       dof.xTranslationIncrement);
    to(dof.yTranslationMin, dof.yTranslationMax, dof.yTranslationCurrent,
       dof.yTranslationIncrement);
    to(dof.zTranslationMin, dof.zTranslationMax, dof.zTranslationCurrent,
       dof.zTranslationIncrement);
}
void scale(FltBsp& plane, const Scale& to) {
    to(plane.planeD);
}
void scale(FltClipRegion& clip, const Scale& to) {
    to.unless(FltClipRegion::kUnsetCoordinate, clip.corner0X, clip.corner0Y, clip.corner0Z,
              clip.corner1X, clip.corner1Y, clip.corner1Z, clip.corner2X, clip.corner2Y,
              clip.corner2Z, clip.corner3X, clip.corner3Y, clip.corner3Z);
    to(clip.plane0D, clip.plane1D, clip.plane2D, clip.plane3D, clip.plane4D);
}
void scale(FltLightSource& light, const Scale& to) {
    to(light.positionX, light.positionY, light.positionZ);
}

// Those that are kept beside them.
void scale(FltBoundingBox& box, const Scale& to) {
    to(box.lowest, box.highest);
}
void scale(FltBoundingSphere& sphere, const Scale& to) {
    to(sphere.radius);
    for (FltPoint3d& center : sphere.center) to(center);
}
void scale(FltBoundingCylinder& cylinder, const Scale& to) {
    to(cylinder.radius, cylinder.height);
    for (FltPoint3d& center : cylinder.center) to(center);
}
void scale(FltBoundingCenter& center, const Scale& to) {
    to(center.center);
}

/// Of nodes of the record's kind; false where the record cannot be stored.
template <typename Record>
bool scaleRecord(INode& node, FltNodeKind kind, const Scale& to, bool& changed) {
    if (static_cast<std::uint16_t>(kind) != Record::kOpcode || !fltHasRecord(&node)) return true;
    Record record;
    if (!fltGetRecord(&node, record)) return true;  // a damaged one stays as it is
    scale(record, to);
    changed = true;
    return fltPutRecord(&node, record);
}

template <typename Record>
bool scaleKept(std::vector<std::uint8_t>& bytes, std::uint32_t revision, const Scale& to) {
    if (FltRecordView::statedOpcode(bytes, 0) != Record::kOpcode) return false;
    Record record;
    record.readBytes(bytes, revision);
    scale(record, to);
    FltToken token;
    record.writeToken(token, revision);
    // The record stays as long as it was, with what nobody knows at its end.
    std::copy_n(token.data(), std::min<std::size_t>(token.length(), bytes.size()), bytes.data());
    fltStateLength(bytes);
    return true;
}

bool scaleVertex(std::vector<std::uint8_t>& bytes, const Scale& to) {
    const FltRecordView record = FltRecordView::at(bytes, 0);
    if (record.empty() || !FltVertexView::isViewable(record)) return false;
    const FltVertexView vertex(record);
    FltVertexEdit(bytes.data(), vertex.layout()).position(to.of(vertex.position()));
    return true;
}

/// The vertices of a mesh, whose records from `first` to below `last` go on in one another. A
/// number may stand in two of them.
bool scalePool(std::vector<std::vector<std::uint8_t>>& records, std::size_t first, std::size_t last,
               const Scale& to) {
    constexpr std::size_t kHeader = FltRecordView::kHeaderSize;
    std::vector<std::uint8_t> body;
    for (std::size_t i = first; i < last; ++i)
        body.insert(body.end(), records[i].begin() + kHeader, records[i].end());
    if (!fltChangePositions(body, [&](const FltPoint3d& position) { return to.of(position); }))
        return false;
    auto next = body.begin();
    for (std::size_t i = first; i < last; ++i) {
        const auto size = static_cast<std::ptrdiff_t>(records[i].size() - kHeader);
        std::copy_n(next, size, records[i].begin() + kHeader);
        next += size;
    }
    return true;
}

/// What is kept on the node beside its record: vertices without a mesh, those of mesh records, and
/// bounding volumes.
bool scaleAttached(INode& node, const Scale& to) {
    SourceRecordsEdit edit(node);
    const SourceRecords& kept = edit.kept();
    std::vector<std::vector<std::uint8_t>> records;
    for (const SourceRecord& entry : kept.attached)
        records.emplace_back(entry.record.bytes().begin(), entry.record.bytes().end());
    bool isAnyChanged = false;
    const auto opcodeOf = [&](std::size_t i) { return kept.attached[i].record.opcode(); };
    for (std::size_t i = 0; i < records.size(); ++i) {
        if (kept.attached[i].isOpaque) continue;
        std::size_t end = i + 1;
        bool isChanged = false;
        if (opcodeOf(i) == kFltLocalVertexPool) {
            while (end < records.size() && opcodeOf(end) == kFltContinuation) ++end;
            isChanged = scalePool(records, i, end, to);
        } else {
            std::vector<std::uint8_t>& bytes = records[i];
            isChanged = scaleVertex(bytes, to) ||
                        scaleKept<FltBoundingBox>(bytes, kept.revision, to) ||
                        scaleKept<FltBoundingSphere>(bytes, kept.revision, to) ||
                        scaleKept<FltBoundingCylinder>(bytes, kept.revision, to) ||
                        scaleKept<FltBoundingCenter>(bytes, kept.revision, to);
        }
        for (std::size_t at = i; isChanged && at < end; ++at)
            edit.replace(kept.attached[at].record, records[at]);
        isAnyChanged = isAnyChanged || isChanged;
        i = end - 1;
    }
    edit.store(kept.revision);
    return isAnyChanged;
}

/// The significant size stands in the file's record alone.
bool scaleSize(INode& node, const Scale& to) {
    const FltField field = fltFieldFind(&node, "FltLodSize");
    if (!field || !fltFieldLoad(&node, field, kFltRevision)) return false;
    const auto& lod = static_cast<const FltFileLod&>(*field.group->record);
    if (lod.significantSize == 0) return false;
    char text[64];
    *std::to_chars(text, text + sizeof text - 1, to.of(lod.significantSize)).ptr = 0;
    return fltFieldStore(&node, field, text);
}

class Refused : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

bool scaleNode(INode& node, const Scale& to) {
    bool changed = false;
    const Matrix3 place = node.GetLocalTM(0);
    if (place.GetTrans() != Point3()) {
        Matrix3 moved = place;
        moved.SetTrans(to.of(place.GetTrans()));
        node.SetLocalTM(0, moved);
        changed = true;
    }
    FltNodeKind kind{};
    if (!fltGetKind(&node, false, kind)) return changed;
    const bool isStored = scaleRecord<FltLod>(node, kind, to, changed) &&
                          scaleRecord<FltDof>(node, kind, to, changed) &&
                          scaleRecord<FltBsp>(node, kind, to, changed) &&
                          scaleRecord<FltClipRegion>(node, kind, to, changed) &&
                          scaleRecord<FltLightSource>(node, kind, to, changed);
    if (!isStored) throw Refused("a record cannot be stored");
    if (kind == FltNodeKind::Lod && scaleSize(node, to)) changed = true;
    return scaleAttached(node, to) || changed;
}

/// Meshes, points and other objects with points of their own; each once. Notes which nodes show
/// them.
void scaleObjects(Interface& host, const std::vector<INode*>& nodes, const Scale& to,
                  std::unordered_set<const INode*>& changed) {
    std::unordered_map<Object*, int> uses;
    bool isShared = false;
    for (INode* const node : nodes)
        if (Object* const object = node->GetObjectRef()) {
            ++uses[object];
            isShared = isShared || object->NumReferences() > 1;
        }
    if (isShared) {
        std::unordered_map<Object*, int> all;
        ForEachInSubtree(host.GetRootNode(), [&](INode& node) {
            if (uses.contains(node.GetObjectRef())) ++all[node.GetObjectRef()];
        });
        if (all != uses) throw Refused("an object is shown outside of the database too");
    }
    for (INode* const node : nodes) {
        Object* const object = node->GetObjectRef();
        const auto use = uses.find(object);
        if (object == nullptr || use == uses.end() || use->second == 0) continue;
        use->second = 0;
        if (object->ClassID() == BOXOBJ_CLASS_ID) {
            auto& box = static_cast<BoxObject&>(*object);
            box.SetSize(to.of(box.GetLength()), to.of(box.GetWidth()), to.of(box.GetHeight()));
            changed.insert(node);
            continue;
        }
        const bool isMesh = object->ClassID() == TRIOBJ_CLASS_ID;
        if (!isMesh && object->ClassID() != SPLINESHAPE_CLASS_ID) continue;
        Tab<Point3>& points = isMesh ? static_cast<TriObject*>(object)->GetMesh().verts
                                     : static_cast<SplineShape*>(object)->GetPoints();
        if (points.IsEmpty()) continue;
        if (!object->AboutToChange()) throw std::bad_alloc();
        for (Point3& point : points) point = to.of(point);
        changed.insert(node);
        node->InvalidateWS();
    }
}

}  // namespace

GeometryResult changeUnits(Interface& host, INode& header, std::uint8_t units,
                           std::string& refusal) {
    GeometryResult result;
    refusal.clear();
    FltNodeKind kind{};
    FltHeader record;
    if (!fltGetKind(&header, false, kind) || kind != FltNodeKind::Header ||
        !fltGetRecord(&header, record)) {
        refusal = "the node is no database";
        return result;
    }
    const FltUnits* const from = fltUnits(record.vertexCoordinateUnits);
    const FltUnits* const into = fltUnits(units);
    if (from == nullptr || into == nullptr) {
        refusal = from == nullptr ? "the database's units are unknown" : "there are no such units";
        return result;
    }
    if (from == into) return result;
    const Scale to(from->metres / into->metres);
    // The database's own place stays: it is where the scene has it.
    INode* const tops[] = {&header};
    std::vector<INode*> nodes = nodesIn(tops);
    nodes.erase(nodes.begin());
    UndoScope scope(nullptr);
    try {
        scale(record, to);
        record.vertexCoordinateUnits = units;
        if (!fltPutRecord(&header, record)) throw Refused("the header cannot be stored");
        std::unordered_set<const INode*> changed{&header};
        scaleObjects(host, nodes, to, changed);
        for (INode* const node : nodes)
            if (scaleNode(*node, to)) changed.insert(node);
        result.changed = static_cast<std::uint32_t>(changed.size());
        scope.Commit();
    } catch (const Refused& reason) {
        refusal = reason.what();
        return {};
    }
    return result;
}

}  // namespace fltkilnutil

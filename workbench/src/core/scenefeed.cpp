#include <workbench/scenefeed.h>

#include <kiln/mesh.h>
#include <kiln/object.h>

#include <memory>

namespace workbench {
namespace {

constexpr Colour kHelperColour = 0x6FD0A8;

// The host has blue in the highest byte, the screen red.
Colour screenColour(COLORREF colour) {
    const auto value = static_cast<Colour>(colour);
    return (value & 0xFF) << 16 | (value & 0xFF00) | (value >> 16 & 0xFF);
}

Vec3d toVec3d(const Point3& p) {
    return {p.x, p.y, p.z};
}

Vec3 toVec3(const Point3& p) {
    return toFloat(toVec3d(p));
}

// A converted object belongs to the caller, unless it is the very one that was asked.
struct Converted {
    Object* source;
    Object* result;
    ~Converted() {
        if (result && result != source) result->DeleteThis();
    }
};

}  // namespace

void SceneFeed::clear() {
    model_.clear();
    nodes_.clear();
    visits_.clear();
    counts_ = {};
}

void SceneFeed::build(Interface& host) {
    clear();
    if (INode* root = host.GetRootNode()) visitAll(root);
    boundSubtrees();
    updateSelection();
    counts_.faces = model_.triangles().size();
}

// Parents come before their children; however deep the scene is, the call stack is not.
void SceneFeed::visitAll(INode* root) {
    visits_.push_back({root, 0, kNoItem, {}});
    for (std::size_t at = 0; at < visits_.size(); ++at) {
        INode& node = *visits_[at].node;
        if (!node.IsRootNode()) {
            ++counts_.nodes;
            if (node.IsHidden()) {
                ++counts_.hidden;
            } else {
                visits_[at].item = model_.beginItem();
                nodes_.push_back(&node);
                addNode(node);
                model_.endItem();
                if (model_.items().back().triangleCount > 0)
                    visits_[at].subtree = model_.items().back().box;
            }
        }
        const int children = node.NumberOfChildren();
        for (int i = 0; i < children; ++i)
            visits_.push_back({node.GetChildNode(i), at, kNoItem, {}});
    }
}

// A selected group is bracketed with all that hangs below it. The place of a helper counts only
// when nothing does: most stay at the origin, far from what they hold.
void SceneFeed::boundSubtrees() {
    for (std::size_t at = visits_.size(); at-- > 1;) {
        Visit& visit = visits_[at];
        if (visit.subtree.empty() && visit.item != kNoItem)
            visit.subtree = model_.items()[visit.item].box;
        visits_[visit.parent].subtree.include(visit.subtree);
        if (visit.item != kNoItem) model_.setSelectionBox(visit.item, visit.subtree);
    }
}

void SceneFeed::addNode(INode& node) {
    const Matrix3 place = node.GetNodeTM(0);
    const Vec3d origin = toVec3d(place.GetTrans());
    Object* object = node.EvalWorldState(0).obj;
    if (!object) return model_.addMark(MarkKind::kHelper, origin, kHelperColour);
    if (object->SuperClassID() == LIGHT_CLASS_ID) {
        const auto* light = dynamic_cast<const GenLight*>(object);
        if (light) addLight(place, *light);
        const Colour colour = light ? screenColour(light->GetColor()) : 0xFFF0A0;
        return model_.addMark(MarkKind::kLight, origin, colour);
    }
    if (object->CanConvertToType(TRIOBJ_CLASS_ID)) {
        const Converted converted{object, object->ConvertToType(0, TRIOBJ_CLASS_ID)};
        if (converted.result) {
            const Mesh& mesh = static_cast<const TriObject*>(converted.result)->GetMesh();
            addMesh(place, mesh, screenColour(node.GetWireColor()));
            if (mesh.faces.Count() > 0) return;
            if (mesh.verts.Count() > 0) return addPoints(place, mesh);
        }
    }
    model_.addMark(MarkKind::kHelper, origin, kHelperColour);
}

void SceneFeed::addLight(const Matrix3& place, const GenLight& light) {
    if (!light.GetUseLight()) return;
    const Class_ID kind = light.ClassID();
    Light lamp;
    lamp.kind = kind == DIR_LIGHT_CLASS_ID    ? LightKind::kDirectional
                : kind == OMNI_LIGHT_CLASS_ID ? LightKind::kPoint
                                              : LightKind::kSpot;
    lamp.position = toVec3d(place.GetTrans());
    lamp.direction = toVec3(-Normalize(place.GetRow(2)));
    const COLORREF colour = light.GetColor();
    const auto strength = [&](unsigned shift) {
        return static_cast<float>(light.GetIntensity() * (colour >> shift & 0xFF) / 255);
    };
    lamp.strength = {strength(0), strength(8), strength(16)};
    model_.addLight(lamp);
}

void SceneFeed::addMesh(const Matrix3& place, const Mesh& mesh, Colour colour) {
    static_assert(EDGE_A == 1 && EDGE_B == 2 && EDGE_C == 4,
                  "the model's edge bits are the mesh's");
    for (const Point3& vertex : mesh.verts) model_.addVertex(toVec3d(place.PointTransform(vertex)));
    addFinishes(place, mesh);
    for (const Face& face : mesh.faces)
        model_.addTriangle(face.v[0], face.v[1], face.v[2], colour,
                           static_cast<std::uint8_t>(face.flags & EDGE_ALL));
}

void SceneFeed::addFinishes(const Matrix3& place, const Mesh& mesh) {
    const int count = mesh.verts.Count();
    const bool coloured = mesh.colors.Count() == count, smooth = mesh.normals.Count() == count;
    if (count == 0 || (!coloured && !smooth)) return;
    finishes_.assign(static_cast<std::size_t>(count), {});
    // Normals are at right angles to the surface after a transform that scales unevenly, too.
    const Matrix3 inverse = Inverse(place);
    for (int i = 0; i < count; ++i) {
        Finish& finish = finishes_[static_cast<std::size_t>(i)];
        if (coloured) {
            finish.coloured = true;
            finish.colour = screenColour(mesh.colors[i]);
        }
        if (!smooth) continue;
        const Point3& n = mesh.normals[i];
        const Vec3 world =
            toVec3(Normalize({DotProd(inverse.GetRow(0), n), DotProd(inverse.GetRow(1), n),
                              DotProd(inverse.GetRow(2), n)}));
        if (isFinite(world)) finish.normal = world;
    }
    model_.setFinishes(finishes_);
}

// A mesh of nothing but vertices is how light points stand in a scene.
void SceneFeed::addPoints(const Matrix3& place, const Mesh& mesh) {
    for (int i = 0; i < mesh.verts.Count(); ++i) {
        const Colour own = i < mesh.colors.Count() ? screenColour(mesh.colors[i]) : 0xFFFFFF;
        model_.addMark(MarkKind::kLightPoint, toVec3d(place.PointTransform(mesh.verts[i])), own);
    }
}

void SceneFeed::updateSelection() {
    chosen_.assign(visits_.size(), 0);
    for (std::size_t at = 1; at < visits_.size(); ++at) {
        const Visit& visit = visits_[at];
        const bool selected = visit.node->Selected();
        chosen_[at] = selected || chosen_[visit.parent];
        if (visit.item != kNoItem) model_.setSelected(visit.item, selected, chosen_[at] != 0);
    }
}

INode* SceneFeed::nodeOf(ItemIndex item) const {
    return item < nodes_.size() ? nodes_[item] : nullptr;
}

}  // namespace workbench

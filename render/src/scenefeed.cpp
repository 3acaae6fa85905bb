#include <render/scenefeed.h>

#include <kiln/mesh.h>
#include <kiln/ownedptr.h>
#include <kiln/texmap.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace render {
namespace {

constexpr Color kHelperColor = 0x6FD0A8;
constexpr COLORREF kUnknownLightColor = 0xA0F0FF;

// The host has blue in the highest byte, the screen red.
Color screenColor(COLORREF color) {
    const auto value = static_cast<Color>(color);
    return (value & 0xFF) << 16 | (value & 0xFF00) | (value >> 16 & 0xFF);
}

Vec3d toVec3d(const Point3& p) {
    return {p.x, p.y, p.z};
}

Vec3 toVec3(const Point3& p) {
    return toFloat(toVec3d(p));
}

// The source is asked only in between, and told of the end whatever happens: it may go at any time
// after that.
class LooksInUse {
public:
    LooksInUse(NodeLookSource*& source, Interface& host) : source_(source) {
        source_ = GetNodeLookSource();
        if (source_) source_->BeginLooks(&host);
    }
    ~LooksInUse() {
        if (NodeLookSource* const source = std::exchange(source_, nullptr)) source->EndLooks();
    }
    LooksInUse(const LooksInUse&) = delete;
    LooksInUse& operator=(const LooksInUse&) = delete;

private:
    NodeLookSource*& source_;
};

// Sources may hand on what stands in files.
float share(float value) {
    return std::min(std::max(0.f, value), 1.f);
}

Vec3 toVec3(const LightColor& color) {
    return {share(color.red), share(color.green), share(color.blue)};
}

COLORREF hostColor(const LightColor& color) {
    const auto part = [](float value, unsigned shift) {
        return static_cast<COLORREF>(std::lround(share(value) * 255)) << shift;
    };
    return part(color.red, 0) | part(color.green, 8) | part(color.blue, 16);
}

}  // namespace

void SceneFeed::clear() {
    reset();
    textures_.clear();
}

void SceneFeed::reset() {
    model_.clear();
    nodes_.clear();
    shown_.clear();
    visits_.clear();
    instances_.assign(1, {});
    instanced_ = 0;
    counts_ = {};
}

void SceneFeed::build(Interface& host) {
    reset();
    for (const int folder : {KILN_IMAGE_DIR, KILN_SCENE_DIR, KILN_IMPORT_DIR})
        textures_.addFolder(host.GetDir(folder));
    readScene(host);
    boundSubtrees();
    updateSelection();
    counts_.faces = model_.triangles().size();
}

void SceneFeed::readScene(Interface& host) {
    const LooksInUse looks(looks_, host);
    if (INode* root = host.GetRootNode()) visitAll(root);
}

// Parents come before their children; however deep the scene is, the call stack is not.
void SceneFeed::visitAll(INode* root) {
    visits_.push_back({root, 0, kNoItem, 0, {}});
    for (std::size_t at = 0; at < visits_.size(); ++at) {
        INode& node = *visits_[at].node;
        if (!node.IsRootNode()) visit(at);
        const std::size_t instance = visits_[at].instance;
        const int children = node.NumberOfChildren();
        if (instance != 0 && (instanced_ += static_cast<std::size_t>(children)) > kMostInstanced)
            continue;
        for (int i = 0; i < children; ++i)
            visits_.push_back({node.GetChildNode(i), at, kNoItem, instance, {}});
    }
}

void SceneFeed::visit(std::size_t at) {
    INode& node = *visits_[at].node;
    const bool isInstanced = visits_[at].instance != 0;
    if (!isInstanced) ++counts_.nodes;
    visits_[at].elsewhere = isElsewhere(visits_[at]);
    if (node.IsHidden()) {
        if (!isInstanced) ++counts_.hidden;
        return;
    }
    if (visits_[at].elsewhere) return;
    visits_[at].item = model_.beginItem();
    nodes_.push_back(isInstanced ? instances_[visits_[at].instance].instancer : &node);
    if (!isInstanced) shown_.push_back(&node);
    INode* const definition = looks_ ? looks_->GetInstanced(&node) : nullptr;
    addNode(visits_[at], isInstanced || definition);
    model_.endItem();
    if (model_.items().back().triangleCount > 0) visits_[at].subtree = model_.items().back().box;
    if (definition) visitInstanced(at, *definition);
}

bool SceneFeed::isElsewhere(const Visit& visit) const {
    if (visits_[visit.parent].elsewhere) return true;
    const bool isShown = visit.instance != 0 && instances_[visit.instance].definition == visit.node;
    return !isShown && looks_ && looks_->IsOnlyInstanced(visit.node);
}

void SceneFeed::visitInstanced(std::size_t at, INode& definition) {
    const Visit instancer = visits_[at];
    if (!mayShow(definition, instancer.instance) || ++instanced_ > kMostInstanced) return;
    INode* const node =
        instancer.instance == 0 ? instancer.node : instances_[instancer.instance].instancer;
    instances_.push_back({&definition, node, instancer.instance,
                          instances_[instancer.instance].depth + 1,
                          Inverse(definition.GetNodeTM(0)) * placeOf(instancer)});
    visits_.push_back({&definition, at, kNoItem, instances_.size() - 1, {}});
}

bool SceneFeed::mayShow(const INode& definition, std::size_t within) const {
    if (instances_[within].depth >= kDeepestInstance) return false;
    for (; within != 0; within = instances_[within].above)
        if (instances_[within].definition == &definition) return false;
    return true;
}

Matrix3 SceneFeed::placeOf(const Visit& visit) const {
    const Matrix3 own = visit.node->GetNodeTM(0);
    return visit.instance == 0 ? own : own * instances_[visit.instance].shift;
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

// What stands for another needs no helper to be seen.
void SceneFeed::addNode(const Visit& visit, bool standsForAnother) {
    INode& node = *visit.node;
    const Matrix3 place = placeOf(visit);
    const Vec3d origin = toVec3d(place.GetTrans());
    Object* object = node.EvalWorldState(0).obj;
    const auto addHelper = [&] {
        if (!standsForAnother) model_.addMark(MarkKind::kHelper, origin, kHelperColor);
    };
    if (!object) return addHelper();
    if (object->SuperClassID() == LIGHT_CLASS_ID) {
        const auto* light = dynamic_cast<const GenLight*>(object);
        const COLORREF color = light ? addLight(place, *light, node) : kUnknownLightColor;
        return model_.addMark(MarkKind::kLight, origin, screenColor(color));
    }
    const ConvertedObject converted(object, 0, TRIOBJ_CLASS_ID);
    if (const auto* const surface = static_cast<const TriObject*>(converted.get())) {
        const Mesh& mesh = surface->GetMesh();
        addMesh(place, mesh, node);
        if (mesh.faces.Count() > 0) return;
        if (mesh.verts.Count() > 0) return addPoints(place, mesh);
    }
    addHelper();
}

/// Returns the light's color, whether it shines or not.
COLORREF SceneFeed::addLight(const Matrix3& place, const GenLight& light, INode& node) {
    NodeLook look;
    if (looks_) looks_->GetLook(&node, look);
    const COLORREF color = look.light ? hostColor(*look.light) : light.GetColor();
    if (!look.shines.value_or(light.GetUseLight())) return color;
    const Class_ID kind = light.ClassID();
    Light lamp;
    lamp.kind = kind == DIR_LIGHT_CLASS_ID    ? LightKind::kDirectional
                : kind == OMNI_LIGHT_CLASS_ID ? LightKind::kPoint
                                              : LightKind::kSpot;
    lamp.position = toVec3d(place.GetTrans());
    lamp.direction = toVec3(-Normalize(place.GetRow(2)));
    const auto strength = [&](unsigned shift) {
        return static_cast<float>(light.GetIntensity() * (color >> shift & 0xFF) / 255);
    };
    lamp.strength = {strength(0), strength(8), strength(16)};
    model_.addLight(lamp);
    return color;
}

/// What is known of the node's look, or else what the host itself knows.
NodeLook SceneFeed::lookOf(INode& node) {
    NodeLook look;
    if (looks_ && looks_->GetLook(&node, look)) return look;
    Texmap* const map = node.GetTexmap();
    if (map && map->ClassID() == BMTEX_CLASS_ID)
        look.picture = static_cast<const BitmapTex*>(map)->GetMapName();
    return look;
}

Surface SceneFeed::surfaceFor(const NodeLook& look, bool hasTexture) {
    Surface surface;
    surface.ambient = toVec3(look.ambient);
    surface.diffuse = toVec3(look.diffuse);
    surface.emissive = toVec3(look.emissive);
    surface.opacity = share(look.opacity);
    surface.lit = look.lit;
    surface.blended = look.blended;
    surface.layer = static_cast<std::uint8_t>(std::clamp(look.layer, 0, 255));
    if (hasTexture && look.picture) surface.texture = textures_.find(look.picture);
    return surface;
}

void SceneFeed::addMesh(const Matrix3& place, const Mesh& mesh, INode& node) {
    static_assert(EDGE_A == 1 && EDGE_B == 2 && EDGE_C == 4,
                  "the model's edge bits are the mesh's");
    for (const Point3& vertex : mesh.verts) model_.addVertex(toVec3d(place.PointTransform(vertex)));
    if (mesh.faces.IsEmpty()) return;
    const NodeLook look = lookOf(node);
    const bool hasTexture = mesh.tvFaces.Count() == mesh.faces.Count() && !mesh.tVerts.IsEmpty();
    const Surface surface = surfaceFor(look, hasTexture);
    model_.setSurface(surface);
    addFinishes(place, mesh, look);
    const bool isWhite = look.white && surface.texture;
    const Color color = isWhite ? 0xFFFFFF : screenColor(node.GetWireColor());
    const auto textureCount = static_cast<DWORD>(mesh.tVerts.Count());
    for (int i = 0; i < mesh.faces.Count(); ++i) {
        const Face& face = mesh.faces[i];
        TexturePlace places[3];
        for (int k = 0; k < 3 && surface.texture; ++k) {
            const DWORD index = mesh.tvFaces[i].t[k];
            if (index >= textureCount) continue;
            const Point3f& texture = mesh.tVerts[static_cast<int>(index)];
            if (std::isfinite(texture.x) && std::isfinite(texture.y))
                places[k] = {texture.x, texture.y};
        }
        model_.addTriangle(face.v[0], face.v[1], face.v[2], color,
                           static_cast<std::uint8_t>(face.flags & EDGE_ALL), places);
    }
}

void SceneFeed::addFinishes(const Matrix3& place, const Mesh& mesh, const NodeLook& look) {
    const int count = mesh.verts.Count();
    const bool colored = look.vertexColors && !look.white && mesh.colors.Count() == count;
    const bool smooth = look.vertexNormals && mesh.normals.Count() == count;
    if (count == 0 || (!colored && !smooth)) return;
    finishes_.assign(static_cast<std::size_t>(count), {});
    // Normals are at right angles to the surface after a transform that scales unevenly, too.
    const Matrix3 inverse = Inverse(place);
    for (int i = 0; i < count; ++i) {
        Finish& finish = finishes_[static_cast<std::size_t>(i)];
        if (colored) {
            finish.colored = true;
            finish.color = screenColor(mesh.colors[i]);
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
        const Color own = i < mesh.colors.Count() ? screenColor(mesh.colors[i]) : 0xFFFFFF;
        model_.addMark(MarkKind::kLightPoint, toVec3d(place.PointTransform(mesh.verts[i])), own);
    }
}

void SceneFeed::updateSelection() {
    chosen_.assign(visits_.size(), 0);
    for (std::size_t at = 1; at < visits_.size(); ++at) {
        const Visit& visit = visits_[at];
        const bool selected = visit.instance == 0 && visit.node->Selected();
        chosen_[at] = selected || chosen_[visit.parent];
        if (visit.item != kNoItem) model_.setSelected(visit.item, selected, chosen_[at] != 0);
    }
}

INode* SceneFeed::nodeOf(ItemIndex item) const {
    return item < nodes_.size() ? nodes_[item] : nullptr;
}

}  // namespace render

#include <render/scenefeed.h>

#include <kiln/mesh.h>
#include <kiln/ownedptr.h>
#include <kiln/texmap.h>

#include <algorithm>
#include <bit>
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

DrawStyle styleOf(SurfaceStyle style) {
    switch (style) {
        case SurfaceStyle::kFrontOnly:
            return DrawStyle::kFrontOnly;
        case SurfaceStyle::kClosedOutline:
        case SurfaceStyle::kOpenOutline:
            return DrawStyle::kOutline;
        case SurfaceStyle::kSurfaceAndOutline:
            return DrawStyle::kSurfaceAndOutline;
        case SurfaceStyle::kBothSides:
            break;
    }
    return DrawStyle::kBothSides;
}

Facing facingOf(SurfaceFacing facing) {
    return facing == SurfaceFacing::kUpright ? Facing::kUpright
           : facing == SurfaceFacing::kEye   ? Facing::kEye
                                             : Facing::kFixed;
}

/// How many polygons that many triangles of a mesh were cut from: two triangles share each cut,
/// which is no edge of an outline.
std::size_t polygonCount(const Mesh& mesh, std::size_t triangles) {
    std::size_t inner = 0;
    for (const Face& face : mesh.faces)
        inner += static_cast<std::size_t>(3 - std::popcount(face.flags & EDGE_ALL));
    return triangles == 0 ? 0 : triangles - std::min(inner / 2, triangles - 1);
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
    inherited_.assign(1, {});
    measured_.clear();
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
        visitChildren(at);
    }
}

void SceneFeed::visitChildren(std::size_t at) {
    const Visit parent = visits_[at];
    INode& node = *parent.node;
    const int children = node.NumberOfChildren();
    if (children == 0) return;
    if (parent.instance != 0 && (instanced_ += static_cast<std::size_t>(children)) > kMostInstanced)
        return;
    NodeBranch branch;
    const bool decides = looks_ && !node.IsRootNode() && looks_->GetBranch(&node, branch);
    const std::uint32_t inherited = decides ? inheritanceOf(at, branch) : parent.inherited;
    const auto isShown = [&](std::size_t child) {
        if (!branch.shownChildren) return true;
        return child / 32 < branch.shownWords &&
               (branch.shownChildren[child / 32] >> child % 32 & 1) != 0;
    };
    for (int i = 0; i < children; ++i) {
        const bool isOff = parent.isOff || !isShown(static_cast<std::size_t>(i));
        visits_.push_back(
            {node.GetChildNode(i), at, kNoItem, parent.instance, {}, false, isOff, inherited});
    }
}

/// What the children of a node have from above when it decides something.
std::uint32_t SceneFeed::inheritanceOf(std::size_t at, const NodeBranch& branch) {
    const Visit& visit = visits_[at];
    Inherited below = inherited_[visit.inherited];
    if (branch.motion) {
        const Matrix3 place = visit.node->GetNodeTM(0);
        below.move = Inverse(place) * *branch.motion * place * below.move;
        below.isMoved = true;
    }
    below.smooth = below.smooth && branch.smooth;
    below.opacity *= share(branch.opacity);
    const int hours =
        (branch.byDay ? kDay : 0) | (branch.atDusk ? kDusk : 0) | (branch.atNight ? kNight : 0);
    below.hours = static_cast<std::uint8_t>(below.hours & hours);
    if (branch.range) addRange(at, *branch.range, below);
    inherited_.push_back(below);
    return static_cast<std::uint32_t>(inherited_.size() - 1);
}

void SceneFeed::addRange(std::size_t at, const ViewRange& range, Inherited& below) {
    const Visit& visit = visits_[at];
    Range added{range.nearest, range.farthest, {}, below.range};
    if (range.center) added.centre = toVec3d(placeOf(visit).PointTransform(*range.center));
    below.range = model_.addRange(added);
    if (!range.center) measured_.push_back({below.range, at});
    // A level of which nothing is left to see was hidden, as a preview of levels does it.
    const int children = visit.node->NumberOfChildren();
    int hidden = 0;
    while (hidden < children && visit.node->GetChildNode(hidden)->IsHidden()) ++hidden;
    if (hidden == children) model_.setLevelsHidden();
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
    if (visits_[at].elsewhere || visits_[at].isOff) return;
    visits_[at].item = model_.beginItem();
    model_.setHours(inherited_[visits_[at].inherited].hours);
    model_.setRange(inherited_[visits_[at].inherited].range);
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
    instances_.push_back(
        {&definition, node, instancer.instance, instances_[instancer.instance].depth + 1});
    Inherited below = inherited_[instancer.inherited];
    below.move = Inverse(definition.GetNodeTM(0)) * placeOf(instancer);
    below.isMoved = true;
    inherited_.push_back(below);
    visits_.push_back({&definition,
                       at,
                       kNoItem,
                       instances_.size() - 1,
                       {},
                       false,
                       false,
                       static_cast<std::uint32_t>(inherited_.size() - 1)});
}

bool SceneFeed::mayShow(const INode& definition, std::size_t within) const {
    if (instances_[within].depth >= kDeepestInstance) return false;
    for (; within != 0; within = instances_[within].above)
        if (instances_[within].definition == &definition) return false;
    return true;
}

Matrix3 SceneFeed::placeOf(const Visit& visit) const {
    const Matrix3 own = visit.node->GetNodeTM(0);
    const Inherited& inherited = inherited_[visit.inherited];
    return inherited.isMoved ? own * inherited.move : own;
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
    for (const Measured& measured : measured_) {
        const Box& box = visits_[measured.visit].subtree;
        if (!box.empty()) model_.setRangeCentre(measured.range, box.centre());
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
        addMesh(place, mesh, node, inherited_[visit.inherited]);
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

Surface SceneFeed::surfaceFor(const NodeLook& look, bool hasTexture, Color wireColor) {
    Surface surface;
    surface.ambient = toVec3(look.ambient);
    surface.diffuse = toVec3(look.diffuse);
    surface.emissive = toVec3(look.emissive);
    surface.opacity = share(look.opacity);
    surface.lit = look.lit;
    surface.blended = look.blended;
    surface.layer = static_cast<std::int8_t>(std::clamp(look.layer, -127, 127));
    surface.style = styleOf(look.style);
    surface.facing = facingOf(look.facing);
    if (surface.style == DrawStyle::kSurfaceAndOutline)
        surface.outline = look.outline ? screenColor(hostColor(*look.outline)) : wireColor;
    if (hasTexture && look.picture) surface.texture = textures_.find(look.picture);
    return surface;
}

void SceneFeed::addMesh(const Matrix3& place, const Mesh& mesh, INode& node,
                        const Inherited& inherited) {
    for (const Point3& vertex : mesh.verts) model_.addVertex(toVec3d(place.PointTransform(vertex)));
    if (mesh.faces.IsEmpty()) return;
    NodeLook look = lookOf(node);
    look.opacity *= inherited.opacity;
    look.vertexNormals = look.vertexNormals && inherited.smooth;
    const bool hasTexture = mesh.tvFaces.Count() == mesh.faces.Count() && !mesh.tVerts.IsEmpty();
    const Color wireColor = screenColor(node.GetWireColor());
    const Surface surface = surfaceFor(look, hasTexture, wireColor);
    model_.setSurface(surface);
    addFinishes(place, mesh, look);
    const bool isWhite = look.white && surface.texture;
    // Where a place mirrors, what was the front would be the back.
    const bool isMirrored = surface.style == DrawStyle::kFrontOnly && place.Determinant() < 0;
    addTriangles(mesh, look, isWhite ? 0xFFFFFF : wireColor, surface.texture != nullptr,
                 isMirrored);
}

void SceneFeed::addTriangles(const Mesh& mesh, const NodeLook& look, Color color, bool isTextured,
                             bool isMirrored) {
    static_assert(EDGE_A == 1 && EDGE_B == 2 && EDGE_C == 4,
                  "the model's edge bits are the mesh's");
    const auto textureCount = static_cast<DWORD>(mesh.tVerts.Count());
    const auto lastVertex = static_cast<DWORD>(mesh.verts.Count() - 1);
    const std::size_t before = model_.triangles().size();
    for (int i = 0; i < mesh.faces.Count(); ++i) {
        const Face& face = mesh.faces[i];
        DWORD corners[3];
        TexturePlace places[3];
        std::uint8_t edges = 0;
        for (unsigned k = 0; k < 3; ++k) {
            const unsigned from = isMirrored ? (3 - k) % 3 : k;
            const unsigned edge = isMirrored ? 2 - k : k;  // behind that corner
            corners[k] = face.v[from];
            if ((face.flags >> edge & 1) != 0) edges = static_cast<std::uint8_t>(edges | 1U << k);
            if (!isTextured) continue;
            const DWORD index = mesh.tvFaces[i].t[from];
            if (index >= textureCount) continue;
            const Point3f& texture = mesh.tVerts[static_cast<int>(index)];
            if (std::isfinite(texture.x) && std::isfinite(texture.y))
                places[k] = {texture.x, texture.y};
        }
        for (unsigned k = 0; k < 3 && look.style == SurfaceStyle::kOpenOutline; ++k) {
            const auto ends = std::minmax(corners[k], corners[(k + 1) % 3]);
            if (ends.first == 0 && ends.second == lastVertex)
                edges = static_cast<std::uint8_t>(edges & ~(1U << k));
        }
        model_.addTriangle(corners[0], corners[1], corners[2], color, edges, places);
    }
    counts_.faces += polygonCount(mesh, model_.triangles().size() - before);
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

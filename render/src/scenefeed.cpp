#include <render/scenefeed.h>

#include <kiln/mesh.h>
#include <kiln/ownedptr.h>
#include <kiln/searchfolders.h>
#include <kiln/texmap.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

namespace render {
namespace {

constexpr Color kHelperColor = 0x6FD0A8;
constexpr Color kMissingColor = 0xE0483C;
constexpr COLORREF kUnknownLightColor = 0xA0F0FF;
constexpr float kWidestLine = 64;
const std::string kNoFolder;

// The host has blue in the highest byte, the screen red.
Color screenColor(COLORREF color) {
    const auto value = static_cast<Color>(color);
    return (value & 0xFF) << 16 | (value & 0xFF00) | (value >> 16 & 0xFF);
}

Vec3d toVec3d(const Point3& p) {
    return {p.x, p.y, p.z};
}

Place toPlace(const Matrix3& matrix) {
    const auto row = [&](int i) { return toVec3d(matrix.GetRow(i)); };
    return {row(0), row(1), row(2), row(3)};
}

Light movedLight(const Light& light, const Place& place) {
    return {light.kind, place.point(light.position), normalised(place.offset(light.direction)),
            light.strength};
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

/// A normal where the inverse of a transform is this. It stays at right angles to its surface after
/// a transform that scales unevenly, too.
Vec3 turnedNormal(const Matrix3& inverse, const Point3& n) {
    return toVec3(Normalize({DotProd(inverse.GetRow(0), n), DotProd(inverse.GetRow(1), n),
                             DotProd(inverse.GetRow(2), n)}));
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
    referenced_.clear();
    references_.clear();
    textures_.clear();
    poses_.clear();
    filePoses_.clear();
}

void SceneFeed::reset() {
    model_.clear();
    nodes_.clear();
    shown_.clear();
    visits_.clear();
    inherited_.clear();
    byNode_.clear();
    severalHave_.clear();
    isIndexed_ = false;
    instanced_.clear();
    tops_.clear();
    nodesInstanced_ = cut_ = 0;
    newlyPosed_.clear();
    if (!newlyPosedInFiles_.empty()) referenced_.clear();
    newlyPosedInFiles_.clear();
    counts_ = {};
}

std::vector<std::string> SceneFeed::takeFailures() {
    std::vector<std::string> failures = references_.takeFailures();
    for (std::string& picture : textures_.takeFailures()) failures.push_back(std::move(picture));
    return failures;
}

void SceneFeed::build(Interface& host) {
    reset();
    for (const int folder : {KILN_IMAGE_DIR, KILN_SCENE_DIR, KILN_IMPORT_DIR})
        textures_.files().addFolder(host.GetDir(folder));
    textures_.files().setLastFolders(UserSearchFolders(host));
    references_.begin();
    mostInstanced_ = kMostInstanced + kTimesRead * references_.nodesRead();
    if (std::exchange(filesRead_, references_.filesRead()) != references_.filesRead())
        referenced_.clear();
    readScene(host);
    updateSelection();
}

void SceneFeed::readScene(Interface& host) {
    const LooksInUse looks(looks_, host);
    askedLast_ = looks_;
    INode* const root = host.GetRootNode();
    if (!root) return;
    Reading scene{model_, nullptr, root, &kNoFolder};
    scene.visits = std::move(visits_);
    scene.inherited = std::move(inherited_);
    scene.inherited.emplace_back();
    visitAll(scene);
    counts_.faces = scene.faces;
    visits_ = std::move(scene.visits);
    inherited_ = std::move(scene.inherited);
}

bool SceneFeed::follow(Interface& host, std::span<INode* const> changed,
                       std::span<INode* const> moved) {
    if (visits_.empty() || !references_.isCurrent() || GetNodeLookSource() != askedLast_)
        return false;
    if (changed.empty() && moved.empty()) return true;
    if (!isIndexed_) indexVisits();
    const auto visitsOf = [this](std::span<INode* const> nodes) {
        std::vector<std::size_t> found;
        for (const INode* const node : nodes) found.push_back(visitOf(node));
        std::ranges::sort(found);
        found.erase(std::unique(found.begin(), found.end()), found.end());
        return found;
    };
    const std::vector<std::size_t> again = visitsOf(changed);
    std::vector<std::size_t> tops = visitsOf(moved);
    if ((!again.empty() && again.front() == 0) || (!tops.empty() && tops.front() == 0))
        return false;
    std::erase_if(tops, [&](std::size_t at) { return std::ranges::binary_search(again, at); });
    const LooksInUse looks(looks_, host);
    Reading scene{model_, nullptr, visits_.front().node, &kNoFolder};
    scene.faces = counts_.faces;
    scene.isFollowing = true;
    scene.visits = std::move(visits_);
    scene.inherited = std::move(inherited_);
    if (!tops.empty() && !followMoves(scene, tops)) return false;
    // Of many, reading everything is as fast.
    std::size_t allowed = scene.visits.size() / 4 + 16;
    for (const std::size_t at : again)
        if (!followNode(scene, at, allowed)) return false;
    if (!again.empty() && !model_.endReopening()) return false;
    counts_.faces = scene.faces;
    visits_ = std::move(scene.visits);
    inherited_ = std::move(scene.inherited);
    return true;
}

/// Moves the nodes, which are in the order of their visits, with all below them.
bool SceneFeed::followMoves(Reading& scene, std::span<const std::size_t> tops) {
    std::vector<std::uint8_t> isBelow(scene.visits.size());
    std::vector<std::size_t> below;
    for (const std::size_t top : tops) {
        if (isBelow[top] != 0) continue;
        if (isOfInstances(scene.visits, top)) return false;
        below.push_back(top);
        for (std::size_t i = below.size() - 1; i < below.size(); ++i) {
            const Visit& visit = scene.visits[below[i]];
            if (visit.elsewhere || tops_.contains(visit.node)) return false;
            isBelow[below[i]] = 1;
            for (std::uint32_t k = 0; k < visit.childCount; ++k)
                below.push_back(visit.firstChild + k);
        }
    }
    for (const std::size_t at : below) {
        passDown(scene, at, false);
        if (!moveVisit(scene, at)) return false;
    }
    model_.endMoving();
    std::set<std::size_t> above;
    for (std::size_t i = below.size(); i-- > 0;) {
        setBounds(scene, below[i], boundsOf(scene, below[i]));
        const std::size_t parent = scene.visits[below[i]].parent;
        if (isBelow[parent] == 0) above.insert(parent);
    }
    // What is above comes earlier among the visits.
    while (!above.empty()) {
        const std::size_t at = above.extract(std::prev(above.end())).value();
        const Box box = boundsOf(scene, at);
        if (at != 0 && box != scene.visits[at].subtree) above.insert(scene.visits[at].parent);
        setBounds(scene, at, box);
    }
    return true;
}

/// Whether instances show the node by way of what is above it.
bool SceneFeed::isOfInstances(std::span<const Visit> visits, std::size_t at) const {
    if (tops_.empty()) return false;
    for (; at != 0; at = visits[at].parent)
        if (tops_.contains(visits[at].node)) return true;
    return false;
}

/// Which visit is of which node, and which objects nodes share: found out when it is first asked.
void SceneFeed::indexVisits() {
    byNode_.resize(visits_.size());
    std::vector<const Object*> objects;
    for (std::size_t at = 0; at < visits_.size(); ++at) {
        byNode_[at] = at;
        if (visits_[at].object) objects.push_back(visits_[at].object);
    }
    std::ranges::sort(byNode_, std::less(), [this](std::size_t at) { return visits_[at].node; });
    std::ranges::sort(objects);
    for (std::size_t i = 1; i < objects.size(); ++i)
        if (objects[i] == objects[i - 1]) severalHave_.push_back(objects[i]);
    isIndexed_ = true;
}

/// 0, which is the root's, for a node that was not there.
std::size_t SceneFeed::visitOf(const INode* node) const {
    const auto nodeOf = [this](std::size_t at) -> const INode* { return visits_[at].node; };
    const auto found = std::ranges::lower_bound(byNode_, node, std::less(), nodeOf);
    return found != byNode_.end() && nodeOf(*found) == node ? *found : 0;
}

/// The node and all below it, if these are no more than are allowed; fewer are then.
bool SceneFeed::followNode(Reading& scene, std::size_t top, std::size_t& allowed) {
    std::vector<std::size_t> below{top};
    if (isOfInstances(scene.visits, top)) return false;
    for (std::size_t i = 0; i < below.size(); ++i) {
        const Visit& visit = scene.visits[below[i]];
        if (below.size() + visit.childCount > allowed) return false;
        for (std::uint32_t k = 0; k < visit.childCount; ++k) below.push_back(visit.firstChild + k);
    }
    allowed -= std::min(allowed, below.size());
    for (const std::size_t at : below)
        if (!revisit(scene, at)) return false;
    const Box before = scene.visits[top].subtree;
    for (std::size_t i = below.size(); i-- > 0;)
        setBounds(scene, below[i], boundsOf(scene, below[i]));
    boundAbove(scene, top, before);
    return true;
}

/// False when there are other items than before, or lights.
bool SceneFeed::revisit(Reading& scene, std::size_t at) {
    const Visit before = scene.visits[at];
    const Object* const object = before.node->GetObjectRef();
    if (before.elsewhere || before.lightCount > 0 || tops_.contains(before.node)) return false;
    if (object != before.object || std::ranges::binary_search(severalHave_, object)) return false;
    if (isElsewhere(scene, at)) return false;
    scene.faces -= before.faces;
    if (before.item != kNoItem) {
        if (!model_.reopenItem(before.item)) return false;
        scene.placedBefore = before.placed;
        scene.visits[at].placed = kNoItem;
        show(scene, at);
    }
    const Visit& now = scene.visits[at];
    if (now.placed != before.placed || now.lightCount > 0) return false;
    std::vector<bool> wereOff;
    for (std::uint32_t k = 0; k < before.childCount; ++k)
        wereOff.push_back(scene.visits[before.firstChild + k].isOff);
    decide(scene, at);
    for (std::uint32_t k = 0; k < before.childCount; ++k)
        if (scene.visits[before.firstChild + k].isOff != wereOff[k]) return false;
    return (scene.visits[at].range == 0) == (before.range == 0);
}

namespace {

/// Adds those whose pose is another one, or there no more.
template <typename All, typename Names>
void addChanged(const All& before, const All& now, Names& changed) {
    for (const auto& [node, values] : now) {
        const auto former = before.find(node);
        if (former == before.end() || former->second != values) changed.push_back(node);
    }
    for (const auto& [node, values] : before)
        if (!now.contains(node)) changed.push_back(node);
}

}  // namespace

void SceneFeed::setPoses(Poses poses, FilePoses inFiles) {
    addChanged(poses_, poses, newlyPosed_);
    addChanged(filePoses_, inFiles, newlyPosedInFiles_);
    poses_ = std::move(poses);
    filePoses_ = std::move(inFiles);
}

std::vector<INode*> SceneFeed::fileTops() const {
    std::set<INode*> tops;
    for (const auto* const all : {&referenced_, &instanced_})
        for (const auto& [key, shared] : *all)
            if (!tops_.contains(std::get<INode*>(key))) tops.insert(std::get<INode*>(key));
    return {tops.begin(), tops.end()};
}

/// Handles are those of the scene's own nodes.
const NodeJoint::Values* SceneFeed::poseOf(const Reading& reading, INode& node) const {
    if (!looks_ || node.IsRootNode()) return nullptr;
    if (!reading.folder->empty()) {
        const auto found = filePoses_.find(&node);
        return found == filePoses_.end() ? nullptr : &found->second;
    }
    if (poses_.empty()) return nullptr;
    const auto found = poses_.find(node.GetHandle());
    return found == poses_.end() ? nullptr : &found->second;
}

namespace {

/// What becomes of a visit: whether its joint has another pose, whether it is moved by one above,
/// and whether its box is another one.
constexpr std::uint8_t kPosed = 1, kMoved = 2, kBoxed = 4;

}  // namespace

// One pass down over all visits, and one up: joints may be within one another.
bool SceneFeed::movePosed(Reading& reading, std::vector<std::uint8_t>& marks) {
    if ((marks[0] & kPosed) != 0) passDown(reading, 0, true);
    for (std::size_t at = 1; at < marks.size(); ++at) {
        if ((marks[reading.visits[at].parent] & (kPosed | kMoved)) != 0) marks[at] |= kMoved;
        if ((marks[at] & (kPosed | kMoved)) == 0) continue;
        passDown(reading, at, (marks[at] & kPosed) != 0);
        if ((marks[at] & kMoved) != 0 && !moveVisit(reading, at)) return false;
    }
    reading.model.endMoving();
    for (std::size_t at = marks.size(); at-- > 0;) {
        if ((marks[at] & (kMoved | kBoxed)) == 0) continue;
        setBounds(reading, at, boundsOf(reading, at));
        marks[reading.visits[at].parent] |= kBoxed;
    }
    return true;
}

bool SceneFeed::followPoses(Interface& host) {
    if (newlyPosed_.empty() && newlyPosedInFiles_.empty()) return true;
    if (visits_.empty() || GetNodeLookSource() != askedLast_) return false;
    if (!isIndexed_) indexVisits();
    std::vector<std::uint8_t> marks(visits_.size());
    for (const DWORD handle : std::exchange(newlyPosed_, {})) {
        const INode* const node = host.GetINodeByHandle(handle);
        const std::size_t at = node ? visitOf(node) : 0;
        if (at == 0) continue;
        if (visits_[at].elsewhere) return false;
        if (isOfInstances(visits_, at)) return false;
        marks[at] = kPosed;
    }
    const LooksInUse looks(looks_, host);
    MovedModels moved;
    if (!followFilePoses(moved) || !movePlacements(model_, moved)) {
        referenced_.clear();
        return false;
    }
    for (std::size_t at = 1; at < marks.size() && !moved.empty(); ++at) {
        const ItemIndex placed = visits_[at].placed;
        if (placed == kNoItem) continue;
        const PlacementIndex placement = model_.items()[placed].placement;
        if (placement != kNoPlacement && moved.contains(model_.placements()[placement].model.get()))
            marks[at] |= kBoxed;
    }
    Reading scene{model_, nullptr, visits_.front().node, &kNoFolder};
    scene.isFollowing = true;
    scene.visits = std::move(visits_);
    scene.inherited = std::move(inherited_);
    if (!movePosed(scene, marks)) return false;
    visits_ = std::move(scene.visits);
    inherited_ = std::move(scene.inherited);
    return true;
}

/// Moves the models of files, those within others first. False where one has to be made anew.
/// Where files were read or forgotten since, that is done by the next `build`.
bool SceneFeed::followFilePoses(MovedModels& moved) {
    if (newlyPosedInFiles_.empty() || !references_.isCurrent()) return true;
    const std::set<const INode*> posed(newlyPosedInFiles_.begin(), newlyPosedInFiles_.end());
    std::vector<Shared*> inOrder;
    for (auto* const all : {&referenced_, &instanced_})
        for (auto& [key, shared] : *all) inOrder.push_back(&shared);
    std::ranges::sort(inOrder, {}, &Shared::number);
    for (Shared* const shared : inOrder)
        if (!moveShared(*shared, posed, moved)) return false;
    newlyPosedInFiles_.clear();
    return true;
}

bool SceneFeed::moveShared(Shared& shared, const std::set<const INode*>& posed,
                           MovedModels& moved) {
    const std::size_t before = moved.size();
    if (!movePlacements(*shared.model, moved)) return false;
    if (shared.kept) {
        Kept& kept = *shared.kept;
        std::vector<std::uint8_t> marks(kept.visits.size());
        bool any = false;
        for (std::size_t at = 0; at < marks.size(); ++at)
            if (posed.contains(kept.visits[at].node)) {
                marks[at] = kPosed;
                any = true;
            }
        if (any) {
            Reading reading{*shared.model, nullptr, kept.top, &kept.folder};
            reading.isFollowing = true;
            reading.visits = std::move(kept.visits);
            reading.inherited = std::move(kept.inherited);
            if (!movePosed(reading, marks)) return false;
            kept.visits = std::move(reading.visits);
            kept.inherited = std::move(reading.inherited);
            moved.insert(shared.model.get());
        }
    }
    const auto placements = shared.model->placements();
    if (std::ranges::any_of(placements, [&](const Placement& placement) {
            return moved.contains(placement.model.get());
        }))
        moved.insert(shared.model.get());
    // At rest they may be seen as points again.
    if (moved.size() != before && filePoses_.empty() && shared.hadStandIn)
        shared.model->prepareStandIn();
    return true;
}

/// Has the boxes of what shows moved models follow these.
bool SceneFeed::movePlacements(SceneModel& model, const MovedModels& moved) {
    if (moved.empty()) return true;
    bool any = false;
    for (ItemIndex item = 0; item < model.items().size(); ++item) {
        const PlacementIndex index = model.items()[item].placement;
        if (index == kNoPlacement) continue;
        const Placement& placement = model.placements()[index];
        if (!moved.contains(placement.model.get())) continue;
        if (!model.movePlacement(item, Place(placement.place))) return false;
        any = true;
    }
    if (any) model.endMoving();
    return true;
}

/// Gives the children what they have from above.
void SceneFeed::passDown(Reading& scene, std::size_t at, bool isPosed) {
    const Visit visit = scene.visits[at];
    if (visit.below != 0 || isPosed) return decide(scene, at);
    for (std::uint32_t i = 0; i < visit.childCount; ++i)
        scene.visits[visit.firstChild + i].inherited = visit.inherited;
}

/// False where it cannot be moved, or fronts become backs.
bool SceneFeed::moveVisit(Reading& scene, std::size_t at) {
    const Visit& visit = scene.visits[at];
    if (visit.item == kNoItem) return true;
    const Matrix3 place = placeOf(scene, at);
    const Handedness handedness = handednessOf(place);
    if (handedness == Handedness::kNone || handedness != visit.handedness) return false;
    if (visit.placed != kNoItem && !scene.model.movePlacement(visit.placed, toPlace(place)))
        return false;
    return moveLights(scene, visit, place) && moveNode(scene, visit, place);
}

/// The mesh of the node, or the mark that stands for it.
bool SceneFeed::moveNode(const Reading& scene, const Visit& visit, const Matrix3& place) {
    places_.clear();
    normals_.clear();
    Object* const object = visit.node->EvalWorldState(0).obj;
    const bool isLight = object && object->SuperClassID() == LIGHT_CLASS_ID;
    const ConvertedObject converted(isLight ? nullptr : object, 0, TRIOBJ_CLASS_ID);
    bool ofPoints = false;
    if (const auto* const surface = static_cast<const TriObject*>(converted.get())) {
        const Mesh& mesh = surface->GetMesh();
        const auto shown = scene.model.items()[visit.item].triangleCount;
        if (shown != 0 && shown != static_cast<std::uint32_t>(mesh.faces.Count())) return false;
        for (const Point3& vertex : mesh.verts)
            places_.push_back(toVec3d(place.PointTransform(vertex)));
        if (!mesh.normals.IsEmpty() && mesh.normals.Count() == mesh.verts.Count()) {
            const Matrix3 inverse = Inverse(place);
            for (const Point3f& normal : mesh.normals)
                normals_.push_back(turnedNormal(inverse, normal));
        }
        ofPoints = mesh.faces.IsEmpty() && !mesh.verts.IsEmpty();
        if (ofPoints && scene.inherited[visit.inherited].lightStrength <= 0) ofPoints = false;
    }
    if (!scene.model.moveItem(visit.item, places_, normals_)) return false;
    if (ofPoints) return scene.model.moveMarks(visit.item, places_, normals_);
    places_.assign(scene.model.markCount(visit.item), toVec3d(place.GetTrans()));
    return scene.model.moveMarks(visit.item, places_, {});
}

bool SceneFeed::moveLights(const Reading& scene, const Visit& visit, const Matrix3& place) {
    if (visit.lightCount == 0) return true;
    SceneModel& model = scene.model;
    if (visit.placed == kNoItem)
        return visit.lightCount == 1 && model.moveLight(visit.firstLight, toVec3d(place.GetTrans()),
                                                        toVec3(-Normalize(place.GetRow(2))));
    const PlacementIndex placement = model.items()[visit.placed].placement;
    const auto lights = model.placements()[placement].model->lights();
    if (lights.size() != visit.lightCount) return false;
    for (std::size_t i = 0; i < lights.size(); ++i) {
        const Light moved = movedLight(lights[i], toPlace(place));
        if (!model.moveLight(visit.firstLight + i, moved.position, moved.direction)) return false;
    }
    return true;
}

bool SceneFeed::noticeChanges() {
    const bool ofPictures = textures_.noticeChanges();
    const bool ofFiles = references_.noticeChanges();
    if (ofPictures || ofFiles) referenced_.clear();
    if (ofFiles) filePoses_.clear();
    return ofPictures || ofFiles;
}

bool SceneFeed::readFiles(Interface& host,
                          const std::function<bool(const std::string& path)>& mayGoOn) {
    while (!unread().empty()) {
        for (const std::string& path : unread()) {
            if (!mayGoOn(path)) return false;
            if (!references_.read(path)) return false;
        }
        build(host);
    }
    return true;
}

// Parents come before their children; however deep the scene is, the call stack is not.
void SceneFeed::visitAll(Reading& reading) {
    reading.visits.push_back({reading.top, 0});
    for (std::size_t at = 0; at < reading.visits.size(); ++at) {
        if (!reading.visits[at].node->IsRootNode()) visit(reading, at);
        visitChildren(reading, at);
    }
    boundSubtrees(reading);
}

void SceneFeed::visitChildren(Reading& reading, std::size_t at) {
    INode& node = *reading.visits[at].node;
    const int children = node.NumberOfChildren();
    if (children == 0) return;
    if (reading.within && (nodesInstanced_ += static_cast<std::size_t>(children)) > mostInstanced_)
        return;
    reading.visits[at].firstChild = static_cast<std::uint32_t>(reading.visits.size());
    reading.visits[at].childCount = static_cast<std::uint32_t>(children);
    for (int i = 0; i < children; ++i) reading.visits.push_back({node.GetChildNode(i), at});
    decide(reading, at);
}

/// What the node decides for its children.
void SceneFeed::decide(Reading& reading, std::size_t at) {
    const Visit parent = reading.visits[at];
    INode& node = *parent.node;
    if (parent.childCount == 0) return;
    NodeBranch branch;
    bool decides = looks_ && !node.IsRootNode() && looks_->GetBranch(&node, branch);
    NodeJoint joint;
    if (!reading.hasJoints && !reading.folder->empty() && !node.IsRootNode() && looks_)
        reading.hasJoints = looks_->GetJoint(&node, joint);
    if (const NodeJoint::Values* const pose = poseOf(reading, node)) {
        branch.motion = looks_->GetMotion(&node, *pose);
        decides = true;
    }
    const std::uint32_t inherited = decides ? inheritanceOf(reading, at, branch) : parent.inherited;
    const auto isShown = [&](std::size_t child) {
        if (!branch.shownChildren) return true;
        return child / 32 < branch.shownWords &&
               (branch.shownChildren[child / 32] >> child % 32 & 1) != 0;
    };
    if (!branch.range) reading.visits[at].range = 0;
    for (std::uint32_t i = 0; i < parent.childCount; ++i) {
        Visit& child = reading.visits[parent.firstChild + i];
        child.isOff = parent.isOff || !isShown(i);
        child.inherited = inherited;
    }
}

/// What the children of a node have from above when it decides something.
std::uint32_t SceneFeed::inheritanceOf(Reading& reading, std::size_t at, const NodeBranch& branch) {
    const Visit& visit = reading.visits[at];
    Inherited below = reading.inherited[visit.inherited];
    if (branch.motion) {
        const Matrix3 place = visit.node->GetNodeTM(0);
        below.move = Inverse(place) * *branch.motion * place * below.move;
        below.isMoved = true;
    }
    below.smooth = below.smooth && branch.smooth;
    below.opacity *= share(branch.opacity);
    below.lightStrength *= share(branch.lightStrength);
    if (branch.lightChange != LightChange::kAsTheySay) below.lightChange = branch.lightChange;
    const int hours =
        (branch.byDay ? kDay : 0) | (branch.atDusk ? kDusk : 0) | (branch.atNight ? kNight : 0);
    below.hours = static_cast<std::uint8_t>(below.hours & hours);
    if (branch.range) addRange(reading, at, *branch.range, below);
    std::uint32_t& index = reading.visits[at].below;
    if (index == 0) {
        index = static_cast<std::uint32_t>(reading.inherited.size());
        reading.inherited.emplace_back();
    }
    reading.inherited[index] = below;
    return index;
}

void SceneFeed::addRange(Reading& reading, std::size_t at, const ViewRange& range,
                         Inherited& below) {
    Visit& visit = reading.visits[at];
    Range added{range.nearest, range.farthest, {}, below.range};
    if (range.center) added.centre = toVec3d(placeOf(reading, at).PointTransform(*range.center));
    visit.isMeasured = !range.center;
    if (visit.range == 0)
        visit.range = reading.model.addRange(added);
    else
        reading.model.changeRange(visit.range, added);
    below.range = visit.range;
    // A level of which nothing is left to see was hidden, as a preview of levels does it.
    const int children = visit.node->NumberOfChildren();
    int hidden = 0;
    while (hidden < children && visit.node->GetChildNode(hidden)->IsHidden()) ++hidden;
    if (hidden == children) model_.setLevelsHidden();
}

void SceneFeed::visit(Reading& reading, std::size_t at) {
    INode& node = *reading.visits[at].node;
    const bool isOfScene = !reading.within;
    if (isOfScene) ++counts_.nodes;
    reading.visits[at].object = node.GetObjectRef();
    reading.visits[at].elsewhere = isElsewhere(reading, at);
    if (node.IsHidden()) {
        if (isOfScene) ++counts_.hidden;
        return;
    }
    if (reading.visits[at].elsewhere || reading.visits[at].isOff) return;
    reading.visits[at].item = reading.model.beginItem();
    if (isOfScene) {
        nodes_.push_back(&node);
        shown_.push_back(&node);
    }
    show(reading, at);
}

/// Fills the node's item, which is open, and makes that of what it shows of others.
void SceneFeed::show(Reading& reading, std::size_t at) {
    INode& node = *reading.visits[at].node;
    const bool isOfScene = !reading.within;
    const Inherited inherited = reading.inherited[reading.visits[at].inherited];
    const std::size_t faces = reading.faces, lights = reading.model.lights().size();
    reading.model.setHours(inherited.hours);
    reading.model.setRange(inherited.range);
    INode* const definition = looks_ ? looks_->GetInstanced(&node) : nullptr;
    NodeReference reference;
    const bool refers = looks_ && looks_->GetReference(&node, reference);
    addNode(reading, at, !isOfScene || definition || refers);
    reading.model.endItem();
    if (definition) showInstanced(reading, at, *definition);
    if (refers) showReference(reading, at, reference);
    reading.visits[at].faces = reading.faces - faces;
    reading.visits[at].firstLight = static_cast<std::uint32_t>(lights);
    reading.visits[at].lightCount =
        static_cast<std::uint32_t>(reading.model.lights().size() - lights);
}

bool SceneFeed::isElsewhere(const Reading& reading, std::size_t at) const {
    const Visit& visit = reading.visits[at];
    if (reading.visits[visit.parent].elsewhere) return true;
    const bool isShown = reading.within && visit.node == reading.top;
    return !isShown && looks_ && looks_->IsOnlyInstanced(visit.node);
}

/// The definition's own place is that of the node that shows it.
void SceneFeed::showInstanced(Reading& reading, std::size_t at, INode& definition) {
    const Matrix3 move = Inverse(definition.GetNodeTM(0));
    place(reading, at, sharedOf(reading, definition, at, move, *reading.folder, reading.looksBy));
}

/// What is shown of a file stands as it does in there.
void SceneFeed::showReference(Reading& reading, std::size_t at, const NodeReference& reference) {
    const References::Target target = references_.find(*reading.folder, reference);
    if (target.isMissing) return showMissing(reading, at);
    if (!target.node) return;
    const std::uint32_t looksBy = looks_->EnterReference(reading.visits[at].node);
    // Numbers of one time are not those of another.
    if (!reading.isFollowing || looksBy == 0)
        place(reading, at, sharedOf(reading, *target.node, at, {}, *target.folder, looksBy));
    looks_->LeaveReference();
}

void SceneFeed::showMissing(Reading& reading, std::size_t at) {
    const Vec3d origin = toVec3d(placeOf(reading, at).GetTrans());
    const ItemIndex item = reading.visits[at].item;
    reading.model.addMark(MarkKind::kMissing, origin, kMissingColor, item);
}

/// As an item of its own, behind that of the node.
void SceneFeed::place(Reading& reading, std::size_t at, const Shared& shared) {
    if (!shared.model) return;
    const SceneModel& model = *shared.model;
    Visit& visit = reading.visits[at];
    const Inherited& inherited = reading.inherited[visit.inherited];
    const Matrix3 where = placeOf(reading, at);
    const Place place = toPlace(where);
    for (const Light& light : model.lights())
        if (reading.model.lights().size() < kMostLights && place.isFinite())
            reading.model.addLight(movedLight(light, place));
    if (model.weight() > kMostShown || reading.model.weight() > kMostShown - model.weight()) return;
    visit.placed = openPlaced(reading);
    if (visit.placed == kNoItem) return;
    reading.model.setHours(inherited.hours);
    reading.model.setRange(inherited.range);
    reading.model.setPlacement({shared.model, place, inherited.opacity});
    reading.model.endItem();
    reading.faces += shared.faces;
    if (!reading.within && !reading.isFollowing) nodes_.push_back(visit.node);
}

/// The item of what a node shows of others: a new one, or that which it had.
ItemIndex SceneFeed::openPlaced(Reading& reading) {
    if (!reading.isFollowing) return reading.model.beginItem();
    const ItemIndex before = std::exchange(reading.placedBefore, kNoItem);
    return before != kNoItem && reading.model.reopenItem(before) ? before : kNoItem;
}

/// Made once for all that show it, unless some of it is left out because of what shows it.
SceneFeed::Shared SceneFeed::sharedOf(Reading& reading, INode& top, std::size_t at,
                                      const Matrix3& move, const std::string& folder,
                                      std::uint32_t looksBy) {
    const bool smooth = reading.inherited[reading.visits[at].inherited].smooth;
    const bool isOfFile = !folder.empty();
    std::map<SharedKey, Shared>& known = isOfFile && looksBy == 0 ? referenced_ : instanced_;
    const SharedKey key{&top, smooth, !move.IsIdentity(), looksBy};
    if (const auto found = known.find(key); found != known.end()) return found->second;
    if (!isOfFile) tops_.insert(&top);
    if (!mayRead(reading, top)) return {};
    if (++nodesInstanced_ > mostInstanced_) return {};
    const auto model = std::make_shared<SceneModel>();
    Reading inner{*model, &reading, &top, &folder, reading.depth + 1, looksBy};
    Inherited first;
    first.move = move;
    first.isMoved = true;
    first.smooth = smooth;
    inner.inherited.push_back(first);
    visitAll(inner);
    if (inner.depth <= kDeepestStandIn) model->prepareStandIn();
    Shared shared{model, inner.faces, {}, ++sharedMade_, model->standIn() != nullptr};
    if (inner.hasJoints)
        shared.kept = std::make_shared<Kept>(
            Kept{&top, folder, std::move(inner.visits), std::move(inner.inherited)});
    if (!inner.isCut || ++cut_ > kMostCut) known.emplace(key, shared);
    return shared;
}

/// Not what it is within; what is between the two then lacks it, and only here.
bool SceneFeed::mayRead(Reading& reading, const INode& top) const {
    const bool isTooDeep = reading.depth >= kDeepestInstance;
    const Reading* cause = &reading;
    while (cause && cause->top != &top) cause = cause->within;
    if (!isTooDeep && (!cause || !cause->within)) return true;
    for (Reading* above = &reading; above && (isTooDeep || above != cause); above = above->within)
        above->isCut = true;
    return false;
}

Matrix3 SceneFeed::placeOf(const Reading& reading, std::size_t at) {
    const Visit& visit = reading.visits[at];
    const Matrix3 own = visit.node->GetNodeTM(0);
    const Inherited& inherited = reading.inherited[visit.inherited];
    return inherited.isMoved ? own * inherited.move : own;
}

SceneFeed::Handedness SceneFeed::handednessOf(const Matrix3& place) {
    const double determinant = place.Determinant();
    const Point3& origin = place.GetTrans();
    if (!std::isfinite(determinant + origin.x + origin.y + origin.z)) return Handedness::kNone;
    return determinant < 0 ? Handedness::kMirrored : Handedness::kKept;
}

// A selected group is bracketed with all that hangs below it. The place of a helper counts only
// when nothing does: most stay at the origin, far from what they hold.
void SceneFeed::boundSubtrees(Reading& reading) {
    for (std::size_t at = reading.visits.size(); at-- > 0;)
        setBounds(reading, at, boundsOf(reading, at));
}

Box SceneFeed::boundsOf(const Reading& reading, std::size_t at) {
    const auto items = reading.model.items();
    const Visit& visit = reading.visits[at];
    Box box;
    if (visit.item != kNoItem && items[visit.item].triangleCount > 0) box = items[visit.item].box;
    if (visit.placed != kNoItem) box.include(items[visit.placed].box);
    for (std::uint32_t i = 0; i < visit.childCount; ++i)
        box.include(reading.visits[visit.firstChild + i].subtree);
    if (box.empty() && visit.item != kNoItem) box = items[visit.item].box;
    return box;
}

void SceneFeed::setBounds(Reading& reading, std::size_t at, const Box& box) {
    Visit& visit = reading.visits[at];
    visit.subtree = box;
    if (visit.item != kNoItem) reading.model.setSelectionBox(visit.item, box);
    if (visit.range != 0 && visit.isMeasured && !box.empty())
        reading.model.setRangeCentre(visit.range, box.centre());
}

/// Brings the boxes above up to date with a node's, which was another one before. Its siblings are
/// looked at only where the old one was what the box above ended with.
void SceneFeed::boundAbove(Reading& scene, std::size_t at, Box before) {
    while (at != 0) {
        const Box& now = scene.visits[at].subtree;
        if (now == before) return;
        const std::size_t above = scene.visits[at].parent;
        const Box was = scene.visits[above].subtree;
        Box box = was;
        if (before.empty() || (was.isAtRim(before) && !now.contains(before)))
            box = boundsOf(scene, above);
        else
            box.include(now);
        setBounds(scene, above, box);
        before = was;
        at = above;
    }
}

// What stands for another needs no helper to be seen.
void SceneFeed::addNode(Reading& reading, std::size_t at, bool standsForAnother) {
    INode& node = *reading.visits[at].node;
    const Matrix3 place = placeOf(reading, at);
    reading.visits[at].handedness = handednessOf(place);
    const Vec3d origin = toVec3d(place.GetTrans());
    Object* object = node.EvalWorldState(0).obj;
    const auto addHelper = [&] {
        if (!standsForAnother) reading.model.addMark(MarkKind::kHelper, origin, kHelperColor);
    };
    if (!object) return addHelper();
    if (object->SuperClassID() == LIGHT_CLASS_ID) {
        const auto* light = dynamic_cast<const GenLight*>(object);
        const COLORREF color = light ? addLight(reading, place, *light, node) : kUnknownLightColor;
        return reading.model.addMark(MarkKind::kLight, origin, screenColor(color));
    }
    const ConvertedObject converted(object, 0, TRIOBJ_CLASS_ID);
    if (const auto* const surface = static_cast<const TriObject*>(converted.get())) {
        const Mesh& mesh = surface->GetMesh();
        const Inherited& inherited = reading.inherited[reading.visits[at].inherited];
        addMesh(reading, place, mesh, node, inherited);
        if (mesh.faces.Count() > 0) return;
        if (mesh.verts.Count() > 0) return addPoints(reading, place, mesh, node, inherited);
    }
    addHelper();
}

/// Returns the light's color, whether it shines or not.
COLORREF SceneFeed::addLight(Reading& reading, const Matrix3& place, const GenLight& light,
                             INode& node) {
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
    reading.model.addLight(lamp);
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

Surface SceneFeed::surfaceFor(const Reading& reading, const NodeLook& look, bool hasTexture,
                              Color wireColor) {
    Surface surface;
    surface.ambient = toVec3(look.ambient);
    surface.diffuse = toVec3(look.diffuse);
    surface.emissive = toVec3(look.emissive);
    surface.specular = toVec3(look.specular);
    surface.shininess = std::min(std::max(0.f, look.shininess), 128.f);
    surface.opacity = share(look.opacity);
    surface.lit = look.lit;
    surface.blended = look.blended;
    surface.layer = static_cast<std::int8_t>(std::clamp(look.layer, -127, 127));
    surface.style = styleOf(look.style);
    surface.facing = facingOf(look.facing);
    surface.linePattern = look.linePattern;
    surface.lineWidth =
        static_cast<std::uint8_t>(std::min(std::max(1.f, look.lineWidth), kWidestLine));
    if (surface.style == DrawStyle::kSurfaceAndOutline)
        surface.outline = look.outline ? screenColor(hostColor(*look.outline)) : wireColor;
    if (hasTexture && look.picture) {
        surface.texture = textures_.find(look.picture, *reading.folder);
        if (!surface.texture && *look.picture) surface.texture = &TextureStore::missing();
    }
    return surface;
}

/// Adds to the surface what lies over its texture, and returns the layers of which there are
/// pictures.
std::vector<const PictureLayer*> SceneFeed::layersFor(const Reading& reading, const NodeLook& look,
                                                      const Mesh& mesh, bool hasTexture,
                                                      Surface& surface) {
    std::vector<const PictureLayer*> shown;
    TextureLayers layers;
    const auto vertices = static_cast<std::size_t>(mesh.verts.Count());
    for (std::size_t i = 0; i < std::min(look.layerCount, TextureLayers::kMost); ++i) {
        const PictureLayer& layer = look.layers[i];
        if (!layer.picture || (layer.placeCount != vertices && !hasTexture)) continue;
        const Texture* const texture = textures_.find(layer.picture, *reading.folder);
        if (!texture) continue;
        layers.textures[layers.count++] = texture;
        shown.push_back(&layer);
    }
    if (look.detail && surface.texture)
        layers.detail = textures_.find(look.detail, *reading.folder);
    surface.layers = reading.model.addLayers(layers);
    return shown;
}

void SceneFeed::addMesh(Reading& reading, const Matrix3& place, const Mesh& mesh, INode& node,
                        const Inherited& inherited) {
    for (const Point3& vertex : mesh.verts)
        reading.model.addVertex(toVec3d(place.PointTransform(vertex)));
    if (mesh.faces.IsEmpty()) return;
    NodeLook look = lookOf(node);
    if (look.hidden) return;
    look.opacity *= inherited.opacity;
    look.vertexNormals = look.vertexNormals && inherited.smooth;
    const bool hasTexture = mesh.tvFaces.Count() == mesh.faces.Count() && !mesh.tVerts.IsEmpty();
    const Color wireColor = screenColor(look.color ? hostColor(*look.color) : node.GetWireColor());
    Surface surface = surfaceFor(reading, look, hasTexture, wireColor);
    const std::vector<const PictureLayer*> layers =
        layersFor(reading, look, mesh, hasTexture, surface);
    reading.model.setSurface(surface);
    addFinishes(reading, place, mesh, look);
    const bool isWhite = look.white && surface.texture;
    // Where a place mirrors, what was the front would be the back.
    const bool isMirrored = surface.style == DrawStyle::kFrontOnly && place.Determinant() < 0;
    addTriangles(reading, mesh, look, isWhite ? 0xFFFFFF : wireColor, layers, isMirrored);
}

void SceneFeed::addTriangles(Reading& reading, const Mesh& mesh, const NodeLook& look, Color color,
                             std::span<const PictureLayer* const> layers, bool isMirrored) {
    static_assert(EDGE_A == 1 && EDGE_B == 2 && EDGE_C == 4,
                  "the model's edge bits are the mesh's");
    const auto textureCount = static_cast<DWORD>(mesh.tVerts.Count());
    const bool hasPlaces = mesh.tvFaces.Count() == mesh.faces.Count();
    const auto finite = [](float u, float v) {
        return std::isfinite(u) && std::isfinite(v) ? TexturePlace{u, v} : TexturePlace{};
    };
    const auto lastVertex = static_cast<DWORD>(mesh.verts.Count() - 1);
    const std::size_t before = reading.model.triangles().size();
    for (int i = 0; i < mesh.faces.Count(); ++i) {
        const Face& face = mesh.faces[i];
        DWORD corners[3];
        TexturePlace places[3 * (1 + TextureLayers::kMost)];
        std::uint8_t edges = 0;
        for (unsigned k = 0; k < 3; ++k) {
            const unsigned from = isMirrored ? (3 - k) % 3 : k;
            const unsigned edge = isMirrored ? 2 - k : k;  // behind that corner
            corners[k] = face.v[from];
            if ((face.flags >> edge & 1) != 0) edges = static_cast<std::uint8_t>(edges | 1U << k);
            const DWORD index = hasPlaces ? mesh.tvFaces[i].t[from] : textureCount;
            if (index < textureCount) {
                const Point3f& texture = mesh.tVerts[static_cast<int>(index)];
                places[k] = finite(texture.x, texture.y);
            }
            for (std::size_t layer = 0; layer < layers.size(); ++layer) {
                const PictureLayer& own = *layers[layer];
                TexturePlace& there = places[3 * (layer + 1) + k];
                there = places[k];
                if (own.placeCount == lastVertex + 1 && corners[k] <= lastVertex)
                    there = finite(own.places[2 * corners[k]], own.places[2 * corners[k] + 1]);
            }
        }
        for (unsigned k = 0; k < 3 && look.style == SurfaceStyle::kOpenOutline; ++k) {
            const auto ends = std::minmax(corners[k], corners[(k + 1) % 3]);
            if (ends.first == 0 && ends.second == lastVertex)
                edges = static_cast<std::uint8_t>(edges & ~(1U << k));
        }
        reading.model.addTriangle(corners[0], corners[1], corners[2], color, edges, places);
    }
    reading.faces += polygonCount(mesh, reading.model.triangles().size() - before);
}

void SceneFeed::addFinishes(Reading& reading, const Matrix3& place, const Mesh& mesh,
                            const NodeLook& look) {
    const int count = mesh.verts.Count();
    const bool colored = look.vertexColors && !look.white && mesh.colors.Count() == count;
    const bool smooth = look.vertexNormals && mesh.normals.Count() == count;
    if (count == 0 || (!colored && !smooth)) return;
    finishes_.assign(static_cast<std::size_t>(count), {});
    const Matrix3 inverse = Inverse(place);
    for (int i = 0; i < count; ++i) {
        Finish& finish = finishes_[static_cast<std::size_t>(i)];
        if (colored) {
            finish.colored = true;
            finish.color = screenColor(mesh.colors[i]);
        }
        if (!smooth) continue;
        const Vec3 world = turnedNormal(inverse, mesh.normals[i]);
        if (isFinite(world)) finish.normal = world;
    }
    reading.model.setFinishes(finishes_);
}

// A mesh of nothing but vertices is how light points stand in a scene.
void SceneFeed::addPoints(Reading& reading, const Matrix3& place, const Mesh& mesh, INode& node,
                          const Inherited& inherited) {
    if (inherited.lightStrength <= 0) return;
    NodeLook look = lookOf(node);
    if (look.points && inherited.lightChange == LightChange::kNever)
        look.points->period = look.points->turn = 0, look.points->stepCount = 0;
    if (look.points && inherited.lightChange == LightChange::kAtRandom) {
        // The golden ratio keeps neighbours apart; a node keeps its time when it is read again.
        const double number = node.GetHandle() * 0.618034;
        look.points->delay += static_cast<float>(number - std::floor(number)) * look.points->period;
    }
    std::vector<LightPointStep> steps;
    if (look.points && inherited.lightStrength < 1) {
        const auto weaken = [&](std::optional<LightColor>& color) {
            if (!color) return;
            for (float* const part : {&color->red, &color->green, &color->blue})
                *part *= inherited.lightStrength;
        };
        weaken(look.points->back);
        steps.assign(look.points->steps, look.points->steps + look.points->stepCount);
        for (LightPointStep& step : steps) weaken(step.color);
        look.points->steps = steps.data();
    }
    const std::uint32_t own = look.points ? reading.model.addLightLook(*look.points) : 0;
    const Matrix3 inverse = Inverse(place);
    const auto weakened = [&](Color color) {
        Color all = 0;
        for (const unsigned shift : {0U, 8U, 16U})
            all |= static_cast<Color>(static_cast<float>(color >> shift & 0xFF) *
                                      inherited.lightStrength)
                   << shift;
        return all;
    };
    for (int i = 0; i < mesh.verts.Count(); ++i) {
        const Color color =
            weakened(i < mesh.colors.Count() ? screenColor(mesh.colors[i]) : 0xFFFFFF);
        Vec3 normal;
        if (i < mesh.normals.Count()) normal = turnedNormal(inverse, mesh.normals[i]);
        reading.model.addLightPoint(toVec3d(place.PointTransform(mesh.verts[i])), color, own,
                                    normal);
    }
}

void SceneFeed::updateSelection() {
    chosen_.assign(visits_.size(), 0);
    for (std::size_t at = 1; at < visits_.size(); ++at) {
        const Visit& visit = visits_[at];
        const bool selected = visit.node->Selected();
        chosen_[at] = selected || chosen_[visit.parent];
        if (visit.item != kNoItem) model_.setSelected(visit.item, selected, chosen_[at] != 0);
        if (visit.placed != kNoItem) model_.setSelected(visit.placed, false, chosen_[at] != 0);
    }
}

INode* SceneFeed::nodeOf(ItemIndex item) const {
    return item < nodes_.size() ? nodes_[item] : nullptr;
}

}  // namespace render

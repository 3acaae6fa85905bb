#include "node.h"

#include <base/text.h>

#include <algorithm>

#include "changes.h"
#include "scene.h"

namespace kiln {

Node::Node(Scene& scene, DWORD handle, std::string name)
    : scene_(scene), handle_(handle), name_(std::move(name)) {}

Node::~Node() {
    if (object_) object_->ReleaseReference();
    if (texmap_) texmap_->ReleaseReference();
}

namespace {

/// A node's place among parents and siblings.
class PlaceChange final : public RecordedChange {
public:
    PlaceChange(Scene& scene, Node& node) noexcept : scene_(scene), node_(node) {}
    ~PlaceChange() override {
        if (parent_) parent_->children().giveUp(place_);
    }

    /// Takes the node to the end of a list that has room for it.
    void make(Node& newParent) noexcept {
        parent_ = node_.parent();
        place_ = parent_->children().leave(&node_);
        newParent.adopt(&node_);
    }
    void turn() noexcept override { node_.exchangePlace(parent_, place_); }
    void tell() const override {
        if (!node_.gone()) scene_.notify(NOTIFY_NODE_LINKED, static_cast<INode*>(&node_));
    }

private:
    Scene& scene_;
    Node& node_;
    Node* parent_ = nullptr;
    PlaceInList place_;
};

class LocalTransform final : public RecordedChange {
public:
    LocalTransform(Node& node, const Matrix3* what, const Matrix3& local) noexcept
        : node_(node), what_(what), local_(local) {}

    void turn() noexcept override { node_.exchangeLocal(local_); }
    void note() const noexcept override { noteMoved(node_); }
    const void* what() const noexcept override { return what_; }

private:
    Node& node_;
    const Matrix3* const what_;
    Matrix3 local_;
};

/// One reference to a thing or to none, among the members of a node.
template <typename T>
class ReferenceChange final : public RecordedChange {
public:
    ReferenceChange(T*& member, T* other) noexcept : member_(member), other_(other) {
        if (other_) other_->AddReference();
    }
    ~ReferenceChange() override {
        if (other_) other_->ReleaseReference();
    }

    void turn() noexcept override { std::swap(member_, other_); }

private:
    T*& member_;
    T* other_;
};

template <typename T>
void changeReference(Node& node, T*& member, T* other) {
    if (SceneHistory* const history = historyFor(node))
        history->add<ReferenceChange<T>>(0, 0, member, other).turn();
    else
        ReferenceChange<T>(member, other).turn();
    noteSceneChanged(node);
}

}  // namespace

bool Node::IsRecorded() const noexcept {
    return !gone() && SceneHistory::current() == &scene_.history() &&
           !scene_.history().isNew(handle_);
}

bool Node::IsRootNode() const {
    return this == scene_.root();
}

void Node::SetName(const char* name) {
    std::string valid = base::validUtf8(name ? name : "");
    if (IsRootNode() || gone() || valid == name_) return;
    scene_.renameNode(this, name_, std::move(valid));
}

INode* Node::GetChildNode(int index) const {
    if (index < 0 || index >= NumberOfChildren()) return nullptr;
    return children_.at(static_cast<std::size_t>(index));
}

int Node::GetChildIndex(const INode* child) const {
    if (!child || child->GetParentNode() != this) return -1;
    const auto* const node = static_cast<const Node*>(child);
    return node->gone() ? -1 : static_cast<int>(children_.indexOf(node));
}

bool Node::canAdopt(const Node* child) const noexcept {
    if (!child || child == this || child->IsRootNode() || child->dying() || dying()) return false;
    if (&child->scene_ != &scene_) return false;
    // A node without children is above nothing. That spares the way up for the usual case, a new
    // node below a long chain.
    if (child->children_.empty()) return true;
    for (const Node* above = parent_; above; above = above->parent_)
        if (above == child) return false;
    return true;
}

bool Node::AttachChild(INode* child, bool keepPos) {
    auto* const node = static_cast<Node*>(child);
    if (!canAdopt(node)) return false;
    node->relink(this, keepPos);
    return true;
}

void Node::Detach(TimeValue, bool keepPos) {
    if (dying() || !parent_ || parent_->IsRootNode()) return;
    relink(scene_.root(), keepPos);
}

void Node::relink(Node* newParent, bool keepPos) {
    if (newParent == parent_ && parent_->children_.back() == this) return;
    const bool sameParent = newParent == parent_;
    const bool staysInWorld = keepPos && !sameParent;
    const Matrix3 position = staysInWorld ? world() : Matrix3();
    if (staysInWorld) newParent->world();
    newParent->children_.makeRoom();
    SceneHistory* const history = SceneHistory::recording();
    if (history && !history->wasJustMade(handle_)) {
        PlaceChange& change = history->add<PlaceChange>(0, 0, scene_, *this);
        try {
            if (staysInWorld) keepLocal();
        } catch (...) {
            history->dropLast();
            throw;
        }
        change.make(*newParent);
    } else {
        unlink();
        newParent->adopt(this);
    }
    if (staysInWorld)
        applyWorld(position);
    else if (!sameParent)
        invalidateSubtree();
    noteSceneChanged();
    scene_.notify(NOTIFY_NODE_LINKED, static_cast<INode*>(this));
}

void Node::adopt(Node* child) {
    children_.append(child);
    child->parent_ = this;
}

void Node::unlink() noexcept {
    parent_->children_.remove(this);
    parent_ = nullptr;
}

void Node::leavePlace() noexcept {
    const PlaceInList place = parent_->children_.leave(this);
    siblingBlock = place.block;
    placeInBlock_ = static_cast<std::uint8_t>(place.index);
}

void Node::comeBack() noexcept {
    parent_->children_.comeBack(this, {siblingBlock, placeInBlock_});
    invalidateSubtree();
}

void Node::giveUpPlace() noexcept {
    parent_->children_.giveUp({siblingBlock, placeInBlock_});
}

void Node::exchangePlace(Node*& parent, PlaceInList& place) noexcept {
    const PlaceInList left = parent_->children_.leave(this);
    std::swap(parent_, parent);
    parent_->children_.comeBack(this, place);
    place = left;
    invalidateSubtree();
}

void Node::exchangeLocal(Matrix3& local) noexcept {
    std::swap(place_->local, local);
    invalidateSubtree();
}

void Node::Delete(TimeValue) {
    scene_.deleteNode(this);
}

Matrix3 Node::GetNodeTM(TimeValue) const {
    return world();
}

Node::Place& Node::place() const {
    if (!place_) place_ = std::make_unique<Place>();
    return *place_;
}

const Matrix3& Node::world() const {
    if (worldValid_) return place_->world;
    std::vector<const Node*> stale;
    const Node* node = this;
    for (; node && !node->worldValid_; node = node->parent_) stale.push_back(node);
    for (auto at = stale.rbegin(); at != stale.rend(); ++at) {
        const Node* const parent = (*at)->parent_;
        Place& place = (*at)->place();
        place.world = parent && !parent->place_->world.IsIdentity()
                          ? place.local * parent->place_->world
                          : place.local;
        (*at)->worldValid_ = true;
    }
    return place_->world;
}

void Node::SetLocalTM(TimeValue, const Matrix3& tm) {
    if (IsRootNode()) return;
    setLocal(tm);
    noteMoved(*this);
}

void Node::SetNodeTM(TimeValue, const Matrix3& tm) {
    if (IsRootNode()) return;
    setWorld(tm);
    noteMoved(*this);
}

/// Records the transform before it changes. Throws `std::bad_alloc`.
void Node::keepLocal() {
    const Matrix3& local = place().local;
    SceneHistory* const history = historyFor(*this);
    if (history && !history->keeps(&local))
        history->add<LocalTransform>(0, 0, *this, &local, local);
}

void Node::setLocal(const Matrix3& tm) {
    keepLocal();
    applyLocal(tm);
}

void Node::setWorld(const Matrix3& tm) {
    parent_->world();
    keepLocal();
    applyWorld(tm);
}

void Node::applyLocal(const Matrix3& tm) noexcept {
    invalidateSubtree();
    place_->local = tm;
}

/// The parent's world transform is valid.
void Node::applyWorld(const Matrix3& tm) {
    const Matrix3& above = parent_->world();
    if (above.IsIdentity() || !IsInvertible(above)) {
        applyLocal(tm);
        return;
    }
    applyLocal(tm * Inverse(above));
    // Kept as it was given, so that it does not drift while the node is moved from parent to
    // parent.
    place_->world = tm;
    worldValid_ = true;
}

/// Takes no memory, so that an undo needs none: the nodes that are still to be looked at are linked
/// with one another.
void Node::invalidateSubtree() noexcept {
    if (!worldValid_) return;
    Node* pending = this;
    worldValid_ = false;
    place_->next = nullptr;
    while (pending) {
        const Node* const node = pending;
        pending = node->place_->next;
        node->children_.forEach([&](Node* child) {
            if (!child->worldValid_) return;
            child->worldValid_ = false;
            child->place_->next = pending;
            pending = child;
        });
    }
}

void Node::SetObjectRef(Object* object) {
    if (IsRootNode() || object == object_) return;
    changeReference(*this, object_, object);
}

void Node::SetTexmap(Texmap* map) {
    if (map == texmap_) return;
    changeReference(*this, texmap_, map);
}

void Node::InvalidateWS() {
    scene_.nodeInvalidated(this);
}

std::vector<Node*> subtreeOf(Node* top) {
    std::vector<Node*> order;
    std::vector<Node*> pending{top};
    while (!pending.empty()) {
        Node* const node = pending.back();
        pending.pop_back();
        order.push_back(node);
        const auto firstChild = static_cast<std::ptrdiff_t>(pending.size());
        node->children().forEach([&](Node* child) { pending.push_back(child); });
        std::reverse(pending.begin() + firstChild, pending.end());
    }
    return order;
}

}  // namespace kiln

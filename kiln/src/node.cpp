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

bool Node::IsRootNode() const {
    return this == scene_.root();
}

void Node::SetName(const char* name) {
    std::string valid = base::validUtf8(name ? name : "");
    if (IsRootNode() || valid == name_) return;
    scene_.renameNode(this, name_, std::move(valid));
}

INode* Node::GetChildNode(int index) const {
    if (index < 0 || index >= NumberOfChildren()) return nullptr;
    return children_.at(static_cast<std::size_t>(index));
}

int Node::GetChildIndex(const INode* child) const {
    if (!child || child->GetParentNode() != this) return -1;
    return static_cast<int>(children_.indexOf(static_cast<const Node*>(child)));
}

bool Node::canAdopt(const Node* child) const noexcept {
    if (!child || child == this || child->IsRootNode() || child->dying_ || dying_) return false;
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
    if (dying_ || !parent_ || parent_->IsRootNode()) return;
    relink(scene_.root(), keepPos);
}

void Node::relink(Node* newParent, bool keepPos) {
    if (newParent == parent_ && parent_->children_.back() == this) return;
    const bool sameParent = newParent == parent_;
    const Matrix3 position = keepPos && !sameParent ? world() : Matrix3();
    newParent->children_.makeRoom();
    unlink();
    newParent->adopt(this);
    if (!sameParent) {
        if (keepPos)
            setWorld(position);
        else
            invalidateSubtree();
    }
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
    noteSceneChanged();
}

void Node::SetNodeTM(TimeValue, const Matrix3& tm) {
    if (IsRootNode()) return;
    setWorld(tm);
    noteSceneChanged();
}

void Node::setLocal(const Matrix3& tm) {
    Place& changed = place();
    invalidateSubtree();
    changed.local = tm;
}

void Node::setWorld(const Matrix3& tm) {
    const Matrix3& above = parent_->world();
    if (above.IsIdentity() || !IsInvertible(above)) {
        setLocal(tm);
        return;
    }
    setLocal(tm * Inverse(above));
    // Kept as it was given, so that it does not drift while the node is moved from parent to
    // parent.
    place_->world = tm;
    worldValid_ = true;
}

void Node::invalidateSubtree() {
    if (!worldValid_) return;
    worldValid_ = false;
    std::vector<Node*> pending{this};
    while (!pending.empty()) {
        const Node* const node = pending.back();
        pending.pop_back();
        node->children_.forEach([&](Node* child) {
            if (!child->worldValid_) return;
            child->worldValid_ = false;
            pending.push_back(child);
        });
    }
}

void Node::SetObjectRef(Object* object) {
    if (IsRootNode() || object == object_) return;
    if (object) object->AddReference();
    Object* const before = object_;
    object_ = object;
    if (before) before->ReleaseReference();
    noteSceneChanged();
}

void Node::SetTexmap(Texmap* map) {
    if (map == texmap_) return;
    if (map) map->AddReference();
    Texmap* const before = texmap_;
    texmap_ = map;
    if (before) before->ReleaseReference();
    noteSceneChanged();
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

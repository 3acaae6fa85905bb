#include "scene.h"

#include <algorithm>

#include "changes.h"

namespace kiln {

namespace {

DWORD lastHandle = 0;  // of all scenes, so that an old handle never names a new node

}  // namespace

Scene::Scene() : byHandle_(lastHandle + 1), root_(new Node(*this, ++lastHandle, "Scene Root")) {
    live_.insert(static_cast<const INode*>(root_));
}

Scene::~Scene() {
    selection_.clear();
    const std::vector<Node*> all = subtreeOf(root_);
    for (Node* const node : all) delete node;
    for (Texmap* const map : texmaps_) map->ReleaseReference();
}

void Scene::show(SceneListener& listener, MakerRegistry& makers) noexcept {
    listener_ = &listener;
    makers_ = &makers;
    makers.sceneReplaced(&names_);
}

Node* Scene::createNode(Object* object, std::string name, Node* parent) {
    auto node = std::make_unique<Node>(*this, ++lastHandle, std::move(name));
    node->SetObjectRef(object);
    Node* const made = node.release();
    bool named = false;
    try {
        live_.insert(static_cast<const INode*>(made));
        byHandle_.insert(made->GetHandle(), made);
        names_.add(made);
        named = true;
        parent->adopt(made);
    } catch (...) {
        if (named) names_.remove(made);
        byHandle_.erase(made->GetHandle());
        live_.erase(static_cast<const INode*>(made));
        delete made;
        throw;
    }
    noteSceneChanged();
    return made;
}

void Scene::deleteNode(INode* which) {
    if (!which || which == root_ || deleting_ || !contains(which)) return;
    auto* const node = static_cast<Node*>(which);
    const std::vector<Node*> doomed = subtreeOf(node);
    deleting_ = true;
    for (Node* const one : doomed) one->setDying();
    for (Node* const one : doomed) notify(NOTIFY_NODE_DELETED, static_cast<INode*>(one));

    bool selectionChanged = false;
    node->unlink();
    for (Node* const one : doomed) {
        selectionChanged |= deselect(one);
        if (names_.remove(one) && makers_) makers_->nameFreed(one->name());
        byHandle_.erase(one->GetHandle());
        live_.erase(static_cast<const INode*>(one));
    }
    for (Node* const one : doomed) delete one;
    deleting_ = false;
    noteSceneChanged();
    if (selectionChanged) notify(NOTIFY_SELECTION_CHANGED);
}

void Scene::renameNode(Node* node, std::string& name, std::string newName) {
    names_.reserve();
    const bool wasLast = names_.remove(node);
    name.swap(newName);
    names_.add(node);
    if (wasLast && makers_) makers_->nameFreed(newName);
    noteSceneChanged();
    notify(NOTIFY_NODE_RENAMED, static_cast<INode*>(node));
}

Node* Scene::byHandle(DWORD handle) const noexcept {
    return byHandle_.find(handle);
}

void Scene::addTexmap(Texmap* map) {
    if (!map || listed_.contains(map)) return;
    texmaps_.push_back(map);
    try {
        listed_.insert(map);
    } catch (...) {
        texmaps_.pop_back();
        throw;
    }
    map->AddReference();
    noteSceneChanged();
}

bool Scene::removeTexmap(Texmap* map) noexcept {
    if (listed_.erase(map) == 0) return false;
    // Looked for from both ends, where the list also closes up cheaply: who takes out very many
    // does so in their order or the other way round.
    std::size_t first = 0, last = texmaps_.size() - 1;
    while (texmaps_[first] != map && texmaps_[last] != map) ++first, --last;
    const std::size_t found = texmaps_[first] == map ? first : last;
    texmaps_.erase(texmaps_.begin() + static_cast<std::ptrdiff_t>(found));
    map->ReleaseReference();
    noteSceneChanged();
    return true;
}

bool Scene::select(Node* node) {
    if (!node || node == root_ || node->dying() || node->Selected()) return false;
    selection_.append(node);
    return true;
}

bool Scene::deselect(Node* node) noexcept {
    if (!node || !node->Selected()) return false;
    selection_.remove(node);
    return true;
}

bool Scene::clearSelection() noexcept {
    if (selection_.empty()) return false;
    selection_.clear();
    return true;
}

void Scene::notify(int code, void* parameter) {
    if (listener_) listener_->sceneNotifies(code, parameter);
}

void Scene::nodeInvalidated(Node* node) {
    if (listener_) listener_->sceneNodeInvalidated(node);
}

}  // namespace kiln

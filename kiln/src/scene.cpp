#include "scene.h"

#include <algorithm>
#include <span>

#include "changes.h"
#include "nodebytes.h"

namespace kiln {

namespace {

DWORD newestHandle = 0;  // of all scenes, so that an old handle never names a new node

}  // namespace

Scene::Scene() : byHandle_(newestHandle + 1), root_(new Node(*this, ++newestHandle, "Scene Root")) {
    live_.insert(static_cast<const INode*>(root_));
}

Scene::~Scene() {
    history_.end();
    selection_.clear();
    const std::vector<Node*> all = subtreeOf(root_);
    for (Node* const node : all) delete node;
    for (Texmap* const map : texmaps_) map->ReleaseReference();
}

void Scene::show(SceneListener& listener, MakerRegistry& makers) noexcept {
    listener_ = &listener;
    makers_ = &makers;
    makers.sceneReplaced(&names_);
    SceneHistory::setCurrent(&history_);
}

DWORD Scene::lastHandle() noexcept {
    return newestHandle;
}

namespace {

std::size_t bytesOfAll(const std::vector<Node*>& nodes) noexcept {
    std::size_t bytes = std::span(nodes).size_bytes();
    for (const Node* const node : nodes) bytes += bytesOf(*node);
    return bytes;
}

/// The deletion of a node with all below it.
class Deletion final : public RecordedChange {
public:
    /// `nodes` are in the order of `subtreeOf`.
    Deletion(Scene& scene, std::vector<Node*> nodes) noexcept
        : scene_(scene), nodes_(std::move(nodes)) {}
    ~Deletion() override {
        if (!out_) return;
        nodes_.front()->giveUpPlace();
        for (Node* const node : nodes_) scene_.forget(node);
    }

    void turn() noexcept override {
        if (out_) {
            for (auto node = nodes_.rbegin(); node != nodes_.rend(); ++node)
                scene_.bringBack(*node);
            nodes_.front()->comeBack();
        } else {
            nodes_.front()->leavePlace();
            for (Node* const node : nodes_) scene_.takeOut(node);
        }
        out_ = !out_;
    }
    void tell() const override {
        for (Node* const node : nodes_)
            if (node->gone() == out_)
                scene_.notify(out_ ? NOTIFY_NODE_DELETED : NOTIFY_NODE_CREATED,
                              static_cast<INode*>(node));
    }

private:
    Scene& scene_;
    const std::vector<Node*> nodes_;
    bool out_ = false;
};

class NameChange final : public RecordedChange {
public:
    NameChange(Scene& scene, Node& node, std::string& name, std::string other) noexcept
        : scene_(scene), node_(node), name_(name), other_(std::move(other)) {}

    void turn() noexcept override { scene_.exchangeName(&node_, name_, other_, behind_); }
    void tell() const override {
        if (!node_.gone()) scene_.notify(NOTIFY_NODE_RENAMED, static_cast<INode*>(&node_));
    }

private:
    Scene& scene_;
    Node& node_;
    std::string& name_;
    std::string other_;
    Node* behind_ = nullptr;
};

}  // namespace

/// A texture map that comes into the scene's list, which has room for it, or goes.
class TexmapPresence final : public RecordedChange {
public:
    TexmapPresence(Scene& scene, Texmap& map, std::size_t index, bool isThere)
        : kept_(&map), scene_(scene), map_(map), index_(index), isThere_(isThere) {
        if (isThere) return;
        std::unordered_set<const Texmap*> alone{&map};
        entry_ = alone.extract(alone.begin());
    }

    void turn() noexcept override {
        if (isThere_) {
            scene_.texmaps_.erase(index_);
            entry_ = scene_.listed_.extract(&map_);
            map_.ReleaseReference();
        } else {
            scene_.texmaps_.insert(index_, &map_);
            scene_.listed_.insert(std::move(entry_));
            map_.AddReference();
        }
        isThere_ = !isThere_;
    }

private:
    KeptReference kept_;
    Scene& scene_;
    Texmap& map_;
    const std::size_t index_;
    bool isThere_;
    std::unordered_set<const Texmap*>::node_type entry_;  // of a map that is not there
};

Creations::~Creations() {
    if (!out_) return;
    for (DWORD handle = first_ + count_; handle-- > first_;) {
        Node* const node = scene_.anyByHandle(handle);
        node->giveUpPlace();
        scene_.forget(node);
    }
}

void Creations::turn() noexcept {
    if (out_) {
        for (DWORD handle = first_; handle < first_ + count_; ++handle) {
            Node* const node = scene_.anyByHandle(handle);
            scene_.bringBack(node);
            node->comeBack();
        }
    } else {
        for (DWORD handle = first_ + count_; handle-- > first_;) {
            Node* const node = scene_.anyByHandle(handle);
            node->leavePlace();
            scene_.takeOut(node);
        }
    }
    out_ = !out_;
}

void Creations::tell() const {
    for (DWORD handle = first_; handle < first_ + count_; ++handle) {
        Node* const node = scene_.anyByHandle(handle);
        if (node && node->gone() == out_)
            scene_.notify(out_ ? NOTIFY_NODE_DELETED : NOTIFY_NODE_CREATED,
                          static_cast<INode*>(node));
    }
}

Node* Scene::createNode(Object* object, std::string name, Node* parent) {
    const bool isRecorded = SceneHistory::recording() == &history_;
    if (isRecorded) history_.prepare();
    auto node = std::make_unique<Node>(*this, ++newestHandle, std::move(name));
    Node* const made = node.get();
    bool named = false;
    bool adopted = false;
    try {
        live_.insert(static_cast<const INode*>(made));
        byHandle_.insert(made->GetHandle(), made);
        names_.add(made);
        named = true;
        parent->adopt(made);
        adopted = true;
        if (isRecorded) history_.addCreation(made->GetHandle());
    } catch (...) {
        if (adopted) made->unlink();
        if (named) names_.remove(made);
        byHandle_.erase(made->GetHandle());
        live_.erase(static_cast<const INode*>(made));
        throw;
    }
    ++nodeCount_;
    static_cast<void>(node.release());
    made->SetObjectRef(object);
    noteSceneChanged();
    return made;
}

void Scene::deleteNode(INode* which) {
    if (!which || which == root_ || deleting_ || !contains(which)) return;
    auto* const node = static_cast<Node*>(which);
    std::vector<Node*> doomed = subtreeOf(node);
    const bool isRecorded = SceneHistory::recording() == &history_;
    const std::size_t bytes = isRecorded ? bytesOfAll(doomed) : 0;
    if (isRecorded) history_.expect(bytes);
    const auto setState = [&](Node::State state) {
        for (Node* const one : doomed) one->setState(state);
    };
    deleting_ = true;
    setState(Node::State::kDying);
    for (Node* const one : doomed) notify(NOTIFY_NODE_DELETED, static_cast<INode*>(one));
    deleting_ = false;
    setState(Node::State::kInScene);

    const std::size_t selected = selection_.size();
    if (isRecorded)
        history_.add<Deletion>(bytes, 0, *this, std::move(doomed)).turn();
    else
        Deletion(*this, std::move(doomed)).turn();
    noteSceneChanged();
    if (selection_.size() != selected) notify(NOTIFY_SELECTION_CHANGED);
}

void Scene::takeOut(Node* node) noexcept {
    deselect(node);
    if (names_.remove(node) && makers_) makers_->nameFreed(node->name());
    node->setState(Node::State::kGone);
    --nodeCount_;
}

void Scene::bringBack(Node* node) noexcept {
    names_.insert(node, node->nameLinks().next);
    node->setState(Node::State::kInScene);
    ++nodeCount_;
}

void Scene::forget(Node* node) noexcept {
    byHandle_.erase(node->GetHandle());
    live_.erase(static_cast<const INode*>(node));
    delete node;
}

void Scene::renameNode(Node* node, std::string& name, std::string newName) {
    names_.reserve();
    const bool isRecorded =
        SceneHistory::recording() == &history_ && !history_.wasJustMade(node->GetHandle());
    if (isRecorded) {
        const std::size_t bytes = name.capacity();
        history_.add<NameChange>(bytes, 0, *this, *node, name, std::move(newName)).turn();
    } else {
        NameChange(*this, *node, name, std::move(newName)).turn();
    }
    noteSceneChanged();
    notify(NOTIFY_NODE_RENAMED, static_cast<INode*>(node));
}

void Scene::exchangeName(Node* node, std::string& name, std::string& other,
                         Node*& behind) noexcept {
    const bool wasLast = names_.remove(node);
    Node* const wasBefore = node->nameLinks().next;
    name.swap(other);
    names_.insert(node, behind);
    behind = wasBefore;
    if (wasLast && makers_) makers_->nameFreed(other);
}

Node* Scene::byHandle(DWORD handle) const noexcept {
    Node* const node = byHandle_.find(handle);
    return node && !node->gone() ? node : nullptr;
}

void Scene::addTexmap(Texmap* map) {
    if (!map || listed_.contains(map)) return;
    texmaps_.makeRoom();
    if (listed_.size() + 1 > listed_.bucket_count()) listed_.reserve(2 * listed_.size() + 1);
    makeTexmapPresent(*map, texmaps_.size(), false);
}

bool Scene::removeTexmap(Texmap* map) {
    if (!listed_.contains(map)) return false;
    // Looked for from both ends: who takes out very many does so in their order or the other way
    // round.
    std::size_t first = 0, last = texmaps_.size() - 1;
    while (texmaps_[first] != map && texmaps_[last] != map) ++first, --last;
    makeTexmapPresent(*map, texmaps_[first] == map ? first : last, true);
    return true;
}

void Scene::makeTexmapPresent(Texmap& map, std::size_t index, bool isThere) {
    if (SceneHistory::recording() == &history_)
        history_.add<TexmapPresence>(isThere ? sizeof map : 0, 0, *this, map, index, isThere)
            .turn();
    else
        TexmapPresence(*this, map, index, isThere).turn();
    noteSceneChanged();
}

bool Scene::select(Node* node) {
    if (!node || node == root_ || node->dying() || node->Selected()) return false;
    selection_.append(node);
    noteSelectionChanged();
    return true;
}

bool Scene::deselect(Node* node) noexcept {
    if (!node || !node->Selected()) return false;
    selection_.remove(node);
    noteSelectionChanged();
    return true;
}

bool Scene::clearSelection() noexcept {
    if (selection_.empty()) return false;
    selection_.clear();
    noteSelectionChanged();
    return true;
}

SelectionList Scene::selectionList() {
    if (!isListCurrent_) {
        std::vector<Node*> nodes;
        nodes.reserve(selection_.size());
        selection_.forEach([&](Node* node) { nodes.push_back(node); });
        selectionList_ =
            nodes.empty() ? nullptr : std::make_shared<const std::vector<Node*>>(std::move(nodes));
        isListCurrent_ = true;
    }
    return selectionList_;
}

void Scene::restoreSelection(const SelectionList& list) noexcept {
    if (isListCurrent_ && selectionList_ == list) return;
    const std::size_t wanted = list ? list->size() : 0;
    if (selection_.size() == wanted) {
        std::size_t same = 0;
        std::size_t index = 0;
        selection_.forEach([&](const Node* node) { same += (*list)[index++] == node ? 1 : 0; });
        if (same == wanted) return;
    }
    selection_.clear();
    noteSelectionChanged();
    try {
        for (std::size_t i = 0; i < wanted; ++i) selection_.append((*list)[i]);
        selectionList_ = list;
        isListCurrent_ = true;
    } catch (...) {
        selection_.clear();  // of less weight than the undo
    }
}

void Scene::notify(int code, void* parameter) {
    if (listener_) listener_->sceneNotifies(code, parameter);
}

void Scene::nodeInvalidated(Node* node) {
    if (listener_) listener_->sceneNodeInvalidated(node);
}

}  // namespace kiln

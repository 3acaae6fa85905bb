// A scene: its nodes, names, texture maps and selection.
#pragma once

#include <base/filestamp.h>
#include <kiln/notify.h>
#include <kiln/texmap.h>

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>

#include "names.h"
#include "node.h"
#include "nodetables.h"

namespace kiln {

/// Hears of what happens in the scene that it shows.
class SceneListener {
public:
    virtual void sceneNotifies(int code, void* parameter) = 0;
    virtual void sceneNodeInvalidated(Node* node) = 0;

protected:
    ~SceneListener() = default;
};

/// A scene. It is silent until it gets a listener, so that one can be built beside the one in use.
class Scene {
public:
    Scene();
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    /// Shows the scene: notifications go to `listener` and name makers follow it. Both outlive it.
    void show(SceneListener& listener, MakerRegistry& makers) noexcept;

    Node* root() const noexcept { return root_; }
    const NameIndex& names() const noexcept { return names_; }

    /// Makes a node below `parent` and takes a reference to `object` (may be null). Silent.
    Node* createNode(Object* object, std::string name, Node* parent);
    /// Does nothing for the root and for what is not, or no longer, a node of the scene.
    void deleteNode(INode* which);
    void renameNode(Node* node, std::string& name, std::string newName);
    bool contains(const INode* node) const noexcept {
        return live_.contains(static_cast<const void*>(node));
    }
    Node* byHandle(DWORD handle) const noexcept;
    Node* byName(std::string_view name) const noexcept { return names_.find(name); }
    std::size_t nodeCount() const noexcept { return byHandle_.size(); }
    /// Whether nodes are being deleted; nothing else may be deleted meanwhile.
    bool deleting() const noexcept { return deleting_; }

    /// The file that it was opened from or saved to last, as it was then.
    struct File {
        std::string path;  ///< empty for none
        std::optional<base::FileStamp> stamp;
    };
    File file;

    const std::deque<Texmap*>& texmaps() const noexcept { return texmaps_; }
    void addTexmap(Texmap* map);
    bool removeTexmap(Texmap* map) noexcept;

    const auto& selection() const noexcept { return selection_; }
    /// Each returns whether the selection changed. Silent.
    bool select(Node* node);
    bool deselect(Node* node) noexcept;
    bool clearSelection() noexcept;

    void notify(int code, void* parameter = nullptr);
    void nodeInvalidated(Node* node);

private:
    SceneListener* listener_ = nullptr;
    MakerRegistry* makers_ = nullptr;
    NodeList<&Node::selectionBlock> selection_;
    HandleTable byHandle_;  // without the root
    NameIndex names_{byHandle_};
    AddressSet live_;  // with the root
    std::deque<Texmap*> texmaps_;
    std::unordered_set<const Texmap*> listed_;  // those in `texmaps_`
    bool deleting_ = false;
    Node* root_;
};

}  // namespace kiln

// A scene: its nodes, names, texture maps and selection.
#pragma once

#include <base/filestamp.h>
#include <kiln/notify.h>
#include <kiln/texmap.h>

#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "names.h"
#include "node.h"
#include "nodetables.h"
#include "scenehistory.h"
#include "texmaplist.h"

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
    /// Throws `std::bad_alloc`, and has then made nothing.
    Node* createNode(Object* object, std::string name, Node* parent);
    /// The handle that was given last, in any scene.
    static DWORD lastHandle() noexcept;
    /// Does nothing for the root and for what is not, or no longer, a node of the scene.
    void deleteNode(INode* which);
    void renameNode(Node* node, std::string& name, std::string newName);
    bool contains(const INode* node) const noexcept {
        return live_.contains(static_cast<const void*>(node)) &&
               !static_cast<const Node*>(node)->gone();
    }
    Node* byHandle(DWORD handle) const noexcept;
    Node* byName(std::string_view name) const noexcept { return names_.find(name); }
    std::size_t nodeCount() const noexcept { return nodeCount_; }
    /// Whether nodes are being deleted, notifications of an undo sent, or another scene is being
    /// read: nothing may be replaced or undone meanwhile.
    bool isBusy() const noexcept { return deleting_ || history_.telling() || history_.isPaused(); }

    /// The file that it was opened from or saved to last, as it was then.
    struct File {
        std::string path;  ///< empty for none
        std::optional<base::FileStamp> stamp;
    };
    File file;

    SceneHistory& history() noexcept { return history_; }
    const SceneHistory& history() const noexcept { return history_; }

    // For the history, which keeps nodes that are not in the scene.

    /// A node whether it is in the scene or gone.
    Node* anyByHandle(DWORD handle) const noexcept { return byHandle_.find(handle); }
    /// A node's name and selection when it leaves and comes back.
    void takeOut(Node* node) noexcept;
    void bringBack(Node* node) noexcept;
    /// Deletes a node that is gone.
    void forget(Node* node) noexcept;
    /// Gives a node another name, among those of the same name before `behind`, and returns in both
    /// what it had.
    void exchangeName(Node* node, std::string& name, std::string& other, Node*& behind) noexcept;

    const TexmapList& texmaps() const noexcept { return texmaps_; }
    void addTexmap(Texmap* map);
    bool removeTexmap(Texmap* map);

    const auto& selection() const noexcept { return selection_; }
    /// The selection as it is now. Throws `std::bad_alloc`.
    SelectionList selectionList();
    /// Selects the nodes of a list and no others, as far as there is memory for it. Silent.
    void restoreSelection(const SelectionList& list) noexcept;
    /// How often the selection has changed.
    std::uint64_t selectionChanges() const noexcept { return selectionChanges_; }
    /// Each returns whether the selection changed. Silent.
    bool select(Node* node);
    bool deselect(Node* node) noexcept;
    bool clearSelection() noexcept;

    void notify(int code, void* parameter = nullptr);
    void nodeInvalidated(Node* node);

private:
    friend class TexmapPresence;

    void noteSelectionChanged() noexcept {
        isListCurrent_ = false;
        ++selectionChanges_;
    }
    void makeTexmapPresent(Texmap& map, std::size_t index, bool isThere);

    SceneListener* listener_ = nullptr;
    MakerRegistry* makers_ = nullptr;
    NodeList<&Node::selectionBlock> selection_;
    HandleTable byHandle_;  // without the root, with nodes that are gone
    NameIndex names_{byHandle_};
    AddressSet live_;  // with the root and nodes that are gone
    std::size_t nodeCount_ = 0;
    TexmapList texmaps_;
    std::unordered_set<const Texmap*> listed_;  // those in `texmaps_`
    SelectionList selectionList_;               // of the selection, unless that has changed since
    bool isListCurrent_ = true;
    std::uint64_t selectionChanges_ = 0;
    bool deleting_ = false;
    Node* root_;
    SceneHistory history_{*this};
};

}  // namespace kiln

// Turns the host's scene into what the viewport draws.
#pragma once

#include <workbench/scenemodel.h>

#include <kiln/interface.h>

#include <span>
#include <vector>

namespace workbench {

/// Numbers for the status bar.
struct SceneCounts {
    int nodes = 0;          ///< without the root
    int hidden = 0;         ///< nodes that are hidden themselves
    std::size_t faces = 0;  ///< triangles shown
};

/// Keeps a model and the node behind each of its items. Node pointers are those of the scene at the
/// last `build`.
class SceneFeed {
public:
    /// Reads the whole scene. Hidden nodes are left out, and what they shine with;
    /// their children are not.
    void build(Interface& host);
    /// Takes over which nodes are selected, when nothing else has changed since `build`.
    void updateSelection();
    /// Forgets the scene, whose nodes are about to go.
    void clear();

    const SceneModel& model() const { return model_; }
    /// Null for kNoItem.
    INode* nodeOf(ItemIndex item) const;
    /// The nodes behind all items.
    std::span<INode* const> nodes() const { return nodes_; }
    const SceneCounts& counts() const { return counts_; }

private:
    struct Visit {
        INode* node;
        std::size_t parent;  ///< position in visits_
        ItemIndex item;      ///< kNoItem for a hidden node
        Box subtree;
    };

    void visitAll(INode* root);
    void addNode(INode& node);
    void addLight(const class Matrix3& place, const class GenLight& light);
    void addMesh(const class Matrix3& place, const struct Mesh& mesh, Colour colour);
    void addFinishes(const class Matrix3& place, const struct Mesh& mesh);
    void addPoints(const class Matrix3& place, const struct Mesh& mesh);
    void boundSubtrees();

    SceneModel model_;
    std::vector<INode*> nodes_;  // by item
    std::vector<Visit> visits_;
    std::vector<char> chosen_;      // by visit: selected, or below what is
    std::vector<Finish> finishes_;  // working memory
    SceneCounts counts_;
};

}  // namespace workbench

// Turns the host's scene into what the viewport draws.
#pragma once

#include <render/scenemodel.h>
#include <render/texturestore.h>

#include <kiln/interface.h>
#include <kiln/nodelook.h>

#include <span>
#include <vector>

namespace render {

/// Numbers for the status bar.
struct SceneCounts {
    int nodes = 0;          ///< without the root
    int hidden = 0;         ///< nodes that are hidden themselves
    std::size_t faces = 0;  ///< polygons shown
};

/// Keeps a model and the node behind each of its items. Node pointers are those of the scene at the
/// last `build`.
class SceneFeed {
public:
    /// Reads the whole scene. Hidden nodes are left out, and what they shine with;
    /// their children are not, except below what only instances show. What a switch does not show
    /// is left out with all below it. A node that shows another
    /// one's subtree shows it in its own place; what shows itself in this way is left out at the
    /// second time. Throws `std::bad_alloc`, with a part of the scene shown.
    void build(Interface& host);
    /// Takes over which nodes are selected, when nothing else has changed since `build`.
    void updateSelection();
    /// Forgets the scene, whose nodes are about to go.
    void clear();

    const SceneModel& model() const { return model_; }
    /// Null for kNoItem. What an instance shows is the node that shows it.
    INode* nodeOf(ItemIndex item) const;
    /// The nodes that are shown in their own place, each once.
    std::span<INode* const> nodes() const { return shown_; }
    /// Pictures that could not be shown since this was asked last, one sentence each.
    std::vector<std::string> takeFailures() { return textures_.takeFailures(); }
    const SceneCounts& counts() const { return counts_; }

private:
    /// That many nodes are shown by way of instances; a file of nested ones could ask for more than
    /// any memory holds.
    static constexpr std::size_t kMostInstanced = 200'000;
    /// Instances within one another; each is compared with all that it is part of.
    static constexpr std::size_t kDeepestInstance = 512;

    /// Where the subtree of a node stands that is shown by way of another.
    struct Instance {
        INode* definition;
        INode* instancer;   ///< the node of the scene that shows it
        std::size_t above;  ///< the instance that this one is part of; 0 for none
        std::size_t depth;  ///< how many those are
    };

    /// What nodes have from those above them.
    struct Inherited {
        Matrix3 move;  ///< from where the scene has them to where they are shown
        bool isMoved = false;
        bool smooth = true;
        std::uint8_t hours = kAllHours;
        float opacity = 1;
        RangeIndex range = 0;
    };

    struct Visit {
        INode* node;
        std::size_t parent;        ///< position in visits_
        ItemIndex item;            ///< kNoItem for one that is not shown
        std::size_t instance = 0;  ///< that shows it; 0 for none
        Box subtree;
        bool elsewhere = false;       ///< in what is seen only where instances show it
        bool isOff = false;           ///< a switch above does not show it
        std::uint32_t inherited = 0;  ///< index in inherited_
    };

    /// A range that is measured to the middle of what hangs below a node.
    struct Measured {
        RangeIndex range;
        std::size_t visit;
    };

    void reset();
    void readScene(Interface& host);
    void visitAll(INode* root);
    void visit(std::size_t at);
    void visitChildren(std::size_t at);
    std::uint32_t inheritanceOf(std::size_t at, const NodeBranch& branch);
    void addRange(std::size_t at, const ViewRange& range, Inherited& below);
    bool isElsewhere(const Visit& visit) const;
    void visitInstanced(std::size_t at, INode& definition);
    bool mayShow(const INode& definition, std::size_t within) const;
    Matrix3 placeOf(const Visit& visit) const;
    void addNode(const Visit& visit, bool standsForAnother);
    COLORREF addLight(const Matrix3& place, const class GenLight& light, INode& node);
    void addMesh(const Matrix3& place, const struct Mesh& mesh, INode& node,
                 const Inherited& inherited);
    void addTriangles(const struct Mesh& mesh, const NodeLook& look, Color color, bool isTextured,
                      bool isMirrored);
    NodeLook lookOf(INode& node);
    Surface surfaceFor(const NodeLook& look, bool hasTexture, Color wireColor);
    void addFinishes(const Matrix3& place, const struct Mesh& mesh, const NodeLook& look);
    void addPoints(const Matrix3& place, const struct Mesh& mesh);
    void boundSubtrees();

    SceneModel model_;
    TextureStore textures_;
    NodeLookSource* looks_ = nullptr;  // while the scene is being read
    std::vector<INode*> nodes_;        // by item
    std::vector<INode*> shown_;
    std::vector<Visit> visits_;
    std::vector<Instance> instances_;   // the first stands for none
    std::vector<Inherited> inherited_;  // the first is that of the root
    std::vector<Measured> measured_;
    std::size_t instanced_ = 0;     // nodes shown by way of instances
    std::vector<char> chosen_;      // by visit: selected, or below what is
    std::vector<Finish> finishes_;  // working memory
    SceneCounts counts_;
};

}  // namespace render

// Changes of the scene, told once.
#pragma once

#include <kiln/platform.h>

#include <array>
#include <cstddef>
#include <span>
#include <vector>

class INode;

/// Hears that the scene has changed, whoever changed it: what there is, names, places, transforms,
/// objects, texture maps, visibility, wire colors, chunks and custom attributes. Any number of
/// changes is told once, until `Take` asks for them. The selection is not part of it. Who asks for
/// the views to be drawn anew (`Interface::RedrawViews`) is heard as well, and has changed nothing.
class KILNAPI SceneWatch {
public:
    /// What is called at the first change. The change may be half made: take note, ask for a
    /// redraw, and read the scene later. Must not throw, change the scene, or make or end a watch.
    using Told = void (*)(void* param);

    SceneWatch(Told told, void* param) noexcept;
    ~SceneWatch();
    SceneWatch(const SceneWatch&) = delete;
    SceneWatch& operator=(const SceneWatch&) = delete;

    /// Whether there were changes since this was asked last. The next one is told again.
    bool Take() noexcept;
    /// Whether `Take` would say so.
    bool HasChanged() const noexcept { return changed_; }

    /// So many nodes are named one by one.
    static constexpr std::size_t kMostNodes = 256, kMostMoved = 1'000'000;
    /// The nodes that `Take` has not told of yet and of which the object, the texture map, the wire
    /// color or a chunk have changed, or what the host cannot see of them; some of them more than
    /// once. Names nothing while there were other changes.
    std::span<INode* const> ChangedNodes() const noexcept { return {nodes_.data(), nodeCount_}; }
    /// The same of nodes of which the transform has changed, at most `kMostMoved`. What hangs below
    /// them has moved with them and is not named.
    std::span<INode* const> MovedNodes() const noexcept { return moved_; }
    /// Whether anything else may have changed: what there is, where it hangs, what is hidden,
    /// things that are no nodes, or more nodes than are named.
    bool HasChangedOtherwise() const noexcept { return changedOtherwise_; }

private:
    friend struct SceneWatches;

    const Told told_;
    void* const param_;
    bool changed_ = false;
    bool changedOtherwise_ = false;
    std::array<INode*, kMostNodes> nodes_{};
    std::size_t nodeCount_ = 0;
    std::vector<INode*> moved_;
    SceneWatch* next_;
};

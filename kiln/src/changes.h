// What the scene's changes lead to.
#pragma once

#include <cstdint>

class Animatable;
class INode;

namespace kiln {

/// Something of the scene has changed: whoever watches it is told.
void noteSceneChanged() noexcept;
/// The same, of this one thing alone.
void noteSceneChanged(Animatable& thing) noexcept;
/// The same, of where this node is alone.
void noteMoved(INode& node) noexcept;
/// Another scene is shown now, which has not been changed.
void noteSceneReplaced() noexcept;
/// How often either was, in scenes that are read too.
std::uint64_t sceneChangeCount() noexcept;
/// The node looks different, though nothing that is saved has changed.
void noteLookChanged(INode& node) noexcept;
/// The views are to be drawn anew, of a scene that has not changed.
void noteRedraw() noexcept;

/// While it lives, what changes is a scene that is not shown: none of these is told.
class ChangesAside {
public:
    ChangesAside() noexcept;
    ~ChangesAside();
    ChangesAside(const ChangesAside&) = delete;
    ChangesAside& operator=(const ChangesAside&) = delete;
};

}  // namespace kiln

// What the scene's changes lead to.
#pragma once

#include <cstdint>

namespace kiln {

/// Something of the scene has changed: whoever watches it is told.
void noteSceneChanged() noexcept;
/// Another scene is shown now, which has not been changed.
void noteSceneReplaced() noexcept;
/// How often either was, in scenes that are read too.
std::uint64_t sceneChangeCount() noexcept;
/// The scene looks different, though nothing that is saved has changed.
void noteLookChanged() noexcept;

/// While it lives, what changes is a scene that is not shown: none of these is told.
class ChangesAside {
public:
    ChangesAside() noexcept;
    ~ChangesAside();
    ChangesAside(const ChangesAside&) = delete;
    ChangesAside& operator=(const ChangesAside&) = delete;
};

}  // namespace kiln

// What the scene's changes lead to.
#pragma once

#include <cstdint>

namespace kiln {

/// Something of the scene has changed: it counts as modified, and whoever watches it is told.
void noteSceneChanged() noexcept;
/// How often that was, in scenes that are read too.
std::uint64_t sceneChangeCount() noexcept;
/// The scene looks different, though nothing that is saved has changed.
void noteLookChanged() noexcept;

/// Whether the scene has changed since it was made, opened or saved.
void setSceneModified(bool modified) noexcept;
bool sceneModified() noexcept;

}  // namespace kiln

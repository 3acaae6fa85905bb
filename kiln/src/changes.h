// What the scene's changes lead to.
#pragma once

namespace kiln {

/// Something of the scene has changed: whoever watches it is told.
void noteSceneChanged() noexcept;
/// The scene looks different, though nothing that is saved has changed.
void noteLookChanged() noexcept;

}  // namespace kiln

// Whether the scene has changed since it was made, opened or saved.
#pragma once

namespace kiln {

void setSceneModified(bool modified) noexcept;
bool sceneModified() noexcept;

}  // namespace kiln

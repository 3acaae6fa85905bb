// Which keys are held.
#pragma once

#include <framework/win32.h>

namespace grid {

inline bool isDown(int key) noexcept {
    return ::GetKeyState(key) < 0;
}

/// Ctrl without Alt. Both together are AltGr, which types characters.
inline bool isControlDown() noexcept {
    return isDown(VK_CONTROL) && !isDown(VK_MENU);
}

}  // namespace grid

// Edit fields whose text stands in the middle of their height.
#pragma once

#include <framework/win32.h>

namespace framework {

/// Moves the first line of an edit control, which stands at the control's upper edge, to the middle
/// of the control, or of its upper `height` pixels where that is not 0. It stays there when the
/// control gets another size or font. For the control's life; nothing happens where the platform
/// refuses.
void centreText(HWND edit, int height = 0) noexcept;

}  // namespace framework

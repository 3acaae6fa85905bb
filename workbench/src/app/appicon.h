// The program's icon, drawn by the program's own renderer.
#pragma once

#include <framework/win32.h>

namespace workbench {

/// An icon of `size` by `size` pixels that shows a shaded cube. The caller owns it; null when the
/// platform refuses.
HICON makeAppIcon(int size);

}  // namespace workbench

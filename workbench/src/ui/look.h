// Fonts and colors that the workbench's windows share.
#pragma once

#include <framework/gdi.h>

namespace workbench {

/// The fonts for one display scaling; Tahoma, which falls back to a font with Chinese glyphs.
class Look {
public:
    /// For the display that a window is on. Lives as long as the program.
    static const Look& of(HWND window);

    HFONT normal() const { return normal_.get(); }
    HFONT bold() const { return bold_.get(); }
    /// Fixed pitch, for scripts.
    HFONT script() const { return script_.get(); }

    explicit Look(int dpi);

private:
    framework::GdiFont normal_, bold_, script_;
};

}  // namespace workbench

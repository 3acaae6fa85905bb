// Picture buttons.
#pragma once

#include <framework/controls.h>

namespace framework {

/// An owner-drawn button whose pictures are the module's bitmap resources named after its caption:
/// caption "Up" takes UPU (up), UPD (pressed), UPF (with focus) and UPX (disabled). Only the first
/// is needed; without the others the button shifts the picture when pressed, draws the platform's
/// focus rectangle, and greys the picture. Magenta (255, 0, 255) in a picture is see-through.
///
/// A picture as large as the button (at 100 % display scaling) is its whole face and is stretched
/// over it; a smaller one stands in the middle of a push button's frame. A focus picture must show
/// the keyboard focus by itself.
/// Its parent must be an object of this layer, which passes the drawing messages on.
class CBitmapButton : public CButton {
public:
    /// Connects the control `id` of `parent`, makes it owner-drawn and loads the pictures by its
    /// caption. False when the control or the first picture is missing.
    bool AutoLoad(int id, HWND parent);

    /// Loads the pictures by resource name. Empty names are allowed except for the first. False
    /// when that one is missing; the button then shows its caption.
    bool LoadBitmaps(const std::string& up, const std::string& down = {},
                     const std::string& focus = {}, const std::string& disabled = {});

protected:
    void DrawItem(const DRAWITEMSTRUCT& item) override;
    UINT OnGetDlgCode(const MSG* message) override;
    void OnEnable(bool enabled) override;
    void OnMouseMove(UINT keys, POINT at) override;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    HBITMAP PictureFor(UINT state) const noexcept;

    GdiBitmap up_, down_, focus_, disabled_;
    bool hot_ = false;
    bool default_ = false;
};

}  // namespace framework

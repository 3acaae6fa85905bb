// Controls of a dialog that follow its size.
#pragma once

#include <framework/win32.h>

#include <span>
#include <vector>

namespace framework {

/// What a control does when the window is larger than its template: it moves by a share (0 to 1) of
/// the width that came in addition and becomes wider by another, and moves or grows by all of the
/// height or none.
struct Anchor {
    int id;
    double right = 0, wide = 0;
    bool down = false, high = false;
};

class AnchoredControls {
public:
    /// `anchors` outlive this.
    explicit AnchoredControls(std::span<const Anchor> anchors) noexcept : anchors_(anchors) {}

    /// Where the controls are now is right for a client area of the size `base`.
    void note(HWND dialog, SIZE base);
    /// The dialog goes.
    void forget() noexcept { places_.clear(); }
    /// Puts them where they belong in the present client area; false while no places are noted.
    bool place() const;

private:
    std::span<const Anchor> anchors_;
    HWND dialog_ = nullptr;
    SIZE base_{};
    std::vector<RECT> places_;
};

}  // namespace framework

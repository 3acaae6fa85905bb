#include <framework/anchoredcontrols.h>
#include <framework/cwnd.h>

#include <algorithm>

namespace framework {

void AnchoredControls::note(HWND dialog, SIZE base) {
    dialog_ = dialog;
    base_ = base;
    places_.clear();
    for (const Anchor& anchor : anchors_) {
        RECT area;
        ::GetWindowRect(::GetDlgItem(dialog, anchor.id), &area);
        ::MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&area), 2);
        places_.push_back(area);
    }
}

bool AnchoredControls::place() const {
    if (places_.empty()) return false;
    RECT area;
    ::GetClientRect(dialog_, &area);
    const int wider = static_cast<int>(area.right - base_.cx),
              higher = static_cast<int>(area.bottom - base_.cy);
    for (std::size_t i = 0; i < places_.size(); ++i) {
        const Anchor& anchor = anchors_[i];
        const RECT& place = places_[i];
        // The edges are rounded, so that what stands side by side stays so.
        const int left = static_cast<int>(anchor.right * wider),
                  right = static_cast<int>((anchor.right + anchor.wide) * wider);
        ::SetWindowPos(::GetDlgItem(dialog_, anchor.id), nullptr,
                       static_cast<int>(place.left) + left,
                       static_cast<int>(place.top) + (anchor.down ? higher : 0),
                       std::max(widthOf(place) + right - left, 0),
                       std::max(heightOf(place) + (anchor.high ? higher : 0), 0),
                       SWP_NOZORDER | SWP_NOACTIVATE);
    }
    return true;
}

}  // namespace framework

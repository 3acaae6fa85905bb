#include "formlayout.h"

#include <resources/resource.h>

#include <algorithm>
#include <array>

using framework::CWnd;

namespace tessera {
namespace {

// The controls that take the form's growth. All others keep their size, and all keep their corner.
struct Growth {
    int id;
    bool wide;
    bool high;
};
constexpr std::array kGrowths = {
    Growth{IDC_COMMENT, true, false},       Growth{IDC_GRID, true, true},
    Growth{IDC_TREE, false, true},          Growth{IDC_TREE_GROUP, false, true},
    Growth{IDC_PROPERTY_GROUP, true, true},
};

// The form can shrink until the grid has this many pixels left, at 100 % scaling.
constexpr int kSmallestGridWidth = 120;
constexpr int kSmallestGridHeight = 80;

SIZE sizeOf(const RECT& area) {
    return {area.right - area.left, area.bottom - area.top};
}

RECT areaOf(const CWnd& form, int id) {
    CWnd control;
    control.Attach(form.Item(id));
    return control.AreaInParent();
}

/// The size of the window with a client area of that size.
SIZE windowFor(const CWnd& form, SIZE client) {
    RECT area{0, 0, client.cx, client.cy};
    ::AdjustWindowRectEx(&area, form.Style(), FALSE,
                         static_cast<DWORD>(::GetWindowLongPtrW(form.Handle(), GWL_EXSTYLE)));
    return sizeOf(area);
}

}  // namespace

void FormLayout::initialise() {
    meet(sizeOf(form_.ClientRect()));
}

// The controls are where the template has them.
void FormLayout::meet(SIZE base) {
    alignControls();
    base_ = size_ = base;
    const SIZE window = windowFor(form_, base);
    const SIZE room = sizeOf(areaOf(form_, IDC_GRID));
    smallestTrack_ = {window.cx - std::max(0L, room.cx - form_.Scaled(kSmallestGridWidth)),
                      window.cy - std::max(0L, room.cy - form_.Scaled(kSmallestGridHeight))};
}

void FormLayout::renew(SIZE base) {
    const SIZE grown{size_.cx - base_.cx, size_.cy - base_.cy};
    meet(base);
    if (!::IsIconic(form_.Handle()) && !::IsZoomed(form_.Handle())) {
        const SIZE window = windowFor(form_, {base.cx + grown.cx, base.cy + grown.cy});
        ::SetWindowPos(form_.Handle(), nullptr, 0, 0, window.cx, window.cy,
                       SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    // The window may have kept its size.
    const SIZE client = sizeOf(form_.ClientRect());
    follow(static_cast<int>(client.cx), static_cast<int>(client.cy));
}

// Two controls choose a size of their own, which fits the template's at 100 % scaling only: the
// spinner its width, the list its height.
void FormLayout::alignControls() const {
    const RECT name = areaOf(form_, IDC_NAME);
    CWnd spinner;
    spinner.Attach(form_.Item(IDC_ITEM_SPIN));
    spinner.MoveTo({name.right, name.top, areaOf(form_, IDC_COMMENT).right, name.bottom});
    const RECT beside = areaOf(form_, IDC_CREATE);
    const RECT list = areaOf(form_, IDC_CREATE_KIND);
    const int top = (beside.top + beside.bottom - (list.bottom - list.top)) / 2;
    ::SetWindowPos(form_.Item(IDC_CREATE_KIND), nullptr, list.left, top, 0, 0,
                   SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

bool FormLayout::follow(int width, int height) {
    if (width < 2 || height < 2) return false;  // minimised
    if (size_.cx == 0) return false;
    grow(width - static_cast<int>(size_.cx), height - static_cast<int>(size_.cy));
    size_ = {width, height};
    return true;
}

void FormLayout::grow(int growX, int growY) const {
    HDWP moves = ::BeginDeferWindowPos(static_cast<int>(kGrowths.size()));
    for (const Growth& growth : kGrowths) {
        const SIZE size = sizeOf(areaOf(form_, growth.id));
        const int width = std::max(0L, size.cx + (growth.wide ? growX : 0));
        const int height = std::max(0L, size.cy + (growth.high ? growY : 0));
        if (moves)
            moves = ::DeferWindowPos(moves, form_.Item(growth.id), nullptr, 0, 0, width, height,
                                     SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    if (moves) ::EndDeferWindowPos(moves);
}

void FormLayout::limit(MINMAXINFO& info) const {
    info.ptMinTrackSize = {std::max(info.ptMinTrackSize.x, smallestTrack_.cx),
                           std::max(info.ptMinTrackSize.y, smallestTrack_.cy)};
}

// Neither minimised nor maximised any more. A hidden form stays hidden.
void FormLayout::restorePlacement() const {
    WINDOWPLACEMENT placement{};
    placement.length = sizeof placement;
    ::GetWindowPlacement(form_.Handle(), &placement);
    placement.showCmd = SW_SHOWNORMAL;
    const bool visible = form_.IsVisible();
    ::SetWindowPlacement(form_.Handle(), &placement);
    if (!visible) form_.Hide();
}

void FormLayout::resetPosition() const {
    if (::IsIconic(form_.Handle()) || ::IsZoomed(form_.Handle())) restorePlacement();
    // The recorded size is that of the client area.
    const SIZE window = windowFor(form_, size_);
    form_.MoveTo({0, 0, window.cx, window.cy});
    form_.Invalidate();
}

}  // namespace tessera

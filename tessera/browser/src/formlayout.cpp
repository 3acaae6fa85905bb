#include "formlayout.h"

#include <resources/resource.h>

#include <algorithm>

using framework::CWnd, framework::heightOf, framework::widthOf;

namespace tessera {
namespace {

// At 100 % scaling. The form can shrink until the grid has this height left; the splitter moves
// until the tree and the grid have these widths left.
constexpr int kSmallestGridHeight = 80;
constexpr int kSmallestTreeWidth = 80;
constexpr int kSmallestGridWidth = 200;
// To what it opens beside, and how much of its title bar must be there to pull the form by.
constexpr int kGapToOthers = 8;
constexpr int kReachOfBar = 100;
// In dialog units: a field, and the gap below it.
constexpr int kFieldHeight = 13;
constexpr int kGapBelowField = 3;

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
    template_ = size_ = base;
    noteControls();
    // The commands stand side by side over the whole width, so that is the least one.
    const SIZE window = windowFor(form_, base);
    const LONG spare = heightOf(areaOf(form_, IDC_GRID)) - form_.Scaled(kSmallestGridHeight);
    smallestTrack_ = {window.cx, window.cy - std::max(0L, spare)};
}

void FormLayout::renew(SIZE base) {
    const SIZE grown{size_.cx - template_.cx, size_.cy - template_.cy};
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

void FormLayout::noteControls() {
    controls_.clear();
    for (HWND child = ::GetWindow(form_.Handle(), GW_CHILD); child;
         child = ::GetWindow(child, GW_HWNDNEXT)) {
        CWnd control;
        control.Attach(child);
        controls_.push_back({child, control.AreaInParent(), ruleOf(control)});
    }
}

void FormLayout::replaced(HWND former, HWND made) {
    for (Placed& placed : controls_)
        if (placed.control == former) placed.control = made;
}

FormLayout::Rule FormLayout::ruleOf(const CWnd& control) const {
    switch (control.Id()) {
        case IDC_TREE:
        case IDC_TREE_GROUP:
            return {false, true, true};
        case IDC_GRID:
        case IDC_PROPERTY_GROUP:
            return {true, true, true};
        case IDC_COMMENT:
            return {true, true, false};
        default: {
            const RECT area = control.AreaInParent();
            const RECT side = areaOf(form_, IDC_PROPERTY_GROUP);
            return {area.top >= side.top && area.left >= side.left, false, false};
        }
    }
}

// ---------------------------------------------------------------- following size and splitter

bool FormLayout::follow(int width, int height) {
    if (width < 2 || height < 2) return false;  // minimised
    if (size_.cx == 0) return false;
    size_ = {width, height};
    arrange();
    return true;
}

const FormLayout::Placed& FormLayout::placed(int id) const {
    return *std::ranges::find(controls_, form_.Item(id), &Placed::control);
}

// Where the splitter is in a form of that width. At the template's width there is always room for
// where the template has it.
int FormLayout::splitterFor(int width) const {
    const auto widthInTemplate = [this](int id) { return widthOf(placed(id).area); };
    const int grown = width - static_cast<int>(template_.cx);
    const int least = form_.Scaled(kSmallestTreeWidth) - widthInTemplate(IDC_TREE);
    const int most = widthInTemplate(IDC_GRID) + grown - form_.Scaled(kSmallestGridWidth);
    return std::clamp(splitter_, std::min(least, 0), std::max(most, 0));
}

RECT FormLayout::areaFor(const Placed& placed, int splitter) const {
    RECT area = placed.area;
    const LONG grownX = size_.cx - template_.cx;
    if (placed.rule.moves) {
        ::OffsetRect(&area, splitter, 0);
        if (placed.rule.wide) area.right += grownX - splitter;
    } else if (placed.rule.wide) {
        area.right += splitter;
    }
    if (placed.rule.high) area.bottom += size_.cy - template_.cy;
    if (searchLine_ && placed.control == form_.Item(IDC_TREE)) area.top += searchLineHeight();
    return {area.left, area.top, std::max(area.left, area.right), std::max(area.top, area.bottom)};
}

void FormLayout::arrange() const {
    const int splitter = splitterFor(static_cast<int>(size_.cx));
    // The name and its spinner keep their size while they fit in.
    LONG excess = 0;
    for (const Placed& placed : controls_)
        if (::GetDlgCtrlID(placed.control) == IDC_COMMENT)
            excess = std::max(0L, placed.area.right + splitter - areaFor(placed, splitter).right);
    HDWP moves = ::BeginDeferWindowPos(static_cast<int>(controls_.size()));
    for (const Placed& placed : controls_) {
        RECT area = areaFor(placed, splitter);
        const int id = ::GetDlgCtrlID(placed.control);
        if (id == IDC_NAME) area.right -= excess;
        if (id == IDC_ITEM_SPIN) ::OffsetRect(&area, static_cast<int>(-excess), 0);
        if (moves && (placed.rule.moves || placed.rule.wide))
            moves = ::DeferWindowPos(moves, placed.control, nullptr, area.left, area.top,
                                     widthOf(area), heightOf(area), SWP_NOZORDER | SWP_NOACTIVATE);
    }
    if (moves) ::EndDeferWindowPos(moves);
}

int FormLayout::searchLineHeight() const {
    RECT line{0, 0, 0, kFieldHeight + kGapBelowField};
    ::MapDialogRect(form_.Handle(), &line);
    return static_cast<int>(line.bottom);
}

void FormLayout::setSearchLine(bool shown) {
    searchLine_ = shown;
    arrange();
}

RECT FormLayout::searchLine() const {
    RECT line = areaFor(placed(IDC_TREE), splitterFor(static_cast<int>(size_.cx)));
    RECT field{0, 0, 0, kFieldHeight};
    ::MapDialogRect(form_.Handle(), &field);
    line.top -= searchLineHeight();
    line.bottom = line.top + field.bottom;
    return line;
}

void FormLayout::setSplitter(int wider) {
    splitter_ = wider;
    arrange();
}

// ---------------------------------------------------------------- pulling the splitter

// The space between the two frames.
bool FormLayout::isOverSplitter(POINT at) const {
    const RECT left = areaOf(form_, IDC_TREE_GROUP);
    const RECT right = areaOf(form_, IDC_PROPERTY_GROUP);
    return at.x >= left.right - 1 && at.x <= right.left && at.y >= left.top && at.y < left.bottom;
}

void FormLayout::beginPull(POINT at) {
    pulling_ = true;
    pulledFrom_ = static_cast<int>(at.x) - splitterFor(static_cast<int>(size_.cx));
    ::SetCapture(form_.Handle());
}

bool FormLayout::pull(POINT at) {
    return moveSplitter(static_cast<int>(at.x) - pulledFrom_ -
                        splitterFor(static_cast<int>(size_.cx)));
}

bool FormLayout::moveSplitter(int by) {
    const int before = splitterFor(static_cast<int>(size_.cx));
    splitter_ = before + by;
    splitter_ = splitterFor(static_cast<int>(size_.cx));
    if (splitter_ == before) return false;
    arrange();
    return true;
}

// ---------------------------------------------------------------- the window

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

// The part of its screen that is free for windows.
RECT FormLayout::screen() const {
    MONITORINFO info{};
    info.cbSize = sizeof info;
    ::GetMonitorInfoW(::MonitorFromWindow(form_.Handle(), MONITOR_DEFAULTTONEAREST), &info);
    return info.rcWork;
}

void FormLayout::moveTo(POINT corner) const {
    ::SetWindowPos(form_.Handle(), nullptr, corner.x, corner.y, 0, 0,
                   SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void FormLayout::keepClearOf(const RECT& kept) const {
    const RECT window = form_.WindowRect();
    RECT common;
    if (!::IntersectRect(&common, &window, &kept)) return;
    const RECT free = screen();
    const LONG gap = form_.Scaled(kGapToOthers);
    const LONG left = kept.left - gap - widthOf(window);
    const LONG right = kept.right + gap;
    const LONG above = kept.top - gap - heightOf(window);
    const LONG below = kept.bottom + gap;
    if (left >= free.left)
        moveTo({left, window.top});
    else if (right + widthOf(window) <= free.right)
        moveTo({right, window.top});
    else if (above >= free.top)
        moveTo({window.left, above});
    else if (below + heightOf(window) <= free.bottom)
        moveTo({window.left, below});
}

void FormLayout::keepOnScreen() const {
    const RECT window = form_.WindowRect();
    RECT bar = window;
    bar.bottom = bar.top + ::GetSystemMetrics(SM_CYCAPTION);
    const LONG reach = form_.Scaled(kReachOfBar);
    const RECT free = screen();
    RECT shown;
    if (::IntersectRect(&shown, &bar, &free) &&
        widthOf(shown) >= std::min<LONG>(reach, widthOf(bar)) && bar.top >= free.top)
        return;
    moveTo({std::clamp(window.left, free.left, std::max(free.left, free.right - widthOf(window))),
            std::clamp(window.top, free.top, std::max(free.top, free.bottom - heightOf(window)))});
}

}  // namespace tessera

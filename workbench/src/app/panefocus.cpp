#include "panefocus.h"

#include "panes.h"

#include <algorithm>

namespace workbench {
namespace {

struct OwnedWindows {
    HWND main;
    std::vector<HWND> found;
};

bool isOwnedBy(HWND window, HWND main) {
    do window = ::GetWindow(window, GW_OWNER);
    while (window && window != main);
    return window == main;
}

BOOL CALLBACK collectOwned(HWND window, LPARAM param) {
    auto& owned = *reinterpret_cast<OwnedWindows*>(param);
    const bool takesKeys = ::IsWindowVisible(window) && ::IsWindowEnabled(window) &&
                           (::GetWindowLongW(window, GWL_STYLE) & WS_CAPTION) == WS_CAPTION;
    if (takesKeys && isOwnedBy(window, owned.main)) owned.found.push_back(window);
    return TRUE;
}

bool isWithin(HWND window, HWND outer) {
    return window == outer || ::IsChild(outer, window);
}

}  // namespace

// Windows come in an order of their own, which does not change while one goes through them.
std::vector<HWND> PaneFocus::stops() const {
    std::vector<HWND> stops = {panes_.viewport().Handle()};
    if (panes_.panel().firstStop()) stops.push_back(panes_.panel().Handle());
    stops.push_back(panes_.script().Handle());
    OwnedWindows owned{main_.Handle(), {}};
    ::EnumThreadWindows(::GetCurrentThreadId(), collectOwned, reinterpret_cast<LPARAM>(&owned));
    std::ranges::sort(owned.found);
    stops.insert(stops.end(), owned.found.begin(), owned.found.end());
    return stops;
}

void PaneFocus::step(int direction) {
    const HWND focus = ::GetFocus();
    if (::IsChild(panes_.panel().Handle(), focus)) lastInPanel_ = focus;
    const std::vector<HWND> all = stops();
    const auto here =
        std::ranges::find_if(all, [focus](HWND stop) { return focus && isWithin(focus, stop); });
    const auto count = static_cast<std::ptrdiff_t>(all.size());
    const std::ptrdiff_t at =
        here == all.end() ? 0 : (here - all.begin() + direction + count) % count;
    const HWND next = all[static_cast<std::size_t>(at)];
    if (next == panes_.panel().Handle())
        enterPanel();
    else if (next == panes_.script().Handle())
        goToScriptLine();
    else if (next == panes_.viewport().Handle())
        enter(next);
    else
        ::SetActiveWindow(next);  // which knows where the keyboard was in it
}

void PaneFocus::enterPanel() {
    CommandPanel& panel = panes_.panel();
    const bool isThere = ::IsChild(panel.Handle(), lastInPanel_) &&
                         ::IsWindowVisible(lastInPanel_) && ::IsWindowEnabled(lastInPanel_);
    enter(isThere ? lastInPanel_ : panel.firstStop());
    panel.reveal(::GetFocus());
}

void PaneFocus::goToUtilities() {
    const HWND button = panes_.panel().firstUtility();
    if (!button) return;
    enter(button);
    panes_.panel().reveal(button);
}

void PaneFocus::goToScriptLine() {
    enter(panes_.script().line());
}

void PaneFocus::enter(HWND control) {
    if (::GetActiveWindow() != main_.Handle()) ::SetActiveWindow(main_.Handle());
    ::SetFocus(control);
}

}  // namespace workbench

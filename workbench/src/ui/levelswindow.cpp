#include "levelswindow.h"

#include "../app/commands.h"
#include "tooltips.h"
#include "viewport.h"

#include <base/utf16.h>
#include <framework/cwaitcursor.h>
#include <workbench/texts.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

using framework::CWaitCursor, framework::SelectScope, framework::heightOf, framework::widthOf;

namespace workbench {
namespace {

std::string shortest(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.4g", value);
    return text;
}

}  // namespace

void LevelsWindow::toggle(HWND owner, const RECT& area) {
    if (IsVisible()) return Hide();
    if (!HasWindow()) {
        if (!Create(IDD_LEVELS, owner)) return;
        const RECT own = WindowRect();
        const LONG left = std::max(area.right - widthOf(own), area.left);
        MoveTo({left, area.top, left + widthOf(own), area.top + heightOf(own)});
    }
    Show(SW_SHOWNORMAL);
    refresh();
    ::SetFocus(Item(IDC_LEVELS_NEARER));
}

bool LevelsWindow::OnInitDialog() {
    shown_.clear();
    EnableToolTips();
    return true;
}

void LevelsWindow::followLanguage() {
    if (!HasWindow()) return;
    FollowLanguage();
    shown_.clear();
    refresh();
}

void LevelsWindow::refresh() {
    if (!IsVisible()) return;
    if (!std::exchange(known_, true)) {
        const CWaitCursor wait;
        bands_ = levelBands(host_);
        shown_.clear();
    }
    const double distance = viewport_.camera().distance();
    present_ = bandAt(bands_, distance);
    const bool byEye = viewport_.options().levelsByEye;
    std::string text = textOf(TextId::kLevelsDistance, {shortest(distance)});
    text += "  |  " + (bands_.empty() ? textOf(TextId::kNoLevels)
                       : byEye        ? textOf(TextId::kLevelsInBand, {describe(bands_[*present_])})
                                      : textOf(TextId::kAllLevels));
    if (text == shown_) return;
    shown_ = std::move(text);
    SetItemText(IDC_LEVELS_DISTANCE, shown_);
    const std::size_t last = bands_.empty() ? 0 : bands_.size() - 1;
    EnableItem(IDC_LEVELS_NEARER, !bands_.empty() && (!byEye || *present_ > 0));
    EnableItem(IDC_LEVELS_FARTHER, !bands_.empty() && (!byEye || *present_ < last));
    ::InvalidateRect(Item(IDC_LEVELS_STRIP), nullptr, FALSE);
}

std::string LevelsWindow::describe(const LevelBand& band) const {
    if (!std::isfinite(band.farthest)) return "> " + shortest(band.nearest);
    return shortest(band.nearest) + " – " + shortest(band.farthest);
}

// ---------------------------------------------------------------- the strip

// All bands are equally wide: their distances differ by powers of ten.
RECT LevelsWindow::areaOf(std::size_t band, const RECT& strip) const {
    const auto edge = [&](std::size_t position) {
        return strip.left + static_cast<LONG>(static_cast<std::size_t>(widthOf(strip)) * position /
                                              bands_.size());
    };
    return {edge(band), strip.top, edge(band + 1), strip.bottom};
}

void LevelsWindow::drawStrip(const DRAWITEMSTRUCT& item) const {
    const HDC dc = item.hDC;
    ::FillRect(dc, &item.rcItem, ::GetSysColorBrush(COLOR_WINDOW));
    const SelectScope font(dc, Font());
    ::SetBkMode(dc, TRANSPARENT);
    for (std::size_t i = 0; i < bands_.size(); ++i) {
        RECT area = areaOf(i, item.rcItem);
        const bool marked = present_ == i;
        if (marked) ::FillRect(dc, &area, ::GetSysColorBrush(COLOR_HIGHLIGHT));
        ::SetTextColor(dc, ::GetSysColor(marked ? COLOR_HIGHLIGHTTEXT : COLOR_WINDOWTEXT));
        ::DrawTextW(dc, base::toWide(describe(bands_[i])).c_str(), -1, &area,
                    DT_SINGLELINE | DT_CENTER | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
        ::FrameRect(dc, &area, ::GetSysColorBrush(COLOR_BTNSHADOW));
    }
}

LRESULT LevelsWindow::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_DRAWITEM && wParam == IDC_LEVELS_STRIP) {
        drawStrip(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
        return TRUE;
    }
    return CDialog::WindowProc(message, wParam, lParam);
}

void LevelsWindow::clickStrip() {
    POINT at;
    ::GetCursorPos(&at);
    const HWND strip = Item(IDC_LEVELS_STRIP);
    ::ScreenToClient(strip, &at);
    RECT area;
    ::GetClientRect(strip, &area);
    for (std::size_t i = 0; i < bands_.size(); ++i) {
        const RECT band = areaOf(i, area);
        if (::PtInRect(&band, at)) return goTo(i);
    }
}

// ---------------------------------------------------------------- going there

bool LevelsWindow::OnCommand(int id, UINT code, HWND control) {
    static_assert(BN_CLICKED == STN_CLICKED);
    if (code != BN_CLICKED) return CDialog::OnCommand(id, code, control);
    switch (id) {
        case IDC_LEVELS_STRIP:
            clickStrip();
            return true;
        case IDC_LEVELS_NEARER:
            step(-1);
            return true;
        case IDC_LEVELS_FARTHER:
            step(1);
            return true;
        case IDC_LEVELS_ALL:
            showAll();
            return true;
        default:
            return CDialog::OnCommand(id, code, control);
    }
}

bool LevelsWindow::OnNotify(int, NMHDR& header, LRESULT&) {
    return answerToolTip(header, [](int id) {
        switch (id) {
            case IDC_LEVELS_NEARER:
                return textOf(TextId::kTipNearer);
            case IDC_LEVELS_FARTHER:
                return textOf(TextId::kTipFarther);
            case IDC_LEVELS_ALL:
                return textOf(TextId::kTipAllLevels);
            case IDC_LEVELS_STRIP:
                return textOf(TextId::kTipStrip);
            default:
                return std::string();
        }
    });
}

void LevelsWindow::step(int bands) {
    if (!present_) return;
    const auto wanted = static_cast<int>(*present_) + bands;
    goTo(static_cast<std::size_t>(std::clamp(wanted, 0, static_cast<int>(bands_.size()) - 1)));
}

// The direction stays, and what is looked at.
void LevelsWindow::goTo(std::size_t band) {
    if (band >= bands_.size()) return;
    render::Camera& camera = viewport_.camera();
    const render::Vec3d back = render::Vec3d(camera.forward()) * -bands_[band].middle();
    viewport_.options().levelsByEye = true;
    camera.lookFrom(camera.target() + back, camera.target());
    viewport_.redraw();
    refresh();
}

void LevelsWindow::showAll() {
    viewport_.options().levelsByEye = false;
    unhideAll_();
    viewport_.redraw();
    refresh();
}

}  // namespace workbench

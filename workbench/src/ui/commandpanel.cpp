#include "commandpanel.h"

#include "look.h"

#include <base/utf16.h>
#include <framework/accessible.h>
#include <workbench/texts.h>

#include <windowsx.h>
#include <algorithm>
#include <utility>

using framework::BufferedPaint, framework::CButton, framework::SelectScope, framework::WindowDc,
    framework::heightOf, framework::widthOf;

namespace workbench {
namespace {

constexpr wchar_t kClassName[] = L"WorkbenchCommandPanel";
constexpr int kFirstButtonId = 1;
constexpr int kPageUnits = 108;  // the usual width of a rollup page, in dialog units

int pixelsOf(int dialogUnits, HDC dc, HFONT font) {
    const SelectScope selected(dc, font);
    SIZE size;
    static constexpr wchar_t kLetters[] = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    ::GetTextExtentPoint32W(dc, kLetters, 52, &size);
    const int base = (static_cast<int>(size.cx) / 26 + 1) / 2;
    return ::MulDiv(dialogUnits, base, 4);
}

}  // namespace

bool CommandPanel::Create(HWND parent, UINT id) {
    RegisterWindowClass(kClassName, 0, nullptr, nullptr);
    return CreateEx(WS_EX_CONTROLPARENT, kClassName, "",
                    WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN | WS_CLIPSIBLINGS | WS_VSCROLL,
                    {0, 0, 10, 10}, parent, id);
}

int CommandPanel::wantedWidth() const {
    const WindowDc dc(Handle());
    return pixelsOf(kPageUnits, dc.get(), Look::of(Handle()).normal()) + Scaled(14) +
           ::GetSystemMetrics(SM_CXVSCROLL);
}

void CommandPanel::setUtilities(const std::vector<std::string>& names,
                                std::function<void(int)> onPick) {
    onPick_ = std::move(onPick);
    buttons_.clear();
    for (std::size_t i = 0; i < names.size(); ++i) {
        auto button = std::make_unique<CButton>();
        button->Create(names[i], WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_CHECKBOX | BS_PUSHLIKE,
                       {0, 0, 10, 10}, Handle(), static_cast<UINT>(kFirstButtonId + i));
        button->SetFont(Look::of(Handle()).normal());
        buttons_.push_back(std::move(button));
    }
    setOpenUtility(-1);
    layout();
}

void CommandPanel::setOpenUtility(int position) {
    openUtility_ = position;
    for (std::size_t i = 0; i < buttons_.size(); ++i)
        buttons_[i]->SetChecked(static_cast<int>(i) == position);
}

bool CommandPanel::pressUtility(const std::string& name) const {
    for (const auto& button : buttons_) {
        if (button->Text() != name) continue;
        button->Click();
        return true;
    }
    return false;
}

bool CommandPanel::OnCommand(int id, UINT code, HWND) {
    const int position = id - kFirstButtonId;
    if (code != BN_CLICKED || position < 0 || position >= static_cast<int>(buttons_.size()))
        return false;
    onPick_(position);
    return true;
}

HWND CommandPanel::addRollup(HINSTANCE module, int dialogId, DLGPROC procedure,
                             const std::string& title, LPARAM param, bool closed, int category) {
    auto rollup = std::make_unique<Rollup>(title, closed, category, [this] { layout(); });
    if (!rollup->Create(Handle(), module, dialogId, procedure, param)) return nullptr;
    const HWND page = rollup->page();
    const auto after = std::upper_bound(rollups_.begin(), rollups_.end(), category,
                                        [](int wanted, const std::unique_ptr<Rollup>& other) {
                                            return wanted < other->category();
                                        });
    rollups_.insert(after, std::move(rollup));
    layout();
    return page;
}

void CommandPanel::deleteRollup(HWND page) {
    const auto found = std::find_if(rollups_.begin(), rollups_.end(),
                                    [&](const auto& rollup) { return rollup->page() == page; });
    if (found == rollups_.end()) return;
    const std::unique_ptr<Rollup> gone = std::move(*found);
    rollups_.erase(found);
    gone->DestroyWindow();
    layout();
}

HWND CommandPanel::pageOf(HWND window) const {
    for (const auto& rollup : rollups_)
        if (window == rollup->page() || ::IsChild(rollup->page(), window)) return rollup->page();
    return nullptr;
}

void CommandPanel::rollupMouse(HWND page, UINT message, WPARAM wParam, LPARAM lParam) {
    POINT at{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
    ::ClientToScreen(page, &at);
    if (message == WM_LBUTTONDOWN) {
        dragY_ = static_cast<int>(at.y);
        ::SetCapture(page);
    } else if (message == WM_LBUTTONUP) {
        if (::GetCapture() == page) ::ReleaseCapture();
    } else if (message == WM_MOUSEMOVE && (wParam & MK_LBUTTON) && ::GetCapture() == page) {
        scrollTo(scroll_ - (static_cast<int>(at.y) - dragY_));
        dragY_ = static_cast<int>(at.y);
    }
}

HWND CommandPanel::firstUtility() const {
    return buttons_.empty() ? nullptr : buttons_.front()->Handle();
}

HWND CommandPanel::firstStop() const {
    for (const auto& rollup : rollups_)
        if (const HWND stop = rollup->firstStop()) return stop;
    return firstUtility();
}

void CommandPanel::reveal(HWND control) {
    if (!control || !::IsChild(Handle(), control)) return;
    RECT area;
    ::GetWindowRect(control, &area);
    ::MapWindowPoints(nullptr, Handle(), reinterpret_cast<POINT*>(&area), 2);
    const int gap = Scaled(4), height = heightOf(ClientRect());
    const int above = static_cast<int>(area.top) - gap,
              below = static_cast<int>(area.bottom) + gap - height;
    if (above < 0)
        scrollTo(scroll_ + above);
    else if (below > 0)
        scrollTo(scroll_ + std::min(below, above));
}

bool CommandPanel::pressByEnter(const MSG& message) const {
    constexpr LPARAM kHeldDown = LPARAM{1} << 30;
    const bool isEnter = message.message == WM_KEYDOWN && message.wParam == VK_RETURN;
    if (!isEnter || !::IsChild(Handle(), message.hwnd)) return false;
    if (!(message.lParam & kHeldDown)) ::SendMessageW(message.hwnd, BM_CLICK, 0, 0);
    return true;
}

void CommandPanel::showLanguage() {
    framework::describeControl(Handle(), framework::textsOfLabel(textOf(TextId::kUtilities)));
    Invalidate(false);
}

int CommandPanel::contentHeight() const {
    const int gap = Scaled(4);
    int height = headingHeight() + static_cast<int>(buttons_.size()) * (Scaled(24) + gap) + gap;
    for (const auto& rollup : rollups_) height += rollup->height() + gap;
    return height;
}

void CommandPanel::layout() {
    const int height = heightOf(ClientRect()), content = contentHeight();
    SCROLLINFO info{sizeof info,
                    SIF_RANGE | SIF_PAGE,
                    0,
                    content - 1,
                    static_cast<UINT>(std::max(height, 0)),
                    0,
                    0};
    ::SetScrollInfo(Handle(), SB_VERT, &info, TRUE);
    scroll_ = std::clamp(scroll_, 0, std::max(content - height, 0));
    info.fMask = SIF_POS;
    info.nPos = scroll_;
    ::SetScrollInfo(Handle(), SB_VERT, &info, TRUE);

    const RECT area = ClientRect();  // wider without the scroll bar
    const int margin = Scaled(6), gap = Scaled(4), width = widthOf(area) - 2 * margin;
    int y = headingHeight() - scroll_;
    for (const auto& button : buttons_) {
        button->MoveTo({margin, y, margin + width, y + Scaled(24)});
        y += Scaled(24) + gap;
    }
    y += gap;
    for (const auto& rollup : rollups_) {
        rollup->MoveTo({margin / 2, y, margin * 3 / 2 + width, y + rollup->height()});
        rollup->Show(SW_SHOWNA);
        y += rollup->height() + gap;
    }
    Invalidate(false);
}

void CommandPanel::scrollTo(int position) {
    const int most = std::max(contentHeight() - heightOf(ClientRect()), 0);
    const int wanted = std::clamp(position, 0, most);
    if (wanted == scroll_) return;
    scroll_ = wanted;
    layout();
}

void CommandPanel::OnSize(UINT, int, int) {
    layout();
}

void CommandPanel::OnVScroll(UINT code, int, HWND) {
    SCROLLINFO info{sizeof info, SIF_ALL, 0, 0, 0, 0, 0};
    ::GetScrollInfo(Handle(), SB_VERT, &info);
    const int page = static_cast<int>(info.nPage);
    switch (code) {
        case SB_LINEUP:
            scrollTo(scroll_ - Scaled(24));
            break;
        case SB_LINEDOWN:
            scrollTo(scroll_ + Scaled(24));
            break;
        case SB_PAGEUP:
            scrollTo(scroll_ - page);
            break;
        case SB_PAGEDOWN:
            scrollTo(scroll_ + page);
            break;
        case SB_TOP:
            scrollTo(0);
            break;
        case SB_BOTTOM:
            scrollTo(info.nMax);
            break;
        case SB_THUMBTRACK:
        case SB_THUMBPOSITION:
            scrollTo(info.nTrackPos);
            break;
        default:
            break;
    }
}

void CommandPanel::OnMouseWheel(UINT, int delta, POINT) {
    scrollTo(scroll_ - ::MulDiv(delta, Scaled(60), WHEEL_DELTA));
}

void CommandPanel::OnPaint() {
    const BufferedPaint paint(Handle());
    const HDC dc = paint.dc();
    const RECT area = ClientRect();
    ::FillRect(dc, &area, ::GetSysColorBrush(COLOR_BTNFACE));
    const SelectScope font(dc, Look::of(Handle()).bold());
    ::SetBkMode(dc, TRANSPARENT);
    ::SetTextColor(dc, ::GetSysColor(COLOR_BTNTEXT));
    RECT heading{Scaled(7), -scroll_, area.right, headingHeight() - scroll_};
    ::DrawTextW(dc, base::toWide(textOf(TextId::kUtilities)).c_str(), -1, &heading,
                DT_SINGLELINE | DT_VCENTER);
    if (!buttons_.empty()) return;
    const SelectScope normal(dc, Look::of(Handle()).normal());
    ::SetTextColor(dc, ::GetSysColor(COLOR_GRAYTEXT));
    RECT note{Scaled(7), headingHeight() - scroll_, area.right - Scaled(7), area.bottom};
    ::DrawTextW(dc, base::toWide(textOf(TextId::kNoUtilities)).c_str(), -1, &note,
                DT_WORDBREAK | DT_NOPREFIX);
}

}  // namespace workbench

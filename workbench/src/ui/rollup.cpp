#include "rollup.h"

#include "look.h"

#include <base/resources.h>
#include <base/utf16.h>
#include <framework/module.h>

#include <utility>

using framework::BufferedPaint, framework::SelectScope, framework::heightOf,
    framework::resourceLanguage, framework::widthOf;

namespace workbench {
namespace {

constexpr wchar_t kClassName[] = L"WorkbenchRollup";
constexpr UINT kBarId = 1;

}  // namespace

Rollup::Rollup(std::string title, bool closed, int category, std::function<void()> onFolded)
    : title_(std::move(title)),
      closed_(closed),
      category_(category),
      onFolded_(std::move(onFolded)) {}

bool Rollup::Create(HWND parent, HINSTANCE module, int dialogId, DLGPROC procedure, LPARAM param) {
    RegisterWindowClass(kClassName, CS_DBLCLKS, nullptr, nullptr);
    if (!CreateEx(WS_EX_CONTROLPARENT, kClassName, title_,
                  WS_CHILD | WS_CLIPCHILDREN | WS_CLIPSIBLINGS, {0, 0, 10, 10}, parent))
        return false;
    // The title is told as it is: an ampersand in it marks no key.
    std::string name;
    for (const char c : title_) name.append(c == '&' ? 2 : 1, c);
    if (!bar_.Create(name, WS_VISIBLE | WS_TABSTOP | BS_OWNERDRAW, {0, 0, 10, 10}, Handle(),
                     kBarId))
        return false;
    const void* const page =
        base::findResource(module, RT_DIALOG, static_cast<unsigned>(dialogId), resourceLanguage());
    if (!page) return false;
    page_ = ::CreateDialogIndirectParamW(module, static_cast<const DLGTEMPLATE*>(page), Handle(),
                                         procedure, param);
    if (!page_) return false;
    // The bar comes first for the keyboard, too.
    ::SetWindowPos(bar_.Handle(), HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    RECT area;
    ::GetWindowRect(page_, &area);
    pageHeight_ = heightOf(area);
    placePage();
    return true;
}

int Rollup::height() const {
    return titleHeight() + (closed_ ? 0 : pageHeight_ + Scaled(4));
}

void Rollup::placePage() {
    if (!page_) return;
    RECT area;
    ::GetWindowRect(page_, &area);
    const int x = std::max((widthOf(ClientRect()) - widthOf(area)) / 2, 0);
    ::SetWindowPos(
        page_, nullptr, x, titleHeight() + Scaled(2), 0, 0,
        SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE | (closed_ ? SWP_HIDEWINDOW : SWP_SHOWWINDOW));
}

HWND Rollup::firstStop() const {
    return closed_ ? nullptr : ::GetNextDlgTabItem(page_, nullptr, FALSE);
}

void Rollup::OnSize(UINT, int width, int) {
    bar_.MoveTo({0, 0, width, titleHeight()});
    placePage();
    Invalidate(false);
}

void Rollup::OnPaint() {
    const BufferedPaint paint(Handle());
    const HDC dc = paint.dc();
    RECT area = ClientRect();
    ::FillRect(dc, &area, ::GetSysColorBrush(COLOR_BTNFACE));
    ::FrameRect(dc, &area, ::GetSysColorBrush(COLOR_BTNSHADOW));
}

// A flat bar, the upper edge of the frame around the page.
bool Rollup::OnDrawItem(int, const DRAWITEMSTRUCT& item) {
    const HDC dc = item.hDC;
    RECT bar = item.rcItem;
    ::FillRect(dc, &bar, ::GetSysColorBrush(COLOR_3DLIGHT));
    ::FrameRect(dc, &bar, ::GetSysColorBrush(COLOR_BTNSHADOW));
    const SelectScope font(dc, Look::of(Handle()).normal());
    ::SetBkMode(dc, TRANSPARENT);
    ::SetTextColor(dc, ::GetSysColor(COLOR_BTNTEXT));
    const std::wstring sign = closed_ ? L"+" : L"\u2212";
    RECT left = bar;
    left.left += Scaled(7);
    ::DrawTextW(dc, sign.c_str(), -1, &left, DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
    const std::wstring title = base::toWide(title_);
    ::DrawTextW(dc, title.c_str(), -1, &bar,
                DT_SINGLELINE | DT_VCENTER | DT_CENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
    if (item.itemState & ODS_FOCUS) {
        ::InflateRect(&bar, -Scaled(2), -Scaled(2));
        ::DrawFocusRect(dc, &bar);
    }
    return true;
}

bool Rollup::OnCommand(int id, UINT code, HWND) {
    if (id != kBarId || code != BN_CLICKED) return false;
    closed_ = !closed_;
    placePage();
    bar_.Invalidate(false);
    Invalidate(false);
    onFolded_();
    return true;
}

bool Rollup::OnSetCursor(HWND under, UINT hitTest, UINT message) {
    if (under != bar_.Handle()) return CWnd::OnSetCursor(under, hitTest, message);
    ::SetCursor(::LoadCursorW(nullptr, IDC_HAND));
    return true;
}

}  // namespace workbench

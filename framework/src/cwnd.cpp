#include "module_internal.h"
#include "windowrouter.h"

#include <base/utf16.h>
#include <framework/cwnd.h>
#include <framework/module.h>

#include <algorithm>

namespace framework {

CWnd::~CWnd() {
    if (!window_) return;
    if (created_) {
        DestroyWindow();
    } else {
        Detach();
    }
}

CWnd* CWnd::FromHandle(HWND window) noexcept {
    return WindowRouter::objectOf(window);
}

bool CWnd::CreateEx(DWORD exStyle, const wchar_t* className, std::string_view text, DWORD style,
                    const RECT& area, HWND parent, UINT id) {
    if (window_) return false;
    const ModuleScope scope;
    ensureCommonControls();
    const std::wstring wideText = base::toWide(text);
    const bool child = (style & WS_CHILD) != 0;
    const HWND window = WindowRouter::create(*this, [&] {
        return ::CreateWindowExW(exStyle, className, wideText.c_str(), style, area.left, area.top,
                                 widthOf(area), heightOf(area), parent,
                                 child ? reinterpret_cast<HMENU>(UINT_PTR{id}) : nullptr,
                                 moduleInstance(), nullptr);
    });
    if (!window) return false;
    created_ = true;
    if (child && parent) {
        if (const LRESULT font = ::SendMessageW(parent, WM_GETFONT, 0, 0))
            Send(WM_SETFONT, static_cast<WPARAM>(font));
    }
    return true;
}

bool CWnd::RegisterWindowClass(const wchar_t* className, UINT classStyle, HBRUSH background,
                               HICON icon) {
    return WindowRouter::registerClass(className, classStyle, background, icon);
}

void CWnd::Attach(HWND window) noexcept {
    window_ = window;
}

HWND CWnd::Detach() noexcept {
    WindowRouter::disconnect(*this);
    former_ = nullptr;
    created_ = false;
    return std::exchange(window_, nullptr);
}

bool CWnd::SubclassWindow(HWND window) {
    return WindowRouter::connect(*this, window);
}

bool CWnd::SubclassDlgItem(int id, HWND parent) {
    return SubclassWindow(::GetDlgItem(parent, id));
}

void CWnd::DestroyWindow() {
    if (!window_) return;
    // A listening object is told that the window has gone, and may delete itself on hearing so.
    const bool listening = former_ != nullptr;
    ::DestroyWindow(window_);
    if (!listening) window_ = nullptr;
}

// Operations

LRESULT CWnd::Send(UINT message, WPARAM wParam, LPARAM lParam) const {
    return window_ ? ::SendMessageW(window_, message, wParam, lParam) : 0;
}

bool CWnd::Post(UINT message, WPARAM wParam, LPARAM lParam) const {
    return window_ && ::PostMessageW(window_, message, wParam, lParam);
}

std::string CWnd::Text() const {
    return window_ ? Text(::GetWindowTextLengthW(window_)) : std::string();
}

std::string CWnd::Text(int maxLength) const {
    if (!window_ || maxLength <= 0) return {};
    std::wstring text(static_cast<size_t>(maxLength) + 1, L'\0');
    const int length = ::GetWindowTextW(window_, text.data(), maxLength + 1);
    text.resize(static_cast<size_t>(std::max(length, 0)));
    if (!text.empty() && IS_HIGH_SURROGATE(text.back())) text.pop_back();
    return base::toUtf8(text);
}

void CWnd::SetText(std::string_view text) const {
    if (window_) ::SetWindowTextW(window_, base::toWide(text).c_str());
}

HFONT CWnd::Font() const {
    return reinterpret_cast<HFONT>(Send(WM_GETFONT));
}

void CWnd::SetFont(HFONT font, bool redraw) const {
    Send(WM_SETFONT, reinterpret_cast<WPARAM>(font), redraw);
}

HWND CWnd::Parent() const noexcept {
    return window_ ? ::GetParent(window_) : nullptr;
}

HWND CWnd::Item(int id) const noexcept {
    return window_ ? ::GetDlgItem(window_, id) : nullptr;
}

int CWnd::Id() const noexcept {
    return window_ ? ::GetDlgCtrlID(window_) : 0;
}

DWORD CWnd::Style() const noexcept {
    return window_ ? static_cast<DWORD>(::GetWindowLongW(window_, GWL_STYLE)) : 0;
}

void CWnd::ModifyStyle(DWORD remove, DWORD add) const {
    if (window_) ::SetWindowLongW(window_, GWL_STYLE, static_cast<LONG>((Style() & ~remove) | add));
}

RECT CWnd::WindowRect() const noexcept {
    RECT area{};
    if (window_) ::GetWindowRect(window_, &area);
    return area;
}

RECT CWnd::AreaInParent() const noexcept {
    RECT area = WindowRect();
    if (const HWND parent = window_ ? ::GetAncestor(window_, GA_PARENT) : nullptr)
        ::MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&area), 2);
    return area;
}

RECT CWnd::ClientRect() const noexcept {
    RECT area{};
    if (window_) ::GetClientRect(window_, &area);
    return area;
}

void CWnd::MoveTo(const RECT& area, bool repaint) const {
    if (window_) ::MoveWindow(window_, area.left, area.top, widthOf(area), heightOf(area), repaint);
}

POINT CWnd::ToClient(POINT screen) const noexcept {
    if (window_) ::ScreenToClient(window_, &screen);
    return screen;
}

POINT CWnd::ToScreen(POINT client) const noexcept {
    if (window_) ::ClientToScreen(window_, &client);
    return client;
}

void CWnd::Enable(bool enabled) const {
    if (window_) ::EnableWindow(window_, enabled);
}

bool CWnd::IsEnabled() const noexcept {
    return window_ && ::IsWindowEnabled(window_);
}

void CWnd::Show(int command) const {
    if (window_) ::ShowWindow(window_, command);
}

bool CWnd::IsVisible() const noexcept {
    return window_ && ::IsWindowVisible(window_);
}

void CWnd::SetFocus() const {
    if (window_) ::SetFocus(window_);
}

bool CWnd::HasFocus() const noexcept {
    return window_ && ::GetFocus() == window_;
}

void CWnd::Invalidate(bool erase) const {
    if (window_) ::InvalidateRect(window_, nullptr, erase);
}

void CWnd::Invalidate(const RECT& area, bool erase) const {
    if (window_) ::InvalidateRect(window_, &area, erase);
}

void CWnd::Update() const {
    if (window_) ::UpdateWindow(window_);
}

void CWnd::SetRedraw(bool on) const {
    Send(WM_SETREDRAW, on);
}

std::string CWnd::ItemText(int id) const {
    CWnd item;
    item.Attach(Item(id));
    std::string text = item.Text();
    item.Detach();
    return text;
}

void CWnd::SetItemText(int id, std::string_view text) const {
    if (const HWND item = Item(id)) ::SetWindowTextW(item, base::toWide(text).c_str());
}

bool CWnd::EnableItem(int id, bool enabled) const {
    const HWND item = Item(id);
    if (item) ::EnableWindow(item, enabled);
    return item != nullptr;
}

bool CWnd::IsItemChecked(int id) const {
    const HWND item = Item(id);
    return item && ::SendMessageW(item, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void CWnd::CheckItem(int id, bool checked) const {
    if (const HWND item = Item(id))
        ::SendMessageW(item, BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
}

int CWnd::ShowMessage(std::string_view text, UINT style, std::string_view caption) const {
    CWnd owner;
    owner.Attach(window_ ? ::GetAncestor(window_, GA_ROOT) : nullptr);
    const std::wstring shownCaption =
        base::toWide(caption.empty() ? owner.Text() : std::string(caption));
    return ::MessageBoxW(owner.Detach(), base::toWide(text).c_str(), shownCaption.c_str(), style);
}

int CWnd::Scaled(int pixels) const noexcept {
    return ::MulDiv(pixels, windowDpi(window_), USER_DEFAULT_SCREEN_DPI);
}

}  // namespace framework

#include <base/utf16.h>
#include <framework/controls.h>

#include <algorithm>
#include <utility>

namespace framework {

namespace {

LPARAM pointerTo(const std::wstring& text) noexcept {
    return reinterpret_cast<LPARAM>(text.c_str());
}

}  // namespace

bool isTextField(HWND window) noexcept {
    return (::SendMessageW(window, WM_GETDLGCODE, 0, 0) & DLGC_HASSETSEL) &&
           !(::GetWindowLongW(window, GWL_STYLE) & ES_READONLY);
}

bool CButton::Create(std::string_view text, DWORD style, const RECT& area, HWND parent, UINT id) {
    return CreateEx(0, WC_BUTTONW, text, style | WS_CHILD, area, parent, id);
}

bool CButton::IsChecked() const {
    return Send(BM_GETCHECK) == BST_CHECKED;
}

void CButton::SetChecked(bool checked) const {
    Send(BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED);
}

void CButton::Click() const {
    Send(BM_CLICK);
}

bool CEdit::Create(std::string_view text, DWORD style, const RECT& area, HWND parent, UINT id) {
    return CreateEx(WS_EX_CLIENTEDGE, WC_EDITW, text, style | WS_CHILD, area, parent, id);
}

void CEdit::SetLimit(int length) const {
    Send(EM_SETLIMITTEXT, static_cast<WPARAM>(length));
}

void CEdit::Selection(int& from, int& to) const {
    DWORD first = 0;
    DWORD last = 0;
    Send(EM_GETSEL, reinterpret_cast<WPARAM>(&first), reinterpret_cast<LPARAM>(&last));
    from = static_cast<int>(first);
    to = static_cast<int>(last);
}

void CEdit::Select(int from, int to) const {
    Send(EM_SETSEL, static_cast<WPARAM>(from), to);
}

void CEdit::ReplaceSelection(std::string_view text, bool canUndo) const {
    Send(EM_REPLACESEL, canUndo, pointerTo(base::toWide(text)));
}

void CEdit::Append(std::string_view text) const {
    const int end = HasWindow() ? ::GetWindowTextLengthW(Handle()) : 0;
    Select(end, end);
    ReplaceSelection(text, false);
    Send(EM_SCROLLCARET);
}

int CEdit::LineCount() const {
    return static_cast<int>(Send(EM_GETLINECOUNT));
}

void CEdit::ShowScrollBar(bool shown) const {
    if (shown != ((Style() & WS_VSCROLL) != 0)) ::ShowScrollBar(Handle(), SB_VERT, shown);
}

// In lines, and in characters of average width in each.
SIZE CEdit::Room() const {
    RECT room{};
    Send(EM_GETRECT, 0, reinterpret_cast<LPARAM>(&room));
    const WindowDc dc(Handle());
    const SelectScope font(dc.get(), Font());
    TEXTMETRICW metrics{};
    ::GetTextMetricsW(dc.get(), &metrics);
    return {widthOf(room) / std::max(metrics.tmAveCharWidth, 1L),
            heightOf(room) / std::max(metrics.tmHeight, 1L)};
}

void CEdit::FitScrollBar() const {
    if (HasWindow()) ShowScrollBar(LineCount() > Room().cy);
}

void CEdit::SetFittedText(std::string_view text) const {
    if (!HasWindow()) return;
    // Showing or hiding the bar breaks the lines again, which takes long for a long text.
    const SIZE room = Room();
    const auto lines = std::count(text.begin(), text.end(), '\n') + 1;
    ShowScrollBar(lines > room.cy || std::cmp_greater(text.size(), room.cx * room.cy));
    SetText(text);
    FitScrollBar();
}

bool CEdit::IsModified() const {
    return Send(EM_GETMODIFY) != 0;
}

void CEdit::SetModified(bool modified) const {
    Send(EM_SETMODIFY, modified);
}

bool CComboBox::Create(DWORD style, const RECT& area, HWND parent, UINT id) {
    return CreateEx(0, WC_COMBOBOXW, {}, style | WS_CHILD, area, parent, id);
}

int CComboBox::Add(std::string_view text) const {
    return static_cast<int>(Send(CB_ADDSTRING, 0, pointerTo(base::toWide(text))));
}

void CComboBox::Clear() const {
    Send(CB_RESETCONTENT);
}

int CComboBox::Count() const {
    return static_cast<int>(Send(CB_GETCOUNT));
}

int CComboBox::Selected() const {
    return HasWindow() ? static_cast<int>(Send(CB_GETCURSEL)) : -1;
}

void CComboBox::Select(int position) const {
    Send(CB_SETCURSEL, static_cast<WPARAM>(position));
}

int CComboBox::Find(std::string_view text) const {
    if (!HasWindow()) return -1;
    return static_cast<int>(
        Send(CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), pointerTo(base::toWide(text))));
}

void CComboBox::ShowDropDown(bool shown) const {
    Send(CB_SHOWDROPDOWN, shown);
}

}  // namespace framework

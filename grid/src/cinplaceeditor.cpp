#include "keys.h"

#include <base/utf16.h>
#include <framework/centredtext.h>
#include <grid/cgridctrl.h>
#include <grid/cinplaceeditor.h>

#include <algorithm>

using framework::CWnd, framework::SelectScope, framework::WindowDc, framework::heightOf;

namespace grid {

namespace {

constexpr UINT kEditorId = 1;
constexpr int kShownEntries = 10;
// Posted by the list to itself: it must not be destroyed within the combo box's own procedure.
constexpr UINT kChoiceMade = WM_APP + 2;

bool isMove(UINT key) noexcept {
    switch (key) {
        case VK_LEFT:
        case VK_RIGHT:
        case VK_UP:
        case VK_DOWN:
        case VK_PRIOR:
        case VK_NEXT:
            return true;
        default:
            return false;
    }
}

int textHeight(const CWnd& window) {
    const WindowDc dc(window.Handle());
    const SelectScope font(dc.get(), window.Font());
    TEXTMETRICW metrics{};
    ::GetTextMetricsW(dc.get(), &metrics);
    return static_cast<int>(metrics.tmHeight);
}

}  // namespace

// CInPlaceEdit

bool CInPlaceEdit::Open(const RECT& area, std::string_view text, wchar_t firstKey) {
    const DWORD lines = multiLine_ ? ES_MULTILINE | ES_WANTRETURN | ES_AUTOVSCROLL | WS_BORDER : 0u;
    if (!CreateEx(0, WC_EDITW, text, WS_CHILD | ES_AUTOHSCROLL | lines, area, owner_.Handle(),
                  kEditorId))
        return false;
    cell_ = area;
    AlignWithCell();
    Select(0, -1);
    GrowWithLines();
    Show();
    SetFocus();
    if (firstKey) Send(WM_CHAR, firstKey, 1);
    return true;
}

// Where the field has its text, from the window's left edge.
int CInPlaceEdit::TextLeft() const {
    RECT text{};
    Send(EM_GETRECT, 0, reinterpret_cast<LPARAM>(&text));
    return static_cast<int>(ToScreen({text.left, text.top}).x - WindowRect().left);
}

// Lets the text stay where it is in the cell.
void CInPlaceEdit::AlignWithCell() {
    Send(EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, 0);
    const int margin = std::max(owner_.TextMargin() - TextLeft(), 0);
    Send(EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, MAKELPARAM(margin, margin));
    framework::centreText(Handle(), heightOf(cell_));
}

void CInPlaceEdit::HandleNotification(UINT code) {
    if (code == EN_CHANGE) GrowWithLines();
}

// The field grows downwards from the cell and, where there is no room left, upwards.
void CInPlaceEdit::GrowWithLines() {
    if (!multiLine_) return;
    const auto lines = std::max<LONG>(static_cast<LONG>(Send(EM_GETLINECOUNT)), 1);
    const LONG highest = std::min<LONG>(owner_.FixedHeight(), cell_.top);
    const LONG lowest = std::max(owner_.ClientRect().bottom, cell_.bottom);
    RECT area = cell_;
    area.bottom = std::max<LONG>(area.bottom, area.top + lines * owner_.RowHeight() - 1);
    const LONG excess = std::clamp<LONG>(area.bottom - lowest, 0, cell_.top - highest);
    area.top -= excess;
    area.bottom = std::min(area.bottom - excess, lowest);
    if (heightOf(area) == heightOf(WindowRect())) return;
    MoveTo(area);
    // Shows the first line again, which an edit field has scrolled away while it had too little
    // room.
    Send(EM_LINESCROLL, 0, -lines);
    Send(EM_SCROLLCARET);
}

void CInPlaceEdit::OnKeyDown(UINT key, UINT, UINT) {
    const bool control = isControlDown();
    const bool ends = key == VK_TAB || key == VK_ESCAPE ||
                      (key == VK_RETURN && (!multiLine_ || control)) ||
                      (isMove(key) && (control || arrowsEnd_));
    if (ends) {
        owner_.EditorDone(*this, key != VK_ESCAPE, key);
    } else {
        Default();
    }
}

void CInPlaceEdit::OnChar(UINT utf16, UINT, UINT) {
    // The characters of the keys that ended the edit arrive after it, and would beep.
    const bool ended = owner_.Editor() != Handle();
    const bool controlKey = utf16 == VK_TAB || utf16 == VK_ESCAPE || utf16 == L'\n' ||
                            (utf16 == VK_RETURN && !multiLine_);
    constexpr UINT kSelectAll = 1;
    if (utf16 == kSelectAll) {
        Select(0, -1);
    } else if (!ended && !controlKey) {
        Default();
    }
}

void CInPlaceEdit::OnKillFocus(HWND) {
    Default();
    owner_.EditorDone(*this, true, 0);
}

// CInPlaceList

bool CInPlaceList::Open(const RECT& area) {
    RECT dropped = area;
    dropped.bottom += kShownEntries * heightOf(area);
    if (!CreateEx(0, WC_COMBOBOXW, {}, WS_CHILD | WS_VSCROLL | CBS_DROPDOWNLIST, dropped,
                  owner_.Handle(), kEditorId))
        return false;
    AlignWithCell(area);
    return true;
}

// The closed box is just high enough for its text, and is placed so that the text is at the same
// height as the cell's.
void CInPlaceList::AlignWithCell(const RECT& cell) {
    constexpr int kAroundText = 2;
    const int text = textHeight(*this);
    Send(CB_SETITEMHEIGHT, static_cast<WPARAM>(-1), text + 2 * kAroundText);
    COMBOBOXINFO box{};
    box.cbSize = sizeof box;
    if (!::GetComboBoxInfo(Handle(), &box)) return;
    const int wanted = (heightOf(cell) - text) / 2;
    const int top = static_cast<int>(cell.top + wanted - box.rcItem.top) - kAroundText;
    ::SetWindowPos(Handle(), nullptr, static_cast<int>(cell.left), top, 0, 0,
                   SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void CInPlaceList::Start(const std::string& text, wchar_t firstKey) {
    Select(Find(text));
    Show();
    SetFocus();
    ShowDropDown(true);
    if (firstKey) SearchFor(firstKey);
}

void CInPlaceList::OnKeyDown(UINT key, UINT, UINT) {
    const bool ends = key == VK_TAB || key == VK_ESCAPE || key == VK_RETURN ||
                      (isMove(key) && (isControlDown() || arrowsEnd_));
    if (!ends) {
        Default();
        return;
    }
    const bool keep = key != VK_ESCAPE;
    // Otherwise closing the list would count as a cancellation.
    chosen_ = true;
    const int choice = Selected();
    ShowDropDown(false);
    Select(choice);
    owner_.EditorDone(*this, keep, key);
}

void CInPlaceList::OnChar(UINT utf16, UINT, UINT) {
    if (utf16 >= L' ' && owner_.Editor() == Handle()) SearchFor(static_cast<wchar_t>(utf16));
}

void CInPlaceList::SearchFor(wchar_t typed) {
    constexpr ULONGLONG kPause = 1000;
    const ULONGLONG now = ::GetTickCount64();
    if (now - lastTyped_ > kPause) typed_.clear();
    lastTyped_ = now;
    typed_ += typed;
    // The same key pressed repeatedly goes through the entries that begin with it.
    const bool repeated = typed_.find_first_not_of(typed) == std::wstring::npos;
    const std::wstring sought = repeated ? std::wstring(1, typed) : typed_;
    const int after = repeated ? Selected() : Selected() - 1;
    auto found = static_cast<int>(
        Send(CB_FINDSTRING, static_cast<WPARAM>(after), reinterpret_cast<LPARAM>(sought.c_str())));
    if (found < 0) {
        const CellId cell = owner_.editedCell_;
        found = owner_.FindChoice(cell.row, cell.column, base::toUtf8(typed_));
    }
    if (found >= 0) Select(found);
}

void CInPlaceList::HandleNotification(UINT code) {
    if (code == CBN_SELENDOK) chosen_ = true;
    if (code == CBN_CLOSEUP) Post(kChoiceMade);
}

LRESULT CInPlaceList::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != kChoiceMade) return CComboBox::WindowProc(message, wParam, lParam);
    owner_.EditorDone(*this, chosen_, chosen_ ? VK_RETURN : VK_ESCAPE);
    return 0;
}

void CInPlaceList::OnKillFocus(HWND) {
    Default();
    owner_.EditorDone(*this, true, 0);
}

}  // namespace grid

// The grid by keyboard.
#include "keys.h"

#include <grid/cgridctrl.h>

namespace grid {

namespace {

bool isRightToLeft(HWND window) noexcept {
    return (::GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_LAYOUTRTL) != 0;
}

// In a mirrored window the columns run from right to left.
UINT mirrored(UINT key) noexcept {
    if (key == VK_LEFT) return VK_RIGHT;
    if (key == VK_RIGHT) return VK_LEFT;
    return key;
}

}  // namespace

std::optional<CellId> CGridCtrl::TargetOf(UINT key, bool control) const {
    const CellId first = FirstFreeCell();
    if (!first.IsValid()) return std::nullopt;
    // From a heading, or without a focus cell, every key goes to the first cell.
    if (!IsValid(focus_) || IsFixed(focus_)) return first;
    const CellId last = LastCell();
    CellId cell = focus_;
    switch (isRightToLeft(Handle()) ? mirrored(key) : key) {
        case VK_UP:
            cell.row = control ? first.row : Step(cell.row, -1);
            break;
        case VK_DOWN:
            cell.row = control ? last.row : Step(cell.row, 1);
            break;
        case VK_LEFT:
            cell.column = control ? first.column : cell.column - 1;
            break;
        case VK_RIGHT:
            cell.column = control ? last.column : cell.column + 1;
            break;
        case VK_PRIOR:
            cell.row = Step(cell.row, -PageRows());
            break;
        case VK_NEXT:
            cell.row = Step(cell.row, PageRows());
            break;
        case VK_HOME:
            cell = control ? first : CellId{cell.row, first.column};
            break;
        case VK_END:
            cell = control ? last : CellId{cell.row, last.column};
            break;
        default:
            return std::nullopt;
    }
    cell.row = std::clamp(cell.row, first.row, last.row);
    cell.column = std::clamp(cell.column, first.column, last.column);
    return cell;
}

bool CGridCtrl::MoveByKey(UINT key, bool control, bool extend) {
    const std::optional<CellId> cell = TargetOf(key, control);
    if (!cell) return false;
    MoveFocus(*cell, extend);
    return true;
}

CellId CGridCtrl::TabTarget(bool backwards) const noexcept {
    const CellId first = FirstFreeCell();
    const CellId last = LastCell();
    if (!first.IsValid()) return {};
    if (!IsValid(focus_) || IsFixed(focus_)) return backwards ? last : first;
    CellId cell = focus_;
    cell.column += backwards ? -1 : 1;
    if (cell.column >= first.column && cell.column <= last.column) return cell;
    const int row = Step(cell.row, backwards ? -1 : 1);
    if (row == cell.row) return {};
    return {row, backwards ? last.column : first.column};
}

void CGridCtrl::LeaveByTab(bool backwards) {
    if (const HWND next = ::GetNextDlgTabItem(Parent(), Handle(), backwards)) ::SetFocus(next);
}

UINT CGridCtrl::OnGetDlgCode(const MSG* message) {
    constexpr UINT kAlways = DLGC_WANTARROWS | DLGC_WANTCHARS;
    if (!message || message->message != WM_KEYDOWN) return kAlways;
    bool wanted = false;
    switch (message->wParam) {
        case VK_TAB:
            wanted = !isControlDown() && TabTarget(isDown(VK_SHIFT)).IsValid();
            break;
        case VK_RETURN:
            wanted = CanEdit(focus_) || FocusedHeading();
            break;
        case VK_ESCAPE:
            wanted = tracking_ != Tracking::kNone;
            break;
        default:
            break;
    }
    return wanted ? kAlways | DLGC_WANTMESSAGE : kAlways;
}

bool CGridCtrl::HandleControlShortcut(UINT key) {
    switch (key) {
        case L'A':
            SelectRange(FreeCells());
            return true;
        case L'C':
        case VK_INSERT:
            Copy();
            return true;
        case L'X':
            Cut();
            return true;
        case L'V':
            Paste();
            return true;
        case L'P':
            OnPrint();
            return true;
        default:
            return false;
    }
}

bool CGridCtrl::HandleShortcut(UINT key) {
    const bool shift = isDown(VK_SHIFT);
    switch (key) {
        case VK_F2:
        case VK_RETURN:
            BeginEdit(focus_);
            return true;
        case VK_DELETE:
            if (shift)
                Cut();
            else
                ClearSelection();
            return true;
        case VK_ESCAPE:
            StopTracking();
            return true;
        case VK_INSERT:
            if (shift) Paste();
            return true;
        default:
            return false;
    }
}

void CGridCtrl::OnKeyDown(UINT key, UINT, UINT) {
    if (key == VK_TAB) {
        const bool backwards = isDown(VK_SHIFT);
        const CellId cell = TabTarget(backwards);
        if (cell.IsValid() && !isControlDown()) {
            MoveFocus(cell, false);
        } else {
            LeaveByTab(backwards);
        }
        return;
    }
    if (FoldByKey(isRightToLeft(Handle()) ? mirrored(key) : key)) return;
    const bool control = isControlDown();
    const bool handled = control ? HandleControlShortcut(key) : HandleShortcut(key);
    if (!handled && !MoveByKey(key, control, isDown(VK_SHIFT))) Default();
}

void CGridCtrl::OnChar(UINT utf16, UINT repeat, UINT flags) {
    // The character of the Enter that has just opened the editor is among them.
    constexpr UINT kDeleteCharacter = 127;
    if (utf16 < L' ' || utf16 == kDeleteCharacter) return;
    if (FocusedHeading()) {
        if (utf16 == L' ') FoldByKey(VK_RETURN);
        return;
    }
    // A character typed before the editor has taken the keyboard is for the editor.
    if (const HWND editor = Editor())
        ::SendMessageW(editor, WM_CHAR, utf16, MAKELPARAM(repeat, flags));
    else
        BeginEdit(focus_, static_cast<wchar_t>(utf16));
}

// An input method sends its messages to the window that had the keyboard when composing began. That
// opens the editor, which gets all further ones.
LRESULT CGridCtrl::Compose(UINT message, WPARAM wParam, LPARAM lParam) {
    if (!Editor() && message == WM_IME_STARTCOMPOSITION) StartEdit(focus_, true, 0);
    if (const HWND editor = Editor()) return ::SendMessageW(editor, message, wParam, lParam);
    return Default();
}

void CGridCtrl::OnSetFocus(HWND) {
    focused_ = true;
    // Without a focus cell nothing would show that the grid has the keyboard.
    if (!IsValid(focus_) && FirstFreeCell().IsValid() && !isDown(VK_LBUTTON))
        MoveFocus(FirstFreeCell(), false);
    if (selection_.IsEmpty()) Deselect();
    TellFocus();
    InvalidateAll();
}

void CGridCtrl::OnKillFocus(HWND) {
    focused_ = false;
    InvalidateAll();
}

}  // namespace grid

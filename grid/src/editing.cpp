// Editing in place.
#include "keys.h"

#include <base/utf16.h>
#include <grid/cgridctrl.h>

#include <utility>

namespace grid {

// Notifications to the parent

LRESULT CGridCtrl::NotifyParent(UINT code, CellId cell, const std::string& text) const {
    const HWND parent = Parent();
    if (!parent) return 0;
    std::wstring wide = base::toWide(text);
    NMLVDISPINFOW notification{};
    notification.hdr.hwndFrom = Handle();
    notification.hdr.idFrom = static_cast<UINT_PTR>(Id());
    notification.hdr.code = code;
    notification.item.mask = LVIF_TEXT | LVIF_PARAM;
    notification.item.iItem = cell.row;
    notification.item.iSubItem = cell.column;
    notification.item.pszText = wide.data();
    notification.item.cchTextMax = static_cast<int>(wide.size() + 1);
    notification.item.lParam = CellData(cell.row, cell.column);
    return ::SendMessageW(parent, WM_NOTIFY, notification.hdr.idFrom,
                          reinterpret_cast<LPARAM>(&notification));
}

CellId CGridCtrl::EditedCell(const NMHDR& notification) noexcept {
    const auto& item = reinterpret_cast<const NMLVDISPINFOW&>(notification).item;
    return {item.iItem, item.iSubItem};
}

std::string CGridCtrl::EditedText(const NMHDR& notification) {
    const auto& item = reinterpret_cast<const NMLVDISPINFOW&>(notification).item;
    return item.pszText ? base::toUtf8(item.pszText) : std::string();
}

bool CGridCtrl::ChangeText(CellId cell, const std::string& text) {
    const std::string former = CellText(cell.row, cell.column);
    // The cell gets the text first, so that the owner can replace it (by a normalised number).
    SetCellText(cell.row, cell.column, text);
    const HWND self = Handle();
    const bool focused = HasFocus();
    const LRESULT answer = NotifyParent(LVN_ENDLABELEDITW, cell, text);
    if (FromHandle(self) != this) return false;
    // The owner may have moved the focus while it showed the new text; the user is still here.
    if (focused && IsVisible()) SetFocus();
    if (answer >= 0) return true;
    if (CellText(cell.row, cell.column) == text) SetCellText(cell.row, cell.column, former);
    return false;
}

// Opening

HWND CGridCtrl::Editor() const noexcept {
    return editor_ ? editor_->Handle() : nullptr;
}

bool CGridCtrl::BeginEdit(CellId cell, wchar_t firstKey) {
    return StartEdit(cell, firstKey != 0, firstKey);
}

bool CGridCtrl::StartEdit(CellId cell, bool typing, wchar_t firstKey) {
    const HWND self = Handle();
    EndEdit(true);
    if (!self || FromHandle(self) != this || !CanEdit(cell)) return false;
    const bool refused =
        NotifyParent(LVN_BEGINLABELEDITW, cell, CellText(cell.row, cell.column)) != 0;
    if (FromHandle(self) != this || refused || !CanEdit(cell)) return false;
    if (cell != focus_) MoveFocus(cell, false);
    EnsureVisible(cell);
    Update();
    editedCell_ = cell;
    return CellEditor(cell.row, cell.column) == EditorKind::kList
               ? OpenList(cell, typing, firstKey)
               : OpenEdit(cell, typing, firstKey);
}

std::optional<RECT> CGridCtrl::EditorArea(CellId cell) const {
    std::optional<RECT> area = CellRect(cell);
    if (!area) return std::nullopt;
    const RECT client = ClientRect();
    // Without the lines at the lower and right edge.
    area->right = std::min(area->right - 1, client.right);
    area->bottom -= 1;
    return area;
}

bool CGridCtrl::OpenEdit(CellId cell, bool typing, wchar_t firstKey) {
    const std::optional<RECT> area = EditorArea(cell);
    if (!area) return false;
    const bool multiLine = lastRowLines_ && cell.row == rowCount_ - 1 && cell.column > 0;
    auto editor = std::make_unique<CInPlaceEdit>(*this, multiLine, typing);
    CInPlaceEdit& opened = *editor;
    editor_ = std::move(editor);
    if (opened.Open(*area, CellText(cell.row, cell.column), firstKey)) return true;
    editor_.reset();
    return false;
}

bool CGridCtrl::OpenList(CellId cell, bool typing, wchar_t firstKey) {
    const std::optional<RECT> area = EditorArea(cell);
    if (!area) return false;
    auto list = std::make_unique<CInPlaceList>(*this, typing);
    CInPlaceList& opened = *list;
    if (!opened.Open(*area)) return false;
    FillList(cell.row, cell.column, opened);
    editor_ = std::move(list);
    opened.Start(CellText(cell.row, cell.column), firstKey);
    return true;
}

// Closing

void CGridCtrl::EndEdit(bool keep) {
    FinishEdit(keep, 0);
}

void CGridCtrl::EditorDone(const CWnd& editor, bool keep, UINT key) {
    if (&editor == editor_.get()) FinishEdit(keep, key);
}

// Nothing when no entry of a list is chosen.
std::optional<std::string> CGridCtrl::EditorText() const {
    const auto* const list = dynamic_cast<const CInPlaceList*>(editor_.get());
    if (list && list->Selected() < 0) return std::nullopt;
    return editor_->Text();
}

void CGridCtrl::FinishEdit(bool keep, UINT key) {
    if (!editor_) return;
    const HWND self = Handle();
    const CellId cell = editedCell_;
    const std::optional<std::string> entered = EditorText();
    // From here on messages of the editor are ignored. It is destroyed later, since this may have
    // been called from one of its handlers.
    const HWND editor = editor_->Handle();
    retiredEditors_.push_back(std::move(editor_));
    Post(kDropRetiredEditors);
    const HWND focus = ::GetFocus();
    const bool hadFocus = focus && (focus == editor || ::IsChild(editor, focus));
    if (hadFocus) SetFocus();
    ::ShowWindow(editor, SW_HIDE);

    const bool changed = entered && *entered != CellText(cell.row, cell.column);
    if (keep && entered && IsValid(cell) && (changed || key == VK_RETURN)) {
        ChangeText(cell, *entered);
        if (FromHandle(self) != this) return;
    }
    if (!key) return;
    const bool shift = isDown(VK_SHIFT);
    if (key == VK_TAB) {
        const CellId next = TabTarget(shift);
        if (next.IsValid()) {
            MoveFocus(next, false);
        } else {
            LeaveByTab(shift);
        }
    } else if (key != VK_RETURN && key != VK_ESCAPE) {
        // To the neighbouring cell, although Ctrl may be held to say that the edit ends.
        MoveByKey(key, false, false);
    }
}

void CGridCtrl::OnDestroy() {
    // The cells outlive the window, its editors do not.
    editor_.reset();
    retiredEditors_.clear();
    LeaveAccessible();
    StopTracking();
    Default();
}

bool CGridCtrl::OnCommand(int, UINT code, HWND control) {
    if (!control || control != Editor()) return false;
    if (auto* const list = dynamic_cast<CInPlaceList*>(editor_.get()))
        list->HandleNotification(code);
    else if (auto* const edit = dynamic_cast<CInPlaceEdit*>(editor_.get()))
        edit->HandleNotification(code);
    return true;
}

}  // namespace grid

// The grid by mouse: focus, selection, column widths, dragging of cells.
#include "keys.h"

#include <grid/cgridctrl.h>

#include <cstdlib>

namespace grid {

namespace {

constexpr UINT_PTR kScrollTimer = 1;
constexpr UINT kScrollInterval = 60;

}  // namespace

void CGridCtrl::OnLButtonDown(UINT keys, POINT at) {
    const HWND self = Handle();
    EndEdit(true);
    if (FromHandle(self) != this) return;
    // A click edits only the cell that was the focus cell before it.
    const CellId before = focused_ ? focus_ : CellId{};
    SetFocus();
    StopTracking();
    pressPoint_ = mousePoint_ = at;
    pressedCell_ = {};
    moved_ = false;
    if (const int column = DividerAt(at); column >= 0) {
        tracking_ = Tracking::kResizing;
        resizedColumn_ = column;
        resizedWidth_ = ColumnWidth(column);
        ::SetCapture(Handle());
        return;
    }
    if (const auto section = HeadingAt(at)) {
        UserFolds(*section, !Sections()[*section].folded);
        return;
    }
    const CellId cell = CellAt(at);
    if (!cell.IsValid()) return;
    if (IsFixed(cell)) {
        PressHeading(cell);
        return;
    }
    editOnRelease_ = !(keys & (MK_SHIFT | MK_CONTROL)) &&
                     (cell == before || CellEditor(cell.row, cell.column) == EditorKind::kList);
    PressCell(cell, keys);
}

// A double click is two clicks, except on a divider.
void CGridCtrl::OnLButtonDblClk(UINT keys, POINT at) {
    const int column = DividerAt(at);
    if (column < 0) {
        OnLButtonDown(keys, at);
        return;
    }
    StopTracking();
    EndEdit(true);
    ResizeColumn(column, ContentWidth(column));
}

void CGridCtrl::PressHeading(CellId cell) {
    const CellId first = FirstFreeCell();
    if (!first.IsValid()) return;
    CellRange range = FreeCells();
    if (cell.row >= fixedRows_) range.first.row = range.last.row = cell.row;
    if (cell.column >= fixedColumns_) range.first.column = range.last.column = cell.column;
    focus_ = Shown(range.first);
    SelectRange(range);
}

void CGridCtrl::PressCell(CellId cell, UINT keys) {
    pressedCell_ = cell;
    const bool inSelection = selection_.Contains(cell) && !(keys & MK_SHIFT);
    if (dragAndDrop_ && inSelection) {
        // Click or start of a drag: that is decided when the mouse moves or the button comes up.
        tracking_ = Tracking::kPressed;
    } else {
        MoveFocus(cell, (keys & MK_SHIFT) != 0);
        tracking_ = Tracking::kSelecting;
        ::SetTimer(Handle(), kScrollTimer, kScrollInterval, nullptr);
    }
    ::SetCapture(Handle());
}

// The owner shows a menu when the button comes up.
void CGridCtrl::OnRButtonDown(UINT, POINT at) {
    const HWND self = Handle();
    EndEdit(true);
    if (FromHandle(self) != this) return;
    StopTracking();
    SetFocus();
    CellId cell = CellAt(at);
    if (const auto section = HeadingAt(at)) cell = {Sections()[*section].first, fixedColumns_};
    if (cell.IsValid()) cell.column = std::max(cell.column, fixedColumns_);
    if (IsValid(cell) && !IsFixed(cell) && !selection_.Contains(cell)) MoveFocus(cell, false);
    Default();
}

void CGridCtrl::OnMouseMove(UINT keys, POINT at) {
    if (tracking_ != Tracking::kNone && !(keys & MK_LBUTTON)) StopTracking();
    mousePoint_ = at;
    // A small movement is still a click. The mouse's distance counts and not the cell under it,
    // since a press on a row that is partly shown scrolls the cells.
    moved_ = moved_ || std::abs(at.x - pressPoint_.x) >= 2 * ::GetSystemMetrics(SM_CXDRAG) ||
             std::abs(at.y - pressPoint_.y) >= 2 * ::GetSystemMetrics(SM_CYDRAG);
    if (moved_ || tracking_ == Tracking::kResizing) TrackTo(at);
}

void CGridCtrl::TrackTo(POINT at) {
    switch (tracking_) {
        case Tracking::kNone:
            return;
        case Tracking::kResizing:
            ResizeColumn(resizedColumn_, resizedWidth_ + static_cast<int>(at.x - pressPoint_.x));
            return;
        case Tracking::kPressed:
            tracking_ = Tracking::kDragging;
            [[fallthrough]];
        case Tracking::kDragging: {
            dropCell_ = CellAt(at);
            const bool possible = !DropRange().IsEmpty();
            ::SetCursor(::LoadCursorW(nullptr, possible ? IDC_HAND : IDC_NO));
            InvalidateAll();
            return;
        }
        case Tracking::kSelecting:
            break;
    }
    const RECT client = ClientRect();
    const POINT inside{
        std::clamp<LONG>(at.x, FixedWidth(), std::max<LONG>(client.right - 1, FixedWidth())),
        std::clamp<LONG>(at.y, FixedHeight(), std::max<LONG>(client.bottom - 1, FixedHeight()))};
    const CellId cell = CellAt(inside);
    if (!cell.IsValid() || cell == focus_) return;
    MoveFocus(cell, true);
}

// While the mouse is held outside, the grid scrolls and the selection follows.
void CGridCtrl::OnTimer(UINT_PTR id) {
    if (id != kScrollTimer || tracking_ != Tracking::kSelecting) {
        Default();
        return;
    }
    const POINT at = mousePoint_;
    const RECT client = ClientRect();
    const int rows = at.y < FixedHeight() ? -1 : at.y >= client.bottom ? 1 : 0;
    const int columns = at.x < FixedWidth() ? -1 : at.x >= client.right ? 1 : 0;
    if (rows == 0 && columns == 0) return;
    ScrollTo(topLine_ + rows, scrollX_ + columns * RowHeight());
    TrackTo(at);
}

void CGridCtrl::OnLButtonUp(UINT, POINT) {
    const Tracking tracked = tracking_;
    const bool edit = editOnRelease_ && !moved_;
    const CellId cell = pressedCell_;
    const CellId target = DropRange().first;
    StopTracking();
    if (tracked == Tracking::kDragging) {
        if (target.IsValid()) DropAt(target);
        return;
    }
    // A press within the selection that has not become a drag is a click.
    if (tracked == Tracking::kPressed) MoveFocus(cell, false);
    if (edit) BeginEdit(cell);
}

void CGridCtrl::StopTracking() {
    if (tracking_ == Tracking::kNone) return;
    const bool wasDragging = tracking_ == Tracking::kDragging;
    tracking_ = Tracking::kNone;
    editOnRelease_ = false;
    dropCell_ = {};
    if (!HasWindow()) return;
    ::KillTimer(Handle(), kScrollTimer);
    if (::GetCapture() == Handle()) ::ReleaseCapture();
    if (wasDragging) InvalidateAll();
}

void CGridCtrl::OnCaptureChanged(HWND) {
    StopTracking();
}

bool CGridCtrl::OnSetCursor(HWND under, UINT hitTest, UINT) {
    POINT at;
    ::GetCursorPos(&at);
    if (under == Handle() && hitTest == HTCLIENT && DividerAt(ToClient(at)) >= 0) {
        ::SetCursor(::LoadCursorW(nullptr, IDC_SIZEWE));
        return true;
    }
    return Default() != 0;
}

// Dragging cells

CellRange CGridCtrl::DropRange() const {
    if (!CanEdit(dropCell_) || selection_.Contains(dropCell_) || selection_.IsEmpty()) return {};
    const CellId last = LastCell();
    const int rows = selection_.last.row - selection_.first.row;
    const int columns = selection_.last.column - selection_.first.column;
    return {dropCell_,
            {std::min(dropCell_.row + rows, last.row),
             std::min(dropCell_.column + columns, last.column)}};
}

void CGridCtrl::DropAt(CellId cell) {
    const HWND self = Handle();
    const CellRange source = selection_;
    const std::string text = RangeText(source);
    const bool move = isDown(VK_SHIFT);
    if (move) ClearSelection();
    if (FromHandle(self) != this || !IsValid(cell)) return;
    MoveFocus(cell, false);
    SetRangeText(cell, text);
}

}  // namespace grid

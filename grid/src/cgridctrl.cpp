// The contents of the grid: extent, cells, focus and selection.
#include "gridaccessible.h"

#include <grid/cgridctrl.h>

#include <utility>

namespace grid {

namespace {

size_t cellCount(int rows, int columns) {
    return static_cast<size_t>(rows) * static_cast<size_t>(columns);
}

}  // namespace

CGridCtrl::CGridCtrl() = default;

CGridCtrl::~CGridCtrl() {
    LeaveAccessible();
}

bool CGridCtrl::RegisterGridClass() {
    return RegisterWindowClass(kGridWindowClass);
}

bool CGridCtrl::Create(const RECT& area, HWND parent, UINT id, DWORD style) {
    return RegisterGridClass() && CreateEx(0, kGridWindowClass, {}, style, area, parent, id);
}

// Extent

void CGridCtrl::SetRowCount(int count) {
    count = std::max(count, 0);
    if (count == rowCount_) return;
    EndEdit(false);
    cells_.resize(cellCount(count, columnCount_));
    rowCount_ = count;
    ExtentChanged();
}

void CGridCtrl::SetColumnCount(int count) {
    count = std::max(count, 0);
    if (count == columnCount_) return;
    EndEdit(false);
    std::vector<Cell> cells(cellCount(rowCount_, count));
    std::vector<int> widths = widths_;
    widths.resize(static_cast<size_t>(count), Scaled(kDefaultColumnWidth));
    const int kept = std::min(count, columnCount_);
    for (int row = 0; row < rowCount_; ++row) {
        const auto from = cells_.begin() + static_cast<std::ptrdiff_t>(row) * columnCount_;
        std::move(from, from + kept, cells.begin() + static_cast<std::ptrdiff_t>(row) * count);
    }
    cells_ = std::move(cells);
    widths_ = std::move(widths);
    shares_.clear();
    columnCount_ = count;
    ExtentChanged();
}

void CGridCtrl::SetFixedRowCount(int count) {
    EndEdit(false);
    fixedRows_ = std::max(count, 0);
    ExtentChanged();
}

void CGridCtrl::SetFixedColumnCount(int count) {
    EndEdit(false);
    fixedColumns_ = std::max(count, 0);
    ExtentChanged();
}

void CGridCtrl::InsertRow(int before) {
    before = std::clamp(before, 0, rowCount_);
    SetRowCount(rowCount_ + 1);
    const auto at = static_cast<std::ptrdiff_t>(before) * columnCount_;
    std::rotate(cells_.begin() + at, cells_.end() - columnCount_, cells_.end());
    InvalidateAll();
}

void CGridCtrl::DeleteRow(int row) {
    if (row < 0 || row >= rowCount_) return;
    const auto at = static_cast<std::ptrdiff_t>(row) * columnCount_;
    std::rotate(cells_.begin() + at, cells_.begin() + at + columnCount_, cells_.end());
    SetRowCount(rowCount_ - 1);
}

void CGridCtrl::ExtentChanged() {
    StopTracking();
    lines_.Limit(rowCount_);
    if (!IsValid(focus_)) {
        focus_ = {};
        anchor_ = {};
        selection_ = {};
    } else if (!selection_.IsEmpty() && (!IsValid(selection_.last) || !IsValid(anchor_))) {
        anchor_ = focus_;
        selection_ = {focus_, focus_};
    }
    UpdateScrollBars();
    InvalidateAll();
}

// Cells

bool CGridCtrl::IsValid(CellId cell) const noexcept {
    return cell.IsValid() && cell.row < rowCount_ && cell.column < columnCount_;
}

bool CGridCtrl::IsFixed(CellId cell) const noexcept {
    return cell.row < fixedRows_ || cell.column < fixedColumns_;
}

const Cell* CGridCtrl::Find(CellId cell) const noexcept {
    if (!IsValid(cell)) return nullptr;
    return &cells_[cellCount(cell.row, columnCount_) + static_cast<size_t>(cell.column)];
}

Cell* CGridCtrl::Find(CellId cell) noexcept {
    return const_cast<Cell*>(std::as_const(*this).Find(cell));
}

std::string CGridCtrl::CellText(int row, int column) const {
    const Cell* const cell = Find({row, column});
    return cell ? std::string(cell->Text()) : std::string();
}

void CGridCtrl::SetCellText(int row, int column, std::string_view text) {
    Cell* const cell = Find({row, column});
    if (!cell || cell->Text() == text) return;
    cell->SetText(text);
    InvalidateCell({row, column});
    if (HasWindow() && updating_ == 0)
        ::NotifyWinEvent(EVENT_OBJECT_VALUECHANGE, Handle(), OBJID_CLIENT,
                         GridAccessible::IdOf(*this, {row, column}));
}

UINT CGridCtrl::CellFormat(int row, int column) const noexcept {
    const Cell* const cell = Find({row, column});
    return cell ? cell->format : 0;
}

void CGridCtrl::SetCellFormat(int row, int column, UINT format) {
    if (Cell* const cell = Find({row, column})) {
        cell->format = format;
        InvalidateCell({row, column});
    }
}

LPARAM CGridCtrl::CellData(int row, int column) const noexcept {
    const Cell* const cell = Find({row, column});
    return cell ? cell->data : 0;
}

void CGridCtrl::SetCellData(int row, int column, LPARAM data) {
    if (Cell* const cell = Find({row, column})) cell->data = data;
}

EditorKind CGridCtrl::CellEditor(int row, int column) const noexcept {
    const Cell* const cell = Find({row, column});
    return cell ? cell->editor : EditorKind::kNone;
}

void CGridCtrl::SetCellEditor(int row, int column, EditorKind kind) {
    if (Cell* const cell = Find({row, column})) {
        cell->editor = kind;
        InvalidateCell({row, column});
    }
}

bool CGridCtrl::CanEdit(CellId cell) const noexcept {
    return editable_ && !IsFixed(cell) && !lines_.IsHidden(cell.row) &&
           CellEditor(cell.row, cell.column) != EditorKind::kNone;
}

// Focus and selection

CellId CGridCtrl::FirstFreeCell() const noexcept {
    const CellId cell{fixedRows_, fixedColumns_};
    return IsValid(cell) ? cell : CellId{};
}

CellRange CGridCtrl::Selection() const noexcept {
    return selection_;
}

void CGridCtrl::SetFocusCell(CellId cell) {
    if (!IsValid(cell)) cell = {};
    MoveFocus(cell, false);
}

void CGridCtrl::MoveFocus(CellId cell, bool extend) {
    EndEdit(true);
    // Keeping the edit may have changed the grid.
    if (cell.IsValid() && !IsValid(cell)) return;
    focus_ = cell = Shown(cell);
    if (!extend || !IsValid(anchor_)) anchor_ = cell;
    selection_ = cell.IsValid() ? WholeSections(CellRange::Between(anchor_, cell)) : CellRange{};
    EnsureVisible(cell);
    TellFocus();
    InvalidateAll();
}

void CGridCtrl::SelectRange(const CellRange& range) {
    if (!IsValid(range.first) || !IsValid(range.last)) return;
    EndEdit(true);
    selection_ = CellRange::Between(range.first, range.last);
    anchor_ = selection_.first;
    if (!selection_.Contains(focus_)) focus_ = Shown(selection_.first);
    InvalidateAll();
}

void CGridCtrl::Deselect() {
    anchor_ = focus_;
    selection_ =
        focused_ && IsValid(focus_) ? WholeSections(CellRange{focus_, focus_}) : CellRange{};
    InvalidateAll();
}

// Assistive programs

void CGridCtrl::TellFocus() const {
    if (!HasWindow() || !focused_) return;
    const long child = GridAccessible::FocusOf(*this);
    for (const DWORD event : {EVENT_OBJECT_FOCUS, EVENT_OBJECT_SELECTION})
        ::NotifyWinEvent(event, Handle(), OBJID_CLIENT, child);
}

void CGridCtrl::LeaveAccessible() noexcept {
    if (!accessible_) return;
    accessible_->Leave();
    std::exchange(accessible_, nullptr)->Release();
}

// Switches

void CGridCtrl::SetBackground(COLORREF color) {
    background_ = color;
    InvalidateAll();
}

void CGridCtrl::SetEditable(bool on) {
    if (!on) EndEdit(false);
    editable_ = on;
    InvalidateAll();
}

}  // namespace grid

// Cells as text: rows end with a line end, cells within a row stand between tabs, and a text that
// holds either, or a quote, stands in double quotes with its own quotes doubled.
#include "tabbedtext.h"

#include <framework/clipboard.h>
#include <grid/cgridctrl.h>

namespace grid {

std::string CGridCtrl::RangeText(const CellRange& range) const {
    std::string text;
    if (!IsValid(range.first) || !IsValid(range.last)) return text;
    for (int row = range.first.row; row <= range.last.row; ++row) {
        for (int column = range.first.column; column <= range.last.column; ++column) {
            if (column > range.first.column) text += '\t';
            text += quotedForTabs(Find({row, column})->Text());
        }
        if (row < range.last.row) text += "\r\n";
    }
    return text;
}

bool CGridCtrl::SetRangeText(CellId at, std::string_view text) {
    const HWND self = Handle();
    bool changed = false;
    CellId cell = at;
    for (const std::vector<std::string>& row : splitTabs(text)) {
        cell.column = at.column;
        for (const std::string& value : row) {
            if (IsValid(cell) && CanEdit(cell) && CellText(cell.row, cell.column) != value) {
                changed = ChangeText(cell, value) || changed;
                if (self && FromHandle(self) != this) return changed;
            }
            ++cell.column;
        }
        ++cell.row;
    }
    return changed;
}

bool CGridCtrl::Copy() const {
    return CopyRange(selection_);
}

bool CGridCtrl::CopyRange(const CellRange& range) const {
    return !range.IsEmpty() && framework::putOnClipboard(Handle(), RangeText(range));
}

bool CGridCtrl::Cut() {
    return Copy() && ClearSelection();
}

bool CGridCtrl::Paste() {
    if (selection_.IsEmpty() || !editable_) return false;
    const std::string text = framework::textFromClipboard(Handle());
    const auto rows = splitTabs(text);
    if (rows.empty()) return false;
    if (rows.size() == 1 && rows.front().size() == 1)
        return FillRange(selection_, rows.front().front());
    return SetRangeText(selection_.first, text);
}

bool CGridCtrl::ClearSelection() {
    return editable_ && FillRange(selection_, {});
}

bool CGridCtrl::FillRange(const CellRange& range, const std::string& text) {
    const HWND self = Handle();
    const CellRange filled = range;
    bool changed = false;
    if (filled.IsEmpty()) return false;
    for (int row = filled.first.row; row <= filled.last.row; ++row) {
        for (int column = filled.first.column; column <= filled.last.column; ++column) {
            const CellId cell{row, column};
            if (!CanEdit(cell) || CellText(row, column) == text) continue;
            changed = ChangeText(cell, text) || changed;
            if (self && FromHandle(self) != this) return changed;
        }
    }
    return changed;
}

}  // namespace grid

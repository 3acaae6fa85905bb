#include "fieldgrid.h"

#include <base/text.h>
#include <framework/gdi.h>

#include <algorithm>

using grid::CellId;

namespace palettes {

void FieldGrid::begin() {
    // Shares of the width: values have more to show.
    SetColumnCount(2);
    SetColumnWidth(0, 42);
    SetColumnWidth(1, 58);
    SetRowCount(1);
    SetFixedRowCount(1);
    SetFixedColumnCount(1);
    SetEditable(true);
    SetLastRowLines(false);
}

void FieldGrid::nameColumns(TextId title) {
    title_ = title;
    SetCellText(0, 0, textOf(TextId::kColumnField));
    SetCellText(0, 1, textOf(TextId::kColumnValue));
}

void FieldGrid::show(std::vector<FieldRow> rows) {
    const UpdateScope update(*this);
    EndEdit(false);
    const CellId focus = FocusCell();
    const FieldRow* const before = rowOf(focus);
    int kept = focus.row;
    for (std::size_t i = 0; before != nullptr && i < rows.size(); ++i)
        if (rows[i].caption == before->caption) kept = static_cast<int>(i) + 1;
    rows_ = std::move(rows);
    const int top = TopLine();
    SetRowCount(static_cast<int>(rows_.size()) + 1);
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        const int row = static_cast<int>(i) + 1;
        SetCellText(row, 0, rows_[i].caption);
        SetCellText(row, 1, rows_[i].value);
        SetCellEditor(row, 1, rows_[i].editor);
    }
    SetTopLine(top);
    if (focus.IsValid() && kept != FocusCell().row && kept < RowCount()) SetFocusCell({kept, 1});
    ExpandColumnsToFit();
}

const FieldRow* FieldGrid::rowOf(CellId cell) const noexcept {
    const auto row = static_cast<std::size_t>(cell.row) - 1;
    return cell.column == 1 && cell.row > 0 && row < rows_.size() ? &rows_[row] : nullptr;
}

void FieldGrid::FillList(int row, int, grid::CInPlaceList& list) {
    for (const std::string& choice : choicesOf(row - 1)) list.Add(choice);
}

// Names of entries are typed as well as their numbers.
int FieldGrid::FindChoice(int row, int, std::string_view typed) {
    const std::string wanted = base::smallLetters(typed);
    const std::vector<std::string> choices = choicesOf(row - 1);
    const auto found = std::ranges::find_if(choices, [&](const std::string& choice) {
        return base::smallLetters(choice).find(wanted) != std::string::npos;
    });
    return found == choices.end() ? -1 : static_cast<int>(found - choices.begin());
}

grid::CGridCtrl::Look FieldGrid::LookOf(CellId cell) const {
    const FieldRow* const row = rowOf(cell);
    if (row == nullptr) return {};
    return {row->swatch, row->isMixed, row->note};
}

std::string FieldGrid::DescriptionOf(CellId cell) const {
    const FieldRow* const row = rowOf(cell);
    if (row == nullptr) return {};
    return row->isMixed ? textOf(TextId::kMixed) : row->note;
}

// The focus cell moves by keys, clicks and assistive programs.
LRESULT FieldGrid::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const HWND self = Handle();
    const LRESULT result = CGridCtrl::WindowProc(message, wParam, lParam);
    if (FromHandle(self) != this || focusedRow() == told_) return result;
    told_ = focusedRow();
    if (onFocus) onFocus();
    return result;
}

void FieldGrid::OnLButtonDown(UINT keys, POINT at) {
    const CellId cell = CellAt(at);
    const FieldRow* const row = rowOf(cell);
    const auto area = CellRect(cell);
    if (row == nullptr || !row->swatch || !area ||
        at.x < area->right - 2 * framework::heightOf(*area))
        return CGridCtrl::OnLButtonDown(keys, at);
    SetFocus();
    SetFocusCell(cell);
    onSwatch();
}

}  // namespace palettes

// Fields and their values, as a grid.
#pragma once

#include "texts.h"

#include <grid/cgridctrl.h>

#include <functional>
#include <string>
#include <vector>

namespace palettes {

/// A field as it is shown.
struct FieldRow {
    std::string caption;
    std::string value;
    std::string note;  ///< what the value stands for
    std::optional<COLORREF> swatch;
    bool isMixed = false;
    grid::EditorKind editor = grid::EditorKind::kNone;
};

/// Two columns: captions, and values with what they stand for. A value that nodes have not in
/// common is empty, with a mark.
class FieldGrid : public grid::CGridCtrl {
public:
    void begin();
    /// In the host's language; `title` is what assistive programs call the grid.
    void nameColumns(TextId title);
    /// The row that had the focus keeps it, and so does what is scrolled into view.
    void show(std::vector<FieldRow> rows);
    /// That of the row with the focus; -1 for none.
    int focusedRow() const noexcept { return FocusCell().row - 1; }
    void edit(int row) { BeginEdit({row + 1, 1}); }

    /// What a row's list offers.
    std::function<std::vector<std::string>(int row)> choicesOf;
    /// The patch of a row's color was clicked.
    std::function<void()> onSwatch;
    std::function<void()> onFocus;  ///< another row may have the focus

protected:
    void FillList(int row, int column, grid::CInPlaceList& list) override;
    int FindChoice(int row, int column, std::string_view typed) override;
    Look LookOf(grid::CellId cell) const override;
    std::string AccessibleName() const override { return textOf(title_); }
    std::string DescriptionOf(grid::CellId cell) const override;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnLButtonDown(UINT keys, POINT at) override;

private:
    const FieldRow* rowOf(grid::CellId cell) const noexcept;

    std::vector<FieldRow> rows_;
    TextId title_{};
    int told_ = -1;  ///< the row that `onFocus` heard of
};

}  // namespace palettes

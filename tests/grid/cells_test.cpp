#include "gridhost.h"

using grid::CGridCtrl;

using grid::CellId;
using grid::CellRange;
using grid::EditorKind;

// Contents need no window.

TEST(GridCells, KeepTheirContentsWhenTheExtentChanges) {
    CGridCtrl table;
    table.SetRowCount(3);
    table.SetColumnCount(2);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 2; ++column) {
            table.SetCellText(row, column, std::to_string(row) + "," + std::to_string(column));
            table.SetCellData(row, column, 10 * row + column);
        }
    }
    table.SetColumnCount(4);
    EXPECT_EQ(table.CellText(2, 1), "2,1");
    EXPECT_EQ(table.CellText(2, 3), "");
    table.SetColumnCount(1);
    EXPECT_EQ(table.CellText(2, 0), "2,0");
    table.InsertRow(1);
    EXPECT_EQ(table.RowCount(), 4);
    EXPECT_EQ(table.CellText(0, 0), "0,0");
    EXPECT_EQ(table.CellText(1, 0), "");
    EXPECT_EQ(table.CellText(2, 0), "1,0");
    EXPECT_EQ(table.CellData(3, 0), 20);
    table.DeleteRow(0);
    EXPECT_EQ(table.CellText(0, 0), "");
    EXPECT_EQ(table.CellText(1, 0), "1,0");
    EXPECT_EQ(table.RowCount(), 3);
    table.SetRowCount(-5);
    EXPECT_EQ(table.RowCount(), 0);
}

TEST(GridCells, OutsideTheGridAreEmptyAndTakeNothing) {
    CGridCtrl table;
    table.SetRowCount(2);
    table.SetColumnCount(2);
    for (const CellId cell : {CellId{-1, 0}, CellId{0, -1}, CellId{2, 0}, CellId{0, 2}}) {
        table.SetCellText(cell.row, cell.column, "lost");
        table.SetCellData(cell.row, cell.column, 9);
        table.SetCellEditor(cell.row, cell.column, EditorKind::kList);
        EXPECT_EQ(table.CellText(cell.row, cell.column), "");
        EXPECT_EQ(table.CellData(cell.row, cell.column), 0);
        EXPECT_EQ(table.CellEditor(cell.row, cell.column), EditorKind::kNone);
        EXPECT_FALSE(table.BeginEdit(cell));
        table.SetFocusCell(cell);
        EXPECT_FALSE(table.FocusCell().IsValid());
    }
    table.DeleteRow(2);
    EXPECT_EQ(table.RowCount(), 2);
}

TEST(GridCells, LoseFocusAndSelectionWithTheirRow) {
    CGridCtrl table;
    table.SetRowCount(5);
    table.SetColumnCount(2);
    table.SetFocusCell({4, 1});
    table.SetRowCount(5);
    EXPECT_EQ(table.FocusCell(), (CellId{4, 1}));
    table.SetRowCount(2);
    EXPECT_EQ(table.FocusCell(), CellId{});
    EXPECT_TRUE(table.Selection().IsEmpty());

    table.SetFocusCell({0, 0});
    table.SelectRange({{0, 0}, {1, 1}});
    table.SetRowCount(1);
    EXPECT_EQ(table.Selection(), (CellRange{{0, 0}, {0, 0}}));
}

TEST(GridCells, AreCompact) {
    // The text of a cell is one pointer, so that a grid of many rows stays small.
    EXPECT_LE(sizeof(grid::Cell), 24u);
    grid::Cell cell;
    cell.SetText(std::string_view("a\0b", 3));
    EXPECT_EQ(cell.Text(), "a");
}

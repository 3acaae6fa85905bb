#include "gridhost.h"

using grid::CellId;
using grid::CellRange;

namespace {

class GridMouse : public gridtest::GridTest {
protected:
    // A point on the divider at the right of a column.
    POINT divider(int column) {
        const auto area = grid().CellRect({0, column});
        return {area->right, (area->top + area->bottom) / 2};
    }
};

}  // namespace

TEST_F(GridMouse, ClickMovesTheFocusAndShiftClickExtends) {
    clickCell(2, 1);
    EXPECT_EQ(focus(), (CellId{2, 1}));
    EXPECT_EQ(grid().Editor(), nullptr) << "the first click selects";
    clickCell(4, 1, {VK_SHIFT});
    EXPECT_EQ(grid().Selection(), (CellRange{{2, 1}, {4, 1}}));
    testinput::drag(grid().Handle(), middleOf(1, 1), middleOf(3, 1));
    EXPECT_EQ(grid().Selection(), (CellRange{{1, 1}, {3, 1}}));
    EXPECT_EQ(grid().Editor(), nullptr);
}

TEST_F(GridMouse, DraggingOutsideScrollsAndSelectsOn) {
    host.Fill(60);
    const POINT from = middleOf(2, 1);
    const RECT client = grid().ClientRect();
    const auto send = [this](UINT message, WPARAM keys, POINT at) {
        grid().Send(message, keys, MAKELPARAM(at.x, at.y));
    };
    send(WM_LBUTTONDOWN, MK_LBUTTON, from);
    send(WM_MOUSEMOVE, MK_LBUTTON, {from.x, client.bottom + 30});
    EXPECT_TRUE(testinput::pumpUntil([&] { return grid().Selection().last.row == 60; }))
        << "the selection grows while the mouse is held still below the grid";
    EXPECT_EQ(grid().Selection(), (CellRange{{2, 1}, {60, 1}}));
    EXPECT_TRUE(grid().CellRect({60, 1}));
    send(WM_MOUSEMOVE, MK_LBUTTON, {from.x, -30});
    EXPECT_TRUE(testinput::pumpUntil([&] { return grid().TopLine() == 1; }));
    EXPECT_EQ(grid().Selection(), (CellRange{{1, 1}, {2, 1}})) << "and turns with the mouse";
    send(WM_MOUSEMOVE, MK_LBUTTON, {from.x, client.bottom + 30});
    send(WM_LBUTTONUP, 0, {from.x, client.bottom + 30});
    const int top = grid().TopLine();
    EXPECT_FALSE(testinput::pumpUntil([&] { return grid().TopLine() != top; }, 300))
        << "a released mouse scrolls nothing";
    EXPECT_EQ(grid().Editor(), nullptr);
}

// A press on a row that is partly shown scrolls it under the mouse; nothing has been dragged then.
TEST_F(GridMouse, ClicksAtTheEdgesOfRowsSelectOneEach) {
    host.Fill(60);
    const auto click = [this](POINT at) {
        for (const UINT message : {WM_LBUTTONDOWN, WM_MOUSEMOVE}) {
            grid().Send(message, MK_LBUTTON, MAKELPARAM(at.x, at.y));
            testinput::pumpUntil([] { return false; }, 150);  // it is held for a while
        }
        grid().Send(WM_LBUTTONUP, 0, MAKELPARAM(at.x, at.y));
    };
    const LONG x = middleOf(1, 1).x;
    const LONG upper = grid().CellRect({3, 1})->top;
    for (const LONG y : {grid().ClientRect().bottom - 2, upper, upper + 1}) {
        click({x, y});
        EXPECT_EQ(grid().Selection(), (CellRange{focus(), focus()})) << y;
        click({x, y});
        const CellId next{grid().CellAt({x, upper}).row + 1, 1};
        click(middleOf(next.row, 1));
        EXPECT_EQ(grid().Selection(), (CellRange{next, next})) << y;
    }
    EXPECT_TRUE(host.edits.empty());
}

TEST_F(GridMouse, HeadingsSelectRowColumnAndAll) {
    clickCell(3, 0);
    EXPECT_EQ(focus(), (CellId{3, 1}));
    EXPECT_EQ(grid().Selection(), (CellRange{{3, 1}, {3, 1}}));
    clickCell(0, 1);
    EXPECT_EQ(grid().Selection(), (CellRange{{1, 1}, {6, 1}}));
    clickCell(0, 0);
    EXPECT_EQ(grid().Selection(), (CellRange{{1, 1}, {6, 1}}));
}

TEST_F(GridMouse, ADividerResizesAndTheOtherColumnsKeepFilling) {
    const int client = grid().ClientRect().right;
    const int before = grid().ColumnWidth(0);
    const POINT at = divider(0);
    testinput::drag(grid().Handle(), at, {at.x + 30, at.y});
    EXPECT_EQ(grid().ColumnWidth(0), before + 30);
    EXPECT_EQ(grid().ColumnWidth(0) + grid().ColumnWidth(1), client);
    const POINT moved = divider(0);
    testinput::drag(grid().Handle(), moved, {moved.x + 5000, moved.y});
    EXPECT_GT(grid().ColumnWidth(1), 0) << "the next column is never squeezed out";
    EXPECT_EQ(grid().ColumnWidth(0) + grid().ColumnWidth(1), client);
}

TEST_F(GridMouse, WithoutFittingADividerChangesItsColumnOnly) {
    grid().SetColumnWidth(0, 60);
    grid().SetColumnWidth(1, 80);
    const POINT at = divider(1);
    testinput::drag(grid().Handle(), at, {at.x - 20, at.y});
    EXPECT_EQ(grid().ColumnWidth(0), 60);
    EXPECT_EQ(grid().ColumnWidth(1), 60);
    grid().SetColumnResizing(false);
    testinput::drag(grid().Handle(), divider(1), at);
    EXPECT_EQ(grid().ColumnWidth(1), 60);
}

TEST_F(GridMouse, DoubleClickOnADividerFitsTheColumn) {
    grid().SetCellText(2, 0, "quite a long name for a row");
    grid().AutoSizeColumn(0);
    const int fitted = grid().ColumnWidth(0);
    grid().SetColumnWidth(0, 20);
    testinput::click(grid().Handle(), divider(0), 2);
    EXPECT_EQ(grid().ColumnWidth(0), fitted);
    EXPECT_EQ(grid().Editor(), nullptr);
}

TEST_F(GridMouse, DraggingACellCopiesItsText) {
    grid().SetDragAndDrop(true);
    grid().SetFocusCell({1, 1});
    testinput::drag(grid().Handle(), middleOf(1, 1), middleOf(3, 1));
    EXPECT_EQ(grid().CellText(3, 1), "value 1");
    EXPECT_EQ(grid().CellText(1, 1), "value 1");
    EXPECT_EQ(host.edits, (std::vector<gridtest::Edited>{{{3, 1}, "value 1", 3}}));
    EXPECT_EQ(focus(), (CellId{3, 1}));

    host.edits.clear();
    grid().SetCellEditor(4, 1, grid::EditorKind::kNone);
    testinput::drag(grid().Handle(), middleOf(3, 1), middleOf(4, 1));
    EXPECT_TRUE(host.edits.empty()) << "a cell that cannot be edited takes nothing";
    EXPECT_EQ(grid().Editor(), nullptr);

    grid().SetDragAndDrop(false);
    grid().SetFocusCell({1, 1});
    testinput::drag(grid().Handle(), middleOf(1, 1), middleOf(3, 1));
    EXPECT_TRUE(host.edits.empty());
    EXPECT_EQ(grid().Selection(), (CellRange{{1, 1}, {3, 1}}));
}

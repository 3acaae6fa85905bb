#include "gridhost.h"

using grid::CellId;
using gridtest::Edited;
using testinput::key;

namespace {

class GridClipboard : public gridtest::GridTest {
protected:
    void SetUp() override {
        GridTest::SetUp();
        grid().SetColumnCount(3);
        for (int row = 1; row <= 6; ++row)
            grid().SetCellText(row, 2, std::string("c").append(std::to_string(row)));
    }
};

}  // namespace

TEST_F(GridClipboard, CarriesARangeToAnotherPlace) {
    grid().SetCellText(1, 1, "with\ttab");
    grid().SetCellText(1, 2, "say \"层\"");
    grid().SetCellText(2, 1, "two\r\nlines");
    grid().SetCellText(2, 2, "");
    grid().SelectRange({{1, 1}, {2, 2}});
    EXPECT_EQ(grid().RangeText(grid().Selection()),
              "\"with\ttab\"\t\"say \"\"层\"\"\"\r\n\"two\r\nlines\"\t");
    key(L'C', {VK_CONTROL});
    grid().SetFocusCell({4, 1});
    key(L'V', {VK_CONTROL});
    EXPECT_EQ(grid().CellText(4, 1), "with\ttab");
    EXPECT_EQ(grid().CellText(4, 2), "say \"层\"");
    EXPECT_EQ(grid().CellText(5, 1), "two\r\nlines");
    EXPECT_EQ(grid().CellText(5, 2), "");
    EXPECT_EQ(host.edits.size(), 4u) << "the owner hears of every changed cell";
    EXPECT_EQ(grid().CellText(6, 1), "value 6");
}

TEST_F(GridClipboard, PastesOverTheEdgeAndOnProtectedCellsOnlyWhatFits) {
    grid().SetCellEditor(6, 1, grid::EditorKind::kNone);
    EXPECT_TRUE(grid().SetRangeText({6, 1}, "x\ty\tz\nbelow"));
    EXPECT_EQ(grid().CellText(6, 1), "value 6");
    EXPECT_EQ(grid().CellText(6, 2), "y");
    EXPECT_EQ(grid().RowCount(), 7);
    EXPECT_FALSE(grid().SetRangeText({0, 0}, "heading"));
    EXPECT_EQ(grid().CellText(0, 0), "属性");
}

TEST_F(GridClipboard, CutsClearsAndFillsASelection) {
    grid().SelectRange({{1, 2}, {1, 2}});
    key(L'X', {VK_CONTROL});
    EXPECT_EQ(grid().CellText(1, 2), "");
    grid().SelectRange({{2, 1}, {3, 2}});
    key(L'V', {VK_CONTROL});
    for (const CellId cell : {CellId{2, 1}, CellId{2, 2}, CellId{3, 1}, CellId{3, 2}})
        EXPECT_EQ(grid().CellText(cell.row, cell.column), "c1") << "one text fills the selection";
    host.onEdit = [](const Edited& edited) -> LRESULT { return edited.cell.row == 2 ? -1 : 0; };
    key(VK_DELETE);
    EXPECT_EQ(grid().CellText(2, 1), "c1") << "the owner refused";
    EXPECT_EQ(grid().CellText(3, 1), "");
    grid().SelectRange({{5, 1}, {5, 1}});
    key(VK_DELETE, {VK_SHIFT});
    EXPECT_EQ(grid().CellText(5, 1), "");
    key(VK_INSERT, {VK_SHIFT});
    EXPECT_EQ(grid().CellText(5, 1), "value 5") << "the older keys do the same";
    grid().SetEditable(false);
    grid().SelectRange({{4, 1}, {4, 1}});
    key(VK_DELETE);
    key(L'V', {VK_CONTROL});
    EXPECT_EQ(grid().CellText(4, 1), "value 4");
}

TEST_F(GridClipboard, KeepsTheKeyboardWhenTheOwnerTakesItAway) {
    host.onEdit = [this](const Edited&) -> LRESULT {
        ::SetFocus(host.Item(gridtest::kBefore));
        return 0;
    };
    grid().SelectRange({{2, 1}, {3, 1}});
    key(VK_DELETE);
    EXPECT_EQ(grid().CellText(3, 1), "");
    EXPECT_EQ(::GetFocus(), grid().Handle());
}

TEST_F(GridClipboard, ReadsTheTextOfOtherPrograms) {
    struct Case {
        const char* text;
        std::vector<std::string> cells;  // (1,1) (1,2) (2,1) (2,2)
    };
    const Case cases[] = {
        {"a\tb\nc\td\n", {"a", "b", "c", "d"}},
        {"a\tb\rc\td", {"a", "b", "c", "d"}},
        {"\tb\r\n\td\r\n", {"", "b", "", "d"}},
        {"\"open\tb", {"open\tb", "c1", "value 2", "c2"}},
        {"\"x\"y\t\"\"", {"xy", "", "value 2", "c2"}},
        {"in\"side\tb", {"in\"side", "b", "value 2", "c2"}},
    };
    for (const Case& example : cases) {
        grid().SetRangeText({1, 1}, "value 1\tc1\nvalue 2\tc2");
        grid().SetRangeText({1, 1}, example.text);
        const std::vector<std::string> found{grid().CellText(1, 1), grid().CellText(1, 2),
                                             grid().CellText(2, 1), grid().CellText(2, 2)};
        EXPECT_EQ(found, example.cells) << example.text;
    }
}

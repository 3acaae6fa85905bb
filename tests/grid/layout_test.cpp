#include "gridhost.h"

#include <gmock/gmock.h>

#include <numeric>

using framework::MemoryDc, framework::WindowDc;
using grid::CGridCtrl, grid::kGridWindowClass;

using grid::CellId;

namespace {

class GridLayout : public gridtest::GridTest {
protected:
    int widthOfAll() {
        int width = 0;
        for (int column = 0; column < grid().ColumnCount(); ++column)
            width += grid().ColumnWidth(column);
        return width;
    }
    bool hasBar(DWORD style) { return (grid().Style() & style) != 0; }
};

}  // namespace

TEST_F(GridLayout, SharesStayWhenTheGridIsResized) {
    grid().SetColumnWidth(0, 100);
    grid().SetColumnWidth(1, 300);
    grid().ExpandColumnsToFit();
    EXPECT_EQ(widthOfAll(), grid().ClientRect().right);
    for (const int width : {333, 90, 251, 400}) {
        RECT area = grid().AreaInParent();
        area.right = area.left + width;
        grid().MoveTo(area);
        const int client = grid().ClientRect().right;
        EXPECT_EQ(widthOfAll(), client) << "at " << width;
        EXPECT_NEAR(grid().ColumnWidth(0), client / 4.0, 1) << "at " << width;
    }
}

TEST_F(GridLayout, FillsTheWidthBesideTheScrollBarThatComesAndGoes) {
    host.Fill(2);
    EXPECT_FALSE(hasBar(WS_VSCROLL));
    const int wide = grid().ClientRect().right;
    host.Fill(100);
    EXPECT_TRUE(hasBar(WS_VSCROLL));
    EXPECT_LT(grid().ClientRect().right, wide);
    EXPECT_EQ(widthOfAll(), grid().ClientRect().right);
    EXPECT_FALSE(hasBar(WS_HSCROLL));
    host.Fill(1);
    EXPECT_FALSE(hasBar(WS_VSCROLL));
    EXPECT_EQ(widthOfAll(), wide);
}

// To show, hide or draw a bar takes the platform longer than all cells do.
TEST_F(GridLayout, DrawsItsBarsOnceAndOnlyForAChange) {
    const auto fill = [&](int rows) {
        grid().Update();
        host.grid.messages.clear();
        {
            const CGridCtrl::UpdateScope update(grid());
            host.Fill(rows);
            grid().SetCellText(1, 1, "for " + std::to_string(rows));
        }
        grid().Update();
        return host.grid.messages;
    };
    fill(2);
    struct Step {
        int rows;
        int framesLaidOut;
        int framesDrawn;
    };
    for (const Step& step : {Step{100, 1, 1}, Step{200, 0, 1}, Step{200, 0, 0}, Step{2, 1, 1}}) {
        SCOPED_TRACE(testing::Message() << step.rows << " rows");
        auto messages = fill(step.rows);
        EXPECT_EQ(messages[WM_NCCALCSIZE], step.framesLaidOut);
        EXPECT_EQ(messages[WM_NCPAINT], step.framesDrawn);
        EXPECT_EQ(messages[WM_PAINT], 1);
    }
}

TEST_F(GridLayout, AutoSizeShowsTheWidestText) {
    grid().SetCellText(3, 1, "a text that is clearly the widest one of this column");
    grid().AutoSizeColumn(1);
    const int wide = grid().ColumnWidth(1);
    grid().SetCellText(3, 1, "short");
    grid().AutoSizeColumn(1);
    EXPECT_LT(grid().ColumnWidth(1), wide / 2);
    EXPECT_GT(grid().ColumnWidth(1), 0);
}

TEST_F(GridLayout, ScrollsByWheelAndBarWithinItsRows) {
    host.Fill(1000);
    testinput::wheel(grid().Handle(), middleOf(3, 1), -WHEEL_DELTA);
    EXPECT_EQ(grid().TopLine(), 4);
    EXPECT_FALSE(grid().CellRect({1, 1}));
    EXPECT_TRUE(grid().CellRect({0, 1})) << "the heading stays";
    testinput::wheel(grid().Handle(), middleOf(5, 1), -WHEEL_DELTA / 3);
    EXPECT_EQ(grid().TopLine(), 5) << "a fine wheel turns by parts of a notch";
    testinput::wheel(grid().Handle(), middleOf(5, 1), 50 * WHEEL_DELTA);
    EXPECT_EQ(grid().TopLine(), 1);
    grid().Send(WM_VSCROLL, SB_BOTTOM);
    EXPECT_TRUE(grid().CellRect({1000, 1}));
    grid().SetTopLine(100000);
    EXPECT_TRUE(grid().CellRect({1000, 1})) << "there is nothing below the last row";
    const auto last = grid().CellRect({1000, 1});
    EXPECT_LE(last->bottom, grid().ClientRect().bottom);
}

TEST_F(GridLayout, DrawsOnlyWhatIsShown) {
    host.Fill(100000);
    grid().SetTopLine(54321);
    const auto texts = gridtest::drawnTexts([this](HDC recorder) {
        grid().Send(WM_PRINTCLIENT, reinterpret_cast<WPARAM>(recorder), PRF_CLIENT);
    });
    std::vector<std::wstring> shown{L"属性", L"值"};
    for (int row = 54321; grid().CellRect({row, 0}); ++row)
        for (const wchar_t* const name : {L"name ", L"value "})
            shown.push_back(name + std::to_wstring(row));
    EXPECT_GT(shown.size(), 6u);
    EXPECT_THAT(texts, testing::UnorderedElementsAreArray(shown));
}

TEST_F(GridLayout, ScrollsSidewaysUnderTheFixedColumn) {
    grid().SetColumnCount(10);
    for (int column = 0; column < 10; ++column) grid().SetColumnWidth(column, 90);
    EXPECT_TRUE(hasBar(WS_HSCROLL));
    grid().SetFocusCell({1, 9});
    const auto last = grid().CellRect({1, 9});
    ASSERT_TRUE(last);
    EXPECT_LE(last->right, grid().ClientRect().right);
    EXPECT_EQ(grid().CellRect({1, 0})->left, 0);
    EXPECT_FALSE(grid().CellRect({1, 1}));
    EXPECT_EQ(grid().CellAt({last->left + 5, last->top + 2}), (CellId{1, 9}));
    EXPECT_EQ(grid().CellAt({5, last->top + 2}), (CellId{1, 0}));
    grid().SetFocusCell({1, 1});
    EXPECT_EQ(grid().CellRect({1, 1})->left, 90);
}

TEST_F(GridLayout, IsFoundAgainAtEveryPointOfACell) {
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 2; ++column) {
            const auto area = grid().CellRect({row, column});
            ASSERT_TRUE(area);
            EXPECT_EQ(grid().CellAt({area->left, area->top}), (CellId{row, column}));
            EXPECT_EQ(grid().CellAt({area->right - 1, area->bottom - 1}), (CellId{row, column}));
        }
    }
    EXPECT_EQ(grid().CellAt({-1, 5}), CellId{});
    EXPECT_EQ(grid().CellAt({5, 10000}), CellId{});
}

TEST_F(GridLayout, PaintsItsBackgroundAndTheSelection) {
    constexpr COLORREF kYellow = 0xE0FFFF;
    grid().SetBackground(kYellow);
    grid().SetRowCount(3);
    const RECT client = grid().ClientRect();
    EXPECT_EQ(testinput::pixel(grid().Handle(), {client.right / 2, client.bottom - 3}), kYellow);
    grid().SetFocusCell({1, 1});
    const auto inCell = [&](int row) {
        const auto area = grid().CellRect({row, 1});
        return testinput::pixel(grid().Handle(), {area->right - 6, area->top + 3});
    };
    EXPECT_EQ(inCell(1), ::GetSysColor(COLOR_HIGHLIGHT));
    EXPECT_EQ(inCell(2), ::GetSysColor(COLOR_WINDOW)) << "the background is for empty space";
    ::SetFocus(host.Item(gridtest::kBefore));
    const COLORREF pale = inCell(1);
    for (const int other : {COLOR_HIGHLIGHT, COLOR_WINDOW, COLOR_BTNFACE})
        EXPECT_NE(pale, ::GetSysColor(other)) << "without the focus it is seen, but pale";
    EXPECT_GT(GetRValue(pale), 150);
}

// Whatever was painted before, larger or smaller, and however little is painted now.
TEST_F(GridLayout, LooksTheSameInPartsAsInOnePiece) {
    host.Fill(60);
    for (const int width : {110, 250, 170}) {
        SCOPED_TRACE(testing::Message() << width << " pixels");
        RECT area = grid().AreaInParent();
        area.right = area.left + width;
        grid().MoveTo(area);
        testinput::pump();
        grid().SetTopLine(grid().TopLine() + 3);
        grid().Update();
        const RECT client = grid().ClientRect();
        const LONG middle = client.right / 2;
        for (const RECT& part :
             {RECT{middle, 30, middle + 20, 50}, RECT{3, 70, client.right, 90}}) {
            grid().Invalidate(part, false);
            grid().Update();
        }
        const WindowDc screen(grid().Handle());
        const MemoryDc whole(screen.get(), client.right, client.bottom);
        grid().Send(WM_PRINTCLIENT, reinterpret_cast<WPARAM>(whole.get()), PRF_CLIENT);
        int different = 0;
        for (LONG y = 0; y < client.bottom; ++y)
            for (LONG x = 0; x < client.right; ++x)
                if (::GetPixel(screen.get(), x, y) != ::GetPixel(whole.get(), x, y)) ++different;
        EXPECT_EQ(different, 0);
    }
}

TEST_F(GridLayout, MirroredIsLaidOutFromTheRight) {
    CGridCtrl mirrored;
    ASSERT_TRUE(mirrored.CreateEx(WS_EX_LAYOUTRTL | WS_EX_RTLREADING, kGridWindowClass, "",
                                  WS_CHILD | WS_VISIBLE, {0, 0, 150, 60}, host.Handle(), 7));
    mirrored.SetRowCount(2);
    mirrored.SetColumnCount(3);
    for (int column = 0; column < 3; ++column) mirrored.SetColumnWidth(column, 50);
    mirrored.SetFixedRowCount(1);
    mirrored.SetFocusCell({1, 1});
    mirrored.SetFocus();
    testinput::key(VK_LEFT);
    EXPECT_EQ(mirrored.FocusCell(), (CellId{1, 2})) << "left is towards the later columns";
    testinput::pump();
    // In screen coordinates the last column is the leftmost one.
    const RECT window = mirrored.WindowRect();
    const WindowDc screen(nullptr);
    const auto area = mirrored.CellRect({1, 2});
    const int y = static_cast<int>(window.top + area->top) + 3;
    EXPECT_EQ(::GetPixel(screen.get(), window.left + 6, y), ::GetSysColor(COLOR_HIGHLIGHT));
    EXPECT_NE(::GetPixel(screen.get(), window.right - 6, y), ::GetSysColor(COLOR_HIGHLIGHT));
}

#include "gridhost.h"

using grid::CellId;
using grid::CellRange;
using testinput::key;

namespace {

class GridKeyboard : public gridtest::GridTest {
protected:
    void SetUp() override {
        GridTest::SetUp();
        grid().SetColumnCount(4);
        for (int column = 0; column < 4; ++column) grid().SetColumnWidth(column, 60);
        grid().SetFocusCell({2, 2});
    }
};

}  // namespace

TEST_F(GridKeyboard, MovesWithinTheCellsThatAreNotFixed) {
    struct Move {
        WORD pressed;
        CellId reached;
    };
    const Move moves[] = {
        {VK_DOWN, {3, 2}}, {VK_RIGHT, {3, 3}}, {VK_RIGHT, {3, 3}}, {VK_UP, {2, 3}},
        {VK_LEFT, {2, 2}}, {VK_HOME, {2, 1}},  {VK_LEFT, {2, 1}},  {VK_END, {2, 3}},
        {VK_UP, {1, 3}},   {VK_UP, {1, 3}},
    };
    for (const Move& move : moves) {
        key(move.pressed);
        EXPECT_EQ(focus(), move.reached) << "after key " << move.pressed;
    }
    const Move toTheEdge[] = {
        {VK_DOWN, {6, 3}}, {VK_LEFT, {6, 1}}, {VK_UP, {1, 1}},
        {VK_END, {6, 3}},  {VK_HOME, {1, 1}}, {VK_RIGHT, {1, 3}},
    };
    for (const Move& move : toTheEdge) {
        key(move.pressed, {VK_CONTROL});
        EXPECT_EQ(focus(), move.reached) << "after Ctrl and key " << move.pressed;
    }
}

TEST_F(GridKeyboard, ExtendsTheSelectionWithShift) {
    key(VK_DOWN, {VK_SHIFT});
    key(VK_RIGHT, {VK_SHIFT});
    EXPECT_EQ(grid().Selection(), (CellRange{{2, 2}, {3, 3}}));
    key(VK_UP, {VK_SHIFT});
    key(VK_UP, {VK_SHIFT});
    EXPECT_EQ(grid().Selection(), (CellRange{{1, 2}, {2, 3}})) << "it turns at where it began";
    key(VK_DOWN);
    EXPECT_EQ(grid().Selection(), (CellRange{{2, 3}, {2, 3}}));
    key(L'A', {VK_CONTROL});
    EXPECT_EQ(grid().Selection(), (CellRange{{1, 1}, {6, 3}}));
}

// AltGr is Ctrl and Alt to the platform.
TEST_F(GridKeyboard, AltGrTypesCharacters) {
    const std::string text = grid().CellText(2, 2);
    BYTE keys[256] = {};
    ::GetKeyboardState(keys);
    for (const int key : {VK_CONTROL, VK_LCONTROL, VK_MENU, VK_RMENU}) keys[key] = 0x80;
    ::SetKeyboardState(keys);
    for (const WPARAM pressed : {L'C', L'X', L'V', L'P', L'A'}) grid().Send(WM_KEYDOWN, pressed);
    EXPECT_EQ(grid().CellText(2, 2), text);
    EXPECT_EQ(host.grid.printed, 0);
    EXPECT_EQ(grid().Selection(), (CellRange{{2, 2}, {2, 2}}));
    grid().Send(WM_KEYDOWN, L'Q');
    grid().Send(WM_CHAR, L'@');
    const HWND editor = grid().Editor();
    ASSERT_TRUE(editor);
    wchar_t typed[8] = L"";
    ::GetWindowTextW(editor, typed, 8);
    EXPECT_STREQ(typed, L"@");
    for (const int key : {VK_CONTROL, VK_LCONTROL, VK_MENU, VK_RMENU}) keys[key] = 0;
    ::SetKeyboardState(keys);
    key(VK_ESCAPE);
    EXPECT_TRUE(host.edits.empty());
}

TEST_F(GridKeyboard, TabGoesThroughTheCellsAndOutAtTheEnd) {
    grid().SetFocusCell({5, 3});
    key(VK_TAB);
    EXPECT_EQ(focus(), (CellId{6, 1}));
    key(VK_TAB, {VK_SHIFT});
    EXPECT_EQ(focus(), (CellId{5, 3}));
    grid().SetFocusCell({6, 3});
    key(VK_TAB);
    EXPECT_EQ(::GetFocus(), host.Item(gridtest::kAfter));
    key(VK_TAB, {VK_SHIFT});
    EXPECT_EQ(::GetFocus(), grid().Handle());
    grid().SetFocusCell({1, 1});
    key(VK_TAB, {VK_SHIFT});
    EXPECT_EQ(::GetFocus(), host.Item(gridtest::kBefore));
}

TEST_F(GridKeyboard, PagesThroughManyRowsAndKeepsTheFocusInView) {
    host.Fill(100000);
    grid().SetFocusCell({1, 1});
    key(VK_NEXT);
    const int page = focus().row - 1;
    EXPECT_GT(page, 1);
    for (int i = 0; i < 20; ++i) key(VK_NEXT);
    EXPECT_EQ(focus().row, 1 + 21 * page);
    EXPECT_TRUE(grid().CellRect(focus()));
    key(VK_PRIOR);
    EXPECT_EQ(focus().row, 1 + 20 * page);
    key(VK_END, {VK_CONTROL});
    EXPECT_EQ(focus().row, 100000);
    EXPECT_TRUE(grid().CellRect(focus()));
}

TEST_F(GridKeyboard, FromAHeadingOrFromNowhereGoesToTheFirstCell) {
    grid().SetFocusCell({0, 2});
    EXPECT_EQ(focus(), (CellId{0, 2})) << "the owner may put it there";
    key(VK_DOWN);
    EXPECT_EQ(focus(), (CellId{1, 1}));
    grid().SetFocusCell({});
    key(VK_UP);
    EXPECT_EQ(focus(), (CellId{1, 1}));
}

TEST_F(GridKeyboard, WithoutFreeCellsDoesNothing) {
    grid().SetRowCount(1);
    for (const WORD pressed : {WORD{VK_DOWN}, WORD{VK_NEXT}, WORD{VK_END}, WORD{VK_F2}, WORD{L'A'}})
        key(pressed, {});
    key(L'A', {VK_CONTROL});
    key(L'C', {VK_CONTROL});
    EXPECT_FALSE(focus().IsValid());
    EXPECT_EQ(grid().Editor(), nullptr);
    key(VK_TAB);
    EXPECT_EQ(::GetFocus(), host.Item(gridtest::kAfter));
}

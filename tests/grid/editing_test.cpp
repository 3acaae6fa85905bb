#include "gridhost.h"

#include <stdexcept>

using framework::CWnd, framework::WindowDc;

using grid::CellId;
using grid::EditorKind;
using gridtest::Edited;
using testinput::key;

namespace {

class GridEditing : public gridtest::GridTest {
protected:
    bool editing() {
        testinput::pump();
        return grid().Editor() != nullptr;
    }
    std::string editorText() {
        CWnd editor;
        editor.Attach(grid().Editor());
        return editor.Text();
    }
    using Edits = std::vector<Edited>;

    /// The least rectangle around what is dark on the screen within an area of the grid.
    RECT darkWithin(const RECT& area) {
        grid().Update();
        RECT found{area.right, area.bottom, area.left, area.top};
        const WindowDc dc(grid().Handle());
        for (LONG y = area.top; y < area.bottom; ++y)
            for (LONG x = area.left; x < area.right; ++x)
                if (const COLORREF at = ::GetPixel(dc.get(), x, y);
                    GetRValue(at) < 128 && GetGValue(at) < 128 && GetBValue(at) < 128)
                    found = {std::min(found.left, x), std::min(found.top, y),
                             std::max(found.right, x + 1), std::max(found.bottom, y + 1)};
        return found;
    }
};

}  // namespace

TEST_F(GridEditing, StartsBySecondClickF2EnterOrTyping) {
    clickCell(2, 1);
    EXPECT_FALSE(editing());
    clickCell(2, 1);
    EXPECT_TRUE(editing());
    EXPECT_EQ(editorText(), "value 2");
    key(VK_ESCAPE);
    EXPECT_FALSE(editing());

    for (const WORD start : {WORD{VK_F2}, WORD{VK_RETURN}}) {
        key(start);
        EXPECT_TRUE(editing());
        testinput::type(L"12");
        EXPECT_EQ(editorText(), "12") << "what is typed replaces the selected text";
        key(VK_ESCAPE);
        EXPECT_FALSE(editing());
    }
    testinput::type(L"组7");
    EXPECT_TRUE(editing());
    EXPECT_EQ(editorText(), "组7");
    key(VK_ESCAPE);
    EXPECT_EQ(grid().CellText(2, 1), "value 2");
    EXPECT_TRUE(host.edits.empty()) << "a cancelled edit is nobody's business";
    EXPECT_EQ(::GetFocus(), grid().Handle());
}

// In the sizes of the dialogs' font at 100 to 200 % display scaling.
TEST_F(GridEditing, TheTextStaysWhereItIs) {
    for (const int height : {11, 13, 14, 16, 22}) {
        const HFONT font = ::CreateFontW(-height, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0,
                                         0, 0, 0, L"Tahoma");
        grid().SetFont(font);
        // The last row's editor takes several lines, and has a border.
        grid().SetCellEditor(3, 1, EditorKind::kList);
        grid().SetCellText(3, 1, "Night");
        for (const int row : {2, 3, 6}) {
            SCOPED_TRACE(testing::Message() << height << " pixels, row " << row);
            grid().SetFocusCell({1, 1});
            grid().EnsureVisible({row, 1});
            const std::optional<RECT> cell = grid().CellRect({row, 1});
            if (!cell) {
                ADD_FAILURE() << "not shown";
                continue;
            }
            // Without a list's button.
            const RECT inner{cell->left + 2, cell->top + 2,
                             cell->right - 3 - ::GetSystemMetrics(SM_CXVSCROLL), cell->bottom - 3};
            const RECT shown = darkWithin(inner);
            grid().BeginEdit({row, 1});
            if (row != 3) {
                ::SendMessageW(grid().Editor(), EM_SETSEL, 0, 0);
                ::HideCaret(grid().Editor());
            }
            testinput::pump();
            const RECT edited = darkWithin(inner);
            EXPECT_EQ(edited.top, shown.top);
            EXPECT_EQ(edited.bottom, shown.bottom);
            EXPECT_NEAR(edited.left, shown.left, row == 3 ? 1 : 0);
            grid().EndEdit(false);
            testinput::pump();
        }
        grid().SetFont(nullptr);
        ::DeleteObject(font);
    }
}

TEST_F(GridEditing, ComposingWithAnInputMethodBeginsIt) {
    grid().SetFocusCell({2, 1});
    grid().Send(WM_IME_STARTCOMPOSITION);
    ASSERT_TRUE(editing());
    EXPECT_EQ(::GetFocus(), grid().Editor());
    EXPECT_EQ(editorText(), "value 2") << "nothing has been entered yet";
    // What the input method still sends to the window that it began with goes to the editor.
    for (const wchar_t character : {L'跑', L'道'}) grid().Send(WM_IME_CHAR, character, 1);
    grid().Send(WM_IME_ENDCOMPOSITION);
    EXPECT_TRUE(editing());
    EXPECT_EQ(editorText(), "跑道");
    key(VK_DOWN);
    EXPECT_EQ(grid().CellText(2, 1), "跑道");
    EXPECT_EQ(focus(), (CellId{3, 1})) << "it is typing: an arrow key ends it";

    grid().SetEditable(false);
    grid().Send(WM_IME_STARTCOMPOSITION);
    EXPECT_FALSE(editing());
}

TEST_F(GridEditing, EndsOnEnterTabAndLossOfFocusAndTellsTheOwner) {
    grid().SetFocusCell({1, 1});
    testinput::type(L"one");
    key(VK_RETURN);
    EXPECT_FALSE(editing());
    EXPECT_EQ(focus(), (CellId{1, 1}));
    EXPECT_EQ(grid().CellText(1, 1), "one");
    testinput::type(L"two");
    key(VK_TAB);
    EXPECT_EQ(focus(), (CellId{2, 1})) << "Tab goes to the next value";
    testinput::type(L"three");
    key(VK_TAB, {VK_SHIFT});
    EXPECT_EQ(focus(), (CellId{1, 1}));
    testinput::type(L"four");
    ::SetFocus(host.Item(gridtest::kBefore));
    testinput::pump();
    EXPECT_EQ(::GetFocus(), host.Item(gridtest::kBefore)) << "the focus stays where it went";
    EXPECT_EQ(
        host.edits,
        (Edits{{{1, 1}, "one", 1}, {{1, 1}, "two", 1}, {{2, 1}, "three", 2}, {{1, 1}, "four", 1}}));
}

TEST_F(GridEditing, AnUnchangedTextIsToldOnEnterOnly) {
    grid().SetFocusCell({1, 1});
    key(VK_F2);
    key(VK_TAB);
    key(VK_F2);
    clickCell(4, 1);
    EXPECT_TRUE(host.edits.empty());
    key(VK_F2);
    key(VK_RETURN);
    EXPECT_EQ(host.edits, (Edits{{{4, 1}, "value 4", 4}}));
}

TEST_F(GridEditing, ArrowAndPageKeysEndItWhereAskedOrWithControl) {
    grid().SetFocusCell({2, 1});
    testinput::type(L"typed");
    key(VK_DOWN);
    EXPECT_FALSE(editing());
    EXPECT_EQ(focus(), (CellId{3, 1})) << "an edit begun by typing goes on by arrow";
    EXPECT_EQ(grid().CellText(2, 1), "typed");

    key(VK_F2);
    for (const WORD inside : {WORD{VK_LEFT}, WORD{VK_HOME}, WORD{VK_UP}, WORD{VK_NEXT}}) {
        key(inside);
        EXPECT_TRUE(editing()) << "key " << inside << " moves in the text";
    }
    testinput::type(L"<");
    key(VK_UP, {VK_CONTROL});
    EXPECT_FALSE(editing());
    EXPECT_EQ(grid().CellText(3, 1), "<value 3");
    EXPECT_EQ(focus(), (CellId{2, 1}));
    key(VK_F2);
    key(VK_NEXT, {VK_CONTROL});
    EXPECT_EQ(focus(), (CellId{6, 1})) << "the page keys too, when Ctrl is held";
}

TEST_F(GridEditing, TheLastRowTakesSeveralLines) {
    grid().SetFocusCell({6, 1});
    key(VK_RETURN);
    EXPECT_EQ(editorText(), "value 6") << "the Enter that opens it is no line end";
    key(VK_ESCAPE);
    key(VK_F2);
    testinput::type(L"first");
    key(VK_RETURN);
    EXPECT_TRUE(editing()) << "Enter belongs to the text";
    testinput::type(L"second");
    key(VK_RETURN, {VK_CONTROL});
    EXPECT_FALSE(editing());
    EXPECT_EQ(grid().CellText(6, 1), "first\r\nsecond");
    key(VK_F2);
    key(VK_TAB);
    EXPECT_EQ(::GetFocus(), host.Item(gridtest::kAfter)) << "Tab from the last cell leaves";
}

TEST_F(GridEditing, SeveralLinesGetRoomWithinTheGrid) {
    host.Fill(100);
    grid().SetFocusCell({100, 1});
    const auto area = [this] {
        RECT window{};
        ::GetWindowRect(grid().Editor(), &window);
        ::MapWindowPoints(nullptr, grid().Handle(), reinterpret_cast<POINT*>(&window), 2);
        return window;
    };
    key(VK_F2);
    const RECT one = area();
    EXPECT_LT(one.bottom - one.top, 2 * grid().RowHeight()) << "as high as the cell at first";
    for (int line = 0; line < 3; ++line) {
        testinput::type(L"x");
        key(VK_RETURN);
    }
    const RECT four = area();
    EXPECT_GE(four.bottom - four.top, 4 * grid().RowHeight() - 1);
    EXPECT_LE(four.bottom, grid().ClientRect().bottom) << "there is no room below the last row";
    EXPECT_EQ(::SendMessageW(grid().Editor(), EM_GETFIRSTVISIBLELINE, 0, 0), 0);
    for (int line = 0; line < 40; ++line) key(VK_RETURN);
    EXPECT_GE(area().top, grid().RowHeight()) << "the heading is left free";
    key(VK_ESCAPE);

    grid().SetFixedColumnCount(0);
    grid().SetFocusCell({100, 0});
    testinput::type(L"one line");
    key(VK_RETURN);
    EXPECT_FALSE(editing()) << "the first column has no texts of several lines";
    grid().SetLastRowLines(false);
    grid().SetFocusCell({100, 1});
    testinput::type(L"one line");
    key(VK_RETURN);
    EXPECT_FALSE(editing()) << "the owner wants none";
}

TEST_F(GridEditing, OwnerHasTheLastWordOnTheText) {
    host.onEdit = [&](const Edited& edited) -> LRESULT {
        host.grid.SetCellText(edited.cell.row, edited.cell.column, "12");
        return 0;
    };
    grid().SetFocusCell({2, 1});
    testinput::type(L"12abc");
    key(VK_RETURN);
    EXPECT_EQ(grid().CellText(2, 1), "12") << "a normalised text is shown at once";

    host.onEdit = [](const Edited&) -> LRESULT { return -1; };
    testinput::type(L"nonsense");
    key(VK_RETURN);
    EXPECT_EQ(grid().CellText(2, 1), "12") << "a refused one goes back";

    host.onEdit = [&](const Edited&) -> LRESULT {
        host.Fill(2);
        ::SetFocus(host.Item(gridtest::kBefore));
        return 0;
    };
    grid().SetFocusCell({5, 1});
    testinput::type(L"gone");
    key(VK_TAB);
    EXPECT_EQ(grid().RowCount(), 3) << "the rows may go from within";
    EXPECT_FALSE(editing());

    host.onEdit = [](const Edited&) -> LRESULT { throw std::runtime_error("owner"); };
    grid().SetFocusCell({1, 1});
    testinput::type(L"x");
    key(VK_RETURN);
    EXPECT_FALSE(editing());
    host.onEdit = nullptr;
    testinput::type(L"y");
    key(VK_RETURN);
    EXPECT_EQ(grid().CellText(1, 1), "y") << "the grid goes on after an owner that failed";
}

TEST_F(GridEditing, NeedsAnEditorAnEditableGridAndTheOwnersConsent) {
    grid().SetCellEditor(1, 1, EditorKind::kNone);
    EXPECT_FALSE(grid().BeginEdit({1, 1}));
    EXPECT_FALSE(grid().BeginEdit({1, 0})) << "a fixed cell";
    host.refuseEditing = true;
    EXPECT_FALSE(grid().BeginEdit({2, 1}));
    EXPECT_EQ(host.begun, (std::vector<CellId>{{2, 1}})) << "only a possible edit is asked for";
    host.refuseEditing = false;
    EXPECT_TRUE(grid().BeginEdit({2, 1}));
    grid().SetEditable(false);
    EXPECT_FALSE(editing());
    EXPECT_FALSE(grid().BeginEdit({2, 1}));
    clickCell(3, 1);
    testinput::type(L"a");
    EXPECT_FALSE(editing());
}

TEST_F(GridEditing, DestroyingTheGridWhileEditingIsHarmless) {
    grid().SetFocusCell({2, 1});
    key(VK_F2);
    testinput::type(L"x");
    host.DestroyWindow();
    testinput::pump();
    EXPECT_FALSE(grid().HasWindow());
    EXPECT_EQ(host.edits, (Edits{{{2, 1}, "x", 2}})) << "it is told while all is still there";
}

namespace {

class GridList : public GridEditing {
protected:
    void SetUp() override {
        GridEditing::SetUp();
        grid().SetCellEditor(2, 1, EditorKind::kList);
        grid().SetCellText(2, 1, "Never");
    }
    bool dropped() { return ::SendMessageW(grid().Editor(), CB_GETDROPPEDSTATE, 0, 0) != 0; }
    POINT entry(int position) {
        COMBOBOXINFO info{};
        info.cbSize = sizeof info;
        ::GetComboBoxInfo(grid().Editor(), &info);
        RECT area{};
        ::SendMessageW(info.hwndList, LB_GETITEMRECT, static_cast<WPARAM>(position),
                       reinterpret_cast<LPARAM>(&area));
        POINT at{area.left + 10, (area.top + area.bottom) / 2};
        ::ClientToScreen(info.hwndList, &at);
        ::ScreenToClient(grid().Handle(), &at);
        return at;
    }
};

}  // namespace

TEST_F(GridList, DropsDownOnTheFirstClickAndTakesTheClickedEntry) {
    clickCell(2, 1);
    ASSERT_TRUE(editing());
    EXPECT_TRUE(dropped());
    EXPECT_EQ(editorText(), "Never") << "it begins with the cell's own text";
    EXPECT_EQ(::SendMessageW(grid().Editor(), CB_GETCOUNT, 0, 0), 4);
    testinput::click(grid().Handle(), entry(2));
    EXPECT_FALSE(editing());
    EXPECT_EQ(grid().CellText(2, 1), "Near");
    EXPECT_EQ(host.edits, (Edits{{{2, 1}, "Near", 2}}));
    EXPECT_EQ(::GetFocus(), grid().Handle());
}

TEST_F(GridList, FindsWhatIsTyped) {
    grid().SetFocusCell({2, 1});
    key(VK_F2);
    testinput::type(L"nig");
    EXPECT_EQ(editorText(), "Night");
    key(VK_RETURN);
    EXPECT_FALSE(editing());
    EXPECT_EQ(grid().CellText(2, 1), "Night");

    testinput::type(L"a");
    EXPECT_TRUE(editing()) << "typing on the cell opens its list";
    EXPECT_EQ(editorText(), "Always");
    key(VK_TAB);
    EXPECT_EQ(grid().CellText(2, 1), "Always");
    EXPECT_EQ(focus(), (CellId{3, 1}));
}

TEST_F(GridList, TheSameKeyGoesThroughTheEntries) {
    grid().SetCellText(2, 1, "Always");
    grid().SetFocusCell({2, 1});
    key(VK_F2);
    testinput::type(L"n");
    EXPECT_EQ(editorText(), "Never");
    testinput::type(L"n");
    EXPECT_EQ(editorText(), "Near");
    testinput::type(L"n");
    EXPECT_EQ(editorText(), "Night");
}

TEST_F(GridList, EscapeAndAForeignTextChangeNothing) {
    grid().SetFocusCell({2, 1});
    key(VK_F2);
    key(VK_DOWN);
    EXPECT_EQ(editorText(), "Near");
    key(VK_ESCAPE);
    EXPECT_FALSE(editing());
    EXPECT_EQ(grid().CellText(2, 1), "Never");

    grid().SetCellText(2, 1, "none of the choices");
    key(VK_F2);
    key(VK_TAB);
    EXPECT_EQ(grid().CellText(2, 1), "none of the choices");
    EXPECT_TRUE(host.edits.empty());
}

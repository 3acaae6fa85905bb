// Sections of rows that fold, by mouse and keyboard, and the grid as assistive programs see it.
#include "gridhost.h"

#include <framework/accessible.h>

using grid::CellId;
using grid::CellRange;

namespace {

constexpr long kColumns = 2;

class GridSections : public gridtest::GridTest {
protected:
    void SetUp() override {
        GridTest::SetUp();
        // Room for all lines.
        ::SetWindowPos(host.Handle(), nullptr, 0, 0, 400, 500, SWP_NOMOVE | SWP_NOZORDER);
        grid().MoveTo({10, 50, 350, 420});
        // Row 1 and row 6 are in none.
        grid().SetSections({{2, 2, "first"}, {4, 2, "second"}});
        grid().SetFocusCell({1, 1});
        ::AccessibleObjectFromWindow(grid().Handle(), static_cast<DWORD>(OBJID_CLIENT),
                                     __uuidof(IAccessible), reinterpret_cast<void**>(&accessible));
        ASSERT_TRUE(accessible);
    }
    void TearDown() override {
        if (accessible) accessible->Release();
    }

    POINT heading(std::size_t section) {
        const auto area = grid().SectionRect(section);
        return area ? POINT{area->left + 40, (area->top + area->bottom) / 2} : POINT{};
    }
    bool isFolded(std::size_t section) { return grid().Sections()[section].folded; }
    std::vector<int> rowsByKey(WORD key, int count) {
        std::vector<int> rows;
        for (int i = 0; i < count; ++i) {
            testinput::key(key);
            rows.push_back(focus().row);
        }
        return rows;
    }

    static VARIANT child(long id) {
        VARIANT value{};
        value.vt = VT_I4;
        value.lVal = id;
        return value;
    }
    static long cellId(int row, int column) { return row * kColumns + column + 1; }
    long headingId(long section) { return grid().RowCount() * kColumns + 1 + section; }
    std::wstring ask(HRESULT (STDMETHODCALLTYPE IAccessible::*what)(VARIANT, BSTR*), long id) {
        BSTR text = nullptr;
        (accessible->*what)(child(id), &text);
        const std::wstring answer = text ? text : L"";
        ::SysFreeString(text);
        return answer;
    }
    long number(HRESULT (STDMETHODCALLTYPE IAccessible::*what)(VARIANT, VARIANT*), long id) {
        VARIANT answer{};
        return SUCCEEDED((accessible->*what)(child(id), &answer)) ? answer.lVal : -1;
    }
    long state(long id) { return number(&IAccessible::get_accState, id); }

    IAccessible* accessible = nullptr;
};

}  // namespace

TEST_F(GridSections, HeadingsTakeLinesAndNoRows) {
    const auto top = [this](int row) { return grid().CellRect({row, 1})->top; };
    const LONG line = grid().RowHeight();
    EXPECT_EQ(top(2), top(1) + 2 * line);
    EXPECT_EQ(top(4), top(3) + 2 * line);
    EXPECT_EQ(top(6), top(5) + line);
    EXPECT_EQ(rowsByKey(VK_DOWN, 6), (std::vector<int>{2, 3, 4, 5, 6, 6}));
    EXPECT_EQ(rowsByKey(VK_UP, 6), (std::vector<int>{5, 4, 3, 2, 1, 1}));
    EXPECT_FALSE(grid().CellAt(heading(0)).IsValid());
    grid().SetSections({{2, 2, "first"}, {3, 2, "overlaps"}, {6, 2, "too long"}, {0, 1, "fixed"}});
    EXPECT_EQ(grid().Sections().size(), 1u);
    grid().SetRowCount(3);
    EXPECT_TRUE(grid().Sections().empty()) << "a row of it has gone";
}

TEST_F(GridSections, FoldByMouse) {
    testinput::click(grid().Handle(), heading(0));
    EXPECT_TRUE(isFolded(0));
    EXPECT_EQ(focus(), (CellId{1, 1}));
    EXPECT_FALSE(grid().CellRect({2, 1}));
    EXPECT_FALSE(grid().CellRect({3, 1}));
    clickCell(4, 1);
    EXPECT_EQ(focus(), (CellId{4, 1})) << "what is below has moved up";
    testinput::click(grid().Handle(), heading(1));
    EXPECT_EQ(focus(), (CellId{4, 1})) << "its heading stands for the focus cell";
    EXPECT_EQ(grid().Selection(), (CellRange{{4, 1}, {5, 1}}));
    testinput::click(grid().Handle(), heading(0));
    EXPECT_FALSE(isFolded(0));
    EXPECT_TRUE(isFolded(1));
}

TEST_F(GridSections, FoldByKeyboard) {
    grid().SetFocusCell({3, 1});
    testinput::key(VK_LEFT);
    EXPECT_TRUE(isFolded(0));
    EXPECT_EQ(focus(), (CellId{2, 1}));
    EXPECT_EQ(rowsByKey(VK_DOWN, 3), (std::vector<int>{4, 5, 6})) << "hidden rows are passed over";
    EXPECT_EQ(rowsByKey(VK_UP, 4), (std::vector<int>{5, 4, 2, 1}));
    EXPECT_EQ(rowsByKey(VK_TAB, 2), (std::vector<int>{2, 4}));
    for (const WORD key : std::initializer_list<WORD>{VK_RIGHT, VK_RETURN, VK_F2, VK_SPACE}) {
        grid().FoldSection(0, true);
        grid().SetFocusCell({2, 1});
        testinput::key(key);
        EXPECT_FALSE(isFolded(0)) << key;
        EXPECT_EQ(grid().Editor(), nullptr) << key;
        EXPECT_EQ(grid().Selection(), (CellRange{{2, 1}, {2, 1}})) << key;
    }
    testinput::key(VK_RETURN);
    EXPECT_NE(grid().Editor(), nullptr) << "open, it is a cell as any other";
}

TEST_F(GridSections, WhatIsHiddenIsCopiedButNotEdited) {
    grid().UserFoldsAll(true);
    grid().SetFocusCell({3, 1});
    EXPECT_EQ(focus(), (CellId{2, 1}));
    EXPECT_EQ(grid().RangeText(grid().Selection()), "value 2\r\nvalue 3");
    testinput::key(VK_DELETE);
    testinput::type(L"x");
    EXPECT_EQ(grid().Editor(), nullptr);
    EXPECT_FALSE(grid().SetRangeText({2, 1}, "a\r\nb"));
    EXPECT_TRUE(host.edits.empty());
    EXPECT_EQ(grid().CellText(2, 1), "value 2");
}

TEST_F(GridSections, AssistiveProgramsSeeCellsAndHeadings) {
    long count = 0;
    accessible->get_accChildCount(&count);
    EXPECT_EQ(count, 7 * kColumns + 2);
    EXPECT_EQ(number(&IAccessible::get_accRole, CHILDID_SELF), ROLE_SYSTEM_TABLE);
    EXPECT_EQ(number(&IAccessible::get_accRole, cellId(0, 1)), ROLE_SYSTEM_COLUMNHEADER);
    EXPECT_EQ(number(&IAccessible::get_accRole, cellId(3, 0)), ROLE_SYSTEM_ROWHEADER);
    EXPECT_EQ(number(&IAccessible::get_accRole, cellId(3, 1)), ROLE_SYSTEM_CELL);
    EXPECT_EQ(ask(&IAccessible::get_accName, cellId(3, 1)), L"name 3");
    EXPECT_EQ(ask(&IAccessible::get_accValue, cellId(3, 1)), L"value 3");
    EXPECT_EQ(ask(&IAccessible::get_accName, headingId(1)), L"second");
    EXPECT_EQ(number(&IAccessible::get_accRole, headingId(2)), -1) << "there is no such child";

    clickCell(3, 1);
    VARIANT found{};
    ASSERT_EQ(accessible->get_accFocus(&found), S_OK);
    EXPECT_EQ(found.lVal, cellId(3, 1));
    constexpr long kInFocus = STATE_SYSTEM_FOCUSED | STATE_SYSTEM_SELECTED;
    EXPECT_EQ(state(cellId(3, 1)) & kInFocus, kInFocus);
    EXPECT_EQ(state(cellId(2, 1)) & kInFocus, 0);
    grid().SetCellEditor(3, 1, grid::EditorKind::kNone);
    EXPECT_TRUE(state(cellId(3, 1)) & STATE_SYSTEM_READONLY);
    EXPECT_FALSE(state(cellId(2, 1)) & STATE_SYSTEM_READONLY);

    long left = 0, top = 0, width = 0, height = 0;
    ASSERT_EQ(accessible->accLocation(&left, &top, &width, &height, child(cellId(2, 1))), S_OK);
    ASSERT_EQ(accessible->accHitTest(left + width / 2, top + height / 2, &found), S_OK);
    EXPECT_EQ(found.lVal, cellId(2, 1));

    EXPECT_TRUE(state(headingId(0)) & STATE_SYSTEM_EXPANDED);
    EXPECT_EQ(accessible->accDoDefaultAction(child(headingId(0))), S_OK);
    EXPECT_TRUE(state(headingId(0)) & STATE_SYSTEM_COLLAPSED);
    EXPECT_TRUE(state(cellId(2, 1)) & STATE_SYSTEM_INVISIBLE);
    ASSERT_EQ(accessible->get_accFocus(&found), S_OK);
    EXPECT_EQ(found.lVal, headingId(0)) << "which stands for the focus cell";
    ASSERT_EQ(accessible->get_accSelection(&found), S_OK);
    ASSERT_EQ(found.vt, VT_UNKNOWN);
    auto* const selected = static_cast<IEnumVARIANT*>(found.punkVal);
    VARIANT ids[3];
    ULONG fetched = 0;
    EXPECT_EQ(selected->Next(3, ids, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 2u);
    EXPECT_EQ(ids[1].lVal, cellId(3, 1));
    selected->Release();
}

TEST_F(GridSections, AssistiveProgramsEditAndOutliveTheGrid) {
    const BSTR text = ::SysAllocString(L"neu");
    EXPECT_EQ(accessible->put_accValue(child(cellId(3, 1)), text), S_OK);
    EXPECT_NE(accessible->put_accValue(child(cellId(3, 0)), text), S_OK) << "a caption";
    grid().FoldSection(0, true);
    EXPECT_NE(accessible->put_accValue(child(cellId(3, 1)), text), S_OK) << "it is hidden";
    ::SysFreeString(text);
    EXPECT_EQ(host.edits, (std::vector<gridtest::Edited>{{{3, 1}, "neu", 3}}));
    EXPECT_EQ(accessible->accSelect(SELFLAG_TAKEFOCUS | SELFLAG_TAKESELECTION, child(cellId(6, 1))),
              S_OK);
    EXPECT_EQ(focus(), (CellId{6, 1}));
    EXPECT_EQ(accessible->accDoDefaultAction(child(cellId(6, 1))), S_OK);
    EXPECT_NE(grid().Editor(), nullptr);
    host.DestroyWindow();
    long count = 0;
    EXPECT_EQ(accessible->get_accChildCount(&count), CO_E_OBJNOTCONNECTED);
    EXPECT_EQ(ask(&IAccessible::get_accName, CHILDID_SELF), L"");
}

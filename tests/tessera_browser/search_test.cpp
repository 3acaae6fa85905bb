// The line above the tree that finds nodes while it is typed into.
#include "../support/spokenlanguage.h"
#include "browserfixture.h"

#include <quillon/fltopcode.h>

namespace {

class BrowserSearch : public BrowserTest {
protected:
    void SetUp() override {
        open();
        root = add(nullptr, "root", 0);
        tower = add(root, "Tower", kFltObject);
        inside = add(tower, "towering inside", kFltGroup);
        bridge = add(root, "bridge", kFltSwitch);
        other = add(root, "\xC3\x84hre tower", kFltGroup);  // Ähre
        TreeView_Expand(tree(), root, TVE_EXPAND);
        SetFocus(tree());
    }

    static HWND line() { return control(IDC_SEARCH); }
    static bool isOpen() { return line() && IsWindowVisible(line()); }
    static void call() { testinput::key('F', {VK_CONTROL}); }
    static std::wstring count() { return text(control(IDC_SEARCH_COUNT)); }
    static RECT areaOf(int id) {
        RECT area{};
        GetWindowRect(control(id), &area);
        return area;
    }
    /// Whether no part of the label is as dark as that of the others.
    static bool isDimmed(BrowserItem item) {
        const LONG y = middle(item).y;
        RECT area{};
        TreeView_GetItemRect(tree(), item, &area, TRUE);
        for (int x = area.left; x < area.right; ++x)
            if (testinput::pixel(tree(), {x, y}) == GetSysColor(COLOR_WINDOWTEXT)) return false;
        return true;
    }

    BrowserItem root, tower, inside, bridge, other;
};

TEST_F(BrowserSearch, IsThereWhenItIsCalledAndGivesTheTreeItsPlaceBack) {
    const RECT before = areaOf(IDC_TREE);
    EXPECT_FALSE(isOpen());
    call();
    ASSERT_TRUE(isOpen());
    EXPECT_EQ(GetFocus(), line());
    EXPECT_FALSE(isDimmed(bridge)) << "nothing is looked for yet";
    const RECT less = areaOf(IDC_TREE);
    EXPECT_EQ(less.bottom, before.bottom);
    EXPECT_EQ(areaOf(IDC_SEARCH).top, before.top);
    EXPECT_GE(less.top, areaOf(IDC_SEARCH).bottom);
    // It follows the form's size as the tree does.
    RECT window{};
    GetWindowRect(form(), &window);
    SetWindowPos(form(), nullptr, 0, 0, window.right - window.left + 60,
                 window.bottom - window.top + 60, SWP_NOMOVE | SWP_NOZORDER);
    EXPECT_EQ(areaOf(IDC_TREE).top, less.top);
    EXPECT_EQ(areaOf(IDC_TREE).bottom, less.bottom + 60);
    testinput::type(L"tow");
    testinput::key(VK_ESCAPE);
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(IsWindowVisible(form()));
    EXPECT_EQ(GetFocus(), tree());
    EXPECT_EQ(areaOf(IDC_TREE).top, before.top);
    EXPECT_FALSE(isDimmed(bridge));
    call();
    EXPECT_EQ(text(line()), L"tow");
    testinput::type(L"b");
    EXPECT_EQ(text(line()), L"b") << "the next search replaces the last one";
}

TEST_F(BrowserSearch, ShowsTheFirstMatchWhileItIsTypedAndGoesRound) {
    call();
    testinput::type(L"TOWER");
    EXPECT_EQ(caret(), tower);
    EXPECT_EQ(count(), L"1 / 3");
    EXPECT_FALSE(isDimmed(tower));
    EXPECT_TRUE(isDimmed(bridge));
    EXPECT_EQ(GetFocus(), line());
    testinput::type(L"I");
    EXPECT_EQ(caret(), inside) << "it shows nodes in closed branches";
    EXPECT_TRUE(isExpanded(tower));
    EXPECT_TRUE(isSelected(inside));
    EXPECT_FALSE(isSelected(tower));
    testinput::key(VK_BACK);
    EXPECT_EQ(caret(), inside) << "it still matches";
    testinput::key(VK_RETURN);
    EXPECT_EQ(caret(), other);
    EXPECT_EQ(count(), L"3 / 3");
    testinput::key(VK_F3);
    EXPECT_EQ(caret(), tower) << "round the end";
    testinput::key(VK_F3, {VK_SHIFT});
    EXPECT_EQ(caret(), other) << "and round the beginning";
    testinput::key(VK_RETURN, {VK_SHIFT});
    EXPECT_EQ(caret(), inside);
    EXPECT_TRUE(IsWindowVisible(form()));
    testinput::type(L"nowhere");
    EXPECT_EQ(caret(), inside);
    EXPECT_EQ(count(), L"0");
    testinput::key(VK_RETURN);
    EXPECT_EQ(caret(), inside);
}

// Capitals beyond ASCII are the same letters too.
TEST_F(BrowserSearch, FindsKindsAndNamesInEveryScript) {
    call();
    testinput::type(L"\xE4HR");
    EXPECT_EQ(caret(), other);
    EXPECT_EQ(count(), L"1 / 1");
    SendMessageW(line(), EM_SETSEL, 0, -1);
    testinput::type(L"\u5207\u6362");  // the kind of the switch
    EXPECT_EQ(caret(), bridge);
    EXPECT_EQ(count(), L"1 / 1");
    // A node of an unknown kind, and the item that the form adds itself, have none.
    const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
    SendMessageW(line(), EM_SETSEL, 0, -1);
    testinput::type(L"group");
    EXPECT_EQ(count(), L"2 / 2");
}

TEST_F(BrowserSearch, FollowsWhatBecomesOfTheTree) {
    call();
    testinput::type(L"brid");
    EXPECT_EQ(count(), L"1 / 1");
    const BrowserItem second = add(root, "bridge 2");
    EXPECT_FALSE(isDimmed(second));
    EXPECT_EQ(count(), L"1 / 2");
    testinput::key(VK_F3);
    EXPECT_EQ(caret(), second);
    browser().delNode(second);
    TVITEMW renamed{};
    wchar_t name[] = L"viaduct";
    renamed.mask = TVIF_TEXT;
    renamed.hItem = bridge;
    renamed.pszText = name;
    SendMessageW(tree(), TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&renamed));
    EXPECT_TRUE(isDimmed(bridge));
    EXPECT_EQ(count(), L"0");
    SetFocus(line());
    testinput::key(VK_F3);
    browser().delNode(nullptr);
    testinput::key(VK_F3);
    testinput::type(L"g");
    EXPECT_EQ(caret(), nullptr);
}

// From the change of a scene to the next refresh the items have no nodes to show.
TEST_F(BrowserSearch, ShowsNothingWhileTheTreeCannotBeTrusted) {
    call();
    browser().sceneChanged();
    const BrowserItem before = caret();
    EXPECT_NE(before, tower);
    SetFocus(line());
    testinput::type(L"tower");
    EXPECT_EQ(caret(), before);
    testinput::key(VK_RETURN);
    EXPECT_EQ(caret(), before);
    EXPECT_TRUE(text(control(IDC_NAME)).empty());
}

// What is typed elsewhere is taken, and F3 without the line still goes through the selected items.
TEST_F(BrowserSearch, LeavesTheRestOfTheFormAsItIs) {
    select({tower});
    testinput::key(VK_F2);
    testinput::type(L"spire");
    call();
    EXPECT_EQ(client.lastText, "spire");
    EXPECT_TRUE(isOpen());
    testinput::key(VK_ESCAPE);
    select({tower, bridge});
    testinput::key(VK_F3);
    EXPECT_EQ(text(control(IDC_NAME)).substr(text(control(IDC_NAME)).find(L':')), L":bridge");
}

}  // namespace

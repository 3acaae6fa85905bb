// The context menus of tree and grid, and the keys of their commands.
#include "../support/menukeys.h"
#include "../support/spokenlanguage.h"
#include "browserfixture.h"

#include <fltkilnutil/fltattr.h>
#include <quillon/fltopcode.h>

#include <algorithm>

namespace {

class BrowserMenus : public BrowserTest {
protected:
    void SetUp() override {
        open();
        root = add(nullptr, "root", 0);
        group = add(root, "group", kFltGroup);
        object = add(group, "object", kFltObject);
        face = add(object, "face", kFltFace);
        deep = add(face, "deep face", kFltFace);
        second = add(root, "second", kFltGroup);
        TreeView_Expand(tree(), root, TVE_EXPAND);
        SetFocus(tree());
        client.take();
    }

    /// Opens the menu of the control that has the keyboard, and presses keys in it.
    static void menu(std::vector<WORD> keys) {
        const MenuKeys pressed(std::move(keys));
        testinput::key(VK_F10, {VK_SHIFT});
        EXPECT_TRUE(testinput::pumpUntil([] { return MenuKeys::opened(); }));
        testinput::pump();
    }
    static bool isOffered(std::wstring_view beginning) {
        return std::ranges::any_of(MenuKeys::texts(), [&](const std::wstring& text) {
            return text.starts_with(beginning);
        });
    }
    static std::wstring clipboard() {
        std::wstring text;
        if (!OpenClipboard(form())) return text;
        if (const HANDLE held = GetClipboardData(CF_UNICODETEXT))
            text = static_cast<const wchar_t*>(GlobalLock(held));
        CloseClipboard();
        return text;
    }
    std::vector<BrowserItem> selected() const {
        std::vector<BrowserItem> all{root, group, object, face, deep, second};
        std::erase_if(all, [](BrowserItem item) { return !isSelected(item); });
        return all;
    }

    BrowserItem root, group, object, face, deep, second;
};

TEST_F(BrowserMenus, OfferWhatCanBeDoneWithTheSelectedNode) {
    const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
    select({group});
    menu({'R'});
    HWND edit = TreeView_GetEditControl(tree());
    ASSERT_TRUE(edit);
    testinput::type(L"renamed");
    testinput::key(VK_RETURN);
    EXPECT_EQ(client.lastText, "renamed");
    EXPECT_TRUE(isOffered(L"(De&lete")) << "this client cannot";
    client.take();
    menu({'B', VK_DOWN, VK_DOWN, VK_DOWN, VK_RETURN});  // below: a switch
    std::vector<Sent> sent = client.take();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0], (Sent{BrowserEvent::kCreate, group, nullptr, kFltSwitch, 1580}));
    select({group});
    menu({VK_ESCAPE});
    EXPECT_TRUE(client.take().empty());
    select({root});
    menu({VK_ESCAPE});
    EXPECT_TRUE(isOffered(L"(Create Be&side")) << "the root stands alone";
}

TEST_F(BrowserMenus, CreateBesideTheSelectedNode) {
    select({object});
    client.take();
    menu({'B', VK_RETURN});
    const std::vector<Sent> sent = client.take();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0], (Sent{BrowserEvent::kCreate, group, nullptr, kFltGroup, 1580}));
}

TEST_F(BrowserMenus, SelectRelativesByKeyAndByMenu) {
    select({group});
    testinput::key('C', {VK_CONTROL, VK_SHIFT});
    EXPECT_EQ(selected(), (std::vector{object}));
    EXPECT_EQ(caret(), object);
    EXPECT_TRUE(isExpanded(group));
    testinput::key('P', {VK_CONTROL, VK_SHIFT});
    EXPECT_EQ(selected(), (std::vector{group}));
    menu({'S', 'K'});
    EXPECT_EQ(selected(), (std::vector{group, second}));
    testinput::click(tree(), middle(group, true));
    testinput::key('K', {VK_SHIFT});
    ASSERT_EQ(selected(), (std::vector{group}));
    testinput::key('K', {VK_CONTROL, VK_SHIFT});
    EXPECT_EQ(selected(), (std::vector{group, second})) << "and by its key";
    select({deep});
    testinput::key('C', {VK_CONTROL, VK_SHIFT});
    EXPECT_TRUE(isSelected(deep)) << "it has none";
    // A scene that has changed is not asked about its nodes.
    browser().sceneChanged();
    SetFocus(tree());
    testinput::key('K', {VK_CONTROL, VK_SHIFT});
    EXPECT_FALSE(isSelected(face));
}

TEST_F(BrowserMenus, ExpandToALevel) {
    select({root});
    testinput::key('2', {VK_CONTROL});
    EXPECT_TRUE(isExpanded(root));
    EXPECT_TRUE(isExpanded(group));
    EXPECT_FALSE(isExpanded(object));
    testinput::key('4', {VK_CONTROL});
    EXPECT_TRUE(isExpanded(face));
    testinput::key('1', {VK_CONTROL});
    EXPECT_TRUE(isExpanded(root));
    EXPECT_FALSE(isExpanded(group));
    TreeView_Expand(tree(), group, TVE_EXPAND);
    EXPECT_FALSE(isExpanded(object)) << "what is deeper is closed too";
    // Below what is selected only.
    TreeView_Expand(tree(), object, TVE_EXPAND);
    select({second});
    testinput::key('1', {VK_CONTROL});
    EXPECT_TRUE(isExpanded(object));
}

TEST_F(BrowserMenus, CopyAndResetValuesInTheGrid) {
    select({group});
    SetFocus(grid());
    testinput::key(VK_HOME, {VK_CONTROL});
    testinput::type(L"7");
    testinput::key(VK_RETURN);
    testinput::key(VK_HOME, {VK_CONTROL});
    menu({'C'});
    EXPECT_EQ(clipboard(), L"7");
    testinput::key('C', {VK_CONTROL, VK_SHIFT});
    EXPECT_TRUE(clipboard().ends_with(L"\t7")) << "the caption stands before it";
    EXPECT_GT(clipboard().size(), 3u);
    const auto priority = [&] {
        INode* const node = reinterpret_cast<INode*>(browser().nodeOf(group));
        EXPECT_TRUE(fltAttrLoad(node, kFltRevision));
        return std::string(fltAttrFindRow(FltNodeKind::Group, "FltGrpRelPriority")->value.text());
    };
    ASSERT_EQ(priority(), "7");
    menu({'D'});
    EXPECT_EQ(priority(), "0");
    testinput::key('C', {VK_CONTROL, VK_SHIFT});
    EXPECT_TRUE(clipboard().ends_with(L"\t0")) << "the cell shows it";
    EXPECT_EQ(GetFocus(), grid());
}

TEST_F(BrowserMenus, TheRightButtonMeansTheCellUnderIt) {
    select({group});
    SetFocus(grid());
    testinput::key(VK_HOME, {VK_CONTROL});
    const MenuKeys pressed({'R'});  // copy the row
    RECT area{};
    GetClientRect(grid(), &area);
    const LPARAM at = MAKELPARAM(area.right - 30, 16 * 3 + 8);
    PostMessageW(grid(), WM_RBUTTONDOWN, MK_RBUTTON, at);
    PostMessageW(grid(), WM_RBUTTONUP, 0, at);
    EXPECT_TRUE(testinput::pumpUntil([] { return MenuKeys::opened(); }));
    testinput::pump();
    const std::wstring copied = clipboard();
    testinput::key(VK_HOME, {VK_CONTROL});
    testinput::key('C', {VK_CONTROL, VK_SHIFT});
    EXPECT_NE(copied, clipboard());
    EXPECT_NE(copied.find(L'\t'), std::wstring::npos);
}

// ---------------------------------------------------------------- count

class BrowserCount : public BrowserMenus {
protected:
    static std::wstring shown() {
        testinput::pump();
        UpdateWindow(tree());
        const HWND label = GetDlgItem(control(IDC_TREE_GROUP), IDC_SELECTED_COUNT);
        return label && IsWindowVisible(label) ? text(label) : L"";
    }
};

TEST_F(BrowserCount, SaysHowManyAreSelectedAndWhatIsOutOfSight) {
    const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
    select({group});
    EXPECT_EQ(shown(), L"") << "one is seen by itself";
    select({group, second});
    EXPECT_EQ(shown(), L"2 selected");
    select({group, second, object});
    EXPECT_EQ(shown(), L"3 selected, 1 in closed branches");
    SetFocus(tree());
    testinput::click(tree(), middle(group, true), 2);  // opens the branch, and selects it alone
    EXPECT_EQ(shown(), L"");
    TreeView_SetItemState(tree(), object, TVIS_SELECTED, TVIS_SELECTED);
    EXPECT_EQ(shown(), L"2 selected");
    TreeView_SetItemState(tree(), second, TVIS_SELECTED, TVIS_SELECTED);
    push(IDC_COLLAPSE);
    EXPECT_EQ(shown(), L"3 selected, 1 in closed branches");
    {
        const SpokenLanguage chinese(KILN_LANGUAGE_CHINESE);
        EXPECT_EQ(shown(), L"已选 3 个，1 个在折叠的分支中");
    }
    browser().delNode(nullptr);
    EXPECT_EQ(shown(), L"");
}

TEST_F(BrowserCount, FindSaysHowManyItHasFound) {
    const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
    select({group});
    SetFocus(grid());
    testinput::key(VK_HOME, {VK_CONTROL});
    push(IDC_FIND);
    EXPECT_EQ(shown(), L"2 found");
    select({object});
    TreeView_SetItemState(tree(), second, 0, TVIS_SELECTED);
    TreeView_SetItemState(tree(), group, 0, TVIS_SELECTED);
    EXPECT_EQ(shown(), L"");
}

}  // namespace

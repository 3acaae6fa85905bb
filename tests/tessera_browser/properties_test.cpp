// The property side: name line, comment and attribute grid.
#include "../support/scenechanges.h"
#include "browserfixture.h"

#include <fltkilnutil/fltattr.h>

#include <quillon/fltopcode.h>
#include <algorithm>
#include <cstring>

namespace {

class BrowserProperties : public BrowserTest {
protected:
    void SetUp() override {
        open();
        root = add(nullptr, "root", 0);
        client.take();
    }

    static std::wstring clipboardText() {
        std::wstring text;
        if (!OpenClipboard(form())) return text;
        if (const HANDLE data = GetClipboardData(CF_UNICODETEXT)) {
            text = static_cast<const wchar_t*>(GlobalLock(data));
            GlobalUnlock(data);
        }
        CloseClipboard();
        return text;
    }

    static void setClipboardText(std::wstring_view text) {
        if (!OpenClipboard(form())) return;
        EmptyClipboard();
        const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t));
        auto* const place = static_cast<wchar_t*>(GlobalLock(memory));
        place[text.copy(place, text.size())] = 0;
        GlobalUnlock(memory);
        SetClipboardData(CF_UNICODETEXT, memory);
        CloseClipboard();
    }

    /// The value column, a line for each attribute.
    static std::wstring gridValues() {
        setClipboardText(L"");
        SetFocus(grid());
        testinput::key('A', {VK_CONTROL});
        testinput::key('C', {VK_CONTROL});
        return clipboardText();
    }

    static int rowOf(FltNodeKind kind, const char* key) {
        const FltAttrGroup* const set = fltAttrGroupFind(kind);
        const FltAttrDesc* const row = fltAttrFindRow(kind, key);
        EXPECT_TRUE(set && row) << key;
        return set && row ? static_cast<int>(row - set->descriptors) : 0;
    }

    /// Moves the grid's focus to an attribute by the keyboard.
    static void goTo(int row) {
        SetFocus(grid());
        testinput::key(VK_HOME, {VK_CONTROL});
        for (int i = 0; i < row; ++i) testinput::key(VK_DOWN);
    }

    static void enter(FltNodeKind kind, const char* key, std::wstring_view value) {
        goTo(rowOf(kind, key));
        testinput::type(value);
        testinput::key(VK_RETURN);
    }

    /// The text of the grid's cell in focus.
    static std::wstring cell() {
        testinput::key('C', {VK_CONTROL});
        return clipboardText();
    }

    static HWND editor() { return GetFocus() == grid() ? nullptr : GetFocus(); }

    /// The middle of an attribute's value, where its editor opens.
    static POINT valueAt(int row) {
        goTo(row);
        testinput::key(VK_F2);
        RECT area{};
        if (editor()) GetWindowRect(editor(), &area);
        testinput::key(VK_ESCAPE);
        MapWindowPoints(nullptr, grid(), reinterpret_cast<POINT*>(&area), 2);
        EXPECT_LT(area.top, area.bottom) << "attribute " << row << " has no editor";
        return {(area.left + area.right) / 2, (area.top + area.bottom) / 2};
    }

    static std::string stored(INode* node, FltNodeKind kind, const char* key) {
        if (!fltAttrLoad(node, kFltRevision)) return "nothing";
        return fltAttrFindRow(kind, key)->value.text();
    }

    BrowserItem root;
};

TEST_F(BrowserProperties, ShowTheCurrentNode) {
    const std::wstring caption = [] {
        const FltAttrGroup* const set = fltAttrGroupFind(FltNodeKind::Lod);
        wchar_t wide[100] = L"";
        if (set) MultiByteToWideChar(CP_UTF8, 0, set->caption, -1, wide, 100);
        return std::wstring(wide);
    }();
    ASSERT_NE(caption, L"");
    INode* const lod = node(73);
    fltPutComment(lod, "远处\n可见");
    browser().selectNode(add(root, "近处", lod));
    EXPECT_EQ(text(control(IDC_NAME)), caption + L":近处");
    EXPECT_EQ(text(control(IDC_COMMENT)), L"远处\r\n可见");
    EXPECT_TRUE(isEnabled(IDC_COMMENT));
    const std::wstring values = gridValues();
    EXPECT_EQ(values.substr(0, 11), L"100000\r\n0\r\n");
    EXPECT_EQ(std::count(values.begin(), values.end(), L'\n') + 1,
              static_cast<std::ptrdiff_t>(fltAttrCount(*fltAttrGroupFind(FltNodeKind::Lod))));

    browser().selectNode(browser().addNode(root, "no node", 0));
    EXPECT_EQ(text(control(IDC_NAME)), L"");
    EXPECT_EQ(text(control(IDC_COMMENT)), L"");
    EXPECT_FALSE(isEnabled(IDC_COMMENT));
    EXPECT_EQ(gridValues(), L"");

    browser().selectNode(add(root, "plain", 0));
    EXPECT_EQ(text(control(IDC_NAME)), L"Non-OpenFlight Selection");
    EXPECT_FALSE(isEnabled(IDC_COMMENT));
    EXPECT_EQ(gridValues(), L"");
    EXPECT_FALSE(isEnabled(IDC_TOOL));
}

TEST_F(BrowserProperties, EditsAreNormalisedAndShownAtOnce) {
    INode* const group = node(2);
    INode* const lod = node(73);
    const BrowserItem groupItem = add(root, "group", group);
    const BrowserItem lodItem = add(root, "lod", lod);
    struct Edit {
        const char* key;
        const wchar_t* typed;
        const char* expected;
    };
    browser().selectNode(groupItem);
    for (const Edit& edit :
         {Edit{"FltGrpSpecial1", L"12abc", "12"}, Edit{"FltGrpSpecial1", L"abc", "0"},
          Edit{"FltGrpSpecial2", L" -7 ", "-7"}}) {
        enter(FltNodeKind::Group, edit.key, edit.typed);
        EXPECT_EQ(stored(group, FltNodeKind::Group, edit.key), edit.expected) << edit.typed;
    }
    EXPECT_NE(gridValues().find(L"0\r\n0\r\n-7\r\n"), std::wstring::npos);
    browser().selectNode(lodItem);
    enter(FltNodeKind::Lod, "FltLodMin", L"2.50");
    EXPECT_EQ(stored(lod, FltNodeKind::Lod, "FltLodMin"), "2.5");
    EXPECT_EQ(gridValues().substr(0, 5), L"2.5\r\n");
    // The keyboard stays in the grid for the next value.
    goTo(0);
    testinput::type(L"9");
    testinput::key(VK_TAB);
    EXPECT_TRUE(GetFocus() == grid() || IsChild(grid(), GetFocus()));
    testinput::type(L"8");
    testinput::key(VK_RETURN);
    EXPECT_EQ(stored(lod, FltNodeKind::Lod, "FltLodMin"), "9");
    EXPECT_EQ(stored(lod, FltNodeKind::Lod, "FltLodMax"), "8");
}

TEST_F(BrowserProperties, AValueIsEditedByASecondClickAListByTheFirst) {
    INode* const group = node(2);
    browser().selectNode(add(root, "group", group));
    const int number = rowOf(FltNodeKind::Group, "FltGrpSpecial1");
    const POINT atNumber = valueAt(number);
    const POINT atList = valueAt(rowOf(FltNodeKind::Group, "FltGrpFwdAnim"));
    SetFocus(tree());
    testinput::click(grid(), atNumber);
    EXPECT_EQ(GetFocus(), grid()) << "the first click selects";
    testinput::click(grid(), atNumber);
    ASSERT_TRUE(editor());
    testinput::type(L"41");
    testinput::click(grid(), atList);
    EXPECT_EQ(stored(group, FltNodeKind::Group, "FltGrpSpecial1"), "41") << "kept on leaving";
    ASSERT_TRUE(editor());
    EXPECT_TRUE(SendMessageW(editor(), CB_GETDROPPEDSTATE, 0, 0)) << "a list drops down at once";
    EXPECT_EQ(SendMessageW(editor(), CB_GETCOUNT, 0, 0), 2);
    testinput::key(VK_ESCAPE);
    EXPECT_EQ(GetFocus(), grid());
}

TEST_F(BrowserProperties, TheGridStaysWhereItIsFromNodeToNode) {
    INode* const first = node(14);
    INode* const second = node(14);
    const BrowserItem a = add(root, "a", first);
    const BrowserItem b = add(root, "b", second);
    TreeView_Expand(tree(), root, TVE_EXPAND);
    browser().selectNode(a);
    constexpr int kRow = 30;
    const char* const key = fltAttrGroupFind(FltNodeKind::Dof)->descriptors[kRow].key;
    goTo(kRow);
    testinput::wheel(grid(), {20, 60}, -WHEEL_DELTA);
    const int scrolled = GetScrollPos(grid(), SB_VERT);
    ASSERT_GT(scrolled, 0) << "there is more than is shown";
    const std::wstring former = cell();

    browser().selectNode(a);
    EXPECT_EQ(GetScrollPos(grid(), SB_VERT), scrolled) << "showing it again";
    EXPECT_EQ(GetFocus(), tree());
    testinput::click(tree(), middle(b));
    EXPECT_EQ(GetScrollPos(grid(), SB_VERT), scrolled) << "showing another of its kind";
    SetFocus(grid());
    testinput::type(L"7");
    testinput::key(VK_RETURN);
    EXPECT_EQ(stored(second, FltNodeKind::Dof, key), "7") << "the focus row has stayed";
    EXPECT_NE(stored(first, FltNodeKind::Dof, key), "7");
    EXPECT_EQ(cell(), L"7");
    EXPECT_EQ(GetScrollPos(grid(), SB_VERT), scrolled) << "and after an edit";
}

TEST_F(BrowserProperties, WhatTheNodeDidNotTakeIsShownAtOnce) {
    browser().selectNode(add(root, "light", kFltLightPoint));
    goTo(rowOf(FltNodeKind::LightPoint, "FltLtPtDisplayMode"));
    const std::wstring choice = cell();
    setClipboardText(L"no such choice");
    testinput::key('V', {VK_CONTROL});
    EXPECT_EQ(cell(), choice) << "a text that is none of the choices";
    EXPECT_EQ(GetFocus(), grid()) << "the keyboard stays for the next key";

    INode* const group = node(2);
    browser().selectNode(add(root, "group", group));
    goTo(rowOf(FltNodeKind::Group, "FltGrpSpecial1"));
    setClipboardText(L"12 apples");
    testinput::key('V', {VK_CONTROL});
    EXPECT_EQ(cell(), L"12");
    testinput::key(VK_DELETE);
    EXPECT_EQ(cell(), L"0");
    EXPECT_EQ(GetFocus(), grid());

    INode* const reference = node(63);
    browser().selectNode(add(root, "reference", reference));
    goTo(rowOf(FltNodeKind::XRef, "FltXRefFilename"));
    setClipboardText(std::wstring(500, L'n'));
    testinput::key('V', {VK_CONTROL});
    const std::wstring kept = cell();
    EXPECT_EQ(stored(reference, FltNodeKind::XRef, "FltXRefFilename"),
              std::string(kept.size(), 'n'));
    EXPECT_LT(kept.size(), 500u) << "too long a name is cut, and seen to be";

    // The node's data go while its value is being edited.
    testinput::key(VK_F2);
    testinput::type(L"lost");
    reference->RemoveAppDataChunk(Class_ID(0x6A3C1F07, 0x2E9D0001), 0xA10, 0);
    reference->RemoveAppDataChunk(Class_ID(0x6A3C1F07, 0x2E9D0001), 0xA10, 1);
    testinput::key(VK_RETURN);
    EXPECT_EQ(cell(), kept);
}

// Programs fill a form that nobody sees yet.
TEST_F(BrowserProperties, AHiddenFormLeavesTheKeyboardWhereItIs) {
    const HWND other = CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 900,
                                       600, 300, 200, nullptr, nullptr, nullptr, nullptr);
    browser().show(0);
    ASSERT_TRUE(testinput::activate(other));
    SetFocus(other);
    browser().selectNode(add(root, "group", node(2)));
    EXPECT_NE(text(control(IDC_NAME)), L"");
    EXPECT_EQ(GetFocus(), other);
    DestroyWindow(other);
}

TEST_F(BrowserProperties, ASwitchIsShownButNotEdited) {
    INode* const chosen = node(96);
    browser().selectNode(add(root, "switch", chosen));
    const std::wstring values = gridValues();
    EXPECT_EQ(std::count(values.begin(), values.end(), L'\n') + 1,
              static_cast<std::ptrdiff_t>(fltAttrCount(*fltAttrGroupFind(FltNodeKind::Switch))));
    EXPECT_TRUE(isEnabled(IDC_TOOL));
    goTo(0);
    testinput::key(VK_F2);
    EXPECT_EQ(editor(), nullptr);
    testinput::type(L"5");
    testinput::key(VK_DELETE);
    EXPECT_EQ(gridValues(), values);
}

TEST_F(BrowserProperties, GlobalEditsTheSelectedNodesOfTheKind) {
    INode* nodes[] = {node(4), node(4), node(2), node(4)};
    std::vector<BrowserItem> items;
    for (INode* made : nodes) items.push_back(add(root, "node", made));
    TreeView_Expand(tree(), root, TVE_EXPAND);
    select({items[0], items[1], items[2]});
    const auto priorities = [&] {
        std::string all;
        for (INode* made : {nodes[0], nodes[1], nodes[3]})
            all += stored(made, FltNodeKind::Object, "FltObjRelPriority") + " ";
        return all + stored(nodes[2], FltNodeKind::Group, "FltGrpRelPriority");
    };
    enter(FltNodeKind::Object, "FltObjRelPriority", L"3");
    EXPECT_EQ(priorities(), "3 0 0 0") << "without Global, the current node alone";
    check(IDC_GLOBAL, true);
    enter(FltNodeKind::Object, "FltObjRelPriority", L"5");
    EXPECT_EQ(priorities(), "5 5 0 0");
}

TEST_F(BrowserProperties, TheHostIsToldOfEachChangedNodeOnce) {
    constexpr const char* kKey = "FltObjRelPriority";
    const auto object = FltNodeKind::Object;
    constexpr int kCount = 100;
    std::vector<BrowserItem> items;
    for (int i = 0; i < kCount; ++i) items.push_back(add(root, "object", node(4)));
    TreeView_Expand(tree(), root, TVE_EXPAND);
    browser().selectNode(items[0]);
    SceneChanges changes;
    enter(object, kKey, L"3");
    EXPECT_EQ(changes.take(), 1);
    enter(object, kKey, L"3");
    EXPECT_EQ(changes.take(), 0) << "it is 3 already";

    SetFocus(control(IDC_COMMENT));
    testinput::type(L"seen");
    SetFocus(tree());
    EXPECT_EQ(changes.take(), 1) << "the comment";

    testinput::click(tree(), middle(items[0], true));
    testinput::click(tree(), middle(items[kCount - 1], true), 1, {VK_SHIFT});
    check(IDC_GLOBAL, true);
    changes.takeRedraws();
    enter(object, kKey, L"5");
    EXPECT_EQ(changes.take(), kCount);
    EXPECT_EQ(changes.takeRedraws(), 1);
    enter(object, kKey, L"5");
    EXPECT_EQ(changes.take(), 0);
}

TEST_F(BrowserProperties, ChoicesComeFromAList) {
    INode* const group = node(2);
    browser().selectNode(add(root, "group", group));
    const FltAttrDesc* const row = fltAttrFindRow(FltNodeKind::Group, "FltGrpFwdAnim");
    ASSERT_TRUE(row);
    const std::string before = stored(group, FltNodeKind::Group, "FltGrpFwdAnim");
    goTo(rowOf(FltNodeKind::Group, "FltGrpFwdAnim"));
    testinput::key(VK_F2);
    // The other of the two choices.
    testinput::key(before == row->choices[0] ? VK_DOWN : VK_UP);
    testinput::key(VK_RETURN);
    testinput::pump();
    EXPECT_NE(stored(group, FltNodeKind::Group, "FltGrpFwdAnim"), before);
}

TEST_F(BrowserProperties, YesAndNoAreTakenInManyWords) {
    constexpr const char* kKey = "FltGrpFwdAnim";
    INode* const group = node(2);
    browser().selectNode(add(root, "group", group));
    const FltAttrDesc* const row = fltAttrFindRow(FltNodeKind::Group, kKey);
    ASSERT_TRUE(row);
    const int at = rowOf(FltNodeKind::Group, kKey);
    const auto paste = [&](const wchar_t* text) {
        goTo(at);
        setClipboardText(text);
        testinput::key('V', {VK_CONTROL});
    };
    const auto type = [&](const wchar_t* text) {
        enter(FltNodeKind::Group, kKey, text);
        testinput::pump();
    };
    const std::pair<const wchar_t*, bool> words[] = {
        {L"yes", true}, {L"no", false}, {L"true", true}, {L"False", false}, {L"1", true},
        {L"0", false},  {L"是", true},  {L"否", false},  {L"Yes", true},    {L"NO", false}};
    for (const auto& [word, yes] : words) {
        for (const bool typed : {false, true}) {
            SCOPED_TRACE(testing::Message() << testing::PrintToString(word) << typed);
            paste(yes ? L"否" : L"是");
            ASSERT_EQ(stored(group, FltNodeKind::Group, kKey), row->choices[yes ? 0 : 1]);
            typed ? type(word) : paste(word);
            EXPECT_EQ(stored(group, FltNodeKind::Group, kKey), row->choices[yes ? 1 : 0]);
            SetFocus(grid());
            EXPECT_EQ(cell(), yes ? L"是" : L"否") << "and is shown so";
        }
    }
    // Anything else that is pasted is no when it begins as false or zero does, and yes otherwise.
    for (const auto& [text, yes] : {std::pair{L"007", false}, {L"fine", false}, {L"on", true}}) {
        paste(yes ? L"no" : L"yes");
        paste(text);
        EXPECT_EQ(cell(), yes ? L"是" : L"否") << testing::PrintToString(text);
    }
    testinput::key(VK_DELETE);
    EXPECT_EQ(cell(), L"是") << "no text is not no";
}

TEST_F(BrowserProperties, FindComparesByTheTypeOfTheAttribute) {
    struct Search {
        FltNodeKind kind;
        const char* key;
        const char* sought;
        const char* same;
        const char* other;
    };
    const auto choice = [](FltNodeKind kind, const char* key, std::size_t position) {
        return fltAttrFindRow(kind, key)->choices[position];
    };
    ASSERT_TRUE(fltAttrGroupFind(FltNodeKind::LightPoint));
    constexpr auto kLight = FltNodeKind::LightPoint;
    const char* const mode = choice(kLight, "FltLtPtDisplayMode", 1);
    const Search searches[] = {
        {FltNodeKind::XRef, "FltXRefFilename", "Tower.flt", "TOWER.FLT", "tower2.flt"},
        {kLight, "FltLtPtDisplayMode", mode, mode, choice(kLight, "FltLtPtDisplayMode", 0)},
        {kLight, "FltLtPtIntensity", "0", "-0", "0.25"},
        {FltNodeKind::Lod, "FltLodMin", "0", "-0", "1"},
        {FltNodeKind::Group, "FltGrpSpecial1", "12", "12", "120"},
    };
    for (const Search& search : searches) {
        SCOPED_TRACE(search.key);
        BrowserItem items[3] = {};
        const char* const values[] = {search.sought, search.same, search.other};
        for (int i = 0; i < 3; ++i) {
            INode* const made = node(static_cast<int>(search.kind));
            FltAttrGroup* const set = fltAttrLoad(made, kFltRevision);
            FltAttrDesc* const row = fltAttrFindRow(search.kind, search.key);
            ASSERT_TRUE(set && row);
            EXPECT_TRUE(fltAttrEdit(made, kFltRevision, *set, *row, values[i]));
            items[i] = add(root, values[i], made);
            EXPECT_EQ(stored(made, search.kind, search.key), values[i]);
        }
        browser().selectNode(root);
        browser().selectNode(items[0]);
        goTo(rowOf(search.kind, search.key));
        push(IDC_FIND);
        EXPECT_TRUE(boxes.take().empty());
        EXPECT_TRUE(isSelected(items[0]));
        EXPECT_TRUE(isSelected(items[1])) << values[1];
        EXPECT_FALSE(isSelected(items[2])) << values[2];
    }
}

TEST_F(BrowserProperties, SelectedCellsDoNotOutliveTheNode) {
    const BrowserItem items[] = {add(root, "a", node(2)), add(root, "b", node(2))};
    browser().selectNode(items[0]);
    const LONG middles[] = {valueAt(0).y, valueAt(1).y, valueAt(2).y};
    goTo(0);
    testinput::key(VK_DOWN, {VK_SHIFT});
    SetFocus(tree());
    const auto colors = [&middles] {
        RECT area{};
        GetClientRect(grid(), &area);
        std::vector<COLORREF> found;
        for (const LONG y : middles)
            found.push_back(testinput::pixel(grid(), {area.right - 40, y}));
        return found;
    };
    const COLORREF white = GetSysColor(COLOR_WINDOW);
    const std::vector<COLORREF> before = colors();
    EXPECT_NE(before[0], white);
    EXPECT_EQ(before[0], before[1]);
    EXPECT_NE(before[0], GetSysColor(COLOR_BTNFACE)) << "that would look like a heading";
    EXPECT_EQ(before[2], white);
    browser().selectNode(items[0]);
    testinput::pump();
    EXPECT_EQ(colors(), before) << "it is still the same node";
    browser().selectNode(items[1]);
    testinput::pump();
    EXPECT_EQ(colors(), std::vector<COLORREF>(3, white));
    SetFocus(grid());
    EXPECT_NE(colors()[1], white) << "the focus cell is where it was";
    EXPECT_EQ(colors()[0], white);
    browser().selectNode(items[0]);  // with the keyboard in the grid
    testinput::pump();
    EXPECT_EQ(colors(), std::vector<COLORREF>(3, white));
}

TEST_F(BrowserProperties, TheFirstAttributeOfALightPointDecidesAboutTheSecond) {
    constexpr auto kKind = FltNodeKind::LightPoint;
    INode* const light = node(111);
    browser().selectNode(add(root, "light", light));
    FltAttrGroup* const set = fltAttrGroupFind(kKind);
    ASSERT_TRUE(set);
    ASSERT_EQ(set->descriptors[0].controlling, 1u);
    const auto canEditSecond = [] {
        goTo(1);
        testinput::key(VK_F2);
        const bool opened = GetFocus() != grid();
        testinput::key(VK_ESCAPE);
        return opened;
    };
    bool seen[2] = {};
    for (std::size_t choice = 0; choice < set->descriptors[0].choices.size(); ++choice) {
        goTo(0);
        testinput::key(VK_F2);
        testinput::key(VK_HOME);
        for (std::size_t i = 0; i < choice; ++i) testinput::key(VK_DOWN);
        testinput::key(VK_RETURN);
        fltAttrLoad(light, kFltRevision);
        const bool expected = set->descriptors[1].visible != 0;
        EXPECT_EQ(canEditSecond(), expected) << choice;
        seen[expected] = true;
    }
    EXPECT_TRUE(seen[0] && seen[1]) << "both happened";
}

TEST_F(BrowserProperties, TheCommentIsStoredWhenItIsLeft) {
    INode* const first = node(2);
    INode* const second = node(4);
    const BrowserItem a = add(root, "a", first);
    const BrowserItem b = add(root, "b", second);
    TreeView_Expand(tree(), root, TVE_EXPAND);
    const auto comment = [](INode* of) {
        std::string text = "none";
        fltGetComment(of, text);
        return text;
    };
    browser().selectNode(a);
    SetFocus(control(IDC_COMMENT));
    SetFocus(tree());
    EXPECT_EQ(comment(first), "none") << "walking over it writes nothing";
    SetFocus(control(IDC_COMMENT));
    testinput::type(L"注释 1");
    testinput::click(tree(), middle(b));
    EXPECT_EQ(comment(first), "注释 1");
    EXPECT_EQ(comment(second), "none");
    EXPECT_EQ(text(control(IDC_COMMENT)), L"");

    // The client may select another node while the user is typing.
    SetFocus(control(IDC_COMMENT));
    testinput::type(L"unfinished");
    browser().selectNode(a);
    EXPECT_EQ(comment(second), "unfinished");
    EXPECT_EQ(comment(first), "注释 1");

    // Too long a text is cut between characters, not within one.
    std::wstring large(8095, L'x');
    large += L"\U0001F6E9";
    SetWindowTextW(control(IDC_COMMENT), large.c_str());
    SetFocus(control(IDC_COMMENT));
    SetFocus(tree());
    EXPECT_EQ(comment(first), std::string(8095, 'x'));
}

TEST_F(BrowserProperties, ACommentCannotBeTypedLongerThanIsKept) {
    constexpr std::size_t kMost = 8096;
    INode* const typed = node(2);
    INode* const filed = node(2);
    const std::string large(20'000, 'f');
    fltPutComment(filed, large);
    const BrowserItem item = add(root, "typed", typed);
    browser().selectNode(item);
    const HWND field = control(IDC_COMMENT);
    const auto comment = [](INode* of) {
        std::string text;
        fltGetComment(of, text);
        return text;
    };
    const auto leave = [] { SetFocus(tree()); };
    const auto enter = [&](const std::wstring& text) {
        SetFocus(field);
        SendMessageW(field, EM_SETSEL, 0, -1);
        SendMessageW(field, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.c_str()));
    };
    enter(std::wstring(9000, L'x'));
    testinput::type(L"y");
    EXPECT_EQ(text(field), std::wstring(kMost, L'x'));
    leave();
    EXPECT_EQ(comment(typed), std::string(kMost, 'x'));
    // Half of the last character has no room.
    enter(std::wstring(kMost - 1, L'z') + L"\U0001F6E9");
    leave();
    EXPECT_EQ(comment(typed), std::string(kMost - 1, 'z'));

    browser().selectNode(add(root, "filed", filed));
    SetFocus(field);
    leave();
    EXPECT_EQ(comment(filed), large) << "what came longer from a file stays until it is edited";
}

TEST_F(BrowserProperties, TheCommentHasAScrollBarWhileItIsTooLong) {
    INode* const brief = node(2);
    INode* const full = node(2);
    fltPutComment(brief, "one line");
    fltPutComment(full, std::string(40, '\n') + "the end");
    const BrowserItem a = add(root, "a", brief);
    const BrowserItem b = add(root, "b", full);
    const HWND comment = control(IDC_COMMENT);
    const auto hasBar = [&] { return (GetWindowLongW(comment, GWL_STYLE) & WS_VSCROLL) != 0; };
    EXPECT_FALSE(hasBar());
    for (int round = 0; round < 2; ++round) {
        browser().selectNode(b);
        EXPECT_TRUE(hasBar());
        browser().selectNode(a);
        EXPECT_FALSE(hasBar());
    }
    SetFocus(comment);
    for (int line = 0; line < 10; ++line) testinput::key(VK_RETURN);
    EXPECT_TRUE(hasBar()) << "as the user types";
    SendMessageW(comment, EM_SETSEL, 0, -1);
    testinput::key(VK_DELETE);
    EXPECT_FALSE(hasBar());
}

// Chunks come from users' files: whatever is in them, the node is shown as what is still readable.
TEST_F(BrowserProperties, DamagedNodesAreShownAsPlain) {
    constexpr DWORD kKind = 0, kRecord = 1, kComment = 2, kOptions = 3;
    constexpr int kGroup = 2, kLightSource = 101;
    constexpr int kGroupIcon = 0, kOmniIcon = 12, kPlainIcon = 17;
    struct Damage {
        const char* what;
        int kind;
        DWORD chunk;
        std::vector<unsigned char> bytes;
        int icon;
        bool readable;
    };
    const Damage damages[] = {
        {"kind cut short", kGroup, kKind, {0, 2}, kPlainIcon, false},
        {"no such kind", kGroup, kKind, std::vector<unsigned char>(40, 0xEE), kGroupIcon, false},
        {"record of another kind", kGroup, kRecord, {0, 5, 0, 8, 0, 0, 0, 0}, kGroupIcon, false},
        {"record longer than its chunk", kGroup, kRecord, {0, 2, 0xFF, 0xF8}, kGroupIcon, false},
        {"record cut short", kGroup, kRecord, {0}, kGroupIcon, false},
        {"comment", kGroup, kComment, {0xEE, 0xEE, 0, 200}, kGroupIcon, true},
        {"options", kLightSource, kOptions, {1, 2, 3}, kOmniIcon, false},
    };
    for (const Damage& damage : damages) {
        SCOPED_TRACE(damage.what);
        INode* const made = node(damage.kind);
        const Class_ID ours(0x6A3C1F07, 0x2E9D0001);
        made->RemoveAppDataChunk(ours, 0xA10, damage.chunk);
        void* const bytes = KILN_malloc(damage.bytes.size());
        std::memcpy(bytes, damage.bytes.data(), damage.bytes.size());
        made->AddAppDataChunk(ours, 0xA10, damage.chunk, static_cast<DWORD>(damage.bytes.size()),
                              bytes);
        const BrowserItem item = add(root, "damaged", made);
        EXPECT_EQ(image(item), damage.icon);
        browser().selectNode(item);
        const std::wstring name = text(control(IDC_NAME));
        EXPECT_EQ(name != L"Non-OpenFlight Selection", damage.readable)
            << testing::PrintToString(name);
        EXPECT_EQ(isEnabled(IDC_COMMENT), damage.readable);
        EXPECT_EQ(!gridValues().empty(), damage.readable);
        EXPECT_EQ(text(control(IDC_COMMENT)), L"");
    }
}

}  // namespace

// What stands beside the values of the grid (sections, colors, units, marks), and the form by
// keyboard alone and as assistive programs see it.
#include "../support/seen.h"
#include "../support/spokenlanguage.h"
#include "browserfixture.h"

#include <fltkilnutil/fltattr.h>
#include <quillon/fltopcode.h>

namespace {

/// The number of an attribute's value among the grid's children.
long valueId(int attribute) {
    return (attribute + 1) * 2 + 2;
}

class BrowserMeaning : public BrowserTest {
protected:
    void SetUp() override {
        open();
        root = add(nullptr, "root", 0);
        client.take();
    }

    static long rowsOf(FltNodeKind kind) {
        return static_cast<long>(fltAttrCount(*fltAttrGroupFind(kind)));
    }
    static int attribute(FltNodeKind kind, const char* key) {
        return static_cast<int>(fltAttrFindRow(kind, key) - fltAttrGroupFind(kind)->descriptors);
    }
    static void store(INode* node, int attribute, const char* value) {
        FltAttrGroup* const set = fltAttrLoad(node, kFltRevision);
        ASSERT_TRUE(set);
        ASSERT_TRUE(fltAttrStoreRow(node, *set, set->descriptors[attribute], value));
    }
    static std::string stored(INode* node, int attribute) {
        const FltAttrGroup* const set = fltAttrLoad(node, kFltRevision);
        return set ? set->descriptors[attribute].value.text() : "nothing";
    }

    BrowserItem root;
};

TEST_F(BrowserMeaning, LongListsFoldInSections) {
    struct Case {
        int kind;
        long sections;
    };
    for (const auto& [kind, sections] :
         {Case{kFltDof, 9}, Case{kFltLightPoint, 9}, Case{kFltClipRegion, 10}}) {
        const long rows = rowsOf(static_cast<FltNodeKind>(kind));
        browser().selectNode(add(root, "node", kind));
        const Seen seen(grid());
        const long cells = 2 * (rows + 1);
        ASSERT_EQ(seen.children(), cells + sections) << kind;
        for (long section = 1; section <= sections; ++section)
            EXPECT_TRUE(seen.act(cells + section)) << kind;
        for (int i = 0; i < rows; ++i)
            EXPECT_TRUE(seen.state(valueId(i)) & STATE_SYSTEM_INVISIBLE) << kind << ", " << i;
    }
    browser().selectNode(add(root, "group", kFltGroup));
    const Seen seen(grid());
    EXPECT_EQ(seen.children(), 2 * (rowsOf(FltNodeKind::Group) + 1));
}

TEST_F(BrowserMeaning, WhatIsFoldedIsRememberedByKind) {
    const long cells = 2 * (rowsOf(FltNodeKind::Dof) + 1);
    const auto isFolded = [cells](long section) {
        return (Seen(grid()).state(cells + section) & STATE_SYSTEM_COLLAPSED) != 0;
    };
    const BrowserItem item = add(root, "dof", kFltDof);
    browser().selectNode(item);
    SetFocus(grid());
    testinput::key(VK_DOWN);
    testinput::key(VK_LEFT);
    EXPECT_TRUE(isFolded(1));
    browser().selectNode(add(root, "clip", kFltClipRegion));
    EXPECT_FALSE(Seen(grid()).state(2 * (rowsOf(FltNodeKind::ClipRegion) + 1) + 1) &
                 STATE_SYSTEM_COLLAPSED);
    browser().selectNode(item);
    EXPECT_TRUE(isFolded(1));
    EXPECT_FALSE(isFolded(2));
    browser().destroy();
    open();
    browser().selectNode(add(add(nullptr, "root", 0), "dof", kFltDof));
    EXPECT_TRUE(isFolded(1));
    SetFocus(grid());
    testinput::key(VK_HOME, {VK_CONTROL});
    testinput::key(VK_RIGHT);
    EXPECT_FALSE(isFolded(1));
}

TEST_F(BrowserMeaning, ColorsAreShownAndNamed) {
    INode* const point = node(kFltLightPoint);
    const int back = attribute(FltNodeKind::LightPoint, "FltLtPtBackColor");
    store(point, back, "33023");  // alpha 0, blue 0, green 128, red 255
    browser().selectNode(add(root, "point", point));
    const Seen seen(grid());
    EXPECT_TRUE(seen.description(valueId(back)).ends_with(L"#FF8000"));
    EXPECT_EQ(seen.description(valueId(back + 1)).find(L'#'), std::wstring::npos);
    UpdateWindow(grid());
    RECT area{};
    GetClientRect(grid(), &area);
    bool isShown = false;
    for (int y = 0; y < area.bottom; y += 4)
        isShown |= testinput::pixel(grid(), {area.right - 10, y}) == RGB(255, 128, 0);
    EXPECT_TRUE(isShown);

    INode* const light = node(kFltLightSource);
    constexpr int kAmbient = 11;
    store(light, kAmbient, "1");
    store(light, kAmbient + 1, "0.5");
    store(light, kAmbient + 2, "-3");
    browser().selectNode(add(root, "light", light));
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(seen.description(valueId(kAmbient + i)).ends_with(L"#FF8000")) << i;
}

TEST_F(BrowserMeaning, ValuesHaveRangesAndUnits) {
    const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
    INode* const header = node(kFltHeader);
    store(header, 1, "Feet");
    const BrowserItem database = add(root, "db", header);
    browser().selectNode(add(database, "lod", kFltLod));
    EXPECT_EQ(Seen(grid()).description(valueId(0)), L"Number, in Feet");
    browser().selectNode(add(root, "lod", kFltLod));
    EXPECT_EQ(Seen(grid()).description(valueId(0)), L"Number, in database units");
    browser().selectNode(add(root, "group", kFltGroup));
    EXPECT_EQ(Seen(grid()).description(valueId(0)), L"Whole number from -32768 to 32767");
    browser().selectNode(add(root, "switch", kFltSwitch));
    EXPECT_TRUE(Seen(grid()).description(valueId(0)).ends_with(L"; cannot be changed here"));
}

TEST_F(BrowserMeaning, ValuesThatDifferAmongTheSelectedAreMarked) {
    const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
    INode* const nodes[] = {node(kFltGroup), node(kFltGroup), node(kFltGroup)};
    store(nodes[2], 1, "5");
    const BrowserItem items[] = {add(root, "a", nodes[0]), add(root, "b", nodes[1]),
                                 add(root, "c", nodes[2])};
    const BrowserItem other = add(root, "object", kFltObject);
    TreeView_Expand(tree(), root, TVE_EXPAND);
    const auto isMarked = [](int attribute) {
        return Seen(grid())
            .description(valueId(attribute))
            .ends_with(L"differs among the selected nodes");
    };
    testinput::click(tree(), middle(items[0], true));
    testinput::click(tree(), middle(items[1], true), 1, {VK_CONTROL});
    testinput::click(tree(), middle(other, true), 1, {VK_CONTROL});
    testinput::click(tree(), middle(items[0], true), 1, {VK_CONTROL});
    testinput::click(tree(), middle(items[0], true), 1, {VK_CONTROL});
    EXPECT_FALSE(testinput::pumpUntil([&] { return isMarked(1); }, 300)) << "these are equal";
    testinput::click(tree(), middle(items[2], true), 1, {VK_CONTROL});
    EXPECT_TRUE(testinput::pumpUntil([&] { return isMarked(1); }));
    EXPECT_FALSE(isMarked(0));
    check(IDC_GLOBAL, true);
    SetFocus(grid());
    testinput::key(VK_HOME, {VK_CONTROL});
    testinput::key(VK_DOWN);
    testinput::type(L"8");
    testinput::key(VK_RETURN);
    EXPECT_FALSE(testinput::pumpUntil([&] { return isMarked(1); }, 300)) << "now all have it";
    EXPECT_EQ(stored(nodes[0], 1), "8");
}

TEST_F(BrowserMeaning, ControlsHaveNamesInTheUsersLanguage) {
    const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
    const Seen up(control(IDC_UP));
    EXPECT_EQ(up.name(), L"Move the node up among its siblings");
    EXPECT_EQ(up.keys(), L"Alt+U");
    EXPECT_EQ(Seen(control(IDC_REFRESH)).name(), L"Refresh");
    EXPECT_EQ(Seen(control(IDC_REFRESH)).keys(), L"F5, Alt+R");
    EXPECT_EQ(Seen(tree()).name(), L"Hierarchy of nodes");
    EXPECT_EQ(Seen(grid()).name(), L"Attributes of the node");
    {
        const SpokenLanguage chinese(KILN_LANGUAGE_CHINESE);
        EXPECT_EQ(up.name(), L"在同级节点中上移") << "it follows";
    }
    EXPECT_TRUE(nameless(form()).empty());
}

TEST_F(BrowserMeaning, ControlsSayWhatTheyAre) {
    struct Row {
        int id;
        long role;
    };
    for (const Row& row :
         {Row{IDC_TREE, ROLE_SYSTEM_OUTLINE}, Row{IDC_GRID, ROLE_SYSTEM_TABLE},
          Row{IDC_UP, ROLE_SYSTEM_PUSHBUTTON}, Row{IDC_GLOBAL, ROLE_SYSTEM_CHECKBUTTON},
          Row{IDC_SUBTREE, ROLE_SYSTEM_CHECKBUTTON}, Row{IDC_CREATE_KIND, ROLE_SYSTEM_COMBOBOX},
          Row{IDC_ITEM_SPIN, ROLE_SYSTEM_SPINBUTTON}, Row{IDC_COMMENT, ROLE_SYSTEM_TEXT},
          Row{IDC_NAME, ROLE_SYSTEM_TEXT}})
        EXPECT_EQ(Seen(control(row.id)).role(), row.role) << row.id;
}

TEST_F(BrowserMeaning, EverythingIsDoneByKeyboardAlone) {
    const auto alt = [](WORD letter) { testinput::key(letter, {VK_MENU}); };
    INode* const dof = node(kFltDof);
    add(root, "dof", dof);
    SetFocus(control(IDC_REFRESH));
    alt('H');
    ASSERT_EQ(GetFocus(), tree());
    testinput::key(VK_HOME);
    testinput::key(VK_RIGHT);
    testinput::key(VK_DOWN);
    EXPECT_NE(text(control(IDC_NAME)), L"");
    client.take();
    alt('K');
    ASSERT_EQ(GetFocus(), control(IDC_CREATE_KIND));
    testinput::key(VK_DOWN);  // an object
    alt('C');
    std::vector<Sent> sent = client.take();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].event, BrowserEvent::kCreate);
    EXPECT_EQ(sent[0].argument, static_cast<std::uintptr_t>(kFltObject));
    alt('U');
    sent = client.take();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].event, BrowserEvent::kMoveUp);
    alt('O');
    ASSERT_EQ(GetFocus(), control(IDC_COMMENT));
    testinput::type(L"hinge");
    alt('A');
    ASSERT_EQ(GetFocus(), grid());
    std::string comment;
    EXPECT_TRUE(fltGetComment(dof, comment));
    EXPECT_EQ(comment, "hinge");
    testinput::key(VK_HOME, {VK_CONTROL});
    testinput::key(VK_DOWN);
    testinput::type(L"2.5");
    testinput::key(VK_RETURN);
    EXPECT_EQ(stored(dof, 1), "2.5");
    alt('G');
    EXPECT_EQ(IsDlgButtonChecked(form(), IDC_GLOBAL), static_cast<UINT>(BST_CHECKED));
    alt('M');
    EXPECT_EQ(switchEditor(), nullptr) << "its button is disabled";
    alt('R');
    sent = client.take();
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(sent[0].event, BrowserEvent::kRebuild);
}

}  // namespace

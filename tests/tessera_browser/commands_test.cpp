// The commands of the form's button row.
#include "../support/beeps.h"
#include "browserfixture.h"

#include <quillon/fltgroup.h>
#include <quillon/fltopcode.h>

#include <algorithm>

namespace {

class BrowserCommands : public BrowserTest {
protected:
    void SetUp() override {
        open();
        root = add(nullptr, "root", 0);
        a = add(root, "a");
        b = add(root, "b");
        below = add(b, "below");
        c = add(root, "c");
        TreeView_Expand(tree(), root, TVE_EXPAND);
        client.take();
    }

    BrowserItem root, a, b, below, c;
};

TEST_F(BrowserCommands, UpAndDownMoveTheFirstSelected) {
    select({c, a, b});
    push(IDC_UP);
    EXPECT_EQ(client.take(), (std::vector<Sent>{{BrowserEvent::kMoveUp, a, root}}));
    EXPECT_FALSE(isSelected(a));
    EXPECT_FALSE(isSelected(b));
    EXPECT_TRUE(isSelected(c)) << "the caret keeps its mark";
    EXPECT_EQ(caret(), c);
    push(IDC_DOWN);
    EXPECT_EQ(client.take(), (std::vector<Sent>{{BrowserEvent::kMoveDown, c, root}}));

    // What is inside a collapsed branch is not found.
    TreeView_SetItemState(tree(), c, 0, TVIS_SELECTED);
    TreeView_SetItemState(tree(), below, TVIS_SELECTED, TVIS_SELECTED);
    push(IDC_DOWN);
    EXPECT_TRUE(client.take().empty());
}

TEST_F(BrowserCommands, ExpandAndCollapseReachEverythingBelow) {
    const BrowserItem deep = add(below, "deep");
    add(deep, "deepest");
    TreeView_Expand(tree(), root, TVE_COLLAPSE);
    select({root});
    push(IDC_EXPAND);
    for (const BrowserItem item : {root, b, below, deep}) EXPECT_TRUE(isExpanded(item));
    push(IDC_COLLAPSE);
    for (const BrowserItem item : {root, b, below, deep}) EXPECT_FALSE(isExpanded(item));
    // Only what is selected.
    TreeView_Expand(tree(), root, TVE_EXPAND);
    select({a});
    push(IDC_EXPAND);
    EXPECT_FALSE(isExpanded(b));
}

// Few open branches, and so many that the form takes a shortcut.
TEST_F(BrowserCommands, WhatIsOpenStaysOpenWhenItIsPutInAnew) {
    for (const int opened : {3, 90}) {
        browser().delNode(nullptr);
        INode* const rootNode = node(1);
        std::vector<INode*> branches;
        for (int i = 0; i < 100; ++i) branches.push_back(node(2));
        INode* const leaf = node(4);
        std::vector<BrowserItem> items;
        const auto fillBranches = [&](BrowserItem parent) {
            items.clear();
            for (INode* const branch : branches) {
                items.push_back(add(parent, "branch", branch));
                add(add(items.back(), "inner", leaf), "innermost", leaf);
            }
        };
        BrowserItem top = add(nullptr, "top", rootNode);
        fillBranches(top);
        testinput::pump();  // the filling ends
        TreeView_Expand(tree(), top, TVE_EXPAND);
        for (int i = 0; i < opened; ++i)
            TreeView_Expand(tree(), items[static_cast<size_t>(i)], TVE_EXPAND);
        const auto openCount = [&] {
            return std::count_if(items.begin(), items.end(), isExpanded);
        };
        ASSERT_EQ(openCount(), opened);
        TreeView_Select(tree(), items[50], TVGN_FIRSTVISIBLE);
        const auto firstShown = [&] { return browser().nodeOf(TreeView_GetFirstVisible(tree())); };
        const NodeHandle shown = firstShown();
        ASSERT_EQ(shown, reinterpret_cast<NodeHandle>(branches[50]));

        client.onEvent = [&](const Sent& sent) {
            if (sent.event != BrowserEvent::kRebuild) return;
            browser().delNode(nullptr);
            top = add(nullptr, "top", rootNode);
            fillBranches(top);
        };
        select({items[1], items[2]});
        TreeView_Select(tree(), items[50], TVGN_FIRSTVISIBLE);
        push(IDC_REFRESH);
        EXPECT_FALSE(isSelected(items[1]) || isSelected(items[2]));
        EXPECT_TRUE(isExpanded(top));
        EXPECT_EQ(openCount(), opened);
        EXPECT_TRUE(isExpanded(items[1]));
        EXPECT_FALSE(isExpanded(items[95]));
        EXPECT_EQ(firstShown(), shown);

        client.onEvent = [&](const Sent& sent) {
            if (sent.event != BrowserEvent::kMoveUp) return;
            std::swap(branches[52], branches[51]);
            browser().delChildren(top);
            fillBranches(top);
            browser().selectNode(items[51]);
        };
        select({items[52]});
        push(IDC_UP);
        EXPECT_TRUE(isExpanded(top));
        EXPECT_EQ(openCount(), opened);
        EXPECT_FALSE(isExpanded(items[95]));
        EXPECT_EQ(caret(), items[51]);
        EXPECT_TRUE(isSelected(items[51]));
        EXPECT_EQ(firstShown(), shown);
        client.onEvent = nullptr;
    }
}

// With this many branches the form takes a shortcut, which must not show.
TEST_F(BrowserCommands, ExpandingALargeBranchKeepsTheCaretAndTheMarks) {
    BrowserItem last = nullptr;
    for (int i = 0; i < 100; ++i) last = add(add(c, "branch"), "leaf");
    select({root});
    TreeView_Expand(tree(), c, TVE_EXPAND);
    const BrowserItem inside = TreeView_GetParent(tree(), last);
    browser().selectNode(inside);
    TreeView_SetItemState(tree(), root, TVIS_SELECTED, TVIS_SELECTED);
    TreeView_SetItemState(tree(), inside, 0, TVIS_SELECTED);
    const std::wstring shown = text(control(IDC_NAME));
    push(IDC_EXPAND);
    EXPECT_TRUE(isExpanded(inside));
    EXPECT_EQ(caret(), inside);
    EXPECT_TRUE(isSelected(root));
    EXPECT_FALSE(isSelected(inside));
    EXPECT_EQ(text(control(IDC_NAME)), shown);
}

TEST_F(BrowserCommands, SelectSetTellsTheHostEveryItemAndItsSelection) {
    select({b, a});
    push(IDC_SELECT_SET);
    EXPECT_EQ(client.take(), (std::vector<Sent>{{BrowserEvent::kSelectInHost},
                                                {BrowserEvent::kItemState, root},
                                                {BrowserEvent::kItemState, a, nullptr, 2},
                                                {BrowserEvent::kSelectInHost, a, root},
                                                {BrowserEvent::kItemState, b, nullptr, 2},
                                                {BrowserEvent::kSelectInHost, b, root},
                                                {BrowserEvent::kItemState, below},
                                                {BrowserEvent::kItemState, c}}));
}

TEST_F(BrowserCommands, SelectGetMarksWhatIsSelectedInTheHost) {
    select({a});
    // An instance shows one node in two places.
    const NodeHandle twice = browser().nodeOf(below);
    const BrowserItem again = browser().addNode(c, "again", twice);
    client.onEvent = [&](const Sent& sent) {
        if (sent.event == BrowserEvent::kCountSelected)
            *reinterpret_cast<std::uint32_t*>(sent.argument) = 2;
        if (sent.event == BrowserEvent::kGetSelected)
            *reinterpret_cast<NodeHandle*>(sent.argument2) = sent.argument == 0 ? twice : 0x5EEC;
    };
    push(IDC_SELECT_GET);
    EXPECT_TRUE(isSelected(below));
    EXPECT_TRUE(isSelected(again));
    EXPECT_FALSE(isSelected(a));
    EXPECT_EQ(caret(), a) << "the caret stays";
    EXPECT_TRUE(isExpanded(b));
    EXPECT_TRUE(isExpanded(c));
    EXPECT_NE(text(control(IDC_NAME)).find(L":again"), std::wstring::npos);
    EXPECT_FALSE(isEnabled(IDC_CREATE)) << "two are selected";
    const std::vector<Sent> sent = client.take();
    ASSERT_EQ(sent.size(), 3u);
    EXPECT_EQ(sent[2].argument, 1u);

    // What was found last is scrolled into view.
    BrowserItem last = nullptr;
    for (int i = 0; i < 100; ++i) last = add(root, "further");
    last = browser().addNode(last, "inside", twice);
    RECT area{};
    GetClientRect(tree(), &area);
    for (const bool open : {false, true}) {
        ASSERT_EQ(isExpanded(TreeView_GetParent(tree(), last)), open);
        TreeView_EnsureVisible(tree(), root);
        push(IDC_SELECT_GET);
        RECT line{};
        ASSERT_TRUE(TreeView_GetItemRect(tree(), last, &line, FALSE));
        EXPECT_GT(line.top, 0) << open;
        EXPECT_LE(line.bottom, area.bottom) << open;
    }
}

// Enough branches for the form's detour, which must not show: only what is selected is changed, and
// the caret goes where collapsing takes it.
TEST_F(BrowserCommands, ManyBranchesAreChangedAsAFewAre) {
    for (const int count : {2, 30}) {
        browser().delNode(nullptr);
        const BrowserItem top = add(nullptr, "top", 0);
        const BrowserItem other = add(nullptr, "other", 0);
        std::vector<BrowserItem> branches;
        std::vector<BrowserItem> inner;
        for (int i = 0; i <= count; ++i) {
            branches.push_back(add(i % 2 ? top : other, "branch"));
            inner.push_back(add(branches.back(), "inner"));
            add(inner.back(), "leaf");
        }
        TreeView_Expand(tree(), top, TVE_EXPAND);
        const auto selectBranches = [&] {
            for (int i = 0; i < count; ++i)
                TreeView_SetItemState(tree(), branches[static_cast<std::size_t>(i)], TVIS_SELECTED,
                                      TVIS_SELECTED);
        };
        const auto openCount = [&](const std::vector<BrowserItem>& items) {
            return std::count_if(items.begin(), items.end(), isExpanded);
        };
        selectBranches();
        push(IDC_EXPAND);
        EXPECT_EQ(openCount(branches), count);
        EXPECT_EQ(openCount(inner), count);
        EXPECT_TRUE(isExpanded(top));
        EXPECT_FALSE(isExpanded(other)) << "nothing above them is opened";
        EXPECT_FALSE(isExpanded(branches.back()));

        for (const bool marked : {false, true}) {
            push(IDC_EXPAND);
            browser().selectNode(inner[1]);
            TreeView_SetItemState(tree(), inner[1], marked ? TVIS_SELECTED : 0u, TVIS_SELECTED);
            selectBranches();
            TreeView_Select(tree(), inner[1], TVGN_FIRSTVISIBLE);
            push(IDC_COLLAPSE);
            EXPECT_EQ(openCount(branches), 0);
            EXPECT_EQ(openCount(inner), 0);
            EXPECT_TRUE(isExpanded(top));
            EXPECT_EQ(caret(), branches[1]);
            EXPECT_TRUE(isSelected(branches[1]));
            EXPECT_EQ(isSelected(inner[1]), marked) << "as it was";
            EXPECT_FALSE(isSelected(top));
            EXPECT_NE(text(control(IDC_NAME)).find(L":branch"), std::wstring::npos);
        }
    }
}

// The items of what a refresh puts in again are kept. Whatever has changed since must show.
TEST_F(BrowserCommands, RefreshShowsTheSceneAsItIsNow) {
    struct Node {
        NodeHandle node;
        std::string name;
        std::vector<Node> children;
    };
    const auto make = [&](const char* name, std::vector<Node> children = {}, int kind = 2) {
        return Node{reinterpret_cast<NodeHandle>(node(kind)), name, std::move(children)};
    };
    Node scene = make("scene");
    for (int i = 0; i < 5; ++i) {
        const std::string number = std::to_string(i);
        scene.children.push_back(
            make(("branch " + number).c_str(),
                 {make(("x" + number).c_str()), make(("y" + number).c_str())}));
    }
    const std::function<void(BrowserItem, const Node&)> fill = [&](BrowserItem parent,
                                                                   const Node& top) {
        const BrowserItem item = browser().addNode(parent, top.name.c_str(), top.node);
        for (const Node& child : top.children) fill(item, child);
        EXPECT_TRUE(parent || !isExpanded(item)) << "what is put in is closed";
    };
    client.onEvent = [&](const Sent& sent) {
        if (sent.event != BrowserEvent::kRebuild) return;
        const BrowserItem before = TreeView_GetRoot(tree());
        browser().delNode(nullptr);
        EXPECT_EQ(TreeView_GetCount(tree()), 0u);
        EXPECT_EQ(TreeView_GetSelection(tree()), nullptr);
        EXPECT_EQ(browser().nodeOf(before), 0u) << "it is not there any more";
        EXPECT_EQ(browser().addNode(before, "below it", scene.node), nullptr);
        fill(nullptr, scene);
    };
    const std::function<void(BrowserItem, const Node&)> expectShown = [&](BrowserItem item,
                                                                          const Node& top) {
        ASSERT_NE(item, nullptr) << top.name;
        EXPECT_EQ(browser().nodeOf(item), top.node);
        EXPECT_EQ(label(item), std::wstring(top.name.begin(), top.name.end()));
        // The first item gets the caret with the keyboard.
        EXPECT_EQ(isSelected(item), item == TreeView_GetSelection(tree()));
        BrowserItem child = TreeView_GetChild(tree(), item);
        for (const Node& expected : top.children) {
            expectShown(child, expected);
            child = TreeView_GetNextSibling(tree(), child);
        }
        EXPECT_EQ(child, nullptr) << "nothing else below " << top.name;
    };
    const auto refreshed = [&](const char* what) {
        SCOPED_TRACE(what);
        push(IDC_REFRESH);
        expectShown(TreeView_GetRoot(tree()), scene);
        EXPECT_EQ(TreeView_GetNextSibling(tree(), TreeView_GetRoot(tree())), nullptr);
    };
    std::vector<Node>& branches = scene.children;
    refreshed("another scene");
    const BrowserItem top = TreeView_GetRoot(tree());
    const BrowserItem second = TreeView_GetNextSibling(tree(), TreeView_GetChild(tree(), top));
    TreeView_Expand(tree(), top, TVE_EXPAND);
    TreeView_Expand(tree(), second, TVE_EXPAND);
    select({second});
    refreshed("nothing");
    EXPECT_EQ(TreeView_GetRoot(tree()), top) << "the items are kept";
    EXPECT_TRUE(isExpanded(second));
    branches[1].name = "renamed";
    branches[1].children[0].name = "";
    refreshed("names");
    wchar_t other[] = L"not what it is called";
    TVITEMW shown{};
    shown.mask = TVIF_TEXT;
    shown.hItem = second;
    shown.pszText = other;
    SendMessageW(tree(), TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&shown));
    refreshed("a text that came from elsewhere");
    EXPECT_TRUE(fltEnsureKind(reinterpret_cast<INode*>(branches[1].node), FltNodeKind::Lod, 1580));
    refreshed("a kind");
    EXPECT_EQ(image(second), 2);
    branches.erase(branches.begin());
    refreshed("one less at the front");
    EXPECT_EQ(TreeView_GetChild(tree(), top), second);
    EXPECT_TRUE(isExpanded(second));
    branches.insert(branches.begin() + 2, make("new", {make("below")}));
    branches[3].children.insert(branches[3].children.begin(), make("first"));
    refreshed("more");
    std::swap(branches[1], branches[2]);
    std::swap(branches[4].children[0], branches[4].children[1]);
    refreshed("another order");
    std::swap(branches[0].children, branches[1].children);
    branches[2].children.clear();
    refreshed("other parents");
    branches.resize(2);
    refreshed("much less");
    for (Node& branch : branches) branch = make("other", {make("a"), make("b")});
    refreshed("other nodes");
    // More differences than are looked at one by one.
    for (int i = 0; i < 1500; ++i) branches.push_back(make("many", {make("a")}));
    refreshed("many");
    std::reverse(branches.begin(), branches.end());
    refreshed("the other way round");
    std::rotate(branches.begin(), branches.begin() + 700, branches.end());
    refreshed("turned round");
    scene = make("alone");
    refreshed("another root");

    // The client may empty the tree again, and delete what it has just put back.
    scene.children = {make("a", {make("b")}), make("c")};
    refreshed("more again");
    client.onEvent = [&](const Sent& sent) {
        if (sent.event != BrowserEvent::kRebuild) return;
        browser().delNode(nullptr);
        const BrowserItem item = browser().addNode(nullptr, "alone", scene.node);
        const BrowserItem child = browser().addNode(item, "a", scene.children[0].node);
        browser().delChildren(child);
        browser().delNode(child);
        browser().delNode(nullptr);
        fill(nullptr, scene);
    };
    refreshed("twice");
    client.onEvent = [&](const Sent& sent) {
        if (sent.event != BrowserEvent::kRebuild) return;
        browser().delNode(nullptr);
        const BrowserItem item = browser().addNode(nullptr, "alone", scene.node);
        browser().addNode(item, "a", scene.children[0].node);
        browser().delChildren(item);
        browser().addNode(item, "c", scene.children[1].node);
    };
    scene.children.erase(scene.children.begin());
    refreshed("with children deleted on the way");

    // One that leaves the tree as it is, and fills it at another time.
    client.onEvent = nullptr;
    refreshed("not at all");
    browser().delNode(nullptr);
    EXPECT_EQ(TreeView_GetRoot(tree()), nullptr);
    fill(nullptr, scene);
    expectShown(TreeView_GetRoot(tree()), scene);
}

TEST_F(BrowserCommands, CreateIsForExactlyOneSelectedNode) {
    select({a});
    EXPECT_TRUE(isEnabled(IDC_CREATE));
    ComboBox_SetCurSel(control(IDC_CREATE_KIND), 3);
    push(IDC_CREATE);
    EXPECT_EQ(client.take(), (std::vector<Sent>{{BrowserEvent::kCreate, a, nullptr, 96, 1580}}));
    client.knowsKinds = false;
    push(IDC_CREATE);
    EXPECT_EQ(client.take(), (std::vector<Sent>{{BrowserEvent::kCreate, a, nullptr, 4, 1580}}));

    select({b});
    select({b, c});
    EXPECT_FALSE(isSelected(a));
    const Beeps beeps;
    SendMessageW(form(), WM_COMMAND, IDC_CREATE, reinterpret_cast<LPARAM>(control(IDC_CREATE)));
    EXPECT_TRUE(client.take().empty());
    EXPECT_TRUE(boxes.take().empty()) << "it only beeps";
    EXPECT_EQ(Beeps::take(), kRefusal);
}

TEST_F(BrowserCommands, CreateStopsWhenItsParentGoesMeanwhile) {
    select({a});
    client.onConfirmKind = [] { browser().delNode(nullptr); };
    push(IDC_CREATE);
    EXPECT_TRUE(client.take().empty());
}

TEST_F(BrowserCommands, CreateRefusesFacesAndItemsWithoutANode) {
    const BrowserItem face = add(root, "face", kFltFace);
    select({face});
    for (int kind = 0; kind < 9; ++kind) {
        ComboBox_SetCurSel(control(IDC_CREATE_KIND), kind);
        push(IDC_CREATE);
        EXPECT_EQ(boxes.take(),
                  std::vector<std::wstring>{L"非法创建 - 面对象可能只有作为子对象时才能有面.."});
    }
    select({browser().addNode(nullptr, "no node", 0)});
    push(IDC_CREATE);
    EXPECT_EQ(boxes.take(), std::vector<std::wstring>{L"没有被选定父节点。"});
    EXPECT_TRUE(client.take().empty());
}

TEST_F(BrowserCommands, CreateFollowsTheNumberOfSelectedItems) {
    testinput::click(tree(), middle(a));
    EXPECT_TRUE(isEnabled(IDC_CREATE));
    testinput::click(tree(), middle(b), 1, {VK_CONTROL});
    EXPECT_FALSE(isEnabled(IDC_CREATE));
    testinput::click(tree(), middle(b), 1, {VK_CONTROL});
    EXPECT_TRUE(isEnabled(IDC_CREATE));
    browser().delNode(nullptr);
    EXPECT_FALSE(isEnabled(IDC_CREATE));
}

TEST_F(BrowserCommands, TheSpinnerStepsThroughTheSelected) {
    const auto spin = [&](int step) {
        NMUPDOWN notification{};
        notification.hdr = {control(IDC_ITEM_SPIN), IDC_ITEM_SPIN, UDN_DELTAPOS};
        notification.iDelta = step;
        SendMessageW(form(), WM_NOTIFY, IDC_ITEM_SPIN, reinterpret_cast<LPARAM>(&notification));
        const std::wstring name = text(control(IDC_NAME));
        return name.substr(name.find(L':') + 1);
    };
    const Beeps beeps;
    EXPECT_EQ(spin(1), L"") << "there is no current item";
    EXPECT_EQ(Beeps::take(), kRefusal);
    select({a});
    EXPECT_EQ(spin(1), L"a") << "one selected";
    EXPECT_EQ(Beeps::take(), kRefusal);
    select({a, b, c});
    EXPECT_EQ(spin(1), L"b");
    EXPECT_EQ(spin(0), L"c");
    EXPECT_TRUE(Beeps::take().empty());
    EXPECT_EQ(spin(1), L"c") << "no further one";
    EXPECT_EQ(Beeps::take(), kRefusal);
    EXPECT_EQ(spin(-1), L"b");
    // The scene's nodes may have gone: nothing of them is shown until the tree is rebuilt.
    browser().sceneChanged();
    EXPECT_EQ(text(control(IDC_NAME)), L"");
    spin(1);
    EXPECT_EQ(text(control(IDC_NAME)), L"");
    EXPECT_EQ(caret(), a);
}

TEST_F(BrowserCommands, SubtreeMarksEverythingBelow) {
    check(IDC_SUBTREE, true);
    testinput::click(tree(), middle(b));
    EXPECT_TRUE(isSelected(below)) << "collapsed or not";
    testinput::click(tree(), middle(a));
    EXPECT_FALSE(isSelected(below));
    check(IDC_SUBTREE, false);
    testinput::click(tree(), middle(b));
    EXPECT_FALSE(isSelected(below));
}

TEST_F(BrowserCommands, FindAddsTheNodesOfTheSameValue) {
    const auto group = [&](const char* name, BrowserItem parent, std::int16_t priority) {
        FltGroup record;
        record.relativePriority = priority;
        INode* const made = node(2);
        EXPECT_TRUE(fltPutRecord(made, record));
        return add(parent, name, made);
    };
    const BrowserItem sought = group("sought", root, 7);
    const BrowserItem hidden = group("hidden", below, 7);
    const BrowserItem other = group("other", root, 8);
    const BrowserItem otherKind = add(root, "object", kFltObject);

    push(IDC_FIND);
    EXPECT_EQ(boxes.take(), std::vector<std::wstring>{L"需要选择"});
    select({root});
    push(IDC_FIND);
    EXPECT_EQ(boxes.take(), std::vector<std::wstring>{L"记录未选择 OpenFlight 记录"});
    browser().selectNode(sought);
    push(IDC_FIND);
    EXPECT_EQ(boxes.take(), std::vector<std::wstring>{L"没有要搜寻的选定字段"});

    // The first attribute of a group is its priority: a click on its value makes it the focus.
    select({otherKind});
    browser().selectNode(sought);
    TreeView_SetItemState(tree(), otherKind, TVIS_SELECTED, TVIS_SELECTED);
    RECT area{};
    GetClientRect(grid(), &area);
    const int line = HIWORD(GetDialogBaseUnits());
    testinput::click(grid(), {area.right * 3 / 4, line + line / 2 + 4});
    testinput::key(VK_ESCAPE);
    push(IDC_FIND);
    EXPECT_TRUE(boxes.take().empty());
    EXPECT_TRUE(isSelected(sought));
    EXPECT_TRUE(isSelected(hidden));
    EXPECT_TRUE(isExpanded(below)) << "what was found can be seen";
    EXPECT_FALSE(isSelected(other));
    EXPECT_FALSE(isSelected(a));
    EXPECT_TRUE(isSelected(otherKind)) << "a search adds to the selection";
    EXPECT_EQ(caret(), sought);

    // The first of the others can be seen, though the caret stays.
    const BrowserItem lone = group("lone", root, 9);
    for (int i = 0; i < 100; ++i) add(root, "between", kFltObject);
    const BrowserItem distant = group("distant", root, 9);
    browser().selectNode(lone);
    push(IDC_FIND);
    EXPECT_EQ(caret(), lone);
    RECT tree{}, label{};
    GetClientRect(BrowserTest::tree(), &tree);
    EXPECT_TRUE(TreeView_GetItemRect(BrowserTest::tree(), distant, &label, TRUE) &&
                label.top >= 0 && label.bottom <= tree.bottom);
}

// A client whose edit makes more of the tree stale than it follows. While it is told, the form and
// the control still use the items.
TEST_F(BrowserCommands, ARefreshAskedForDuringAnEditComesAfterIt) {
    const NodeHandle rootNode = browser().nodeOf(root), aNode = browser().nodeOf(a),
                     bNode = browser().nodeOf(b);
    bool during = false;
    client.onEvent = [&](const Sent& sent) {
        if (sent.event == BrowserEvent::kRebuild) {
            EXPECT_FALSE(during);
            browser().delNode(nullptr);
            root = browser().addNode(nullptr, "root", rootNode);
            b = browser().addNode(root, "b", bNode);
            a = browser().addNode(root, "a", aNode);
            return;
        }
        during = true;
        browser().refresh();
        during = false;
    };
    const struct {
        BrowserEvent event;
        std::function<void()> edit;
    } cases[] = {
        {BrowserEvent::kMoveUp, [] { push(IDC_UP); }},
        {BrowserEvent::kCreate, [] { push(IDC_CREATE); }},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(static_cast<unsigned>(test.event));
        browser().selectNode(root);
        browser().selectNode(a);
        TreeView_SetItemState(tree(), root, 0, TVIS_SELECTED);
        client.take();
        const BrowserItem edited = a;
        test.edit();
        testinput::pump();
        const std::vector<Sent> sent = client.take();
        ASSERT_EQ(sent.size(), 2U);
        EXPECT_EQ(sent[0].event, test.event);
        EXPECT_EQ(sent[0].first, edited);
        EXPECT_EQ(sent[1].event, BrowserEvent::kRebuild);
        EXPECT_EQ(label(a), L"a") << "as the client has it";
        EXPECT_EQ(caret(), a) << "the node stays in hand";
        EXPECT_TRUE(isExpanded(root));
    }
    client.onEvent = nullptr;
}

TEST_F(BrowserCommands, RenamingAsksTheClient) {
    browser().selectNode(a);
    SetFocus(tree());
    testinput::key(VK_F2);
    ASSERT_NE(TreeView_GetEditControl(tree()), nullptr);
    testinput::type(L"塔楼");
    testinput::key(VK_RETURN);
    EXPECT_EQ(client.lastText, "塔楼");
    std::vector<Sent> sent = client.take();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_EQ(sent[0].event, BrowserEvent::kRename);
    EXPECT_EQ(sent[0].first, a);
    EXPECT_EQ(sent[0].second, root);
    EXPECT_EQ(label(a), L"塔楼");
    EXPECT_NE(text(control(IDC_NAME)).find(L":塔楼"), std::wstring::npos);

    // A click on the caret's own label edits it too; an empty name is refused.
    testinput::click(tree(), middle(a));
    ASSERT_NE(TreeView_GetEditControl(tree()), nullptr);
    SetWindowTextW(TreeView_GetEditControl(tree()), L"");
    testinput::key(VK_RETURN);
    EXPECT_TRUE(client.take().empty());
    EXPECT_EQ(label(a), L"塔楼");
}

// Every control is reached by Tab in reading order, forwards and backwards.
TEST_F(BrowserCommands, TabGoesThroughTheFormInReadingOrder) {
    browser().selectNode(add(root, "switch", kFltSwitch));  // its comment and Tool can be used too
    const std::vector<int> order = {
        IDC_REFRESH,     IDC_UP,   IDC_DOWN,    IDC_EXPAND,  IDC_COLLAPSE, IDC_SELECT_GET,
        IDC_SELECT_SET,  IDC_FIND, IDC_SUBTREE, IDC_TOOL,    IDC_GLOBAL,   IDC_CREATE,
        IDC_CREATE_KIND, IDC_TREE, IDC_NAME,    IDC_COMMENT, IDC_GRID};
    const auto tab = [](bool control, bool shift) {
        if (control && shift)
            testinput::key(VK_TAB, {VK_CONTROL, VK_SHIFT});
        else if (control)
            testinput::key(VK_TAB, {VK_CONTROL});
        else if (shift)
            testinput::key(VK_TAB, {VK_SHIFT});
        else
            testinput::key(VK_TAB);
    };
    const auto walk = [&](bool backwards) {
        std::vector<int> seen;
        SetFocus(control(IDC_REFRESH));
        for (std::size_t i = 0; i < order.size(); ++i) {
            seen.push_back(GetDlgCtrlID(GetFocus()));
            // In the grid Tab alone goes from cell to cell.
            tab(seen.back() == IDC_GRID, backwards);
        }
        EXPECT_EQ(GetFocus(), control(IDC_REFRESH)) << "round and round";
        return seen;
    };
    EXPECT_EQ(walk(false), order);
    std::vector<int> backwards(order.rbegin(), order.rend());
    std::rotate(backwards.begin(), backwards.end() - 1, backwards.end());
    EXPECT_EQ(walk(true), backwards);
}

TEST_F(BrowserCommands, EveryButtonIsPressedBySpaceAndEnter) {
    // As Tab does it, which makes the button the one that Enter presses.
    const auto goTo = [](int id) {
        SendMessageW(form(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control(id)), TRUE);
    };
    const BrowserItem choice = add(root, "switch", kFltSwitch);
    add(choice, "child");
    browser().selectNode(choice);
    const std::pair<int, BrowserEvent> buttons[] = {
        {IDC_REFRESH, BrowserEvent::kRebuild},
        {IDC_UP, BrowserEvent::kMoveUp},
        {IDC_DOWN, BrowserEvent::kMoveDown},
        {IDC_SELECT_GET, BrowserEvent::kCountSelected},
        {IDC_SELECT_SET, BrowserEvent::kSelectInHost},
        {IDC_TOOL, BrowserEvent::kCountSwitchChildren},
        {IDC_CREATE, BrowserEvent::kCreate},
    };
    client.take();
    for (const WORD pressed : {WORD{VK_SPACE}, WORD{VK_RETURN}}) {
        for (const auto& [id, event] : buttons) {
            browser().show(1);
            browser().selectNode(root);
            browser().selectNode(choice);
            testinput::activate(form());
            goTo(id);
            testinput::key(pressed);
            const std::vector<Sent> sent = client.take();
            EXPECT_TRUE(!sent.empty() && sent.front().event == event) << id << " by " << pressed;
        }
        boxes.take();  // a switch without children has no masks
        testinput::activate(form());
        goTo(IDC_EXPAND);
        testinput::key(pressed);
        EXPECT_TRUE(isExpanded(choice));
        goTo(IDC_COLLAPSE);
        testinput::key(pressed);
        EXPECT_FALSE(isExpanded(choice));
        goTo(IDC_FIND);
        testinput::key(pressed);
        EXPECT_EQ(boxes.take().size(), 1u) << "no field is chosen";
        EXPECT_TRUE(IsWindowVisible(form())) << "Enter closes nothing";
    }
    for (const int id : {IDC_SUBTREE, IDC_GLOBAL}) {
        goTo(id);
        testinput::key(VK_SPACE);
        EXPECT_EQ(IsDlgButtonChecked(form(), static_cast<int>(id)), UINT{BST_CHECKED}) << id;
    }
    SetFocus(control(IDC_CREATE_KIND));
    testinput::key(VK_DOWN);
    EXPECT_EQ(ComboBox_GetCurSel(control(IDC_CREATE_KIND)), 1);
    SetFocus(tree());
    testinput::key(VK_F5);
    EXPECT_EQ(client.take(), (std::vector<Sent>{{BrowserEvent::kRebuild}}));
}

}  // namespace

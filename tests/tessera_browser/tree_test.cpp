// What the client puts into the tree and takes out again.
#include "browserfixture.h"

#include <fltkilnutil/kilnlight.h>
#include <quillon/fltopcode.h>

namespace {

class BrowserTree : public BrowserTest {};

constexpr int kSceneRootIcon = 11;

TEST_F(BrowserTree, TellsTheKindsApartByTheirIcons) {
    open(false);
    const BrowserItem root = add(nullptr, "root", kFltSwitch);
    EXPECT_EQ(image(root), kSceneRootIcon) << "whatever its node is";
    struct Kind {
        int opcode;
        int icon;
    };
    for (const Kind& kind : {Kind{2, 0}, Kind{4, 1}, Kind{73, 2}, Kind{96, 3}, Kind{14, 4},
                             Kind{63, 5}, Kind{55, 6}, Kind{98, 7}, Kind{111, 8}, Kind{1, 10},
                             Kind{5, 14}, Kind{62, 15}, Kind{61, 16}, Kind{0, 17}})
        EXPECT_EQ(image(add(root, "node", kind.opcode)), kind.icon) << kind.opcode;

    constexpr int kLightSource = 101;
    EXPECT_EQ(image(add(root, "no type", kLightSource)), 12);
    const auto light = [&](std::int32_t type) {
        INode* const made = node(kLightSource);
        KilnLight options;
        options.palette.lightType = type;
        EXPECT_TRUE(fltPutOptions(made, options));
        return image(add(root, "light", made));
    };
    EXPECT_EQ(light(0), 9);
    EXPECT_EQ(light(1), 12);
    EXPECT_EQ(light(2), 13);
    EXPECT_EQ(light(7), 0) << "no icon of its own: the control's default";

    auto* const list = TreeView_GetImageList(tree(), TVSIL_NORMAL);
    EXPECT_EQ(ImageList_GetImageCount(list), 19);
    int width = 0;
    int height = 0;
    ImageList_GetIconSize(list, &width, &height);
    EXPECT_EQ(width, 16);
    EXPECT_EQ(height, 15);
}

TEST_F(BrowserTree, AddsInOrderAndHandsBackTheNodes) {
    open(false);
    INode* const first = node(2);
    const BrowserItem root = add(nullptr, "根节点", 0);
    const BrowserItem a = add(root, "a", first);
    const BrowserItem b = add(root, "b");
    const BrowserItem below = add(a, "below");
    EXPECT_EQ(label(root), L"根节点");
    EXPECT_EQ(TreeView_GetChild(tree(), root), a);
    EXPECT_EQ(TreeView_GetNextSibling(tree(), a), b);
    EXPECT_EQ(TreeView_GetParent(tree(), below), a);
    EXPECT_EQ(browser().nodeOf(a), reinterpret_cast<NodeHandle>(first));
    EXPECT_EQ(browser().nodeOf(nullptr), 0u);

    const auto hasButton = [&] {
        TVITEMW found{};
        found.mask = TVIF_CHILDREN;
        found.hItem = root;
        SendMessageW(tree(), TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&found));
        return found.cChildren != 0;
    };
    EXPECT_TRUE(hasButton());
    browser().selectNode(below);
    EXPECT_TRUE(browser().delChildren(root));
    EXPECT_EQ(TreeView_GetChild(tree(), root), nullptr);
    EXPECT_EQ(TreeView_GetCount(tree()), 1u);
    EXPECT_EQ(caret(), root);
    EXPECT_FALSE(hasButton());
    const BrowserItem again = add(root, "again");
    EXPECT_TRUE(hasButton());
    browser().selectNode(again);
    EXPECT_TRUE(isExpanded(root));
    EXPECT_TRUE(browser().delChildren(root));
    EXPECT_EQ(browser().nodeOf(a), 0u) << "an item that is gone has no node";
    EXPECT_EQ(browser().addNode(a, "lost", 0), nullptr);
    EXPECT_FALSE(browser().delChildren(nullptr));
    EXPECT_TRUE(browser().delNode(root));
    EXPECT_EQ(TreeView_GetCount(tree()), 0u);
}

TEST_F(BrowserTree, DeletingWhatIsShownShowsNothing) {
    open();
    const BrowserItem root = add(nullptr, "root", kFltGroup);
    const BrowserItem child = add(root, "child", kFltObject);
    browser().selectNode(child);
    EXPECT_NE(text(control(IDC_NAME)), L"");
    browser().delNode(root);
    EXPECT_EQ(TreeView_GetSelection(tree()), nullptr);
    // The comment of a node that has gone must not be written anywhere.
    SetFocus(control(IDC_COMMENT));
    SetFocus(tree());
    push(IDC_FIND);
    EXPECT_EQ(boxes.take(), std::vector<std::wstring>{L"需要选择"});
}

TEST_F(BrowserTree, SelectsForTheClient) {
    open();
    const BrowserItem root = add(nullptr, "root", 0);
    const BrowserItem child = add(root, "tower", kFltObject);
    EXPECT_FALSE(browser().selectNode(child)) << "always";
    EXPECT_EQ(caret(), child);
    EXPECT_TRUE(isSelected(child));
    EXPECT_TRUE(isExpanded(root));
    EXPECT_NE(text(control(IDC_NAME)).find(L":tower"), std::wstring::npos);
    EXPECT_TRUE(client.take().empty()) << "only SelectSet tells the host";
}

// Scenes are deep as well as wide.
TEST_F(BrowserTree, TakesADeepChainOfNodes) {
    open();
    BrowserItem at = add(nullptr, "root", 0);
    const BrowserItem root = at;
    INode* const shared = node(2);
    constexpr int kDepth = 3000;
    for (int i = 0; i < kDepth; ++i) at = add(at, "level", shared);
    select({root});
    check(IDC_SUBTREE, true);
    push(IDC_EXPAND);
    EXPECT_TRUE(isExpanded(TreeView_GetParent(tree(), at)));
    push(IDC_COLLAPSE);
    EXPECT_FALSE(isExpanded(root));
    browser().delNode(nullptr);
    EXPECT_EQ(TreeView_GetCount(tree()), 0u);
}

}  // namespace

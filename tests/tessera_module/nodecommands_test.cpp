// What the browser's form does with whole nodes of the host's scene, by keyboard, and how its
// selection follows the host's.
#include "panelfixture.h"

#include <fltkilnutil/kilnflt.h>
#include <input.h>
#include <kiln/host/history.h>
#include <quillon/fltopcode.h>
#include <tessera/browserexports.h>

#include <commctrl.h>

#include <algorithm>
#include <functional>

namespace {

class NodeCommandsTest : public PanelTest {
protected:
    void SetUp() override {
        RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Tessera\\Browser");
        SendMessageW(form(), WM_CLOSE, 0, 0);
        exported<void (*)()>("_zufltguidestroy")();
        group = add(nullptr, "group", kFltGroup);
        object = add(group, "object", kFltObject);
        other = add(nullptr, "other", kFltGroup);
        face = add(other, "face", kFltFace);
        core.history().endCommand();
        core.closeUtility();
        openPage();
        window.press(IDC_BROWSER);
        ASSERT_TRUE(testinput::activate(form()));
        expandAll();
    }
    void TearDown() override { RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Tessera\\Browser"); }

    INode* add(INode* parent, const char* name, int kind) {
        INode* const node = host().CreateObjectNode(new DummyObject, name);
        if (parent) parent->AttachChild(node, false);
        EXPECT_TRUE(fltEnsureKind(node, static_cast<FltNodeKind>(kind), kFltRevision));
        return node;
    }
    static Interface& host() { return *GetCOREInterface(); }
    HWND tree() const { return GetDlgItem(form(), IDC_TREE); }

    void expandAll() {
        for (HTREEITEM at = TreeView_GetRoot(tree()); at; at = TreeView_GetNextVisible(tree(), at))
            TreeView_Expand(tree(), at, TVE_EXPAND);
    }
    /// The first visible item with that text.
    HTREEITEM item(std::string_view name) const {
        for (HTREEITEM at = TreeView_GetRoot(tree()); at; at = TreeView_GetNextVisible(tree(), at))
            if (textOf(at) == name) return at;
        return nullptr;
    }
    std::string textOf(HTREEITEM wanted) const {
        char text[64] = "";
        TVITEMA found{};
        found.mask = TVIF_TEXT;
        found.hItem = wanted;
        found.pszText = text;
        found.cchTextMax = sizeof text;
        SendMessageA(tree(), TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&found));
        return text;
    }
    /// Everything as "a(b)": in the scene, and in the tree.
    static std::string scene(INode* node) {
        std::string all;
        for (int i = 0; i < node->NumberOfChildren(); ++i) {
            INode* const child = node->GetChildNode(i);
            if (!all.empty()) all += ',';
            all += child->GetName();
            const std::string below = scene(child);
            if (!below.empty()) all += '(' + below + ')';
        }
        return all;
    }
    std::string scene() const { return scene(host().GetRootNode()); }
    std::string shown(HTREEITEM parent) const {
        std::string all;
        for (HTREEITEM at = TreeView_GetChild(tree(), parent); at;
             at = TreeView_GetNextSibling(tree(), at)) {
            if (!all.empty()) all += ',';
            all += textOf(at);
            const std::string below = shown(at);
            if (!below.empty()) all += '(' + below + ')';
        }
        return all;
    }
    std::string shown() const { return shown(TreeView_GetRoot(tree())); }

    void select(std::initializer_list<std::string_view> names) const {
        SetFocus(tree());
        bool first = true;
        for (const std::string_view name : names) {
            if (std::exchange(first, false))
                exported<bool (*)(HTREEITEM)>("_zufltguiselectnode")(item(name));
            TreeView_SetItemState(tree(), item(name), TVIS_SELECTED, TVIS_SELECTED);
        }
    }
    bool isSelected(std::string_view name) const {
        const HTREEITEM at = item(name);
        return at && (TreeView_GetItemState(tree(), at, TVIS_SELECTED) & TVIS_SELECTED) != 0;
    }
    void undo() {
        core.history().endCommand();
        EXPECT_TRUE(core.history().undo());
        EXPECT_TRUE(testinput::pumpUntil([this] { return shown() == scene(); }));
        expandAll();
    }

    INode *group, *object, *other, *face;
};

TEST_F(NodeCommandsTest, DeleteTheSelectedNodesAsOneStep) {
    const std::string before = scene();
    ASSERT_EQ(before, "group(object),other(face)");
    select({"group", "object", "face"});
    testinput::key(VK_DELETE);
    EXPECT_EQ(scene(), "other");
    EXPECT_EQ(shown(), "other");
    EXPECT_TRUE(isSelected("other"));
    undo();
    EXPECT_EQ(scene(), before);
    EXPECT_EQ(host().GetINodeByName("object"), object) << "the node itself comes back";
    // The scene's root stays, whatever else is selected.
    select({"group"});
    TreeView_SetItemState(tree(), TreeView_GetRoot(tree()), TVIS_SELECTED, TVIS_SELECTED);
    testinput::key(VK_DELETE);
    EXPECT_EQ(scene(), before);
    TreeView_SetItemState(tree(), TreeView_GetRoot(tree()), 0, TVIS_SELECTED);
    // While a name is typed the key is the field's.
    select({"group"});
    testinput::key(VK_F2);
    testinput::key(VK_DELETE);
    EXPECT_EQ(scene(), before);
    testinput::key(VK_ESCAPE);
    // What is selected afterwards is what stands behind it.
    select({"group"});
    testinput::key(VK_DELETE);
    EXPECT_TRUE(isSelected("other"));
    EXPECT_EQ(scene(), "other(face)");
}

TEST_F(NodeCommandsTest, CopyAndPasteWholeBranches) {
    fltPutComment(object, "kept");
    Matrix3 place;
    place.SetTrans({1, 2, 3});
    group->SetNodeTM(0, place);
    core.history().endCommand();
    select({"group"});
    testinput::key('C', {VK_CONTROL});
    select({"other"});
    testinput::key('V', {VK_CONTROL});
    EXPECT_EQ(scene(), "group(object),other(face,group001(object001))");
    expandAll();
    EXPECT_EQ(shown(), scene());
    EXPECT_TRUE(isSelected("group001"));
    INode* const copy = host().GetINodeByName("object001");
    std::string comment;
    EXPECT_TRUE(fltGetComment(copy, comment));
    EXPECT_EQ(comment, "kept");
    EXPECT_EQ(copy->GetNodeTM(0).GetTrans(), object->GetNodeTM(0).GetTrans());
    EXPECT_NE(copy->GetObjectRef(), object->GetObjectRef()) << "a change of one is none of both";
    fltPutComment(copy, "other");
    fltGetComment(object, comment);
    EXPECT_EQ(comment, "kept");
    core.history().endCommand();
    ASSERT_TRUE(core.history().undo());
    undo();
    EXPECT_EQ(scene(), "group(object),other(face)");
    // Onto itself: beside it, as by Ctrl+D.
    select({"face"});
    testinput::key('C', {VK_CONTROL});
    testinput::key('V', {VK_CONTROL});
    EXPECT_EQ(scene(), "group(object),other(face,face001)");
    testinput::key('D', {VK_CONTROL});
    EXPECT_EQ(scene(), "group(object),other(face,face001,face002)");
    expandAll();
    EXPECT_EQ(shown(), scene());
}

TEST_F(NodeCommandsTest, CutAndPasteAttachesAsOneStep) {
    select({"object", "face"});
    testinput::key('X', {VK_CONTROL});
    EXPECT_EQ(scene(), "group(object),other(face)") << "until they are pasted";
    select({"group"});
    testinput::key('V', {VK_CONTROL});
    EXPECT_EQ(scene(), "group(object,face),other");
    expandAll();
    EXPECT_EQ(shown(), scene());
    EXPECT_TRUE(isSelected("face"));
    EXPECT_TRUE(isSelected("object"));
    testinput::key('V', {VK_CONTROL});
    EXPECT_EQ(scene(), "group(object,face),other") << "once";
    undo();
    EXPECT_EQ(scene(), "group(object),other(face)");
    // What was cut before a change of the scene may have gone.
    select({"object"});
    testinput::key('X', {VK_CONTROL});
    host().DeleteNode(object);
    EXPECT_TRUE(testinput::pumpUntil([this] { return shown() == scene(); }));
    select({"other"});
    testinput::key('V', {VK_CONTROL});
    EXPECT_EQ(scene(), "group,other(face)");
}

// The form fills another tree rather than to delete tens of thousands of items in the one it has,
// which nobody is to see.
class LargeBranchTest : public NodeCommandsTest {
protected:
    /// What there is to see after each of a row of commands on a branch with that many leaves.
    std::vector<std::string> commandsOnBranch(int leaves);

    INode* addBranch(int leaves) {
        INode* const made = add(nullptr, "branch", kFltGroup);
        INode* const first = add(made, "first", kFltGroup);
        for (const char* name : {"leaf", "second leaf"}) add(first, name, kFltFace);
        INode* const second = add(made, "second", kFltGroup);
        for (int i = 0; i < leaves; ++i) add(second, "face", kFltFace);
        return made;
    }
    void openBranches(std::initializer_list<std::string_view> names) const {
        for (const std::string_view name : names) TreeView_Expand(tree(), item(name), TVE_EXPAND);
    }
    POINT label(std::string_view name) const {
        RECT area{};
        TreeView_GetItemRect(tree(), item(name), &area, TRUE);
        return {(area.left + area.right) / 2, (area.top + area.bottom) / 2};
    }
    /// The rows: first of those in view in brackets, "+" open, "*" selected, "<" the caret.
    std::string seen() const {
        std::string all;
        for (HTREEITEM at = TreeView_GetRoot(tree()); at;
             at = TreeView_GetNextVisible(tree(), at)) {
            const UINT state = TreeView_GetItemState(tree(), at, 0xFFU);
            const bool top = at == TreeView_GetFirstVisible(tree());
            all += (top ? "[" : "") + textOf(at) + (top ? "]" : "");
            if (state & TVIS_EXPANDED) all += '+';
            if (state & TVIS_SELECTED) all += '*';
            if (at == TreeView_GetSelection(tree())) all += '<';
            all += ' ';
        }
        if (GetFocus() == tree()) all += "focus ";
        if (IsWindowEnabled(GetDlgItem(form(), IDC_CREATE))) all += "create ";
        wchar_t name[64] = L"";
        GetDlgItemTextW(form(), IDC_NAME, name, 64);
        for (const wchar_t c : std::wstring_view(name)) all += c < 128 ? static_cast<char>(c) : '?';
        return all;
    }
    std::string seenAfterUndo(bool redo = false) {
        core.history().endCommand();
        EXPECT_TRUE(redo ? core.history().redo() : core.history().undo());
        const auto enabled = [this] { return IsWindowEnabled(GetDlgItem(form(), IDC_UP)); };
        EXPECT_FALSE(enabled());
        EXPECT_TRUE(testinput::pumpUntil(enabled));
        return seen();
    }
};

std::vector<std::string> LargeBranchTest::commandsOnBranch(int leaves) {
    const auto refresh = [this] { SendMessageW(GetDlgItem(form(), IDC_REFRESH), BM_CLICK, 0, 0); };
    core.newScene();
    refresh();
    for (int i = 0; i < 30; ++i) add(nullptr, ("before" + std::to_string(i)).c_str(), kFltGroup);
    add(host().GetINodeByName("before9"), "below", kFltGroup);
    INode* const branch = addBranch(leaves);
    for (int i = 0; i < 30; ++i) add(nullptr, ("behind" + std::to_string(i)).c_str(), kFltGroup);
    core.history().endCommand();
    refresh();
    openBranches({textOf(TreeView_GetRoot(tree())), "before9", "branch", "first"});

    std::vector<std::string> all;
    TreeView_Select(tree(), item("before25"), TVGN_FIRSTVISIBLE);
    select({"branch"});
    testinput::key(VK_DELETE);
    EXPECT_FALSE(host().GetINodeByName("leaf"));
    all.push_back(seen());
    all.push_back(seenAfterUndo());
    EXPECT_EQ(branch->NumberOfChildren(), 2);
    all.push_back(seenAfterUndo(true));
    all.push_back(seenAfterUndo());
    openBranches({"branch", "first"});

    select({"branch"});
    SendMessageW(GetDlgItem(form(), IDC_UP), BM_CLICK, 0, 0);
    testinput::pump();
    EXPECT_EQ(branch->GetParentNode()->GetChildNode(29), branch);
    all.push_back(seen());
    SendMessageW(GetDlgItem(form(), IDC_DOWN), BM_CLICK, 0, 0);
    testinput::pump();
    all.push_back(seen());

    TreeView_SetItemState(tree(), item("behind3"), TVIS_SELECTED, TVIS_SELECTED);
    testinput::key('X', {VK_CONTROL});
    select({"before28"});
    testinput::key('V', {VK_CONTROL});
    EXPECT_EQ(branch->GetParentNode(), host().GetINodeByName("before28"));
    all.push_back(seen());
    all.push_back(seenAfterUndo());

    TreeView_Select(tree(), item("before25"), TVGN_FIRSTVISIBLE);
    select({"behind5"});
    testinput::drag(tree(), label("branch"), label("behind1"));
    EXPECT_EQ(branch->GetParentNode(), host().GetINodeByName("behind1"));
    all.push_back(seen());
    return all;
}

TEST_F(LargeBranchTest, IsDeletedMovedAndAttachedLikeASmallOne) {
    const HWND first = tree();
    const std::vector<std::string> small = commandsOnBranch(3);
    EXPECT_EQ(tree(), first);
    constexpr int kLeaves = 60'000;
    const std::vector<std::string> large = commandsOnBranch(kLeaves);
    EXPECT_NE(tree(), first) << "as it would without what is tested here";
    ASSERT_EQ(small.size(), large.size());
    for (std::size_t i = 0; i < small.size(); ++i) EXPECT_EQ(small[i], large[i]) << "command " << i;
}

// ---------------------------------------------------------------- the host's selection

class FollowingTest : public NodeCommandsTest {
protected:
    void turn() const { SendMessageW(form(), WM_SYSCOMMAND, IDM_FOLLOW, 0); }
    bool isChecked() const {
        const HMENU menu = GetSystemMenu(form(), FALSE);
        return (GetMenuState(menu, IDM_FOLLOW, MF_BYCOMMAND) & MF_CHECKED) != 0;
    }
    static bool hostHas(std::vector<INode*> nodes) {
        if (host().GetSelNodeCount() != static_cast<int>(nodes.size())) return false;
        return std::ranges::all_of(nodes, [](INode* node) { return node->Selected(); });
    }
    static bool soon(const std::function<bool()>& condition) {
        return testinput::pumpUntil(condition, 2000);
    }
    static void wait() {
        testinput::pumpUntil([] { return false; }, 100);
    }
};

TEST_F(FollowingTest, IsOffAtFirst) {
    select({"object"});
    wait();
    EXPECT_TRUE(hostHas({}));
    host().SelectNode(face);
    wait();
    EXPECT_FALSE(isSelected("face"));
}

TEST_F(FollowingTest, KeepsBothSelectionsTheSame) {
    turn();
    wait();  // at first the host's counts
    select({"object"});
    EXPECT_TRUE(soon([&] { return hostHas({object}); }));
    select({"object", "face"});
    EXPECT_TRUE(soon([&] { return hostHas({object, face}); }));
    SetFocus(GetDlgItem(form(), IDC_REFRESH));
    host().SelectNode(other);
    EXPECT_TRUE(soon([&] { return isSelected("other"); }));
    EXPECT_FALSE(isSelected("object"));
    EXPECT_EQ(GetFocus(), GetDlgItem(form(), IDC_REFRESH)) << "the keyboard stays";
    wait();
    EXPECT_TRUE(hostHas({other})) << "nothing comes back";
    host().ClearNodeSelection();
    EXPECT_TRUE(soon([&] { return !isSelected("other"); }));
    // A refresh forgets the marks, but not what the host has selected.
    host().SelectNode(face);
    SendMessageW(GetDlgItem(form(), IDC_REFRESH), BM_CLICK, 0, 0);
    wait();
    EXPECT_TRUE(hostHas({face}));
    EXPECT_TRUE(isSelected("face"));
    turn();
    select({"object"});
    wait();
    EXPECT_TRUE(hostHas({face}));
}

TEST_F(FollowingTest, IsRememberedAndRestsWhileTheFormIsClosed) {
    turn();
    SendMessageW(form(), WM_CLOSE, 0, 0);
    host().SelectNode(face);
    wait();
    exported<void (*)()>("_zufltguidestroy")();
    core.closeUtility();
    openPage();
    window.press(IDC_BROWSER);
    ASSERT_TRUE(testinput::activate(form()));
    expandAll();
    EXPECT_TRUE(soon([&] { return isSelected("face"); }));
    EXPECT_TRUE(hostHas({face}));
    SendMessageW(form(), WM_INITMENU, 0, 0);
    EXPECT_TRUE(isChecked());
    turn();
    SendMessageW(form(), WM_INITMENU, 0, 0);
    EXPECT_FALSE(isChecked());
}

}  // namespace

#include "../support/replacedimport.h"
#include "panelfixture.h"

#include <fltkilnutil/kilnflt.h>
#include <quillon/fltinstance.h>
#include <tessera/browserexports.h>

#include <commctrl.h>

namespace {

/// Counts the module's beeps, which sound like the system's default.
class CountedBeeps {
public:
    CountedBeeps() : beep_(loadedModule(), "MessageBeep", &CountedBeeps::beep) {
        EXPECT_TRUE(beep_.isThere());
        count_ = 0;
    }
    int count() const { return count_; }

private:
    static BOOL WINAPI beep(UINT sound) {
        EXPECT_EQ(sound, 0xFFFFFFFF);
        ++count_;
        return TRUE;
    }

    static inline int count_ = 0;
    const ReplacedImport beep_;
};

void pump() {
    for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) DispatchMessageW(&message);
}

/// Everything below `item`, "a(b)", as the tree view has it.
std::string outline(HWND tree, HTREEITEM item) {
    std::string all;
    for (HTREEITEM at = TreeView_GetChild(tree, item); at; at = TreeView_GetNextSibling(tree, at)) {
        char text[64] = "";
        TVITEMA found{};
        found.mask = TVIF_TEXT;
        found.hItem = at;
        found.pszText = text;
        found.cchTextMax = sizeof text;
        SendMessageA(tree, TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(&found));
        const std::string below = outline(tree, at);
        if (!all.empty()) all += ',';
        all += text;
        if (!below.empty()) all.append("(").append(below).append(")");
    }
    return all;
}

TEST_F(PanelTest, ShowsItsPageAndMakesTheBrowserHidden) {
    ASSERT_TRUE(window.page_);
    EXPECT_EQ(window.title_, "Aviary ©");
    EXPECT_EQ(window.category_, 4000);
    ASSERT_TRUE(form());
    EXPECT_FALSE(IsWindowVisible(form()));
    window.press(IDC_BROWSER);
    EXPECT_TRUE(IsWindowVisible(form()));
    core.closeUtility();
    EXPECT_EQ(window.page_, nullptr);
    EXPECT_TRUE(form()) << "the browser outlives the page";
}

TEST_F(PanelTest, PassesTheMouseToTheRollupAndClosesOnRequest) {
    for (const UINT message : {WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONUP})
        SendMessageW(window.page_, message, 0, MAKELPARAM(3, 3));
    EXPECT_EQ(window.mouse_, (std::vector<UINT>{0x200, 0x201, 0x202}));
    window.press(IDOK);
    EXPECT_EQ(core.openedUtility(), nullptr);
    EXPECT_EQ(window.page_, nullptr);
}

TEST_F(PanelTest, StepsThePreviewAndChangesNothingAtItsEnd) {
    ASSERT_TRUE(aviary().CreateLOD());  // 0 to 100,000
    const CountedBeeps beeps;
    window.press(IDC_LOD_MOST);
    EXPECT_EQ(aviary().GetLodDistance(), 50000);
    EXPECT_GT(window.redraws_, 0);
    EXPECT_EQ(beeps.count(), 0);
    window.redraws_ = 0;
    window.press(IDC_LOD_MORE);
    window.press(IDC_LOD_LESS);
    EXPECT_EQ(window.redraws_, 0) << "the only band is both ends";
    EXPECT_EQ(beeps.count(), 2);
    aviary().StoreLodDistance(900000);
    window.press(IDC_LOD_MORE);
    EXPECT_EQ(aviary().GetLodDistance(), 50000);
    window.press(IDC_LOD_LEAST);
    EXPECT_EQ(aviary().GetLodDistance(), 50000);
    EXPECT_EQ(beeps.count(), 2);
    core.newScene();
    for (const int button : {IDC_LOD_MOST, IDC_LOD_LEAST}) window.press(button);
    EXPECT_EQ(beeps.count(), 4);
}

// Registrations that the host has already count as well: the module makes them all each time.
TEST_F(PanelTest, RegistersForSceneChangesInOneOrder) {
    static std::vector<int> codes;
    const ReplacedImport registration(
        loadedModule(), "_Z20RegisterNotificationPFvPvP10NotifyInfoES_i",
        +[](NOTIFYPROC handler, void* param, int code) {
            codes.push_back(code);
            return RegisterNotification(handler, param, code);
        });
    ASSERT_TRUE(registration.isThere());
    // Undoing and redoing come last.
    const std::vector<int> expected{0x3B, 0x3C, 0x0A, 0x1E, 0x06, 0x08, 0x51, 0x52};
    aviary().Browser();
    EXPECT_EQ(std::exchange(codes, {}), expected);
    window.press(IDC_BROWSER);
    EXPECT_EQ(std::exchange(codes, {}), expected);
}

TEST_F(PanelTest, RefreshesTheHiddenBrowserLikeAShownOne) {
    const auto items = [this] { return TreeView_GetCount(GetDlgItem(form(), IDC_TREE)); };
    aviary().Browser();
    EXPECT_FALSE(AcceleratorsEnabled());
    SendMessageW(form(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(AcceleratorsEnabled());
    INode* const late = GetCOREInterface()->CreateObjectNode(new DummyObject, "late");
    aviary().RefreshBrowser();
    EXPECT_FALSE(AcceleratorsEnabled());
    EXPECT_FALSE(IsWindowVisible(form()));
    EXPECT_EQ(items(), 2u);
    // Nobody tells a browser that was closed of what goes.
    GetCOREInterface()->DeleteNode(late);
    exported<bool (*)(std::uint8_t)>("_zufltguishow")(1);
    EXPECT_EQ(items(), 1u);
    EnableAccelerators();
}

// The names are typed on one item; the tree is filled anew once the label's edit is over.
TEST_F(PanelTest, ANewNameShowsOnEveryItemOfItsNode) {
    Interface& host = *GetCOREInterface();
    const auto add = [&](INode* parent, const char* name, FltNodeKind kind) {
        INode* const node = host.CreateObjectNode(new DummyObject, name);
        if (parent) parent->AttachChild(node);
        EXPECT_TRUE(fltEnsureKind(node, kind, kFltRevision));
        return node;
    };
    INode* const tree = add(nullptr, "tree", FltNodeKind::InstanceDef);
    ASSERT_TRUE(fltPutRecord(tree, FltInstanceDef()));
    INode* const crown = add(tree, "crown", FltNodeKind::Group);
    ASSERT_TRUE(fltPutRecord(add(nullptr, "use", FltNodeKind::InstanceRef), FltInstanceRef()));
    aviary().Browser();
    const HWND view = GetDlgItem(form(), IDC_TREE);
    ASSERT_EQ(outline(view, TVI_ROOT), "Scene Root(tree(crown),use(crown))");

    const HTREEITEM first = TreeView_GetChild(view, TreeView_GetRoot(view));
    const HTREEITEM listed = TreeView_GetChild(view, TreeView_GetNextSibling(view, first));
    exported<decltype(&_zufltguiselectnode)>("_zufltguiselectnode")(listed);
    SetFocus(view);
    const auto label = reinterpret_cast<HWND>(
        SendMessageW(view, TVM_EDITLABELW, 0, reinterpret_cast<LPARAM>(listed)));
    ASSERT_TRUE(label);
    SetWindowTextW(label, L"top");
    SendMessageW(view, TVM_ENDEDITLABELNOW, FALSE, 0);
    pump();
    EXPECT_STREQ(crown->GetName(), "top");
    EXPECT_EQ(outline(view, TVI_ROOT), "Scene Root(tree(top),use(top))");
    EXPECT_EQ(GetFocus(), view);
    const auto nodeOf = exported<decltype(&_zufltguinode2hdl)>("_zufltguinode2hdl");
    EXPECT_EQ(nodeOf(TreeView_GetSelection(view)), reinterpret_cast<tessera::NodeHandle>(crown));
    EXPECT_TRUE(IsWindowEnabled(GetDlgItem(form(), IDC_UP)));
}

}  // namespace

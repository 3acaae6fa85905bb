#include "../support/replacedimport.h"
#include "panelfixture.h"

#include <commctrl.h>

namespace {

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
    window.press(IDC_LOD_MOST);
    EXPECT_EQ(aviary().GetLodDistance(), 50000);
    EXPECT_GT(window.redraws_, 0);
    window.redraws_ = 0;
    window.press(IDC_LOD_MORE);
    window.press(IDC_LOD_LESS);
    EXPECT_EQ(window.redraws_, 0) << "the only band is both ends";
    aviary().StoreLodDistance(900000);
    window.press(IDC_LOD_MORE);
    EXPECT_EQ(aviary().GetLodDistance(), 50000);
    window.press(IDC_LOD_LEAST);
    EXPECT_EQ(aviary().GetLodDistance(), 50000);
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
    const std::vector<int> expected{0x3B, 0x3C, 0x0A, 0x1E, 0x06, 0x08};
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

}  // namespace

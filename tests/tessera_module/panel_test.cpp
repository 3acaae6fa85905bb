#include "panelfixture.h"

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

}  // namespace

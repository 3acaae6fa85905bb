// Moving what is selected by the handles in the viewport, and the views that stay saved, with mouse
// and keyboard as the platform sends them.
#include "../tour/user.h"
#include "workbenchfixture.h"

#include <base/utf16.h>

#include <utility>

namespace {

constexpr int kTopKey = 'T', kMoveKey = 'W', kNoHandlesKey = 'Q', kSnapKey = 'G';

constexpr COLORREF kRed = RGB(235, 80, 70);  // of the arm along x

class HandlesInViewTest : public WorkbenchTest {
protected:
    void SetUp() override {
        WorkbenchTest::SetUp();
        start(base::toWide(STAGED_PLUGINS));
        ASSERT_TRUE(user::click(viewport_));
        ASSERT_TRUE(becomes("selection.count", "1"));
        user::key(kTopKey);
        user::key(kMoveKey);
        ASSERT_TRUE(user::eventually([this] { return findArm(); }));
    }

    bool becomes(const std::string& line, const std::string& value) {
        return user::eventually([&] { return script(line).ends_with("\r\n" + value); });
    }
    /// Looks for the arm along x, which goes to the right.
    bool findArm() {
        const std::optional<RECT> red = user::look(user::area(viewport_)).extentOf(kRed);
        if (red) arm_ = {(red->left + red->right) / 2, (red->top + red->bottom) / 2};
        return red.has_value();
    }
    /// A point of the screen, from the middle of the arm.
    POINT at(int x, int y) const {
        POINT point{arm_.x + x, arm_.y + y};
        ::ClientToScreen(viewport_, &point);
        return point;
    }
    void send(UINT message, int x, WPARAM keys = MK_LBUTTON) const {
        ::SendMessageW(viewport_, message, keys, MAKELPARAM(arm_.x + x, arm_.y));
    }

    POINT arm_{};  // in the viewport
};

TEST_F(HandlesInViewTest, ADragIsOneStepAndEscapeTakesItBack) {
    ASSERT_TRUE(user::drag(at(0, 0), at(80, 25)));
    ASSERT_TRUE(becomes("$'塔楼'.position.x > 1 and $'塔楼'.position.y == 0", "true"));
    EXPECT_EQ(textOf(window_), "场景.kiln * - Workbench");
    EXPECT_TRUE(becomes("selection.count", "1"));
    user::key('Z', {VK_CONTROL});
    EXPECT_TRUE(becomes("$'塔楼'.position == [0, 0, 0]", "true")) << "one step";
    EXPECT_TRUE(user::eventually([this] { return textOf(window_) == "场景.kiln - Workbench"; }));

    // Keys and buttons mean nothing else while it is held, but for Escape.
    send(WM_LBUTTONDOWN, 0);
    send(WM_MOUSEMOVE, 40);
    EXPECT_TRUE(becomes("$'塔楼'.position.x > 1", "true")) << "it follows";
    ::PostMessageW(viewport_, WM_KEYDOWN, VK_DELETE, 0);
    ::PostMessageW(viewport_, WM_KEYDOWN, VK_ESCAPE, 0);
    EXPECT_TRUE(becomes("$'塔楼'.position == [0, 0, 0]", "true"));
    send(WM_LBUTTONUP, 40, 0);
    EXPECT_TRUE(becomes("selection.count", "1")) << "Escape has not deselected, too";
    EXPECT_TRUE(user::eventually([this] { return textOf(window_) == "场景.kiln - Workbench"; }));
    user::key('Y', {VK_CONTROL});
    EXPECT_TRUE(becomes("$'塔楼'.position.x > 1", "true"))
        << "what was undone before is still there";
    user::key('Z', {VK_CONTROL});
    ASSERT_TRUE(becomes("$'塔楼'.position == [0, 0, 0]", "true"));

    // On the grid, of which a step is as set; Ctrl turns that round.
    user::key(kSnapKey, {VK_SHIFT});
    ASSERT_TRUE(user::drag(at(0, 0), at(47, 0)));
    EXPECT_TRUE(becomes("$'塔楼'.position.x == floor $'塔楼'.position.x", "true"));
    EXPECT_TRUE(becomes("$'塔楼'.position.x > 1", "true"));

    // A click where a handle is selects, as anywhere; without handles the drag is a rubber band.
    script("clearSelection(); $'塔楼'.position = [0, 0, 0]");
    user::key(kNoHandlesKey);
    ASSERT_TRUE(user::click(viewport_));
    ASSERT_TRUE(becomes("selection.count", "1"));
    EXPECT_TRUE(user::eventually([this] { return !findArm(); }));
    ASSERT_TRUE(user::drag(at(0, 0), at(80, 25)));
    EXPECT_TRUE(becomes("$'塔楼'.position == [0, 0, 0]", "true"));
}

// Kept for the scene's file, for the next time that it is opened.
TEST_F(HandlesInViewTest, SavedViewsOutliveTheProgram) {
    const std::filesystem::path file = folder_ / L"塔.flt";
    script("exportFile \"" + base::toUtf8(file.generic_wstring()) + "\"");
    scene_ = file.wstring();
    // Opened, with nothing selected and nothing under the mouse.
    const auto startAnew = [&] {
        ::PostMessageW(window_, WM_CLOSE, 0, 0);
        ASSERT_EQ(exitCode(), 0u);
        start(base::toWide(STAGED_PLUGINS), L" ");
        ASSERT_TRUE(user::eventually([this] { return textOf(window_) == "塔.flt - Workbench"; }));
        ASSERT_TRUE(user::click(viewport_));
        ::SetCursorPos(0, 0);
    };
    const auto seen = [this] { return user::look(user::area(viewport_)); };
    startAnew();
    user::key(VK_ESCAPE);
    user::key('F');
    user::key('2', {VK_CONTROL});
    ASSERT_TRUE(user::eventually(
        [this] { return std::filesystem::exists(folder_ / "Workbench" / "views.txt"); }));
    ASSERT_TRUE(becomes("selection.count", "0"));
    user::Picture front;
    ASSERT_TRUE(user::eventually([&] {
        const user::Picture before = std::exchange(front, seen());
        ::Sleep(200);
        return before == front;
    })) << "until it is painted";
    startAnew();
    user::key(VK_ESCAPE);
    user::key('2');
    EXPECT_TRUE(user::eventually([&] { return seen() == front; }));
}

}  // namespace

// Selecting in the viewport with mouse and keyboard, and what the context menu there does.
#include "../tour/user.h"
#include "workbenchfixture.h"

#include <base/utf16.h>

#include <gmock/gmock.h>

#include <commctrl.h>

#include <fstream>
#include <iterator>

using testing::HasSubstr;

namespace {

constexpr int kPickObjects = 1112;
constexpr char kNothing[] = "no node is selected";

class PickingTest : public WorkbenchTest {
protected:
    void SetUp() override {
        WorkbenchTest::SetUp();
        start(base::toWide(STAGED_PLUGINS));
        // An object of six faces in the middle.
        const std::string path = base::toUtf8((folder_ / L"塔.flt").generic_wstring());
        script("exportFile \"" + path + "\"");
        script("newScene()");
        script("importFile \"" + path + "\"");
        script("viewAll()");
        script("clearSelection()");
        RECT area;
        ::GetClientRect(viewport_, &area);
        middle_ = {area.right / 2, area.bottom / 2};
    }

    bool becomes(const std::string& line, const std::string& value) {
        return user::eventually([&] { return script(line).ends_with("\r\n" + value); });
    }
    POINT onScreen(POINT at) const {
        ::ClientToScreen(viewport_, &at);
        return at;
    }
    void clickMiddle() { ASSERT_TRUE(user::click(onScreen(middle_))); }
    /// Whether the selection is a face of the tower.
    static constexpr char kIsFace[] = "selection.count == 1 and selection[1].parent == $'塔楼'";

    /// Opens the context menu in the middle, and presses the key of one of its entries.
    void chooseFromMenu(WORD key) {
        const LPARAM at = MAKELPARAM(middle_.x, middle_.y);
        ::PostMessageW(viewport_, WM_RBUTTONDOWN, MK_RBUTTON, at);
        ::PostMessageW(viewport_, WM_RBUTTONUP, 0, at);
        const auto isOpen = [] {
            const HWND menu = ::FindWindowW(L"#32768", nullptr);
            return menu && ::IsWindowVisible(menu);
        };
        ASSERT_TRUE(user::eventually(isOpen));
        user::key(key);
        ASSERT_TRUE(user::eventually([&] { return !isOpen(); }));
    }

    POINT middle_{};
};

TEST_F(PickingTest, AClickTakesTheObjectAndASecondOneTheFace) {
    clickMiddle();
    EXPECT_TRUE(becomes("$", "$塔楼"));
    clickMiddle();
    EXPECT_TRUE(becomes(kIsFace, "true"));
    clickMiddle();
    EXPECT_TRUE(becomes(kIsFace, "true")) << "within the object faces are meant";
    user::key(VK_ESCAPE);
    EXPECT_TRUE(
        user::eventually([this] { return script("$").find(kNothing) != std::string::npos; }));
    clickMiddle();
    EXPECT_TRUE(becomes("$", "$塔楼")) << "from the beginning";

    ::SendMessageW(window_, WM_COMMAND, kPickObjects, 0);
    user::key(VK_ESCAPE);
    clickMiddle();
    EXPECT_TRUE(becomes(kIsFace, "true")) << "faces at once, as was set";
    std::ifstream settings(folder_ / "Workbench" / "settings.txt");
    EXPECT_THAT(std::string(std::istreambuf_iterator<char>(settings), {}), HasSubstr("pick=faces"))
        << "and kept";
}

TEST_F(PickingTest, ARubberBandTakesWhatIsInItAndEscapeEndsIt) {
    const POINT left = onScreen({8, 40}), right = onScreen({2 * middle_.x - 8, 2 * middle_.y - 8});
    ASSERT_TRUE(user::drag(left, right));
    EXPECT_TRUE(becomes("$", "$塔楼")) << "its faces stand for it";
    const POINT middle = onScreen(middle_), beside = onScreen({middle_.x + 9, middle_.y + 9});
    ASSERT_TRUE(user::drag(middle, beside));
    EXPECT_TRUE(user::eventually([this] {
        return script("$").find(kNothing) != std::string::npos;
    })) << "to the right: nothing lies whole in it";
    ASSERT_TRUE(user::drag(beside, middle));
    EXPECT_TRUE(becomes("$", "$塔楼")) << "to the left: what it touches";

    ::SendMessageW(viewport_, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(8, 40));
    ::SendMessageW(viewport_, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(20, 60));
    ::SendMessageW(viewport_, WM_KEYDOWN, VK_ESCAPE, 0);
    ::SendMessageW(viewport_, WM_LBUTTONUP, 0, MAKELPARAM(20, 60));
    EXPECT_TRUE(becomes("$", "$塔楼")) << "a band that was given up changes nothing";
}

TEST_F(PickingTest, TheContextMenuActsOnWhatIsUnderTheMouse) {
    script("createBox \"block\" [100, 0, 0]");
    script("clearSelection()");
    chooseFromMenu('S');  // isolate
    EXPECT_TRUE(becomes("$block.hidden", "true"));
    EXPECT_TRUE(becomes("$'塔楼'.hidden", "false"));
    user::key('Z', {VK_CONTROL});
    EXPECT_TRUE(becomes("$block.hidden", "false"));
    EXPECT_THAT(script("$"), HasSubstr("$塔楼")) << "the click took the object";
    const std::string count = script("objects.count");
    chooseFromMenu('E');  // delete
    EXPECT_TRUE(user::eventually([&] { return script("objects.count") != count; }));
    user::key('Z', {VK_CONTROL});
    EXPECT_TRUE(user::eventually([&] { return script("objects.count") == count; }));
    user::key('I');
    EXPECT_TRUE(becomes("$block.hidden", "true")) << "the key does the same";
}

TEST_F(WorkbenchTest, TheNameUnderTheMouseGoesWithItsScene) {
    start(base::toWide(SAMPLE_PLUGINS));
    ASSERT_TRUE(eventually([this] { return showsItsScene(); }));
    const HWND bar = ::FindWindowExW(window_, nullptr, L"msctls_statusbar32", nullptr);
    const auto says = [bar](bool name) {
        // Each text begins with a space.
        return user::eventually(
            [&] { return (LOWORD(::SendMessageW(bar, SB_GETTEXTLENGTHW, 0, 0)) > 1) == name; });
    };
    const POINT middle = user::middle(viewport_);
    middleAtRest();
    ASSERT_TRUE(user::click(middle));
    EXPECT_TRUE(says(true));
    user::key('N', {VK_CONTROL});
    EXPECT_TRUE(says(false)) << "after New";

    const std::string empty = base::toUtf8((folder_ / "empty.kiln").generic_wstring());
    script("saveScene \"" + empty + "\"");
    script("openScene \"" + base::toUtf8(std::filesystem::path(scene_).generic_wstring()) + "\"");
    middleAtRest();
    ASSERT_TRUE(user::click({middle.x + 9, middle.y + 9}));
    EXPECT_TRUE(says(true));
    script("openScene \"" + empty + "\"");
    EXPECT_TRUE(says(false)) << "after a file that shows nothing there";
    script("openScene \"" + base::toUtf8(std::filesystem::path(scene_).generic_wstring()) + "\"");
    EXPECT_TRUE(says(true)) << "and again, under a mouse that rests";
}

}  // namespace

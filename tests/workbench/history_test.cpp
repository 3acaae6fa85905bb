// Undo and redo in the built workbench, with the keyboard and the mouse as the platform sends them.
#include "../tour/user.h"
#include "workbenchfixture.h"

#include <gmock/gmock.h>

using testing::HasSubstr;

namespace {

constexpr char kSaved[] = "场景.kiln - Workbench", kChanged[] = "场景.kiln * - Workbench";

class HistoryTest : public WorkbenchTest {
protected:
    void startPlain() { start((folder_ / "plugins").wstring()); }

    /// Selects the tower with the mouse, which gives the viewport the keyboard.
    void clickTower() {
        ASSERT_TRUE(user::click(viewport_));
        ASSERT_TRUE(user::eventually([this] { return ::GetForegroundWindow() == window_; }));
        ASSERT_TRUE(becomes("selection.count", "1"));
    }

    bool becomes(const std::string& line, const std::string& value) {
        return user::eventually([&] { return script(line).ends_with("\r\n" + value); });
    }
    bool isTitled(const std::string& title) const {
        return user::eventually([&] { return textOf(window_) == title; });
    }
};

TEST_F(HistoryTest, KeysTakeADeletionBackAndTheStarGoes) {
    startPlain();
    clickTower();
    user::key(VK_DELETE);
    ASSERT_TRUE(becomes("objects.count", "0")) << "what can be undone is done without a question";
    EXPECT_TRUE(isTitled(kChanged));
    user::key('Z', {VK_CONTROL});
    EXPECT_TRUE(becomes("objects.count", "1"));
    EXPECT_TRUE(isTitled(kSaved)) << "it is the scene that was saved";
    EXPECT_THAT(script("selection[1].name"), HasSubstr("塔楼")) << "and it is selected as it was";
    user::key('Z', {VK_CONTROL});  // there is nothing more
    user::key('Y', {VK_CONTROL});
    EXPECT_TRUE(becomes("objects.count", "0"));
    EXPECT_TRUE(isTitled(kChanged));
    user::key('Z', {VK_CONTROL});
    EXPECT_TRUE(becomes("objects.count", "1"));
    user::key('Z', {VK_CONTROL, VK_SHIFT});
    EXPECT_TRUE(becomes("objects.count", "0"));
}

TEST_F(HistoryTest, KeysBelongToTheTextThatIsBeingTyped) {
    startPlain();
    clickTower();
    user::key(VK_DELETE);
    ASSERT_TRUE(becomes("objects.count", "0"));
    ASSERT_TRUE(user::click(line_));
    user::type(L"abc");
    ASSERT_TRUE(user::eventually([this] { return textOf(line_) == "abc"; }));
    user::key('Z', {VK_CONTROL});
    EXPECT_TRUE(user::eventually([this] { return textOf(line_) != "abc"; }));
    user::key('A', {VK_CONTROL});
    user::key(VK_BACK);
    EXPECT_TRUE(becomes("objects.count", "0")) << "the scene is left alone";
}

}  // namespace

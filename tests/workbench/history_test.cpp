// Undo and redo in the built workbench, with the keyboard and the mouse as the platform sends them.
#include "../tour/user.h"
#include "remotelist.h"
#include "remotetree.h"
#include "workbenchfixture.h"

#include <base/utf16.h>
#include <resources/resource.h>

#include <gmock/gmock.h>

#include <fstream>

using testing::ElementsAre, testing::HasSubstr;

namespace {

constexpr int kSteps = 1004, kLimit = 1006;  // controls of the list of steps
constexpr int kSpeakEnglish = 1241;
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

    HWND historyWindow(const wchar_t* caption = L"历史记录") const {
        HWND shown = nullptr;
        user::eventually(
            [&] { return (shown = user::dialogNamed(process_.dwProcessId, caption)) != nullptr; });
        return shown;
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

TEST_F(HistoryTest, TheListFollowsAndJumpsToAnyStep) {
    startPlain();
    clickTower();
    user::key('H', {VK_CONTROL});
    const HWND window = historyWindow();
    ASSERT_NE(window, nullptr);
    const RemoteList list(::GetDlgItem(window, kSteps), process_.hProcess);
    EXPECT_THAT(list.texts(), ElementsAre("（开始时）"));
    ASSERT_TRUE(user::click(viewport_));
    user::key('G', {VK_CONTROL});
    ASSERT_TRUE(becomes("objects.count", "2"));
    user::key('H');
    ASSERT_TRUE(becomes("$'塔楼'.hidden or selection.count == 0", "true"));
    user::key('H', {VK_SHIFT});
    ASSERT_TRUE(user::eventually([&] { return list.count() == 4; }));
    EXPECT_THAT(list.texts(), ElementsAre("（开始时）", "成组", "隐藏", "全部取消隐藏"));
    EXPECT_EQ(list.selected(), 3);
    const user::Picture bright = user::look(list.area(3));
    const user::Picture line = user::look(list.area(1));
    ASSERT_TRUE(user::click(viewport_));
    ASSERT_TRUE(user::eventually([&] { return ::GetForegroundWindow() == window_; }));
    EXPECT_TRUE(user::eventually([&] { return user::look(list.area(1)) == line; }))
        << "it stays in front of the window that was clicked";

    // Shown anew it has the keyboard, and no click on the main window has come in front of it.
    const auto isShown = [&] { return ::IsWindowVisible(window) != FALSE; };
    user::key('H', {VK_CONTROL});
    ASSERT_TRUE(user::eventually([&] { return !isShown(); }));
    user::key('H', {VK_CONTROL});
    ASSERT_TRUE(user::eventually(isShown));
    // A click on a line: what comes after it is undone, and dimmed.
    ASSERT_TRUE(user::click(list.middle(0)));
    EXPECT_TRUE(becomes("objects.count", "1"));
    EXPECT_TRUE(isTitled(kSaved));
    EXPECT_TRUE(user::eventually([&] { return list.selected() == 0; }));
    EXPECT_EQ(list.count(), 4);
    EXPECT_TRUE(user::eventually([&] {
        const user::Picture now = user::look(list.area(3));
        return now.extentOf(::GetSysColor(COLOR_GRAYTEXT)).has_value() &&
               !now.extentOf(::GetSysColor(COLOR_WINDOWTEXT)).has_value();
    }));
    EXPECT_FALSE(bright.extentOf(::GetSysColor(COLOR_GRAYTEXT)).has_value());

    // With the arrows one looks, with Enter one goes.
    user::key(VK_DOWN);
    user::key(VK_DOWN);
    ASSERT_TRUE(user::eventually([&] { return list.selected() == 2; }));
    EXPECT_TRUE(becomes("objects.count", "1"));
    user::key(VK_RETURN);
    EXPECT_TRUE(becomes("objects.count", "2"));
    EXPECT_TRUE(isTitled(kChanged));
    // The keys work here too, and the list follows them.
    user::key('Z', {VK_CONTROL});
    EXPECT_TRUE(user::eventually([&] { return list.selected() == 1; }));
    ::SendMessageW(window_, WM_COMMAND, kSpeakEnglish, 0);
    EXPECT_EQ(textOf(window), "History");
    EXPECT_THAT(list.texts(), ElementsAre("(at the start)", "成组", "隐藏", "全部取消隐藏"))
        << "steps keep the names that they were given";
    user::key('H', {VK_CONTROL});
    EXPECT_TRUE(user::eventually([&] { return !isShown(); }));
}

TEST_F(HistoryTest, AsksBeforeADeletionThatCannotBeUndone) {
    std::filesystem::create_directories(folder_ / "Workbench");
    std::ofstream(folder_ / "Workbench" / "settings.txt") << "historyMegabytes=0\n";
    startPlain();
    clickTower();
    user::key(VK_DELETE);
    EXPECT_THAT(answerMessage(IDCANCEL), HasSubstr("“塔楼”及其下的一切吗？此操作不能撤销。"));
    EXPECT_TRUE(becomes("objects.count", "1"));

    // The limit is set below the list, and kept.
    user::key('H', {VK_CONTROL});
    const HWND window = historyWindow();
    ASSERT_NE(window, nullptr);
    const HWND limit = ::GetDlgItem(window, kLimit);
    EXPECT_EQ(textOf(limit), "不记录");
    ASSERT_TRUE(user::click(limit));
    user::key(VK_DOWN);
    user::key(VK_RETURN);
    EXPECT_TRUE(user::eventually([&] { return textOf(limit) == "64 MB"; }));
    clickTower();
    user::key(VK_DELETE);
    ASSERT_TRUE(becomes("objects.count", "0"));
    user::key('Z', {VK_CONTROL});
    EXPECT_TRUE(becomes("objects.count", "1"));
    EXPECT_TRUE(user::eventually([this] {
        std::ifstream file(folder_ / "Workbench" / "settings.txt");
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        return text.find("historyMegabytes=64") != text.npos;
    }));
}

TEST_F(HistoryTest, AsksInTheMiddleOfAStepThatIsTooLarge) {
    std::filesystem::create_directories(folder_ / "Workbench");
    std::ofstream(folder_ / "Workbench" / "settings.txt") << "historyMegabytes=1\n";
    startPlain();
    const wchar_t* const line =
        L"t = \"0123456789\"; for i = 1 to 12 do t = t + t; for i = 1 to 40 do "
        L"objects[1].name = t + (i as string)";
    const auto typeLine = [&] {
        ASSERT_TRUE(user::click(line_));
        user::type(line);
        user::key(VK_RETURN);
    };
    typeLine();
    EXPECT_THAT(answerMessage(IDCANCEL), HasSubstr("需要的内存超过历史记录的上限"));
    EXPECT_TRUE(becomes("objects[1].name", "\"塔楼\""));
    EXPECT_TRUE(isTitled(kSaved));
    ::SendMessageW(window_, WM_COMMAND, kSpeakEnglish, 0);
    typeLine();
    EXPECT_THAT(answerMessage(IDOK), HasSubstr("needs more memory than the history may use"));
    EXPECT_TRUE(becomes("findString objects[1].name \"40\"", "40961"));
    EXPECT_TRUE(becomes("undo()", "false"));
}

// In a window of the module: the keys reach the host from its tree.
TEST_F(HistoryTest, KeysReachTheHostFromTheBrowsersForm) {
    start(base::toWide(STAGED_PLUGINS));
    script("Aviary.CreateGroup()");
    const HWND form = openBrowserForm();
    ASSERT_NE(form, nullptr);
    const RemoteTree tree(::GetDlgItem(form, IDC_TREE), process_.hProcess);
    ASSERT_TRUE(user::eventually([&] { return tree.find("g001") != nullptr; }));
    ASSERT_TRUE(user::click(tree.middle("Scene Root")));
    user::key(VK_RIGHT);
    ASSERT_TRUE(user::click(tree.middle("g001")));
    ASSERT_TRUE(user::eventually([&] { return tree.selected() == "g001"; }));
    user::key(VK_F2);
    user::type(L"renamed");
    user::key(VK_RETURN);
    ASSERT_TRUE(becomes("$renamed.name", "\"renamed\""));
    user::key('Z', {VK_CONTROL});
    EXPECT_TRUE(becomes("$g001.name", "\"g001\""));
    user::key('Y', {VK_CONTROL});
    EXPECT_TRUE(becomes("$renamed.name", "\"renamed\""));
}

}  // namespace

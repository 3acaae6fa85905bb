// Moving, turning and scaling by typed values, the usual views, the list of keys and the guide,
// with the keyboard as the platform sends it.
#include "../tour/user.h"
#include "remotelist.h"
#include "workbenchfixture.h"

#include <base/utf16.h>

#include <gmock/gmock.h>

using testing::Contains, testing::HasSubstr;

namespace {

constexpr int kFields = 1030, kSnap = 1010, kStep = 1011, kKeysList = 1060;  // controls
constexpr int kMoveRow = 1, kRotateRow = 2, kScaleRow = 3;
constexpr int kSpeakEnglish = 1241;

class TransformDialogTest : public WorkbenchTest {
protected:
    void SetUp() override {
        WorkbenchTest::SetUp();
        start((folder_ / "plugins").wstring());
        ASSERT_TRUE(user::click(viewport_));
        ASSERT_TRUE(becomes("selection.count", "1"));
        user::key('M', {VK_CONTROL});
        ASSERT_TRUE(user::eventually([this] {
            dialog_ = user::dialogNamed(process_.dwProcessId, L"移动、旋转、缩放");
            return dialog_ != nullptr;
        }));
    }

    HWND field(int row, int axis) const { return ::GetDlgItem(dialog_, kFields + row * 3 + axis); }
    /// Replaces a field's text.
    static void type(HWND field, const wchar_t* text) {
        ASSERT_TRUE(user::click(field));
        user::key(VK_HOME);
        user::key(VK_END, {VK_SHIFT});
        user::type(text);
        ASSERT_TRUE(user::eventually([&] { return user::text(field) == text; }));
    }
    /// The same, and presses Enter there.
    void enter(int row, int axis, const wchar_t* text) {
        type(field(row, axis), text);
        user::key(VK_RETURN);
    }
    bool becomes(const std::string& line, const std::string& value) {
        return user::eventually([&] { return script(line).ends_with("\r\n" + value); });
    }
    /// Whether the tower's place is that within a thousandth.
    bool isAt(const char* x, const char* y, const char* z) {
        return becomes(std::string("$'塔楼'.position == [") + x + ", " + y + ", " + z + "]",
                       "true");
    }

    HWND dialog_ = nullptr;
};

TEST_F(TransformDialogTest, TypedValuesAreStepsThatCanBeUndone) {
    enter(kMoveRow, 1, L"2.5");
    EXPECT_TRUE(isAt("0", "2.5", "0"));
    EXPECT_TRUE(user::eventually([this] { return user::text(field(0, 1)) == L"2.5"; }))
        << "the place follows";
    enter(0, 0, L"-7");
    EXPECT_TRUE(isAt("-7", "2.5", "0"));
    enter(kScaleRow, 2, L"0");
    enter(kMoveRow, 2, L"1 metre");
    EXPECT_TRUE(isAt("-7", "2.5", "0")) << "what is no number, and a scale of 0, does nothing";
    ASSERT_TRUE(user::click(::GetDlgItem(dialog_, kSnap)));
    enter(kMoveRow, 2, L"0.8");
    EXPECT_TRUE(isAt("-7", "5", "1")) << "with what stands in the line, on the grid";
    EXPECT_EQ(textOf(window_), "场景.kiln * - Workbench");

    ASSERT_TRUE(user::click(viewport_));
    for (int i = 0; i < 3; ++i) user::key('Z', {VK_CONTROL});
    EXPECT_TRUE(isAt("0", "0", "0"));
    EXPECT_TRUE(user::eventually([this] { return user::text(field(0, 1)) == L"0"; }));
    user::key(VK_ESCAPE);
    EXPECT_TRUE(user::eventually([this] { return !::IsWindowEnabled(field(0, 0)); }))
        << "nothing is selected";
    ::SendMessageW(window_, WM_COMMAND, kSpeakEnglish, 0);
    EXPECT_EQ(user::text(dialog_), L"Move, Rotate, Scale");
}

TEST_F(TransformDialogTest, TurnsScalesAndKeepsToTheUsersGrid) {
    script("createDummy name:\"tip\" parent:$'塔楼' position:[2, 0, 0]");
    script("select $'塔楼'");
    enter(kRotateRow, 2, L"90");
    EXPECT_TRUE(becomes("$tip.position.y > 1.9", "true"));
    enter(kScaleRow, 0, L"3");
    EXPECT_TRUE(becomes("$tip.position.y > 5.9", "true")) << "along the node's own axes";
    enter(0, 2, L"1.25");
    EXPECT_TRUE(isAt("0", "0", "1.25"));
    type(::GetDlgItem(dialog_, kStep), L"4");
    ASSERT_TRUE(user::click(::GetDlgItem(dialog_, kSnap)));
    enter(kMoveRow, 0, L"5");
    EXPECT_TRUE(isAt("4", "0", "0"));
    enter(0, 1, L"7");
    EXPECT_TRUE(isAt("4", "8", "0"));
    type(field(0, 2), L"9");
    script("createDummy()");
    EXPECT_TRUE(becomes("selection.count", "1"));
    EXPECT_EQ(user::text(field(0, 2)), L"9") << "what is being typed stays while the scene changes";
}

TEST_F(TransformDialogTest, KeysAreListedAndHelpIsSought) {
    user::key('M', {VK_CONTROL});
    ASSERT_TRUE(user::click(viewport_));
    user::key(VK_F1, {VK_SHIFT});
    HWND keys = nullptr;
    ASSERT_TRUE(user::eventually(
        [&] { return (keys = user::dialogNamed(process_.dwProcessId, L"按键一览")) != nullptr; }));
    const RemoteList list(::GetDlgItem(keys, kKeysList), process_.hProcess);
    EXPECT_THAT(list.texts(), Contains("Ctrl+Shift+S"));
    EXPECT_THAT(list.texts(), Contains("Shift+F1"));
    user::key(VK_ESCAPE);
    ASSERT_TRUE(user::eventually([&] { return !::IsWindow(keys) || !::IsWindowVisible(keys); }));

    // No guide lies beside the program that was built: the message says which place was meant.
    user::key(VK_F1);
    EXPECT_THAT(answerMessage(IDOK), HasSubstr("user-guide.zh-CN.html#section-2"));
    ASSERT_TRUE(user::click(line_));
    user::key(VK_F1);
    EXPECT_THAT(answerMessage(IDOK), HasSubstr("scripting.html"));
}

// The session waits for the user's answer about what is not saved.
TEST_F(TransformDialogTest, TheEndOfTheSessionWaitsForTheAnswer) {
    EXPECT_EQ(::SendMessageW(window_, WM_QUERYENDSESSION, 0, 0), TRUE) << "nothing is unsaved";
    enter(kMoveRow, 1, L"1");
    ASSERT_TRUE(isAt("0", "1", "0"));
    EXPECT_EQ(::SendMessageW(window_, WM_QUERYENDSESSION, 0, 0), FALSE);
    EXPECT_THAT(answerMessage(IDCANCEL), HasSubstr("“场景.kiln”已修改"));
    EXPECT_TRUE(isAt("0", "1", "0")) << "it goes on";
    EXPECT_EQ(::SendMessageW(window_, WM_QUERYENDSESSION, 0, 0), FALSE);
    answerMessage(IDYES);
    EXPECT_EQ(exitCode(), 0u);
    start((folder_ / "plugins").wstring());
    EXPECT_TRUE(isAt("0", "1", "0")) << "saved before the end";
}

// A session that ends without an answer: the work is saved aside before, and offered next time.
TEST_F(TransformDialogTest, WhatIsUnsavedOutlivesTheSession) {
    const std::filesystem::path aside = folder_ / "Workbench" / "recovery";
    enter(kMoveRow, 1, L"1");
    ASSERT_TRUE(isAt("0", "1", "0"));
    EXPECT_EQ(::SendMessageW(window_, WM_QUERYENDSESSION, 0, 0), FALSE);
    answerMessage(IDCANCEL);
    enter(kMoveRow, 0, L"2");
    ASSERT_TRUE(isAt("2", "2", "0"));
    ::SendMessageW(window_, WM_ENDSESSION, FALSE, 0);
    EXPECT_TRUE(isAt("2", "2", "0")) << "it does not end after all";
    ::SendMessageW(window_, WM_ENDSESSION, TRUE, 0);
    ::TerminateProcess(process_.hProcess, 1);  // as the system does then
    ASSERT_EQ(exitCode(), 1u);
    ASSERT_TRUE(std::filesystem::exists(aside));
    start((folder_ / "plugins").wstring(), L" ");
    EXPECT_THAT(answerMessage(IDYES), HasSubstr("“场景.kiln”有未保存的更改"));
    EXPECT_TRUE(isAt("2", "2", "0")) << "as it was at the end";
}

}  // namespace

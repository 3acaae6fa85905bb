// Degrees of freedom moved by sliders and typed values, with the display's own mouse and keys.
#include "../../workbench/src/app/commands.h"
#include "../tour/user.h"
#include "workbenchfixture.h"

#include <base/utf16.h>

namespace {

constexpr int kYaw = 5;

class JointsWindowTest : public WorkbenchTest {
protected:
    void SetUp() override {
        WorkbenchTest::SetUp();
        start(base::toWide(STAGED_PLUGINS), L"--language en");
        ASSERT_TRUE(showsItsScene());
        script("delete $'塔楼'");
        script("clearSelection()");
        script("Aviary.CreateDOF()");
        script("$d001.name = \"door\"");
        script("createBox parent:$door length:40 width:2 height:2");
        for (const char* const line :
             {"\"FltDofYawLimited\" 1", "\"FltDofYawMin\" -20", "\"FltDofYawMax\" 90",
              "\"FltDofTxLimited\" 1", "\"FltDofTxMin\" 0", "\"FltDofTxMax\" 0"})
            script(std::string("setAttr $door ") + line);
        script("viewAll()");
        ASSERT_TRUE(user::click(viewport_));
        script("select $door");
        user::key('J', {VK_CONTROL});
        ASSERT_TRUE(user::eventually([this] {
            dialog_ = user::dialogNamed(process_.dwProcessId, L"Degrees of Freedom");
            return dialog_ != nullptr;
        }));
        ASSERT_TRUE(shows(IDC_JOINTS_TITLE, "door"));
    }

    HWND item(int id) const { return ::GetDlgItem(dialog_, id); }
    bool shows(int id, const char* text) const {
        return user::eventually([&] { return textOf(item(id)) == text; });
    }
    bool yawIs(const std::string& value) {
        const std::string expected = '"' + value + '"';
        return user::eventually(
            [&] { return script("getAttr $door \"FltDofYawCurr\"").ends_with(expected); });
    }
    void enter(int id, const wchar_t* text) const {
        ASSERT_TRUE(user::click(item(id)));
        user::key(VK_HOME);
        user::key(VK_END, {VK_SHIFT});
        user::type(text);
        ASSERT_TRUE(user::eventually([&] { return user::text(item(id)) == text; }));
        user::key(VK_RETURN);
    }

    HWND dialog_ = nullptr;
};

TEST_F(JointsWindowTest, MovesThePictureUntilTheRecordTakesItOver) {
    const std::vector<DWORD> atRest = middleAtRest();
    EXPECT_TRUE(shows(IDC_JOINTS_LIMITS + kYaw, "-20 … 90"));
    EXPECT_TRUE(shows(IDC_JOINTS_LIMITS + 0, "fixed"));
    EXPECT_FALSE(::IsWindowEnabled(item(IDC_JOINTS_SLIDERS + 0))) << "limits without room";
    EXPECT_FALSE(::IsWindowEnabled(item(IDC_JOINTS_KEEP)));

    const HWND slider = item(IDC_JOINTS_SLIDERS + kYaw);
    ASSERT_TRUE(user::click(slider));
    user::key(VK_END);
    EXPECT_TRUE(shows(IDC_JOINTS_FIELDS + kYaw, "90"));
    EXPECT_TRUE(user::eventually([&] { return middleOfViewport() != atRest; }));
    EXPECT_TRUE(yawIs("0")) << "the record stays";
    enter(IDC_JOINTS_FIELDS + kYaw, L"-500");
    EXPECT_TRUE(shows(IDC_JOINTS_FIELDS + kYaw, "-20")) << "the limit";
    enter(IDC_JOINTS_FIELDS + kYaw, L"open");
    EXPECT_TRUE(shows(IDC_JOINTS_FIELDS + kYaw, "open")) << "what is no number is left to mend";

    ASSERT_TRUE(user::click(item(IDC_JOINTS_BACK)));
    EXPECT_TRUE(user::eventually([&] { return middleOfViewport() == atRest; }));
    EXPECT_TRUE(shows(IDC_JOINTS_FIELDS + kYaw, "0"));
    enter(IDC_JOINTS_FIELDS + kYaw, L"45");
    ASSERT_TRUE(user::eventually([&] { return ::IsWindowEnabled(item(IDC_JOINTS_KEEP)); }));
    user::key('T', {VK_MENU});
    EXPECT_TRUE(yawIs("45"));
    EXPECT_TRUE(shows(IDC_JOINTS_FIELDS + kYaw, "45"));
    EXPECT_FALSE(::IsWindowEnabled(item(IDC_JOINTS_BACK)));
    ::SendMessageW(window_, WM_COMMAND, CMD_EDIT_UNDO, 0);
    EXPECT_TRUE(yawIs("0")) << "in one step";
    EXPECT_TRUE(user::eventually([&] { return middleOfViewport() == atRest; }));
}

TEST_F(JointsWindowTest, PlaysToAndFroAndLeavesEverythingAsItWas) {
    const std::vector<DWORD> atRest = middleAtRest();
    script("clearSelection()");
    EXPECT_TRUE(shows(IDC_JOINTS_TITLE, "Select a degree of freedom, or something below one."));
    const std::vector<DWORD> deselected = middleAtRest();
    ASSERT_TRUE(user::click(item(IDC_JOINTS_PLAY)));
    EXPECT_TRUE(shows(IDC_JOINTS_PLAY, "Stop P&laying"));
    EXPECT_TRUE(user::eventually([&] { return middleOfViewport() != deselected; }));
    script("select $door");
    const auto playsBeyond = [&](double value) {
        return user::eventually([&] {
            const double now = std::atof(textOf(item(IDC_JOINTS_FIELDS + kYaw)).c_str());
            return value < 0 ? now < value : now > value;
        });
    };
    EXPECT_TRUE(playsBeyond(80));
    EXPECT_TRUE(playsBeyond(-15));
    EXPECT_TRUE(playsBeyond(60));
    EXPECT_TRUE(yawIs("0"));
    ::SendMessageW(window_, WM_COMMAND, CMD_VIEW_CHINESE, 0);
    EXPECT_EQ(user::text(dialog_), L"自由度");
    EXPECT_TRUE(shows(IDC_JOINTS_PLAY, "停止(&L)"));
    user::key(VK_ESCAPE);
    EXPECT_TRUE(user::eventually([&] { return !::IsWindowVisible(dialog_); }));
    EXPECT_TRUE(user::eventually([&] { return middleOfViewport() == atRest; }));
    EXPECT_TRUE(yawIs("0"));
}

}  // namespace

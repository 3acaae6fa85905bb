// Levels of detail by the eye's distance, and saved views, with the display's own mouse and keys.
#include "../../workbench/src/app/commands.h"
#include "../tour/user.h"
#include "workbenchfixture.h"

#include <base/utf16.h>

#include <utility>

namespace {

class LevelsTest : public WorkbenchTest {
protected:
    void SetUp() override {
        WorkbenchTest::SetUp();
        start(base::toWide(STAGED_PLUGINS), L"--language en");
        ASSERT_TRUE(showsItsScene());
    }
    void addLevel(const char* name, const char* nearest, const char* farthest, const char* size) {
        script("clearSelection()");
        script("Aviary.CreateLOD()");
        script(std::string("$l001.name = \"") + name + "\"");
        script(std::string("setAttr $") + name + " \"FltLodMax\" " + nearest);
        script(std::string("setAttr $") + name + " \"FltLodMin\" " + farthest);
        script(std::string("createBox parent:$") + name + " length:" + size + " width:" + size +
               " height:" + size);
    }
};

TEST_F(LevelsTest, AStripShowsWhereTheEyeIsAndAClickBringsItThere) {
    script("delete $'塔楼'");
    addLevel("near", "0", "100", "20");
    addLevel("distant", "100", "1000", "40");
    ASSERT_TRUE(user::click(viewport_));
    user::key('L', {VK_CONTROL});
    HWND dialog = nullptr;
    ASSERT_TRUE(user::eventually([&] {
        dialog = user::dialogNamed(process_.dwProcessId, L"Levels of Detail");
        return dialog != nullptr;
    }));
    const auto says = [&](const char* expected) {
        return user::eventually([&] {
            return textOf(::GetDlgItem(dialog, IDC_LEVELS_DISTANCE)).find(expected) !=
                   std::string::npos;
        });
    };
    EXPECT_TRUE(says("all levels are shown"));
    // Three bands: up to 100, up to 1000, beyond.
    const RECT strip = user::area(::GetDlgItem(dialog, IDC_LEVELS_STRIP));
    const LONG third = (strip.right - strip.left) / 3, y = (strip.top + strip.bottom) / 2;
    ASSERT_TRUE(user::click({strip.left + third + third / 2, y}));
    EXPECT_TRUE(says("Distance 550  |  levels at 100 – 1000"));
    ASSERT_TRUE(user::click({strip.left + third / 2, y}));
    EXPECT_TRUE(says("Distance 50  |  levels at 0 – 100"));
    const COLORREF marked = ::GetSysColor(COLOR_HIGHLIGHT);
    EXPECT_TRUE(user::eventually([&] {
        const auto extent = user::look(strip).extentOf(marked);
        return extent && extent->right <= third + 2;
    }));
    ASSERT_TRUE(user::click(::GetDlgItem(dialog, IDC_LEVELS_FARTHER)));
    EXPECT_TRUE(says("levels at 100 – 1000"));
    const HWND nearer = ::GetDlgItem(dialog, IDC_LEVELS_NEARER);
    ASSERT_TRUE(user::click(nearer));
    EXPECT_TRUE(says("levels at 0 – 100"));
    EXPECT_FALSE(::IsWindowEnabled(nearer)) << "nothing is nearer";
    ASSERT_TRUE(user::click(::GetDlgItem(dialog, IDC_LEVELS_FARTHER)));
    script("$near.hidden = true");
    ASSERT_TRUE(user::click(::GetDlgItem(dialog, IDC_LEVELS_ALL)));
    EXPECT_TRUE(says("Distance 550  |  all levels are shown"));
    EXPECT_TRUE(user::eventually([this] { return script("$near.hidden").ends_with("false"); }));
    ::SendMessageW(window_, WM_COMMAND, CMD_VIEW_CHINESE, 0);
    EXPECT_EQ(user::text(dialog), L"细节级别");
    EXPECT_TRUE(says("视距 550"));
    script("delete $near");
    script("delete $distant");
    EXPECT_TRUE(says("场景中没有细节级别"));
}

TEST_F(LevelsTest, AViewIsSavedAndShownAgain) {
    const auto picture = [this] { return user::look(user::area(viewport_)); };
    ASSERT_TRUE(user::click(viewport_));
    user::key(VK_ESCAPE);
    user::key('T');
    user::key('P');
    user::Picture perspective = picture();
    ASSERT_TRUE(
        user::eventually([&] { return picture() == std::exchange(perspective, picture()); }));
    user::key('1', {VK_CONTROL});
    user::key('T');
    EXPECT_TRUE(user::eventually([&] { return picture() != perspective; }));
    user::key('1');
    EXPECT_TRUE(user::eventually([&] { return picture() == perspective; }));
}

}  // namespace

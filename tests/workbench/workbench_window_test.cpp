// Starts the built workbench without plug-ins and uses it as a person would: with the mouse, the
// keyboard and the menu.
#include "workbenchfixture.h"

#include <framework/text.h>

#include <gmock/gmock.h>

#include <fstream>

using testing::HasSubstr;

namespace {

constexpr int kSelectAll = 1100, kViewTop = 1211, kRunScript = 1250, kRunAgain = 1251;  // commands
constexpr int kAboutFirstUtility = 1301;

TEST_F(WorkbenchTest, OpensASceneSelectsByClickAndCloses) {
    start((folder_ / "plugins").wstring());
    EXPECT_NE(::GetMenu(window_), nullptr);
    RECT area;
    ::GetClientRect(viewport_, &area);
    EXPECT_GT(area.right, 600);
    EXPECT_GT(area.bottom, 400);
    EXPECT_THAT(script("$"), HasSubstr("no node is selected"));
    click(area.right / 2, area.bottom / 2);
    EXPECT_THAT(script("$"), HasSubstr("\r\n$塔楼"));
    click(3, area.bottom / 3);
    EXPECT_THAT(script("$"), HasSubstr("no node is selected"));

    ::SendMessageW(window_, WM_COMMAND, kViewTop, 0);
    ::SendMessageW(window_, WM_COMMAND, kSelectAll, 0);
    EXPECT_THAT(script("$"), HasSubstr("\r\n$塔楼"));
    EXPECT_THAT(script("Nobody.Home"), HasSubstr("no interface is named \"Nobody\""));

    ::PostMessageW(window_, WM_CLOSE, 0, 0);
    EXPECT_EQ(exitCode(), 0u) << "an unchanged scene is closed without a question";
}

TEST_F(WorkbenchTest, HostsTheRollupPageOfAUtility) {
    start(toWide(SAMPLE_PLUGINS));
    const HWND button = ::FindWindowExW(panel_, nullptr, L"Button", nullptr);
    ASSERT_NE(button, nullptr);
    EXPECT_EQ(textOf(button), "Sample 样本");
    EXPECT_EQ(page(), nullptr);
    ::SendMessageW(button, BM_CLICK, 0, 0);
    ASSERT_NE(page(), nullptr);
    EXPECT_TRUE(::IsWindowVisible(page()));

    // Pulling on an empty place of the page, which is taller than the panel, scrolls it.
    RECT before, after;
    ::GetWindowRect(page(), &before);
    ::SendMessageW(page(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(20, 200));
    ::SendMessageW(page(), WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(20, 140));
    ::SendMessageW(page(), WM_LBUTTONUP, 0, MAKELPARAM(20, 140));
    ::GetWindowRect(page(), &after);
    EXPECT_EQ(after.top, before.top - 60);
    ::SendMessageW(panel_, WM_VSCROLL, SB_TOP, 0);
    ::GetWindowRect(page(), &after);
    EXPECT_EQ(after.top, before.top);

    // The title bar folds the page and unfolds it.
    const HWND rollup = ::GetParent(page());
    ::SendMessageW(rollup, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(20, 5));
    EXPECT_FALSE(::IsWindowVisible(page()));
    ::SendMessageW(rollup, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(20, 5));
    EXPECT_TRUE(::IsWindowVisible(page()));

    // The page's own button closes the utility while it handles the press.
    ::SendMessageW(::GetDlgItem(page(), IDOK), BM_CLICK, 0, 0);
    EXPECT_TRUE(eventually([this] { return page() == nullptr; }));
    ::SendMessageW(button, BM_CLICK, 0, 0);
    EXPECT_NE(page(), nullptr);
    ::SendMessageW(button, BM_CLICK, 0, 0);
    EXPECT_EQ(page(), nullptr) << "pressing the open utility's button closes it";

    ::SendMessageW(button, BM_CLICK, 0, 0);
    ::PostMessageW(window_, WM_CLOSE, 0, 0);
    EXPECT_EQ(exitCode(), 0u) << "closes with a utility open";
}

TEST_F(WorkbenchTest, RunsTheSampleScriptOverTheRealPlugins) {
    start(toWide(STAGED_PLUGINS), L"--script \"" + toWide(SAMPLE_SCRIPT) + L"\"");
    ASSERT_TRUE(eventually([this] {
        const std::string log = textOf(log_);
        return log.find("lodpreview.ks: done") != log.npos || log.find("Error") != log.npos;
    }));
    EXPECT_THAT(textOf(log_), HasSubstr("\r\n-- lodpreview.ks: done"));
    EXPECT_THAT(textOf(log_), HasSubstr("22-lod-less-detail 300.0 #(\"middle shaft\")"));
    EXPECT_EQ(textOf(window_), "未命名 * - Workbench") << "its scene is not the file's";
    EXPECT_THAT(script("Aviary.GetLodDistance"), testing::EndsWith("\r\n100.0"));
    EXPECT_THAT(script("#($'near mast'.hidden, $'middle cabin'.hidden, $'far block'.hidden)"),
                HasSubstr("#(false, true, true)"));
    for (const char* name : {"20-lod-start.png", "29-lod-at-a-switch-distance.png"})
        EXPECT_GT(std::filesystem::file_size(folder_ / name), 5000u) << name;
}

TEST_F(WorkbenchTest, RunsScriptFilesFromTheMenuAndTheLine) {
    start((folder_ / "plugins").wstring());
    const std::string path =
        scriptFile("fn made name = createDummy name\nprint \"begun\"\nmade \"一\"");
    ::PostMessageW(window_, WM_COMMAND, kRunAgain, 0);  // there is none yet, so it asks
    ASSERT_TRUE(answerFileDialog(L"运行脚本", path));
    ASSERT_TRUE(eventually([this] { return textOf(log_).ends_with("脚本.ks: done"); }));
    EXPECT_THAT(textOf(log_), HasSubstr("-- running 脚本.ks\r\nbegun\r\n-- 脚本.ks: done"));
    EXPECT_THAT(script("objects.count"), HasSubstr("\r\n2"));
    ::SendMessageW(window_, WM_COMMAND, kRunAgain, 0);
    EXPECT_THAT(script("objects.count"), HasSubstr("\r\n3"));
    EXPECT_THAT(script("(made \"二\").name"), HasSubstr("\"二\"")) << "its functions stay";

    scriptFile("print \"begun\"\n\n  made 1 2\n");
    ::PostMessageW(window_, WM_COMMAND, kRunScript, 0);
    ASSERT_TRUE(answerFileDialog(L"运行脚本", path));
    ASSERT_TRUE(eventually([this] { return logSays("脚本.ks:3:3: made: too many arguments"); }))
        << textOf(log_);
    EXPECT_THAT(textOf(log_), HasSubstr("\r\nbegun\r\n-- Error. ")) << "what it printed stays";
    EXPECT_THAT(script("runScript \"" + path + "\""), HasSubstr("脚本.ks:3:3: made: "));
    EXPECT_THAT(script("runScript \"none.ks\""), HasSubstr("none.ks: this script cannot be read"));
    EXPECT_THAT(script("1 + 1"), HasSubstr("\r\n2"));
}

TEST_F(WorkbenchTest, AWalkEndsWithItsScriptAndFailsWithIt) {
    const std::wstring path =
        std::filesystem::path(toWide(scriptFile("screenshot \"11-scripted\"\nnone()"))).wstring();
    launch(toWide(SAMPLE_PLUGINS),
           L"--screenshots \"" + folder_.wstring() + L"\" --script \"" + path + L"\"");
    EXPECT_EQ(exitCode(), 1u);
    EXPECT_THAT(output_->text(), HasSubstr("failed: run the script: "));
    EXPECT_THAT(output_->text(), HasSubstr("脚本.ks:2:1: nothing is named \"none\""));
    EXPECT_TRUE(std::filesystem::exists(folder_ / "11-scripted.png"));
}

TEST_F(WorkbenchTest, OffersTheAboutBoxesOfUtilities) {
    start(toWide(SAMPLE_PLUGINS));
    ::PostMessageW(window_, WM_COMMAND, kAboutFirstUtility, 0);
    HWND box = nullptr;
    ASSERT_TRUE(eventually([&] {
        box = ::FindWindowW(L"#32770", L"About");
        return box && ::IsWindowVisible(box);
    }));
    EXPECT_EQ(::GetWindow(box, GW_OWNER), window_);
    ::PostMessageW(box, WM_COMMAND, IDOK, 0);
    EXPECT_TRUE(eventually([&] { return !::IsWindow(box); }));
}

TEST_F(WorkbenchTest, WalksThroughTheViewsWithoutAPerson) {
    launch(toWide(SAMPLE_PLUGINS), L"--screenshots \"" + folder_.wstring() + L"\"");
    EXPECT_EQ(exitCode(), 0u);
    const std::string text = output_->text();
    EXPECT_THAT(text, HasSubstr("ok: expand the tree"));
    EXPECT_THAT(text, testing::EndsWith("opened 1 node\r\n"));
    for (const char* name : {"01-viewport.png", "04-tree.png", "08-top.png"}) {
        std::ifstream file(folder_ / name, std::ios::binary);
        std::string start(8, ' ');
        file.read(start.data(), 8);
        EXPECT_EQ(start, "\x89PNG\r\n\x1A\n") << name;
    }
}

TEST_F(WorkbenchTest, AWalkThatMeetsADamagedFileFailsAndSaysWhy) {
    std::ofstream(std::filesystem::path(scene_), std::ios::trunc) << "{ \"nodes\": [";
    launch(toWide(SAMPLE_PLUGINS), L"--screenshots \"" + folder_.wstring() + L"\"");
    EXPECT_EQ(exitCode(), 1u);
    EXPECT_THAT(output_->text(), HasSubstr("failed: open the file: "));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "01-viewport.png"));
}

}  // namespace

// Starts the built workbench without plug-ins and uses it as a person would: with the mouse, the
// keyboard and the menu.
#include "workbenchfixture.h"

#include <base/utf16.h>
#include <gmock/gmock.h>

#include <fstream>
#include <utility>

using testing::HasSubstr;

namespace {

constexpr int kOpen = 1001, kImport = 1004, kExport = 1005, kRecent = 1020;
constexpr int kSelectAll = 1100, kViewTop = 1211, kRunScript = 1250, kRunAgain = 1251;  // commands
constexpr int kNew = 1000, kSpeakChinese = 1240, kSpeakEnglish = 1241;
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
    start(base::toWide(SAMPLE_PLUGINS));
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
    ::SendMessageW(::FindWindowExW(rollup, nullptr, L"Button", nullptr), BM_CLICK, 0, 0);
    EXPECT_FALSE(::IsWindowVisible(page()));
    ::SendMessageW(::FindWindowExW(rollup, nullptr, L"Button", nullptr), BM_CLICK, 0, 0);
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

TEST_F(WorkbenchTest, SpeaksAnotherLanguageAtOnceAndKeepsIt) {
    const auto pageSays = [this] { return textOf(::GetWindow(page(), GW_CHILD)); };
    const auto openUtility = [this] {
        ::SendMessageW(::FindWindowExW(panel_, nullptr, L"Button", nullptr), BM_CLICK, 0, 0);
    };
    start(base::toWide(SAMPLE_PLUGINS));
    openUtility();
    ASSERT_EQ(pageSays(), "打开");
    EXPECT_THAT(textOf(log_), HasSubstr("-- 已加载 Sample（"));
    EXPECT_THAT(textOf(log_), HasSubstr("-- 场景.kiln：打开了 1 个节点，用时 "));
    EXPECT_THAT(script("openScene \"none\""),
                HasSubstr("-- 错误。第 1 列：openScene: none：无法打开："));
    ::SendMessageW(window_, WM_COMMAND, kSpeakEnglish, 0);
    EXPECT_EQ(pageSays(), "Open");
    EXPECT_THAT(script("openScene \"none\""),
                HasSubstr("-- Error. Column 1: openScene: none: cannot be opened: "));
    ::SendMessageW(window_, WM_COMMAND, kNew, 0);
    EXPECT_TRUE(eventually([this] { return textOf(window_) == "Untitled - Workbench"; }));
    ::SendMessageW(window_, WM_COMMAND, kSpeakChinese, 0);
    EXPECT_EQ(textOf(window_), "未命名 - Workbench") << "at once";
    ::SendMessageW(window_, WM_COMMAND, kSpeakEnglish, 0);
    EXPECT_EQ(textOf(window_), "Untitled - Workbench");
    ::SendMessageW(::GetDlgItem(page(), IDOK), BM_CLICK, 0, 0);
    EXPECT_TRUE(eventually([this] { return page() == nullptr; })) << "it is open once";

    for (const auto& [arguments, expected] :
         {std::pair{L"", "Open"}, {L"--language zh", "打开"}, {L"", "打开"}}) {
        ::PostMessageW(window_, WM_CLOSE, 0, 0);
        EXPECT_EQ(exitCode(), 0u);
        start(base::toWide(SAMPLE_PLUGINS), arguments);
        openUtility();
        EXPECT_EQ(pageSays(), expected) << "what was chosen last is kept";
    }
}

TEST_F(WorkbenchTest, RunsTheSampleScriptOverTheRealPlugins) {
    start(base::toWide(STAGED_PLUGINS), L"--script \"" + base::toWide(SAMPLE_SCRIPT) + L"\"");
    ASSERT_TRUE(eventually([this] {
        const std::string log = textOf(log_);
        return log.find("lodpreview.ks：完成") != log.npos || log.find("错误") != log.npos;
    }));
    for (const char* module :
         {"Aviary (C)", "OpenFlight 检查", "OpenFlight 调色板", "OpenFlight 导入与导出"})
        EXPECT_THAT(textOf(log_), HasSubstr(std::string("-- 已加载 ") + module + "（"));
    EXPECT_THAT(textOf(log_), HasSubstr("\r\n-- lodpreview.ks：完成"));
    EXPECT_THAT(textOf(log_), HasSubstr("22-lod-less-detail 300.0 #(\"middle shaft\")"));
    EXPECT_EQ(textOf(window_), "未命名 * - Workbench") << "its scene is not the file's";
    EXPECT_THAT(script("Aviary.GetLodDistance"), testing::EndsWith("\r\n100.0"));
    EXPECT_THAT(script("#($'near mast'.hidden, $'middle cabin'.hidden, $'far block'.hidden)"),
                HasSubstr("#(false, true, true)"));
    for (const char* name : {"20-lod-start.png", "29-lod-at-a-switch-distance.png"})
        EXPECT_GT(std::filesystem::file_size(folder_ / name), 5000u) << name;
}

// What an attribute says of a surface is seen at once: nothing else asks for the picture here.
TEST_F(WorkbenchTest, TheViewportFollowsAnAttribute) {
    start(base::toWide(STAGED_PLUGINS));
    const std::vector<DWORD> lit = middleAtRest();
    script("Aviary.SetKeepTriangles $'塔楼' true");  // now it is a face, which no light reaches
    ASSERT_TRUE(eventually([&] { return middleOfViewport() != lit; }));
    const std::vector<DWORD> unlit = middleAtRest();
    script("setAttr $'塔楼' \"FltLightMode\" 2");
    EXPECT_TRUE(eventually([&] { return middleOfViewport() == lit; }));
    script("setAttr $'塔楼' \"FltLightMode\" 0");
    EXPECT_TRUE(eventually([&] { return middleOfViewport() == unlit; }));
    script("$'塔楼'.hidden = true");
    EXPECT_TRUE(eventually([&] { return middleOfViewport() != unlit; }));
    script("$'塔楼'.hidden = false");
    EXPECT_TRUE(eventually([&] { return middleOfViewport() == unlit; }));

    // Each of these is seen at once, and is gone at once when it is taken back.
    script("createDummy name:\"top\"");
    script("select $top");
    for (const char* create : {"CreateObject", "CreateDOF", "CreateLOD"})
        script("select $top; Aviary." + std::string(create) + "()");
    script("link $d001 $o001; link $l001 $d001; link $'塔楼' $l001; clearSelection()");
    constexpr int kDay = 1234, kByEye = 1232;  // commands
    ::SendMessageW(window_, WM_COMMAND, kDay, 0);
    ::SendMessageW(window_, WM_COMMAND, kByEye, 0);
    ASSERT_TRUE(eventually([&] { return middleOfViewport() == unlit; }));
    for (const auto& [node, key, value] : {std::tuple{"$'塔楼'", "FltHidden", "1"},
                                           {"$'塔楼'", "FltDrawType", "2"},
                                           {"$o001", "FltObjTransparency", "30000"},
                                           {"$o001", "FltObjNoDay", "1"},
                                           {"$d001", "FltDofTxCurr", "500"},
                                           {"$l001", "FltLodMin", "1"}}) {
        const std::string was = "was = getAttr " + std::string(node) + " \"" + key + "\" raw:true";
        const std::string set = "setAttr " + std::string(node) + " \"" + key + "\" ";
        script(was);
        script(set + value);
        EXPECT_TRUE(eventually([&] { return middleOfViewport() != unlit; })) << key;
        script(set + "was");
        EXPECT_TRUE(eventually([&] { return middleOfViewport() == unlit; })) << key;
    }
}

TEST_F(WorkbenchTest, RunsScriptFilesFromTheMenuAndTheLine) {
    start((folder_ / "plugins").wstring());
    const std::string path =
        scriptFile("fn made name = createDummy name\nprint \"begun\"\nmade \"一\"");
    ::PostMessageW(window_, WM_COMMAND, kRunAgain, 0);  // there is none yet, so it asks
    ASSERT_TRUE(answerFileDialog(L"运行脚本", path));
    ASSERT_TRUE(eventually([this] { return textOf(log_).ends_with("脚本.ks：完成"); }));
    EXPECT_THAT(textOf(log_), HasSubstr("-- 正在运行 脚本.ks\r\nbegun\r\n-- 脚本.ks：完成"));
    EXPECT_THAT(script("objects.count"), HasSubstr("\r\n2"));
    ::SendMessageW(window_, WM_COMMAND, kRunAgain, 0);
    EXPECT_THAT(script("objects.count"), HasSubstr("\r\n3"));
    EXPECT_THAT(script("(made \"二\").name"), HasSubstr("\"二\"")) << "its functions stay";

    scriptFile("print \"begun\"\n\n  made 1 2\n");
    ::PostMessageW(window_, WM_COMMAND, kRunScript, 0);
    ASSERT_TRUE(answerFileDialog(L"运行脚本", path));
    ASSERT_TRUE(eventually([this] { return logSays("脚本.ks:3:3: made: too many arguments"); }))
        << textOf(log_);
    EXPECT_THAT(textOf(log_), HasSubstr("\r\nbegun\r\n-- 错误。")) << "what it printed stays";
    EXPECT_THAT(script("runScript \"" + path + "\""), HasSubstr("脚本.ks:3:3: made: "));
    EXPECT_THAT(script("runScript \"none.ks\""), HasSubstr("none.ks：无法读取此脚本"));
    EXPECT_THAT(script("1 + 1"), HasSubstr("\r\n2"));
}

TEST_F(WorkbenchTest, AWalkEndsWithItsScriptAndFailsWithIt) {
    const std::wstring path =
        std::filesystem::path(base::toWide(scriptFile("screenshot \"11-scripted\"\nnone()")))
            .wstring();
    launch(base::toWide(SAMPLE_PLUGINS),
           L"--screenshots \"" + folder_.wstring() + L"\" --script \"" + path + L"\"");
    EXPECT_EQ(exitCode(), 1u);
    EXPECT_THAT(output_->text(), HasSubstr("failed: run the script: "));
    EXPECT_THAT(output_->text(), HasSubstr("脚本.ks:2:1: nothing is named \"none\""));
    EXPECT_TRUE(std::filesystem::exists(folder_ / "11-scripted.png"));
}

TEST_F(WorkbenchTest, OffersTheAboutBoxesOfUtilities) {
    start(base::toWide(SAMPLE_PLUGINS));
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

TEST_F(WorkbenchTest, ACancelledImportLeavesTheSceneAsItWas) {
    start(base::toWide(SAMPLE_PLUGINS));
    ::PostMessageW(window_, WM_COMMAND, kImport, 0);
    ASSERT_TRUE(answerFileDialog(L"导入", sampleFile("慢.smp", "slow")));
    HWND progress = nullptr;
    ASSERT_TRUE(eventually([&] {
        progress = ::FindWindowW(L"#32770", L"正在导入 慢.smp");
        return progress && ::IsWindowVisible(progress);
    }));
    EXPECT_FALSE(::IsWindowEnabled(window_)) << "nobody edits a scene that is half-done";
    ::RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN);
    EXPECT_TRUE(eventually([&] { return !::GetUpdateRect(viewport_, nullptr, FALSE); }))
        << "its windows paint meanwhile";
    ::PostMessageW(progress, WM_COMMAND, IDCANCEL, 0);
    ASSERT_TRUE(eventually([&] { return ::IsWindowEnabled(window_) && logSays("-- 导入已取消"); }));
    EXPECT_FALSE(::IsWindow(progress));
    EXPECT_THAT(script("objects.count"), HasSubstr("\r\n1"));
    EXPECT_EQ(textOf(window_), "场景.kiln - Workbench") << "nothing has changed";
}

TEST_F(WorkbenchTest, SaysWhyAFileCannotBeImportedAndGoesOn) {
    start(base::toWide(SAMPLE_PLUGINS));
    ::PostMessageW(window_, WM_COMMAND, kImport, 0);
    ASSERT_TRUE(answerFileDialog(L"导入", sampleFile("坏.smp", "bad")));
    const std::string said = answerMessage(IDOK);
    EXPECT_THAT(said, HasSubstr("无法导入文件。场景保持不变。"));
    EXPECT_THAT(said, HasSubstr("坏.smp"));
    EXPECT_THAT(said, HasSubstr("该文件不完整"));
    EXPECT_THAT(said, HasSubstr("it ends at byte 7"));
    EXPECT_THAT(script("objects.count"), HasSubstr("\r\n1"));
}

TEST_F(WorkbenchTest, AsksBeforeChangesAreLostAndKeepsAListOfRecentFiles) {
    start(base::toWide(SAMPLE_PLUGINS));
    ::PostMessageW(window_, WM_COMMAND, kImport, 0);
    ASSERT_TRUE(answerFileDialog(L"导入", sampleFile("好.smp", "good")));
    ASSERT_TRUE(eventually([&] { return textOf(window_) == "场景.kiln * - Workbench"; }))
        << textOf(window_);
    ::PostMessageW(window_, WM_CLOSE, 0, 0);
    EXPECT_THAT(answerMessage(IDCANCEL), HasSubstr("“场景.kiln”已修改。是否先保存？"));
    EXPECT_THAT(script("objects.count"), HasSubstr("\r\n2")) << "still there";

    ::PostMessageW(window_, WM_COMMAND, kRecent + 1, 0);  // the scene stands behind the import
    EXPECT_THAT(answerMessage(IDNO), HasSubstr("已修改"));
    ASSERT_TRUE(eventually([&] { return textOf(window_) == "场景.kiln - Workbench"; }));
    EXPECT_THAT(script("objects.count"), HasSubstr("\r\n1"));
    ::PostMessageW(window_, WM_CLOSE, 0, 0);
    EXPECT_EQ(exitCode(), 0u);
}

// A file out of the export dialog, an import of it beside the scene, and what becomes of a file
// that cannot be opened in its place.
TEST_F(WorkbenchTest, ExportsAndOpensThroughTheRealPlugins) {
    start(base::toWide(STAGED_PLUGINS));
    const std::string path = base::toUtf8((folder_ / L"机场.flt").wstring());
    ::PostMessageW(window_, WM_COMMAND, kExport, 0);
    ASSERT_TRUE(answerFileDialog(L"导出", path));
    ASSERT_TRUE(eventually([&] { return logSays("机场.flt："); })) << textOf(log_);
    ::PostMessageW(window_, WM_COMMAND, kOpen, 0);
    ASSERT_TRUE(answerFileDialog(L"打开", path));
    ASSERT_TRUE(eventually([&] { return textOf(window_) == "机场.flt - Workbench"; }))
        << textOf(window_);
    const std::string count = script("objects.count");

    std::filesystem::resize_file(base::toWide(path), 300);
    ::PostMessageW(window_, WM_COMMAND, kOpen, 0);
    ASSERT_TRUE(answerFileDialog(L"打开", path));
    EXPECT_THAT(answerMessage(IDOK), HasSubstr("该文件不完整"));
    EXPECT_EQ(script("objects.count"), count) << "the scene is what it was";
    EXPECT_EQ(textOf(window_), "机场.flt - Workbench");
}

// With two databases in the scene the export asks, the keyboard answers, and the database's own
// file is what the file dialog offers.
TEST_F(WorkbenchTest, AsksWhichDatabaseToExport) {
    constexpr int kList = 1003, kFileNameField = 0x47C;
    start(base::toWide(STAGED_PLUGINS));
    const std::string tower = base::toUtf8((folder_ / L"塔台.flt").generic_wstring());
    const std::string field = base::toUtf8((folder_ / L"field.flt").generic_wstring());
    for (const std::string& path : {tower, field}) script("exportFile \"" + path + "\"");
    script("newScene()");
    for (const std::string& path : {tower, field}) script("importFile \"" + path + "\"");
    EXPECT_THAT(script("exportFile \"" + tower + "\""), HasSubstr("field.flt"));
    const auto waitForList = [&] {
        ::PostMessageW(window_, WM_COMMAND, kExport, 0);
        HWND dialog = nullptr;
        eventually([&] {
            dialog = ::FindWindowW(L"#32770", L"选择数据库");
            return dialog && ::IsWindowVisible(dialog);
        });
        return ::GetDlgItem(dialog, kList);
    };
    const auto press = [](HWND window, WPARAM key) {
        ::PostMessageW(window, WM_KEYDOWN, key, 0);
        ::PostMessageW(window, WM_KEYUP, key, 0);
    };
    // Chooses the second; gives what the file dialog offers.
    const auto offered = [&] {
        const HWND list = waitForList();
        EXPECT_EQ(::SendMessageW(list, LB_GETCOUNT, 0, 0), 2);
        EXPECT_EQ(::SendMessageW(list, LB_GETCURSEL, 0, 0), 0);
        press(list, VK_DOWN);
        EXPECT_TRUE(eventually([&] { return ::SendMessageW(list, LB_GETCURSEL, 0, 0) == 1; }));
        press(list, VK_RETURN);
        HWND name = nullptr;
        eventually([&] {
            const HWND files = ::FindWindowW(L"#32770", L"导出");
            name =
                files && ::IsWindowVisible(files) ? ::GetDlgItem(files, kFileNameField) : nullptr;
            return name != nullptr;
        });
        return name ? textOf(name) : "no file dialog";
    };
    EXPECT_THAT(offered(), HasSubstr("field"));
    ASSERT_TRUE(answerFileDialog(L"导出", field));
    EXPECT_TRUE(eventually([&] { return logSays("略去了其他 1 个数据库"); })) << textOf(log_);

    // A scene file may say anything about where a database came from: here "a<d?>.flt".
    const std::filesystem::path scene = folder_ / L"两库.kiln";
    const std::string scenePath = base::toUtf8(scene.generic_wstring());
    script("saveScene \"" + scenePath + "\"");
    std::ifstream saved(scene, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(saved), {});
    saved.close();
    const std::string fieldInBase64 = "ZmllbGQuZmx0";
    ASSERT_NE(text.find(fieldInBase64), text.npos);
    text.replace(text.find(fieldInBase64), fieldInBase64.size(), "YTxkPz4uZmx0");
    std::ofstream(scene, std::ios::binary) << text;
    script("openScene \"" + scenePath + "\"");
    EXPECT_THAT(offered(), HasSubstr("a_d__"));
    ::PostMessageW(::FindWindowW(L"#32770", L"导出"), WM_COMMAND, IDCANCEL, 0);
    EXPECT_TRUE(eventually([&] { return ::FindWindowW(L"#32770", L"导出") == nullptr; }));

    press(waitForList(), VK_ESCAPE);
    EXPECT_TRUE(eventually([&] { return ::FindWindowW(L"#32770", L"选择数据库") == nullptr; }));
    EXPECT_EQ(::FindWindowW(L"#32770", L"导出"), nullptr) << "cancelled altogether";
}

// Neither a file that may not be written nor one that cannot be there is lost or made.
TEST_F(WorkbenchTest, SaysWhyAFileCannotBeExportedAndGoesOn) {
    start(base::toWide(STAGED_PLUGINS));
    const std::filesystem::path path = folder_ / L"机场.flt";
    std::ofstream(path) << "old";
    ASSERT_TRUE(::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
    ::PostMessageW(window_, WM_COMMAND, kExport, 0);
    ASSERT_TRUE(answerFileDialog(L"导出", base::toUtf8(path.wstring())));
    const std::string said = answerMessage(IDOK);
    EXPECT_THAT(said, HasSubstr("无法导出文件。"));
    EXPECT_THAT(said, HasSubstr("机场.flt"));
    EXPECT_THAT(said, HasSubstr("无法写入该文件"));
    std::string content;
    std::getline(std::ifstream(path), content);
    EXPECT_EQ(content, "old");
    ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    const std::string nowhere = base::toUtf8((folder_ / L"nowhere" / L"x.flt").generic_wstring());
    const std::string answer = script("exportFile \"" + nowhere + "\"");
    EXPECT_THAT(answer, HasSubstr("无法写入"));
    EXPECT_THAT(script("objects.count"), HasSubstr("\r\n1"));
}

TEST_F(WorkbenchTest, WalksThroughTheViewsWithoutAPerson) {
    launch(base::toWide(SAMPLE_PLUGINS), L"--screenshots \"" + folder_.wstring() + L"\"");
    EXPECT_EQ(exitCode(), 0u);
    const std::string text = output_->text();
    EXPECT_THAT(text, HasSubstr("ok: expand the tree"));
    EXPECT_THAT(text, HasSubstr("ok: undo everything, and redo it"));
    EXPECT_THAT(text, testing::EndsWith("打开了 1 个节点\r\n"));
    for (const char* name : {"01-viewport.png", "04-tree.png", "10-view-top.png",
                             "12-undone-01.png", "12-redone-01.png"}) {
        std::ifstream file(folder_ / name, std::ios::binary);
        std::string start(8, ' ');
        file.read(start.data(), 8);
        EXPECT_EQ(start, "\x89PNG\r\n\x1A\n") << name;
    }
}

TEST_F(WorkbenchTest, AWalkThatMeetsADamagedFileFailsAndSaysWhy) {
    std::ofstream(std::filesystem::path(scene_), std::ios::trunc) << "{ \"nodes\": [";
    launch(base::toWide(SAMPLE_PLUGINS), L"--screenshots \"" + folder_.wstring() + L"\"");
    EXPECT_EQ(exitCode(), 1u);
    EXPECT_THAT(output_->text(), HasSubstr("failed: open the file: "));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "01-viewport.png"));
}

}  // namespace

// A scene that came from an OpenFlight file goes back there, with the keys as a user presses them.
#include "../tour/user.h"
#include "remotetree.h"
#include "workbenchfixture.h"

#include <base/utf16.h>
#include <resources/resource.h>

#include <gmock/gmock.h>

#include <chrono>
#include <fstream>
#include <iterator>

using testing::HasSubstr, testing::Not;

namespace {

constexpr int kOpen = 1001, kRecent = 1020;

class SaveBackTest : public WorkbenchTest {
protected:
    void SetUp() override {
        WorkbenchTest::SetUp();
        start(base::toWide(STAGED_PLUGINS));
    }

    /// Writes the scene to a file, and opens that from the menu.
    void openForeign() {
        path_ = folder_ / L"机场.flt";
        script("exportFile \"" + base::toUtf8(path_.generic_wstring()) + "\"");
        ::PostMessageW(window_, WM_COMMAND, kOpen, 0);
        ASSERT_TRUE(answerFileDialog(L"打开", base::toUtf8(path_.wstring())));
        ASSERT_TRUE(isTitled("机场.flt - Workbench")) << textOf(window_);
        original_ = content(path_);
        ASSERT_TRUE(user::click(viewport_));
    }

    static std::string content(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool isTitled(const std::string& title) const {
        return user::eventually([&] { return textOf(window_) == title; });
    }
    /// As another program would write it, some time later.
    void replaceWith(const std::string& bytes) const {
        std::ofstream(path_, std::ios::binary) << bytes;
        std::filesystem::last_write_time(
            path_, std::filesystem::last_write_time(path_) + std::chrono::seconds(5));
    }
    void save() {
        ASSERT_TRUE(user::click(viewport_));
        user::key('S', {VK_CONTROL});
    }

    std::filesystem::path path_;
    std::string original_;
};

TEST_F(SaveBackTest, KeepsTheFileAndItsStarAsTheyAre) {
    openForeign();
    replaceWith(original_);  // written anew, and the same
    save();
    ASSERT_TRUE(eventually([this] { return logSays("机场.flt：已导出 "); })) << textOf(log_);
    EXPECT_TRUE(content(path_) == original_) << "what was not edited is the same to the byte";

    script("$'塔楼'.name = \"renamed\"");
    ASSERT_TRUE(isTitled("机场.flt * - Workbench"));
    save();
    EXPECT_TRUE(isTitled("机场.flt - Workbench"));
    EXPECT_THAT(content(path_), HasSubstr("renamed"));
    ASSERT_TRUE(user::click(viewport_));
    user::key('Z', {VK_CONTROL});
    EXPECT_TRUE(isTitled("机场.flt * - Workbench")) << "the file has the new name";
    user::key('Y', {VK_CONTROL});
    EXPECT_TRUE(isTitled("机场.flt - Workbench"));

    // Another program's work is not overwritten without a question.
    replaceWith(original_);
    save();
    EXPECT_THAT(answerMessage(IDNO), HasSubstr("已被其他程序修改"));
    EXPECT_TRUE(content(path_) == original_);

    // It goes with the question that closing asks, too.
    script("$renamed.name = \"again\"");
    ::PostMessageW(window_, WM_CLOSE, 0, 0);
    EXPECT_THAT(answerMessage(IDYES), HasSubstr("“机场.flt”已修改"));
    EXPECT_THAT(answerMessage(IDYES), HasSubstr("已被其他程序修改"));
    EXPECT_EQ(exitCode(), 0u);
    EXPECT_THAT(content(path_), HasSubstr("again"));
}

TEST_F(SaveBackTest, AsksOnceAboutWhatTheFileHasNoPlaceFor) {
    openForeign();
    script("createDummy \"帮手\"");
    save();
    const std::string asked = answerMessage(IDCANCEL);
    EXPECT_THAT(asked, HasSubstr("“机场.flt”的格式容纳不下"));
    EXPECT_THAT(asked, HasSubstr("• 1 个不是 OpenFlight 种类的节点：帮手"));
    EXPECT_TRUE(isTitled("机场.flt * - Workbench"));
    EXPECT_TRUE(content(path_) == original_);
    save();
    answerMessage(IDYES);
    EXPECT_TRUE(isTitled("机场.flt - Workbench"));
    EXPECT_TRUE(logSays("-- 机场.flt 中不包含：1 个不是 OpenFlight 种类的节点：帮手"));
    script("$'塔楼'.hidden = true");
    save();
    EXPECT_TRUE(eventually([this] { return logSays("1 个节点的隐藏：塔楼"); }));
    EXPECT_TRUE(isTitled("机场.flt - Workbench")) << "without another question";

    // No: a scene file, which keeps everything and is where the scene is saved from then on.
    ::PostMessageW(window_, WM_COMMAND, kOpen, 0);
    ASSERT_TRUE(answerFileDialog(L"打开", base::toUtf8(path_.wstring())));
    ASSERT_TRUE(eventually([this] { return script("$'塔楼'.hidden").ends_with("false"); }));
    script("createDummy \"帮手\"");
    save();
    EXPECT_THAT(answerMessage(IDNO), HasSubstr("帮手")) << "another scene, another question";
    const std::filesystem::path scene = folder_ / L"机场.kiln";
    ASSERT_TRUE(answerFileDialog(L"另存为", base::toUtf8(scene.wstring())));
    ASSERT_TRUE(isTitled("机场.kiln - Workbench"));
    const std::string foreign = content(path_);
    script("createDummy \"再来\"");
    save();
    EXPECT_TRUE(isTitled("机场.kiln - Workbench"));
    EXPECT_THAT(content(scene), HasSubstr("再来"));
    EXPECT_TRUE(content(path_) == foreign);
}

TEST_F(SaveBackTest, SaysWhyAFileCannotBeSavedAndForgetsOneThatIsGone) {
    openForeign();
    script("$'塔楼'.name = \"renamed\"");
    ASSERT_TRUE(::SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_READONLY));
    save();
    const std::string said = answerMessage(IDOK);
    for (const char* part : {"无法保存场景。", "机场.flt", "无法写入该文件：它是只读的"})
        EXPECT_THAT(said, HasSubstr(part));
    EXPECT_TRUE(isTitled("机场.flt * - Workbench"));
    ::SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_NORMAL);

    // Menus of other programs cannot be read; the list is kept in a file.
    const auto recent = [this] { return content(folder_ / "Workbench" / "recent.txt"); };
    ASSERT_THAT(recent(), HasSubstr("场景.kiln"));
    std::filesystem::remove(scene_);
    ::PostMessageW(window_, WM_COMMAND, kRecent + 1, 0);
    EXPECT_THAT(answerMessage(IDOK), HasSubstr("无法打开文件。"))
        << "nothing is lost, so nothing else is asked";
    EXPECT_THAT(recent(), HasSubstr("机场.flt"));
    EXPECT_THAT(recent(), Not(HasSubstr("场景.kiln")));
    EXPECT_TRUE(isTitled("机场.flt * - Workbench")) << "the scene is what it was";
}

// The keys of files are the host's in the windows of plug-ins too, and what is being typed there
// goes into the file.
TEST_F(SaveBackTest, KeysOfFilesReachTheHostFromTheBrowsersForm) {
    script("$'塔楼'.name = \"tower\"");
    ASSERT_TRUE(isTitled("场景.kiln * - Workbench"));
    const HWND form = openBrowserForm();
    ASSERT_NE(form, nullptr);
    const RemoteTree tree(::GetDlgItem(form, IDC_TREE), process_.hProcess);
    ASSERT_TRUE(user::eventually([&] { return tree.find("tower") != nullptr; }));
    ASSERT_TRUE(user::click(tree.middle("Scene Root")));
    user::key('S', {VK_CONTROL});
    EXPECT_TRUE(isTitled("场景.kiln - Workbench"));
    user::key(VK_RIGHT);
    ASSERT_TRUE(user::eventually([&] { return tree.middle("tower").x != 0; }));
    ASSERT_TRUE(user::click(tree.middle("tower")));
    ASSERT_TRUE(user::eventually([&] { return tree.selected() == "tower"; }));
    user::key(VK_F2);
    user::type(L"mast");
    user::key('S', {VK_CONTROL});
    EXPECT_TRUE(user::eventually([this] { return script("$mast.name").ends_with("\"mast\""); }));
    EXPECT_TRUE(
        user::eventually([this] { return content(scene_).find("\"mast\"") != std::string::npos; }));
    EXPECT_TRUE(isTitled("场景.kiln - Workbench"));
    EXPECT_TRUE(user::eventually([&] { return ::GetForegroundWindow() == form; }))
        << "the keyboard stays where it was";
}

}  // namespace

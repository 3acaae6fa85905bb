// Starts the built workbench without plug-ins and uses it as a person would: with the mouse, the
// keyboard and the menu.
#include <kiln/host/host.h>

#include <framework/text.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <string>

namespace {

constexpr int kSelectAll = 1100, kViewTop = 1211;  // menu commands
constexpr ULONGLONG kPatience = 30000;

bool eventually(const std::function<bool()>& holds) {
    for (const ULONGLONG start = ::GetTickCount64(); ::GetTickCount64() - start < kPatience;) {
        if (holds()) return true;
        ::Sleep(50);
    }
    return false;
}

std::string textOf(HWND window) {
    std::wstring text(static_cast<std::size_t>(::SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)) + 1,
                      L'\0');
    text.resize(static_cast<std::size_t>(
        ::SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return toUtf8(text);
}

class WorkbenchTest : public testing::Test {
protected:
    void SetUp() override {
        folder_ = std::filesystem::temp_directory_path() / "workbench_window_test";
        std::filesystem::remove_all(folder_);
        std::filesystem::create_directories(folder_ / "plugins");
        scene_ = (folder_ / L"场景.kiln").wstring();
        makeScene(toUtf8(scene_));
        start();
    }

    void TearDown() override {
        if (process_.hProcess) {
            ::TerminateProcess(process_.hProcess, 1);
            ::CloseHandle(process_.hProcess);
            ::CloseHandle(process_.hThread);
        }
        std::filesystem::remove_all(folder_);
    }

    // One box around the middle of the scene, so that the middle of the viewport shows it.
    static void makeScene(const std::string& path) {
        Interface& host = kiln::Core::create().hostInterface();
        host.CreateObjectNode(new BoxObject(20, 20, 20), "塔楼");
        ASSERT_TRUE(kiln::Core::get()->saveScene(path).ok());
        kiln::Core::destroy();
    }

    void start() {
        std::wstring line = toWide(WORKBENCH_PROGRAM) + L" \"" + scene_ + L"\" --plugins \"" +
                            (folder_ / "plugins").wstring() + L"\"";
        STARTUPINFOW info{};
        info.cb = sizeof info;
        ASSERT_TRUE(::CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                     nullptr, &info, &process_));
        ASSERT_TRUE(eventually([this] {
            window_ = ::FindWindowW(L"WorkbenchMain", nullptr);
            return window_ && ::IsWindowVisible(window_);
        }));
        viewport_ = ::FindWindowExW(window_, nullptr, L"WorkbenchViewport", nullptr);
        const HWND script = ::FindWindowExW(window_, nullptr, L"WorkbenchScriptPane", nullptr);
        log_ = ::GetDlgItem(script, 1);
        line_ = ::GetDlgItem(script, 2);
        ASSERT_TRUE(viewport_ && log_ && line_);
    }

    // Types a line into the script field and gives what was added to the log.
    std::string script(const std::string& line) {
        const std::string before = textOf(log_);
        for (const wchar_t c : toWide(line)) ::SendMessageW(line_, WM_CHAR, c, 0);
        ::SendMessageW(line_, WM_CHAR, L'\r', 0);
        return textOf(log_).substr(before.size());
    }

    void click(int x, int y) const {
        const LPARAM at = MAKELPARAM(x, y);
        ::SendMessageW(viewport_, WM_LBUTTONDOWN, MK_LBUTTON, at);
        ::SendMessageW(viewport_, WM_LBUTTONUP, 0, at);
    }

    std::filesystem::path folder_;
    std::wstring scene_;
    PROCESS_INFORMATION process_{};
    HWND window_ = nullptr, viewport_ = nullptr, log_ = nullptr, line_ = nullptr;
};

TEST_F(WorkbenchTest, OpensASceneSelectsByClickAndCloses) {
    EXPECT_TRUE(eventually([this] { return textOf(window_) == "场景.kiln - Workbench"; }))
        << textOf(window_);
    const HMENU menu = ::GetMenu(window_);
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(::GetMenuItemCount(menu), 4);

    RECT area;
    ::GetClientRect(viewport_, &area);
    EXPECT_GT(area.right, 600);
    EXPECT_GT(area.bottom, 400);
    EXPECT_THAT(script("$"), testing::HasSubstr("no node is selected"));
    click(area.right / 2, area.bottom / 2);
    EXPECT_THAT(script("$"), testing::HasSubstr("\r\n$'塔楼'"));
    click(3, area.bottom / 3);
    EXPECT_THAT(script("$"), testing::HasSubstr("no node is selected"));

    ::SendMessageW(window_, WM_COMMAND, kViewTop, 0);
    ::SendMessageW(window_, WM_COMMAND, kSelectAll, 0);
    EXPECT_THAT(script("$"), testing::HasSubstr("塔楼"));
    EXPECT_THAT(script("Nobody.Home"), testing::HasSubstr("no interface is named \"Nobody\""));

    ::PostMessageW(window_, WM_CLOSE, 0, 0);
    ASSERT_EQ(::WaitForSingleObject(process_.hProcess, kPatience), WAIT_OBJECT_0)
        << "an unchanged scene is closed without a question";
    DWORD code = 1;
    ::GetExitCodeProcess(process_.hProcess, &code);
    EXPECT_EQ(code, 0u);
}

}  // namespace

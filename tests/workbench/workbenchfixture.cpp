#include "workbenchfixture.h"

#include "../tour/user.h"

#include <base/utf16.h>
#include <framework/gdi.h>
#include <kiln/host/host.h>
#include <resources/resource.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <utility>

using framework::MemoryDc, framework::WindowDc, framework::pixelFormat;

namespace {

constexpr ULONGLONG kPatience = 30000;

}  // namespace

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
    return base::toUtf8(text);
}

OutputFile::OutputFile(std::wstring path) : path_(std::move(path)) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    handle_ = ::CreateFileW(path_.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                            CREATE_ALWAYS, 0, nullptr);
}

OutputFile::~OutputFile() {
    ::CloseHandle(handle_);
}

std::string OutputFile::text() const {
    std::ifstream file(std::filesystem::path(path_), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WorkbenchTest::SetUp() {
    std::filesystem::create_directories(folder_ / "plugins");
    scene_ = (folder_ / L"场景.kiln").wstring();
    makeScene(base::toUtf8(scene_));
}

void WorkbenchTest::TearDown() {
    if (process_.hProcess) {
        ::TerminateProcess(process_.hProcess, 1);
        ::WaitForSingleObject(process_.hProcess, kPatience);
        ::CloseHandle(process_.hProcess);
        ::CloseHandle(process_.hThread);
    }
    output_.reset();
}

// The box is around the middle of the scene, so that the middle of the viewport shows it.
void WorkbenchTest::makeScene(const std::string& path) {
    Interface& host = kiln::Core::create().hostInterface();
    host.CreateObjectNode(new BoxObject(20, 20, 20), "塔楼");
    const kiln::ImportResult saved = kiln::Core::get()->saveScene(path);
    ASSERT_TRUE(saved.ok()) << saved.message;
    kiln::Core::destroy();
}

void WorkbenchTest::launch(const std::wstring& plugins, const std::wstring& more) {
    std::wstring line = L"\"" + base::toWide(WORKBENCH_PROGRAM) + L"\" \"" + scene_ +
                        L"\" --plugins \"" + plugins + L"\" " + more;
    output_ = std::make_unique<OutputFile>((folder_ / "output.txt").wstring());
    STARTUPINFOW info{};
    info.cb = sizeof info;
    info.dwFlags = STARTF_USESTDHANDLES;
    info.hStdOutput = info.hStdError = output_->handle();
    // Its list of recent files is the test's own.
    ::SetEnvironmentVariableW(L"APPDATA", folder_.c_str());
    ASSERT_TRUE(::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                 folder_.c_str(), &info, &process_));
}

void WorkbenchTest::start(const std::wstring& plugins, const std::wstring& more) {
    launch(plugins, more);
    ASSERT_TRUE(eventually([this] {
        window_ = ::FindWindowW(L"WorkbenchMain", nullptr);
        return window_ && ::IsWindowVisible(window_);
    }));
    viewport_ = ::FindWindowExW(window_, nullptr, L"WorkbenchViewport", nullptr);
    panel_ = ::FindWindowExW(window_, nullptr, L"WorkbenchCommandPanel", nullptr);
    const HWND pane = ::FindWindowExW(window_, nullptr, L"WorkbenchScriptPane", nullptr);
    log_ = ::GetDlgItem(pane, 1);
    line_ = ::GetDlgItem(pane, 2);
    ASSERT_TRUE(viewport_ && panel_ && log_ && line_);
    if (!more.empty()) return;
    ASSERT_TRUE(showsItsScene()) << textOf(window_);
}

bool WorkbenchTest::showsItsScene() const {
    return eventually([this] { return textOf(window_) == "场景.kiln - Workbench"; });
}

DWORD WorkbenchTest::exitCode() {
    EXPECT_EQ(::WaitForSingleObject(process_.hProcess, kPatience * 4), WAIT_OBJECT_0);
    DWORD code = STILL_ACTIVE;
    ::GetExitCodeProcess(process_.hProcess, &code);
    return code;
}

std::string WorkbenchTest::script(const std::string& line) {
    const std::string before = textOf(log_);
    for (const wchar_t c : base::toWide(line)) ::SendMessageW(line_, WM_CHAR, c, 0);
    ::SendMessageW(line_, WM_CHAR, L'\r', 0);
    return textOf(log_).substr(before.size());
}

std::string WorkbenchTest::scriptFile(const std::string& text) {
    const std::filesystem::path path = folder_ / L"脚本.ks";
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
    const std::u8string name = path.generic_u8string();
    return {name.begin(), name.end()};
}

std::string WorkbenchTest::answerMessage(int button) {
    constexpr int kMessageText = 0xFFFF;
    HWND box = nullptr;
    const bool shown = eventually([&] {
        box = ::FindWindowW(L"#32770", L"Workbench");
        return box && ::IsWindowVisible(box) && ::GetDlgItem(box, kMessageText);
    });
    if (!shown) return "no message";
    const std::string said = textOf(::GetDlgItem(box, kMessageText));
    ::PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
    eventually([&] { return !::IsWindow(box); });
    return said;
}

std::string WorkbenchTest::sampleFile(const char* name, const char* text) const {
    const std::filesystem::path path = folder_ / base::toWide(name);
    std::ofstream(path) << text;
    return base::toUtf8(path.wstring());
}

bool WorkbenchTest::logSays(const std::string& text) const {
    return textOf(log_).find(text) != std::string::npos;
}

bool WorkbenchTest::answerFileDialog(const wchar_t* title, const std::string& path) {
    constexpr int kFileNameField = 0x47C;  // of the system's file dialog
    HWND dialog = nullptr;
    const bool open = eventually([&] {
        dialog = ::FindWindowW(L"#32770", title);
        return dialog && ::IsWindowVisible(dialog) && ::GetDlgItem(dialog, kFileNameField);
    });
    if (!open) return false;
    std::wstring typed = base::toWide(path);
    std::replace(typed.begin(), typed.end(), L'/', L'\\');
    ::SendDlgItemMessageW(dialog, kFileNameField, WM_SETTEXT, 0,
                          reinterpret_cast<LPARAM>(typed.c_str()));
    ::PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    return eventually([&] {
        // It asks before a file is replaced.
        const HWND question = ::GetLastActivePopup(dialog);
        if (question && question != dialog && ::IsWindowVisible(question))
            ::PostMessageW(question, WM_COMMAND, IDYES, 0);
        return !::IsWindow(dialog);
    });
}

void WorkbenchTest::click(int x, int y) const {
    const LPARAM at = MAKELPARAM(x, y);
    ::SendMessageW(viewport_, WM_LBUTTONDOWN, MK_LBUTTON, at);
    ::SendMessageW(viewport_, WM_LBUTTONUP, 0, at);
}

std::vector<DWORD> WorkbenchTest::middleOfViewport() const {
    constexpr int kEdge = 60;
    RECT area;
    ::GetWindowRect(viewport_, &area);
    const int x = (area.left + area.right - kEdge) / 2, y = (area.top + area.bottom - kEdge) / 2;
    const WindowDc screen(nullptr);
    const MemoryDc memory(screen.get(), kEdge, kEdge);
    ::BitBlt(memory.get(), 0, 0, kEdge, kEdge, screen.get(), x, y, SRCCOPY);
    BITMAPINFO info = pixelFormat(kEdge, kEdge);
    std::vector<DWORD> pixels(std::size_t{kEdge} * kEdge);
    ::GetDIBits(screen.get(), memory.bitmap(), 0, kEdge, pixels.data(), &info, DIB_RGB_COLORS);
    return pixels;
}

std::vector<DWORD> WorkbenchTest::middleAtRest() const {
    const auto isBoxShown = [this] {
        RECT area;
        ::GetWindowRect(viewport_, &area);
        const WindowDc screen(nullptr);
        const int y = (area.top + area.bottom) / 2;
        return ::GetPixel(screen.get(), (area.left + area.right) / 2, y) !=
               ::GetPixel(screen.get(), area.left + 4, y);
    };
    std::vector<DWORD> last;
    EXPECT_TRUE(eventually([&] {
        std::vector<DWORD> next = middleOfViewport();
        ::Sleep(250);
        return std::exchange(last, std::move(next)) == last && isBoxShown();
    }));
    return last;
}

HWND WorkbenchTest::page() const {
    const HWND rollup = ::FindWindowExW(panel_, nullptr, L"WorkbenchRollup", nullptr);
    return rollup ? ::FindWindowExW(rollup, nullptr, L"#32770", nullptr) : nullptr;
}

HWND WorkbenchTest::openBrowserForm() const {
    HWND form = nullptr;
    const HWND utility = ::FindWindowExW(panel_, nullptr, L"Button", L"Aviary (C)");
    if (!utility || !user::click(utility) ||
        !eventually([this] { return page() && ::IsWindowVisible(page()); }) ||
        !user::click(::GetDlgItem(page(), IDC_BROWSER)))
        return nullptr;
    eventually(
        [&] { return (form = user::windowWith(process_.dwProcessId, IDC_TREE)) != nullptr; });
    return form;
}

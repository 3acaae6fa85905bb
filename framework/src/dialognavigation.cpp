#include "dialognavigation.h"

#include "module_internal.h"

#include <framework/controls.h>
#include <framework/module.h>

#include <algorithm>
#include <string_view>
#include <vector>

namespace framework {

namespace {

HHOOK g_hook = nullptr;

// Never destroyed: a dialog may be a static object that is destroyed later.
std::vector<CDialog*>& dialogs() {
    static auto* const list = new std::vector<CDialog*>;
    return *list;
}

// Arrow keys in an open menu, or while a window is moved by keyboard, are not for the dialog.
bool inMenuOrMove() noexcept {
    GUITHREADINFO info{};
    info.cbSize = sizeof info;
    constexpr DWORD kModes =
        GUI_INMENUMODE | GUI_INMOVESIZE | GUI_POPUPMENUMODE | GUI_SYSTEMMENUMODE;
    return ::GetGUIThreadInfo(::GetCurrentThreadId(), &info) && (info.flags & kModes);
}

// Where text is edited: copying and pasting, undoing, and what is typed as Ctrl with a letter
// (back, tab and line ends).
bool meansTextIn(const MSG& message) noexcept {
    constexpr std::string_view kOfText = "ACHIJMVXYZ";
    return kOfText.find(static_cast<char>(message.wParam)) != kOfText.npos &&
           isTextField(message.hwnd);
}

// Ctrl with a letter, or a function key, means nothing to the navigation; it may be a command of
// the application's. F10 opens the menu.
bool isCommand(const MSG& message) noexcept {
    const WPARAM key = message.wParam;
    if (message.message != WM_KEYDOWN || ::GetKeyState(VK_MENU) < 0) return false;
    if (key >= VK_F1 && key <= VK_F24) return key != VK_F10;
    return key >= 'A' && key <= 'Z' && ::GetKeyState(VK_CONTROL) < 0 && !meansTextIn(message);
}

}  // namespace

void DialogNavigation::add(CDialog& dialog) {
    dialogs().push_back(&dialog);
    if (!g_hook)
        g_hook = ::SetWindowsHookExW(WH_GETMESSAGE, messageHook, nullptr, ::GetCurrentThreadId());
}

void DialogNavigation::remove(const CDialog& dialog) noexcept {
    std::erase(dialogs(), &dialog);
    if (dialogs().empty() && g_hook) ::UnhookWindowsHookEx(std::exchange(g_hook, nullptr));
}

LRESULT CALLBACK DialogNavigation::messageHook(int code, WPARAM wParam, LPARAM lParam) {
    if (code == HC_ACTION && wParam == PM_REMOVE) {
        MSG& message = *reinterpret_cast<MSG*>(lParam);
        if (message.message >= WM_MOUSEFIRST && message.message <= WM_MOUSELAST) {
            if (CDialog* const dialog = dialogOf(message.hwnd)) dialog->TellToolTips(message);
        } else if (translate(message)) {
            message.message = WM_NULL;
            message.wParam = 0;
            message.lParam = 0;
        }
    }
    return ::CallNextHookEx(nullptr, code, wParam, lParam);
}

bool DialogNavigation::translate(MSG& message) noexcept {
    if (message.message < WM_KEYFIRST || message.message > WM_KEYLAST) return false;
    CDialog* const dialog = dialogOf(message.hwnd);
    if (!dialog || inMenuOrMove()) return false;
    const ModuleScope module;
    const HWND window = dialog->Handle();
    try {
        if (dialog->PreTranslateMessage(message)) return true;
    } catch (...) {
        reportCurrentException();
        return true;
    }
    return !isCommand(message) && CDialog::Navigate(window, message);
}

CDialog* DialogNavigation::dialogOf(HWND window) noexcept {
    for (; window; window = ::GetAncestor(window, GA_PARENT)) {
        const auto found = std::ranges::find(dialogs(), window, &CDialog::Handle);
        if (found != dialogs().end()) return *found;
        // An owned window is no part of its owner's dialog.
        if (!(::GetWindowLongW(window, GWL_STYLE) & WS_CHILD)) return nullptr;
    }
    return nullptr;
}

}  // namespace framework

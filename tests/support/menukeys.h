// Working a menu by keyboard while the platform's own loop runs it.
#pragma once

#include <framework/win32.h>

#include <string>
#include <utility>
#include <vector>

/// Presses keys, one after the other, once a menu is open. Make one, then open the menu; it is over
/// when the menu is, which Escape sees to where the keys leave it open.
class MenuKeys {
public:
    explicit MenuKeys(std::vector<WORD> keys) {
        waiting_ = std::move(keys);
        patience_ = kPatience;
        opened_ = false;
        ::SetTimer(nullptr, 0, kInterval, &MenuKeys::press);
    }
    MenuKeys(const MenuKeys&) = delete;
    MenuKeys& operator=(const MenuKeys&) = delete;

    /// Whether there was a menu.
    static bool opened() { return opened_; }
    /// The texts of the menu that opened, as they were then; grayed ones in parentheses.
    static const std::vector<std::wstring>& texts() { return texts_; }

private:
    static constexpr UINT kInterval = 30;  // milliseconds
    static constexpr int kPatience = 100;  // of these

    static void send(WORD key) {
        INPUT input{};
        input.type = INPUT_KEYBOARD;
        input.ki.wVk = key;
        ::SendInput(1, &input, sizeof input);
        input.ki.dwFlags = KEYEVENTF_KEYUP;
        ::SendInput(1, &input, sizeof input);
    }

    static void noteTexts() {
        texts_.clear();
        const HWND window = ::FindWindowW(L"#32768", nullptr);
        const auto menu = reinterpret_cast<HMENU>(::SendMessageW(window, MN_GETHMENU, 0, 0));
        for (int i = 0; i < ::GetMenuItemCount(menu); ++i) {
            wchar_t text[100] = L"";
            ::GetMenuStringW(menu, static_cast<UINT>(i), text, 100, MF_BYPOSITION);
            const UINT state = ::GetMenuState(menu, static_cast<UINT>(i), MF_BYPOSITION);
            const bool gray = (state & MF_GRAYED) != 0;
            if (*text) texts_.push_back(gray ? L"(" + std::wstring(text) + L")" : text);
        }
    }

    static void CALLBACK press(HWND, UINT, UINT_PTR timer, DWORD) {
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        ::GetGUIThreadInfo(::GetCurrentThreadId(), &info);
        const bool open = (info.flags & GUI_INMENUMODE) != 0;
        if (open && !opened_) noteTexts();
        opened_ = opened_ || open;
        if (--patience_ == 0 || (opened_ && !open)) {
            ::KillTimer(nullptr, timer);
        } else if (open) {
            send(waiting_.empty() ? WORD{VK_ESCAPE} : waiting_.front());
            if (!waiting_.empty()) waiting_.erase(waiting_.begin());
        }
    }

    static inline std::vector<WORD> waiting_;
    static inline std::vector<std::wstring> texts_;
    static inline int patience_ = 0;
    static inline bool opened_ = false;
};

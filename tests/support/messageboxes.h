#pragma once

#include <windows.h>

#include <string>
#include <utility>
#include <vector>

/// Answers every message box of the thread with OK and keeps its text. One at a time.
class MessageBoxes {
public:
    MessageBoxes() : hook_(SetWindowsHookExW(WH_CBT, hook, nullptr, GetCurrentThreadId())) {
        current_ = this;
    }
    ~MessageBoxes() {
        UnhookWindowsHookEx(hook_);
        current_ = nullptr;
    }
    MessageBoxes(const MessageBoxes&) = delete;
    MessageBoxes& operator=(const MessageBoxes&) = delete;

    /// The texts since the last call.
    std::vector<std::wstring> take() { return std::exchange(texts_, {}); }

private:
    static LRESULT CALLBACK hook(int code, WPARAM wParam, LPARAM lParam) {
        constexpr int kMessageText = 0xFFFF;
        const auto window = reinterpret_cast<HWND>(wParam);
        wchar_t text[256] = L"";
        // A box has its text in a control of this number, and an OK button.
        if (code == HCBT_ACTIVATE && GetDlgItem(window, IDOK) &&
            GetDlgItemTextW(window, kMessageText, text, 256)) {
            current_->texts_.emplace_back(text);
            PostMessageW(window, WM_COMMAND, IDOK, 0);
        }
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    static inline MessageBoxes* current_ = nullptr;
    HHOOK hook_;
    std::vector<std::wstring> texts_;
};

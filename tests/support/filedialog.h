// The platform's dialog for a file, answered as a user would.
#pragma once

#include <input.h>

#include <string>
#include <utility>

/// Answers the next dialog for a file of the thread: with that path.
class FileDialog {
public:
    explicit FileDialog(std::wstring path) : path_(std::move(path)) {
        current_ = this;
        timer_ = SetTimer(nullptr, 0, 50, look);
    }
    ~FileDialog() {
        KillTimer(nullptr, timer_);
        current_ = nullptr;
    }
    FileDialog(const FileDialog&) = delete;
    FileDialog& operator=(const FileDialog&) = delete;

    bool wasShown() const { return wasShown_; }

private:
    static constexpr int kName = 0x47C;  // the platform's own number

    static BOOL CALLBACK examine(HWND window, LPARAM found) {
        if (!IsWindowVisible(window) || !GetDlgItem(window, kName)) return TRUE;
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }

    static void CALLBACK look(HWND, UINT, UINT_PTR, DWORD) {
        HWND dialog = nullptr;
        EnumThreadWindows(GetCurrentThreadId(), examine, reinterpret_cast<LPARAM>(&dialog));
        if (!dialog || GetForegroundWindow() != dialog) return;
        KillTimer(nullptr, current_->timer_);
        current_->wasShown_ = true;
        SendDlgItemMessageW(dialog, kName, WM_SETTEXT, 0,
                            reinterpret_cast<LPARAM>(current_->path_.c_str()));
        testinput::click(GetDlgItem(dialog, IDOK), {10, 5});
    }

    static inline FileDialog* current_ = nullptr;
    std::wstring path_;
    bool wasShown_ = false;
    UINT_PTR timer_ = 0;
};

// A modal dialog that is answered while it runs.
#pragma once

#include <windows.h>

/// Waits for a visible window of the thread that has the control `id`, and answers it once.
class ModalDialog {
public:
    ModalDialog(const ModalDialog&) = delete;
    ModalDialog& operator=(const ModalDialog&) = delete;

    bool wasShown() const { return wasShown_; }

protected:
    explicit ModalDialog(int id) : id_(id), timer_(SetTimer(nullptr, 0, 20, look)) {
        current_ = this;
    }
    ~ModalDialog() {
        KillTimer(nullptr, timer_);
        current_ = nullptr;
    }

    virtual void answer(HWND dialog) = 0;

private:
    static BOOL CALLBACK examine(HWND window, LPARAM found) {
        if (!IsWindowVisible(window) || !GetDlgItem(window, current_->id_)) return TRUE;
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }

    // Keys and clicks reach it once it is in front.
    static void CALLBACK look(HWND, UINT, UINT_PTR, DWORD) {
        HWND dialog = nullptr;
        EnumThreadWindows(GetCurrentThreadId(), examine, reinterpret_cast<LPARAM>(&dialog));
        if (!dialog || GetForegroundWindow() != dialog) return;
        KillTimer(nullptr, current_->timer_);
        current_->wasShown_ = true;
        current_->answer(dialog);
    }

    static inline ModalDialog* current_ = nullptr;
    const int id_;
    const UINT_PTR timer_;
    bool wasShown_ = false;
};

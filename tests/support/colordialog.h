// The platform's dialog of colors, answered as a user would.
#pragma once

#include <input.h>

#include <commdlg.h>

#include <optional>
#include <string>

/// Answers the next color dialog of the thread: with these numbers and OK, or by Cancel.
class ColorDialog {
public:
    struct Color {
        int red, green, blue;
    };

    explicit ColorDialog(std::optional<Color> answer) : answer_(answer) {
        current_ = this;
        timer_ = SetTimer(nullptr, 0, 50, look);
    }
    ~ColorDialog() {
        KillTimer(nullptr, timer_);
        current_ = nullptr;
    }
    ColorDialog(const ColorDialog&) = delete;
    ColorDialog& operator=(const ColorDialog&) = delete;

    /// The color that the dialog began with; none while there was no dialog.
    const std::optional<Color>& offered() const { return offered_; }

private:
    static constexpr int kRed = 706, kGreen = 707, kBlue = 708;  // the platform's own numbers

    static BOOL CALLBACK examine(HWND window, LPARAM found) {
        if (!IsWindowVisible(window) || !GetDlgItem(window, kBlue)) return TRUE;
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }

    static int numberIn(HWND dialog, int field) {
        return static_cast<int>(GetDlgItemInt(dialog, field, nullptr, FALSE));
    }

    static void fill(HWND dialog, int field, int value) {
        const HWND edit = GetDlgItem(dialog, field);
        SetFocus(edit);
        SendMessageW(edit, EM_SETSEL, 0, -1);
        testinput::type(std::to_wstring(value));
    }

    static void CALLBACK look(HWND, UINT, UINT_PTR, DWORD) {
        HWND dialog = nullptr;
        EnumThreadWindows(GetCurrentThreadId(), examine, reinterpret_cast<LPARAM>(&dialog));
        if (!dialog || GetForegroundWindow() != dialog) return;
        KillTimer(nullptr, current_->timer_);
        current_->offered_ = {numberIn(dialog, kRed), numberIn(dialog, kGreen),
                              numberIn(dialog, kBlue)};
        if (const auto answer = current_->answer_) {
            fill(dialog, kRed, answer->red);
            fill(dialog, kGreen, answer->green);
            fill(dialog, kBlue, answer->blue);
        }
        const HWND button = GetDlgItem(dialog, current_->answer_ ? IDOK : IDCANCEL);
        testinput::click(button, {10, 5});
    }

    static inline ColorDialog* current_ = nullptr;
    std::optional<Color> answer_, offered_;
    UINT_PTR timer_ = 0;
};

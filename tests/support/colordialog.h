// The platform's dialog of colors, answered as a user would.
#pragma once

#include "modaldialog.h"

#include <input.h>

#include <commdlg.h>

#include <optional>
#include <string>

/// Answers the next color dialog of the thread: with these numbers and OK, or by Cancel.
class ColorDialog final : public ModalDialog {
public:
    struct Color {
        int red, green, blue;
    };

    explicit ColorDialog(std::optional<Color> answer) : ModalDialog(kBlue), answer_(answer) {}

    /// The color that the dialog began with; none while there was no dialog.
    const std::optional<Color>& offered() const { return offered_; }

private:
    static constexpr int kRed = 706, kGreen = 707, kBlue = 708;  // the platform's own numbers

    static int numberIn(HWND dialog, int field) {
        return static_cast<int>(GetDlgItemInt(dialog, field, nullptr, FALSE));
    }

    static void fill(HWND dialog, int field, int value) {
        const HWND edit = GetDlgItem(dialog, field);
        SetFocus(edit);
        SendMessageW(edit, EM_SETSEL, 0, -1);
        testinput::type(std::to_wstring(value));
    }

    void answer(HWND dialog) override {
        offered_ = {numberIn(dialog, kRed), numberIn(dialog, kGreen), numberIn(dialog, kBlue)};
        if (answer_) {
            fill(dialog, kRed, answer_->red);
            fill(dialog, kGreen, answer_->green);
            fill(dialog, kBlue, answer_->blue);
        }
        testinput::click(GetDlgItem(dialog, answer_ ? IDOK : IDCANCEL), {10, 5});
    }

    std::optional<Color> answer_, offered_;
};

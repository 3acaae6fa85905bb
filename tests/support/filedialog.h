// The platform's dialog for a file, answered as a user would.
#pragma once

#include "modaldialog.h"

#include <input.h>

#include <string>
#include <utility>

/// Answers the next dialog for a file of the thread: with that path.
class FileDialog final : public ModalDialog {
public:
    explicit FileDialog(std::wstring path) : ModalDialog(kName), path_(std::move(path)) {}

private:
    static constexpr int kName = 0x47C;  // the platform's own number

    void answer(HWND dialog) override {
        SendDlgItemMessageW(dialog, kName, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path_.c_str()));
        testinput::click(GetDlgItem(dialog, IDOK), {10, 5});
    }

    std::wstring path_;
};

// Shows how far long work is, and lets the user cancel it.
#pragma once

#include <framework/cdialog.h>

#include <string>
#include <vector>

namespace workbench {

/// While one exists the program's other windows take no input, but paint. It shows itself only when
/// the work lasts, so that small files do not make it flash.
class ProgressDialog : public framework::CDialog {
public:
    ProgressDialog(HWND owner, const std::string& title);
    ~ProgressDialog() override;

    /// How far the work is, 0 to 1. Handles messages now and then; cheap enough for
    /// being called ten thousand times a second. False once the user has cancelled.
    bool step(double fraction);
    /// Shows the dialog at once.
    void reveal();

protected:
    bool OnInitDialog() override;
    void OnOK() override {}  // Enter
    void OnCancel() override;

private:
    static BOOL CALLBACK disable(HWND window, LPARAM self);
    void show(double fraction);
    void handleMessages();

    std::string title_;
    HWND focus_ = nullptr, active_ = nullptr;  // that had the keyboard, and were in front, before
    std::vector<HWND> disabled_;
    HWND owner_;
    ULONGLONG start_, lastStep_ = 0;
    int percent_ = -1;
    bool revealed_ = false, cancelled_ = false;
};

}  // namespace workbench

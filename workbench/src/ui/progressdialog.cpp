#include "progressdialog.h"

#include "../app/commands.h"

#include <workbench/texts.h>

#include <commctrl.h>

namespace workbench {
namespace {

constexpr ULONGLONG kPatience = 350;  // milliseconds before the dialog shows
constexpr ULONGLONG kStepEvery = 30;  // milliseconds between looks at the message queue
constexpr int kRange = 1000;

}  // namespace

ProgressDialog::ProgressDialog(HWND owner, const std::string& title)
    : title_(title), owner_(owner), start_(::GetTickCount64()) {
    focus_ = ::GetFocus();
    active_ = ::GetActiveWindow();
    Create(IDD_PROGRESS, owner);
    ::EnumThreadWindows(::GetCurrentThreadId(), disable, reinterpret_cast<LPARAM>(this));
}

// The others are enabled first: otherwise the platform would look for a window of another program
// to put in front.
ProgressDialog::~ProgressDialog() {
    for (const HWND window : disabled_) ::EnableWindow(window, TRUE);
    const bool wasInFront = revealed_ && ::GetForegroundWindow() == Handle();
    DestroyWindow();
    if (wasInFront) ::SetActiveWindow(owner_);
    // The platform takes the keyboard away from a window that is disabled.
    if (!::GetActiveWindow()) return;
    if (::IsWindow(active_)) ::SetActiveWindow(active_);
    if (::IsWindow(focus_)) ::SetFocus(focus_);
}

BOOL CALLBACK ProgressDialog::disable(HWND window, LPARAM self) {
    auto& dialog = *reinterpret_cast<ProgressDialog*>(self);
    if (window == dialog.Handle() || !::IsWindowVisible(window) || !::IsWindowEnabled(window))
        return TRUE;
    ::EnableWindow(window, FALSE);
    dialog.disabled_.push_back(window);
    return TRUE;
}

bool ProgressDialog::OnInitDialog() {
    SetText(title_);
    ::SendDlgItemMessageW(Handle(), IDC_PROGRESS_BAR, PBM_SETRANGE32, 0, kRange);
    return true;
}

void ProgressDialog::OnCancel() {
    cancelled_ = true;
    SetItemText(IDC_PROGRESS_TEXT, textOf(TextId::kCancelling));
    ::EnableWindow(::GetDlgItem(Handle(), IDCANCEL), FALSE);
}

void ProgressDialog::reveal() {
    if (revealed_ || !HasWindow()) return;
    revealed_ = true;
    Show(SW_SHOW);
    Update();
}

bool ProgressDialog::step(double fraction) {
    const ULONGLONG now = ::GetTickCount64();
    if (cancelled_ || now - lastStep_ < kStepEvery) return !cancelled_;
    lastStep_ = now;
    if (now - start_ >= kPatience) reveal();
    show(fraction);
    handleMessages();
    return !cancelled_;
}

void ProgressDialog::show(double fraction) {
    const int percent = static_cast<int>(fraction * 100);
    ::SendDlgItemMessageW(Handle(), IDC_PROGRESS_BAR, PBM_SETPOS,
                          static_cast<WPARAM>(fraction * kRange), 0);
    if (percent == percent_) return;
    percent_ = percent;
    SetItemText(IDC_PROGRESS_TEXT, textOf(TextId::kPercentDone, {std::to_string(percent)}));
}

void ProgressDialog::handleMessages() {
    MSG message;
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT) {
            cancelled_ = true;
            return ::PostQuitMessage(static_cast<int>(message.wParam));
        }
        if (HasWindow() && ::IsDialogMessageW(Handle(), &message)) continue;
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
}

}  // namespace workbench

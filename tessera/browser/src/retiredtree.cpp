#include "retiredtree.h"

#include <utility>

namespace tessera {
namespace {

constexpr UINT_PTR kTimer = 1;
constexpr UINT kPause = 30;  // milliseconds, as the following one
constexpr ULONGLONG kAtATime = 8;

ULONGLONG milliseconds() {
    LARGE_INTEGER now{}, second{};
    ::QueryPerformanceCounter(&now);
    ::QueryPerformanceFrequency(&second);
    return static_cast<ULONGLONG>(now.QuadPart * 1000 / second.QuadPart);
}

}  // namespace

void RetiredTree::Retire(HWND tree, std::vector<HTREEITEM> items) {
    items_ = std::move(items);
    ::ShowWindow(tree, SW_HIDE);
    ::SendMessageW(tree, WM_SETREDRAW, FALSE, 0);
    SubclassWindow(tree);
}

void RetiredTree::BeginDeleting() {
    ::SetTimer(Handle(), kTimer, kPause, nullptr);
}

LRESULT RetiredTree::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    // The control would delete all that is left.
    if (message == WM_DESTROY && deleted_ < items_.size()) return 0;
    return CWnd::WindowProc(message, wParam, lParam);
}

void RetiredTree::OnTimer(UINT_PTR id) {
    if (id != kTimer) {
        Default();
        return;
    }
    ::KillTimer(Handle(), kTimer);  // so that there is a pause however long the items take
    const ULONGLONG start = milliseconds();
    while (deleted_ < items_.size() && milliseconds() - start < kAtATime)
        Default(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(items_[deleted_++]));
    if (deleted_ < items_.size()) return BeginDeleting();
    ::DestroyWindow(Handle());
    if (onGone) onGone();
}

}  // namespace tessera

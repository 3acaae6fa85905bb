// A tree control whose place another one has taken.
#pragma once

#include <framework/cwnd.h>
#include <framework/win32.h>

#include <functional>
#include <vector>

namespace tessera {

/// Hides a tree control, and once told to deletes its items, a few at a time while its thread has
/// nothing else to do, and then itself. If its parent is destroyed before, the items are left to
/// the process.
class RetiredTree : public framework::CWnd {
public:
    /// Takes a control that no object is connected to, and all its items, children before their
    /// parents.
    void Retire(HWND tree, std::vector<HTREEITEM> items);
    void BeginDeleting();
    /// Called when it has gone by itself.
    std::function<void()> onGone;

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnTimer(UINT_PTR id) override;

private:
    std::vector<HTREEITEM> items_;
    std::size_t deleted_ = 0;  ///< how many of them
};

}  // namespace tessera

// The utility: its page in the host's panel.
#pragma once

#include "checkwindow.h"

#include <kiln/kiln.h>

namespace checks {

/// One static object. The window that its button opens stays when the page goes.
class CheckPanel final : public UtilityObj {
public:
    static CheckPanel& instance();

    void BeginEditParams(Interface* host, IUtil* utility) override;
    void EndEditParams(Interface* host, IUtil* utility) override;
    void DeleteThis() override {}

    CheckWindow& window() noexcept { return window_; }

private:
    static INT_PTR CALLBACK handleMessage(HWND page, UINT message, WPARAM wParam, LPARAM lParam);
    void showCounts() const;

    Interface* host_ = nullptr;
    IUtil* utility_ = nullptr;
    HWND page_ = nullptr;
    CheckWindow window_;
};

}  // namespace checks

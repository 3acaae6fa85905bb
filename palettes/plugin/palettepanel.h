// The utility: its page in the host's panel.
#pragma once

#include "palettewindow.h"

#include <kiln/kiln.h>

namespace palettes {

/// One static object. The window that its button opens stays when the page goes.
class PalettePanel final : public UtilityObj {
public:
    static PalettePanel& instance();

    void BeginEditParams(Interface* host, IUtil* utility) override;
    void EndEditParams(Interface* host, IUtil* utility) override;
    void DeleteThis() override {}

    PaletteWindow& window() noexcept { return window_; }

private:
    static INT_PTR CALLBACK handleMessage(HWND page, UINT message, WPARAM wParam, LPARAM lParam);

    Interface* host_ = nullptr;
    IUtil* utility_ = nullptr;
    HWND page_ = nullptr;
    PaletteWindow window_;
};

}  // namespace palettes

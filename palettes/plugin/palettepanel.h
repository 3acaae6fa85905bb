// The utility: its page in the host's panel.
#pragma once

#include "palettewindow.h"

#include <plugin/utilitypage.h>

namespace palettes {

/// The window that its button opens stays when the page goes.
class PalettePanel final : public plugin::UtilityPage {
public:
    static PalettePanel& instance();

    PaletteWindow& window() noexcept { return window_; }

private:
    PalettePanel();

    std::string title() const override;
    void onCommand(int id, UINT code) override;

    PaletteWindow window_;
};

}  // namespace palettes

// The utility: its page in the host's panel.
#pragma once

#include "lookwindow.h"
#include "palettewindow.h"

#include <plugin/utilitypage.h>

namespace palettes {

/// The windows that its buttons open stay when the page goes.
class PalettePanel final : public plugin::UtilityPage {
public:
    static PalettePanel& instance();

    void followLanguage();
    void destroyWindows();

private:
    PalettePanel();

    std::string title() const override;
    void onCommand(int id, UINT code) override;

    PaletteWindow palettes_;
    LookWindow look_;
};

}  // namespace palettes

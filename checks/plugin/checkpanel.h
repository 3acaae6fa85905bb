// The utility: its page in the host's panel.
#pragma once

#include "checkwindow.h"

#include <plugin/utilitypage.h>

namespace checks {

/// The window that its button opens stays when the page goes.
class CheckPanel final : public plugin::UtilityPage {
public:
    static CheckPanel& instance();

    CheckWindow& window() noexcept { return window_; }

private:
    CheckPanel();

    std::string title() const override;
    void onShown() override;
    void onCommand(int id, UINT code) override;

    CheckWindow window_;
};

}  // namespace checks

// The utility for geometry: its page in the host's panel.
#pragma once

#include "texts.h"

#include <checks/geometry.h>
#include <plugin/utilitypage.h>

#include <string>

namespace checks {

/// Its buttons act on the selected nodes and all nodes below them.
class GeometryPanel final : public plugin::UtilityPage {
public:
    static GeometryPanel& instance();

private:
    GeometryPanel();

    std::string title() const override;
    void onShown() override;
    void onCommand(int id, UINT code) override;
    void carryOut(GeometryAction action, double value = 0);
    /// Says why nothing was done; the field (0 for none) that is to be changed gets the keyboard.
    void refuse(TextId why, int field = 0) const;
    void weld();
    void computeNormals();
    void changeUnits();
    void say(const std::string& text) const;
    void say(const GeometryOutcome& outcome) const;
    std::string textOfItem(int id) const;
};

}  // namespace checks

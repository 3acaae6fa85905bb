// The utility for geometry: its page in the host's panel.
#pragma once

#include "texts.h"

#include <checks/geometry.h>
#include <framework/win32.h>
#include <kiln/kiln.h>

#include <string>

namespace checks {

/// One static object. Its buttons act on the selected nodes and all nodes below them.
class GeometryPanel final : public UtilityObj {
public:
    static GeometryPanel& instance();

    void BeginEditParams(Interface* host, IUtil* utility) override;
    void EndEditParams(Interface* host, IUtil* utility) override;
    void DeleteThis() override {}

private:
    static INT_PTR CALLBACK handleMessage(HWND page, UINT message, WPARAM wParam, LPARAM lParam);
    void fill(HWND page) const;
    void carryOut(GeometryAction action, double value = 0);
    /// Says why nothing was done; the field (0 for none) that is to be changed gets the keyboard.
    void refuse(TextId why, int field = 0) const;
    void weld();
    void computeNormals();
    void changeUnits();
    void say(const std::string& text) const;
    void say(const GeometryOutcome& outcome) const;
    std::string textOfItem(int id) const;

    Interface* host_ = nullptr;
    HWND page_ = nullptr;
};

}  // namespace checks

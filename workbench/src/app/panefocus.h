// The keyboard's way between the panes of the main window and the windows that belong to it.
#pragma once

#include <framework/cwnd.h>

#include <vector>

namespace workbench {

class Panes;

/// F6 goes on from the viewport to the command panel, the script line, and each open window of the
/// program and of plug-ins; Shift+F6 goes back. Where the keyboard was in the panel it comes back
/// to.
class PaneFocus {
public:
    /// Both outlive this.
    PaneFocus(framework::CWnd& main, Panes& panes) noexcept : main_(main), panes_(panes) {}

    /// To the next stop, or for -1 to the one before.
    void step(int direction);
    /// To the button of the first utility.
    void goToUtilities();
    void goToScriptLine();

private:
    std::vector<HWND> stops() const;
    void enterPanel();
    void enter(HWND control);

    framework::CWnd& main_;
    Panes& panes_;
    HWND lastInPanel_ = nullptr;
};

}  // namespace workbench

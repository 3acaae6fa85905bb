// The windows within the main window.
#pragma once

#include "../ui/commandpanel.h"
#include "../ui/scriptpane.h"
#include "../ui/statusbar.h"
#include "../ui/viewport.h"

namespace workbench {

/// Viewport, script log, command panel and status bar: where they stand, and the splitter between
/// viewport and log.
class Panes {
public:
    /// The windows are children of `parent`, which outlives this.
    Panes(framework::CWnd& parent, ViewportClient& client) : parent_(parent), viewport_(client) {}

    bool create();
    /// Positions everything in the parent's client area.
    void layout();

    /// Texts and names follow the present language.
    void showLanguage();

    bool isOverSplitter(POINT at) const;
    /// To be told of the mouse over the parent itself.
    void beginDrag(POINT at);
    void drag(POINT at);
    void endDrag();

    Viewport& viewport() { return viewport_; }
    CommandPanel& panel() { return panel_; }
    ScriptPane& script() { return script_; }
    StatusBar& status() { return status_; }

private:
    framework::CWnd& parent_;
    Viewport viewport_;
    CommandPanel panel_;
    ScriptPane script_;
    StatusBar status_;
    int scriptHeight_ = 0;
    bool dragging_ = false;
};

}  // namespace workbench

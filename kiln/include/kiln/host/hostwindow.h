// What the application supplies to the core: its windows.
#pragma once

#include <kiln/platform.h>
#include <kiln/timevalue.h>

class Animatable;
class ClassDesc;
class INode;

namespace kiln {

/// The application's side of the host. Every function has a default that does nothing, so that an
/// application overrides what it has. None may throw.
class HostWindow {
public:
    virtual ~HostWindow() = default;

    virtual HWND mainWindow() { return nullptr; }
    /// See `Interface::AddRollupPage`.
    virtual HWND addRollupPage(HINSTANCE module, int dialogId, DLGPROC dialogProcedure,
                               const char* title, LPARAM param, DWORD flags, int category) {
        (void)module, (void)dialogId, (void)dialogProcedure, (void)title, (void)param, (void)flags;
        (void)category;
        return nullptr;
    }
    virtual void deleteRollupPage(HWND page) { (void)page; }
    virtual void rollupMouseMessage(HWND page, UINT message, WPARAM wParam, LPARAM lParam) {
        (void)page, (void)message, (void)wParam, (void)lParam;
    }
    /// The viewports are to be drawn anew.
    virtual void redrawViews(TimeValue t, DWORD flags, Animatable* changed) {
        (void)t, (void)flags, (void)changed;
    }
    /// The active viewport is to show what is selected.
    virtual void zoomToSelection() {}
    /// What `node` shows has changed; a redraw follows when the caller wants one.
    virtual void nodeInvalidated(INode* node) { (void)node; }
    virtual void acceleratorsChanged(bool enabled) { (void)enabled; }
    /// A line for the status bar; null clears it.
    virtual void pushPrompt(const char* text) { (void)text; }
    /// The open utility has changed; null when the panel is empty now.
    virtual void utilityChanged(ClassDesc* utility) { (void)utility; }
};

}  // namespace kiln

// The application's windows as the host's core and plug-ins use them.
#pragma once

#include <framework/cwnd.h>
#include <kiln/host/host.h>

namespace workbench {

class CommandPanel;
class StatusTexts;
class Utilities;
class Viewport;

/// Is the core's window side while it lives.
class HostSide : public kiln::HostWindow {
public:
    /// All of them outlive this.
    HostSide(kiln::Core& core, framework::CWnd& window, CommandPanel& panel, StatusTexts& status,
             Utilities& utilities, Viewport& viewport);
    ~HostSide() override;

    HWND mainWindow() override { return window_.Handle(); }
    HWND addRollupPage(HINSTANCE module, int dialogId, DLGPROC procedure, const char* title,
                       LPARAM param, DWORD flags, int category) override;
    void deleteRollupPage(HWND page) override;
    void rollupMouseMessage(HWND page, UINT message, WPARAM wParam, LPARAM lParam) override;
    void zoomToSelection() override;
    void pushPrompt(const char* text) override;
    void utilityChanged(ClassDesc* utility) override;

private:
    kiln::Core& core_;
    framework::CWnd& window_;
    CommandPanel& panel_;
    StatusTexts& status_;
    Utilities& utilities_;
    Viewport& viewport_;
};

}  // namespace workbench

#include "hostside.h"

#include "../ui/commandpanel.h"
#include "../ui/viewport.h"
#include "statustexts.h"
#include "utilities.h"

using framework::CWnd;

namespace workbench {

HostSide::HostSide(kiln::Core& core, CWnd& window, CommandPanel& panel, StatusTexts& status,
                   Utilities& utilities, Viewport& viewport)
    : core_(core),
      window_(window),
      panel_(panel),
      status_(status),
      utilities_(utilities),
      viewport_(viewport) {
    core_.setHostWindow(this);
}

HostSide::~HostSide() {
    core_.setHostWindow(nullptr);
}

HWND HostSide::addRollupPage(HINSTANCE module, int dialogId, DLGPROC procedure, const char* title,
                             LPARAM param, DWORD flags, int category) {
    return panel_.addRollup(module, dialogId, procedure, title ? title : "", param,
                            (flags & APPENDROLL_CLOSED) != 0, category);
}

void HostSide::deleteRollupPage(HWND page) {
    panel_.deleteRollup(page);
}

void HostSide::rollupMouseMessage(HWND page, UINT message, WPARAM wParam, LPARAM lParam) {
    panel_.rollupMouse(page, message, wParam, lParam);
}

void HostSide::zoomToSelection() {
    viewport_.viewSelected();
}

void HostSide::pushPrompt(const char* text) {
    status_.setPrompt(text);
}

void HostSide::utilityChanged(ClassDesc* utility) {
    utilities_.showOpen(utility);
}

}  // namespace workbench

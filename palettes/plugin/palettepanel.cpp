#include "palettepanel.h"

#include "resource.h"
#include "texts.h"

#include <framework/module.h>

#include <utility>

using framework::ModuleScope, framework::moduleInstance;

namespace palettes {

namespace {

constexpr int kRollupCategory = 4200;

}  // namespace

PalettePanel& PalettePanel::instance() {
    static PalettePanel panel;
    return panel;
}

void PalettePanel::BeginEditParams(Interface* host, IUtil* utility) {
    const ModuleScope scope;
    host_ = host;
    utility_ = utility;
    try {
        page_ = host->AddRollupPage(moduleInstance(), IDD_PALETTE_PANEL, handleMessage,
                                    textOf(TextId::kUtility).c_str(), 0, 0, kRollupCategory);
    } catch (...) {
        page_ = nullptr;  // no page until the utility is opened again
    }
}

void PalettePanel::EndEditParams(Interface* host, IUtil*) {
    const ModuleScope scope;
    utility_ = nullptr;
    try {
        host->DeleteRollupPage(std::exchange(page_, nullptr));
    } catch (...) {
        // The host failed to delete its own page; there is nothing to do about it here.
    }
}

INT_PTR CALLBACK PalettePanel::handleMessage(HWND page, UINT message, WPARAM wParam,
                                             LPARAM lParam) {
    const ModuleScope scope;
    PalettePanel& panel = instance();
    try {
        switch (message) {
            case WM_INITDIALOG:
                return TRUE;
            case WM_MOUSEMOVE:
            case WM_LBUTTONDOWN:
            case WM_LBUTTONUP:
                panel.host_->RollupMouseMessage(page, message, wParam, lParam);
                return TRUE;
            case WM_COMMAND:
                if (LOWORD(wParam) == IDC_OPEN_PALETTES) panel.window_.open(*panel.host_);
                if (LOWORD(wParam) == IDOK && panel.utility_ != nullptr)
                    panel.utility_->CloseUtility();
                return TRUE;
            default:
                return FALSE;
        }
    } catch (...) {
        ::MessageBeep(MB_ICONWARNING);
        return FALSE;
    }
}

}  // namespace palettes

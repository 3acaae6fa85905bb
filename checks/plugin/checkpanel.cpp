#include "checkpanel.h"

#include "resource.h"
#include "texts.h"

#include <base/utf16.h>
#include <framework/module.h>

#include <utility>

using framework::ModuleScope, framework::moduleInstance;

namespace checks {

namespace {

constexpr int kRollupCategory = 4100;

}  // namespace

CheckPanel& CheckPanel::instance() {
    static CheckPanel panel;
    return panel;
}

void CheckPanel::BeginEditParams(Interface* host, IUtil* utility) {
    const ModuleScope scope;
    host_ = host;
    utility_ = utility;
    try {
        window_.onCounts = [this] { showCounts(); };
        page_ = host->AddRollupPage(moduleInstance(), IDD_CHECK_PANEL, handleMessage,
                                    textOf(TextId::kUtility).c_str(), 0, 0, kRollupCategory);
        showCounts();
    } catch (...) {
        page_ = nullptr;  // no page until the utility is opened again
    }
}

void CheckPanel::EndEditParams(Interface* host, IUtil*) {
    const ModuleScope scope;
    utility_ = nullptr;
    try {
        host->DeleteRollupPage(std::exchange(page_, nullptr));
    } catch (...) {
        // The host failed to delete its own page; there is nothing to do about it here.
    }
}

INT_PTR CALLBACK CheckPanel::handleMessage(HWND page, UINT message, WPARAM wParam, LPARAM lParam) {
    const ModuleScope scope;
    CheckPanel& panel = instance();
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
                if (LOWORD(wParam) == IDC_CHECK_SCENE) panel.window_.open(*panel.host_);
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

void CheckPanel::showCounts() const {
    if (page_ != nullptr)
        ::SetDlgItemTextW(page_, IDC_CHECK_COUNTS, base::toWide(window_.countsText()).c_str());
}

}  // namespace checks

#include <base/utf16.h>
#include <framework/module.h>
#include <plugin/utilitypage.h>

#include <utility>

using framework::ModuleScope, framework::moduleInstance;

namespace plugin {

void UtilityPage::BeginEditParams(Interface* host, IUtil* utility) {
    const ModuleScope scope;
    host_ = host;
    utility_ = utility;
    try {
        page_ = host->AddRollupPage(moduleInstance(), dialog_, handleMessage, title().c_str(),
                                    reinterpret_cast<LPARAM>(this), 0, category_);
        if (page_ != nullptr) onShown();
    } catch (...) {
        page_ = nullptr;  // no page until the utility is opened again
    }
}

void UtilityPage::EndEditParams(Interface* host, IUtil*) {
    const ModuleScope scope;
    utility_ = nullptr;
    try {
        host->DeleteRollupPage(std::exchange(page_, nullptr));
    } catch (...) {
        // The host failed to delete its own page; there is nothing to do about it here.
    }
}

INT_PTR CALLBACK UtilityPage::handleMessage(HWND page, UINT message, WPARAM wParam, LPARAM lParam) {
    const ModuleScope scope;
    if (message == WM_INITDIALOG) {
        ::SetWindowLongPtrW(page, DWLP_USER, lParam);
        return TRUE;
    }
    auto* const utility = reinterpret_cast<UtilityPage*>(::GetWindowLongPtrW(page, DWLP_USER));
    if (utility == nullptr) return FALSE;
    try {
        switch (message) {
            case WM_MOUSEMOVE:
            case WM_LBUTTONDOWN:
            case WM_LBUTTONUP:
                utility->host_->RollupMouseMessage(page, message, wParam, lParam);
                return TRUE;
            case WM_COMMAND:
                utility->onCommand(LOWORD(wParam), HIWORD(wParam));
                return TRUE;
            default:
                return FALSE;
        }
    } catch (...) {
        ::MessageBeep(MB_ICONWARNING);
        return FALSE;
    }
}

void UtilityPage::setText(int id, const std::string& text) const {
    if (page_ != nullptr) ::SetDlgItemTextW(page_, id, base::toWide(text).c_str());
}

void UtilityPage::close() const {
    if (utility_ != nullptr) utility_->CloseUtility();
}

}  // namespace plugin

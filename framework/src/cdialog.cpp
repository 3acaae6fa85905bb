#include "dialognavigation.h"
#include "module_internal.h"
#include "windowrouter.h"

#include <framework/cdialog.h>
#include <framework/module.h>

#include <charconv>

CDialog::~CDialog() {
    // Here and not in the base, so that the last messages still find a dialog.
    DestroyWindow();
    DialogNavigation::remove(*this);
}

INT_PTR CDialog::DoModal() {
    if (HasWindow()) return -1;
    // The resources are the caller's choice; the context is always the module's.
    const HINSTANCE resources = resourceInstance();
    const ModuleScope module;
    ensureCommonControls();
    modal_ = true;
    const INT_PTR result = ::DialogBoxParamW(resources, MAKEINTRESOURCEW(templateId_), parent_,
                                             DialogProc, reinterpret_cast<LPARAM>(this));
    modal_ = false;
    return result;
}

bool CDialog::Create(UINT templateId, HWND parent) {
    if (HasWindow()) return false;
    const HINSTANCE resources = resourceInstance();
    const ModuleScope module;
    ensureCommonControls();
    templateId_ = templateId;
    parent_ = parent;
    failed_ = false;
    const HWND window = ::CreateDialogParamW(resources, MAKEINTRESOURCEW(templateId), parent,
                                             DialogProc, reinterpret_cast<LPARAM>(this));
    if (window && failed_) DestroyWindow();
    return window && HasWindow();
}

void CDialog::EndDialog(INT_PTR result) {
    if (modal_) {
        ::EndDialog(Handle(), result);
    } else {
        Hide();
    }
}

void CDialog::UpdateData(bool save) {
    DataExchange exchange(*this, save);
    DoDataExchange(exchange);
}

RECT CDialog::FromDialogUnits(RECT units) const {
    if (HasWindow()) ::MapDialogRect(Handle(), &units);
    return units;
}

bool CDialog::OnInitDialog() {
    UpdateData(false);
    return true;
}

void CDialog::OnOK() {
    if (modal_) UpdateData(true);
    EndDialog(IDOK);
}

void CDialog::OnCancel() {
    EndDialog(IDCANCEL);
}

LRESULT CDialog::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_COMMAND: {
            const int id = LOWORD(wParam);
            if (OnCommand(id, HIWORD(wParam), reinterpret_cast<HWND>(lParam))) return 0;
            if (HIWORD(wParam) != BN_CLICKED || (id != IDOK && id != IDCANCEL))
                return Default(message, wParam, lParam);
            if (id == IDOK) {
                OnOK();
            } else {
                OnCancel();
            }
            return 0;
        }
        case WM_NCDESTROY:
            DialogNavigation::remove(*this);
            break;
        default:
            break;
    }
    return CWnd::WindowProc(message, wParam, lParam);
}

INT_PTR CALLBACK CDialog::DialogProc(HWND dialog, UINT message, WPARAM, LPARAM lParam) {
    // The first message here is usually not the first of the window: those before it (fonts, the
    // first sizes) need no object.
    if (message != WM_INITDIALOG) return FALSE;
    const ModuleScope module;
    return reinterpret_cast<CDialog*>(lParam)->Initialise(dialog);
}

INT_PTR CDialog::Initialise(HWND dialog) noexcept {
    try {
        if (WindowRouter::connect(*this, dialog)) {
            WindowRouter::own(*this);
            if (!modal_) DialogNavigation::add(*this);
            return OnInitDialog();
        }
    } catch (...) {
        reportCurrentException();
    }
    failed_ = true;
    if (modal_) ::EndDialog(dialog, -1);
    return FALSE;
}

// Data exchange

void DataExchange::Text(int id, std::string& value) {
    if (!dialog_.Item(id)) return;
    if (save_) {
        value = dialog_.ItemText(id);
    } else {
        dialog_.SetItemText(id, value);
    }
}

void DataExchange::Integer(int id, int& value) {
    std::string text = std::to_string(value);
    Text(id, text);
    if (!save_) return;
    int entered = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), entered);
    if (parsed.ec == std::errc() && parsed.ptr == text.data() + text.size()) value = entered;
}

void DataExchange::Check(int id, bool& value) {
    if (!dialog_.Item(id)) return;
    if (save_) {
        value = dialog_.IsItemChecked(id);
    } else {
        dialog_.CheckItem(id, value);
    }
}

void DataExchange::Control(int id, CWnd& control) {
    if (!save_ && !control.HasWindow()) control.SubclassDlgItem(id, dialog_.Handle());
}

#include "caboutdlg.h"

#include <framework/module.h>
#include <resources/resource.h>
#include <tessera/browserexports.h>

using framework::ModuleScope;

CAboutDlg::CAboutDlg(HWND parent) : CDialog(IDD_ABOUT, parent) {}

bool CAboutDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    picture_.AutoLoad(IDC_ABOUT_PICTURE, Handle());
    return true;
}

void qofltAboutShow() {
    const ModuleScope scope;
    try {
        CAboutDlg(GetActiveWindow()).DoModal();
    } catch (...) {
        // Without memory there is no about box.
    }
}

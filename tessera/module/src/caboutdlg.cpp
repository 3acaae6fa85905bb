#include "caboutdlg.h"

#include <framework/module.h>
#include <resources/resource.h>
#include <tessera/browserexports.h>
#include <tessera_version.h>

#include <cstdio>

using framework::CDialog, framework::ModuleScope;

namespace {

constexpr const char* kVersionText = "版本 " TESSERA_SHORT_VERSION;
constexpr const char* kBuildFormat = "Build %s";
constexpr const char* kBuild = TESSERA_BUILD_NUMBERS;

}  // namespace

CAboutDlg::CAboutDlg(HWND parent) : CDialog(IDD_ABOUT, parent) {}

bool CAboutDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    picture_.AutoLoad(IDC_ABOUT_PICTURE, Handle());
    SetItemText(IDC_ABOUT_VERSION, kVersionText);
    char build[64];
    std::snprintf(build, sizeof build, kBuildFormat, kBuild);
    SetItemText(IDC_ABOUT_BUILD, build);
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

#include "avfltutil.h"

#include <diagnostics/log.h>
#include <framework/module.h>
#include <resources/resource.h>
#include <tessera/browserclient.h>
#include <tessera/lodviewer.h>

#include <utility>

using framework::ModuleScope, framework::moduleInstance;

namespace {

constexpr const char* kSource = "avfltpanel";
constexpr int kDialogLine = 523;
constexpr int kMakeBrowserLine = 717;

constexpr const char* kPanelTitle = "Aviary ©";
constexpr int kRollupCategory = 4000;

}  // namespace

AvFltUtil& AvFltUtil::instance() {
    static AvFltUtil utility;
    return utility;
}

void AvFltUtil::BeginEditParams(Interface* host, IUtil* utility) {
    const ModuleScope scope;
    ip = host;
    iu = utility;
    try {
        hPanel = ip->AddRollupPage(moduleInstance(), IDD_PANEL, panelProc, kPanelTitle, 0, 0,
                                   kRollupCategory);
    } catch (...) {
        hPanel = nullptr;  // no page until the utility is closed and opened again
    }
}

void AvFltUtil::EndEditParams(Interface* host, IUtil*) {
    const ModuleScope scope;
    iu = nullptr;
    ip = nullptr;
    const HWND page = std::exchange(hPanel, nullptr);
    try {
        host->DeleteRollupPage(page);
    } catch (...) {
        // The host failed to delete its own page; there is nothing to do about it here.
    }
}

INT_PTR CALLBACK AvFltUtil::panelProc(HWND panel, UINT message, WPARAM wParam, LPARAM lParam) {
    const ModuleScope scope;
    return diagnostics::guarded(kSource, kDialogLine, INT_PTR{TRUE}, [&] {
        return instance().handleMessage(panel, message, wParam, lParam);
    });
}

INT_PTR AvFltUtil::handleMessage(HWND panel, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            makeBrowser();
            return TRUE;
        case WM_DESTROY:
            return TRUE;
        case WM_MOUSEMOVE:
        case WM_LBUTTONDOWN:
        case WM_LBUTTONUP:
            if (ip) ip->RollupMouseMessage(panel, message, wParam, lParam);
            return TRUE;
        case WM_COMMAND:
            handleCommand(LOWORD(wParam));
            return TRUE;
        default:
            return FALSE;
    }
}

void AvFltUtil::handleCommand(int control) {
    using tessera::LodViewer;
    switch (control) {
        case IDOK:
            if (iu) iu->CloseUtility();
            break;
        case IDC_BROWSER:
            if (ip) tessera::showBrowser(*ip);
            break;
        case IDC_LOD_MORE:
            stepLod(&LodViewer::MoreDetail);
            break;
        case IDC_LOD_MOST:
            stepLod(&LodViewer::MostDetail);
            break;
        case IDC_LOD_LESS:
            stepLod(&LodViewer::LessDetail);
            break;
        case IDC_LOD_LEAST:
            stepLod(&LodViewer::LeastDetail);
            break;
        case IDC_ABOUT:
            qofltAboutShow();
            break;
        default:
            break;
    }
}

void AvFltUtil::makeBrowser() {
    constexpr bool kLogsItself = true;
    diagnostics::guarded(
        kSource, kMakeBrowserLine, false,
        [this] { return ip && tessera::createBrowser(*ip) == tessera::kBrowserDone; }, kLogsItself);
}

template <typename Step>
void AvFltUtil::stepLod(Step step) {
    if (!ip) return;
    tessera::LodViewer viewer(*ip);
    if ((viewer.*step)())
        ip->RedrawViews(ip->GetTime(), REDRAW_NORMAL, nullptr);
    else
        tessera::beep();
}

#include "module_internal.h"

#include <base/utf16.h>
#include <framework/cwinapp.h>
#include <framework/module.h>

#include <string>
#include <utility>

namespace framework {

namespace {

CWinApp* g_current = nullptr;
bool g_started = false;

std::string describe(const std::exception_ptr& exception) {
    try {
        std::rethrow_exception(exception);
    } catch (const std::exception& known) {
        return known.what();
    } catch (...) {
        return "unknown exception";
    }
}

}  // namespace

void reportCurrentException() noexcept {
    try {
        if (CWinApp* const app = CWinApp::Current()) app->OnException(std::current_exception());
    } catch (...) {
        // A failure while reporting cannot be reported.
    }
}

CWinApp::CWinApp() {
    g_current = this;
}

CWinApp::~CWinApp() {
    if (g_current == this) g_current = nullptr;
}

CWinApp* CWinApp::Current() noexcept {
    return g_current;
}

HINSTANCE CWinApp::Instance() const noexcept {
    return moduleInstance();
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): overridden so.
void CWinApp::OnException(std::exception_ptr exception) {
    ::OutputDebugStringW(
        base::toWide("Exception in a window procedure: " + describe(exception) + "\n").c_str());
}

BOOL CWinApp::DllMain(DWORD reason) noexcept {
    CWinApp* const app = Current();
    if (!app) return TRUE;
    const ModuleScope scope;
    try {
        if (reason == DLL_PROCESS_ATTACH) {
            g_started = app->InitInstance();
            return g_started;
        }
        // After a start hook that refused, the platform asks to detach as well.
        if (reason == DLL_PROCESS_DETACH && std::exchange(g_started, false)) app->ExitInstance();
    } catch (...) {
        reportCurrentException();
        return reason != DLL_PROCESS_ATTACH;
    }
    return TRUE;
}

int CWinApp::RunProgram() noexcept {
    CWinApp* const app = Current();
    if (!app) return 1;
    const ModuleScope scope;
    try {
        ensureCommonControls();
        if (!app->InitInstance()) return 1;
        app->exitCode_ = app->Run();
        return app->ExitInstance();
    } catch (...) {
        reportCurrentException();
        return 1;
    }
}

int CWinApp::Run() {
    MSG message{};
    // -1 is a failure of the call itself, which would repeat without end.
    while (::GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (PreTranslateMessage(message)) continue;
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
    return static_cast<int>(message.wParam);
}

}  // namespace framework

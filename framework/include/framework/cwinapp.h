// The application object of a module.
#pragma once

#include <framework/win32.h>

#include <exception>

namespace framework {

/// One static instance per module. A library's DllMain hands its calls to `DllMain` below; a
/// program's main function calls `RunProgram`.
class CWinApp {
public:
    /// Makes this the module's application object; it must outlive every window.
    CWinApp();
    virtual ~CWinApp();
    CWinApp(const CWinApp&) = delete;
    CWinApp& operator=(const CWinApp&) = delete;

    /// The module's application object, or null when it has none.
    static CWinApp* Current() noexcept;

    HINSTANCE Instance() const noexcept;

    /// Start hook: once, when the module has been loaded. False makes the load fail. In a library
    /// it runs within DllMain, so it must not load libraries or create windows.
    virtual bool InitInstance() { return true; }

    /// End hook: once, before the module is unloaded. In a program its result is the exit code.
    virtual int ExitInstance() { return exitCode_; }

    /// Sees a program's messages before they are dispatched (accelerators); true takes the message.
    virtual bool PreTranslateMessage(MSG&) { return false; }

    /// Called in a catch block of a window procedure, which no exception may leave. The default
    /// writes a line to the debugger. What this hook throws is dropped.
    virtual void OnException(std::exception_ptr exception);

    /// For a library's DllMain: runs the start and end hooks within a `ModuleScope`; an exception
    /// from the start hook makes the load fail.
    static BOOL DllMain(DWORD reason) noexcept;

    /// Runs a program: start hook, messages until WM_QUIT, end hook. Returns the exit code, 1 when
    /// the start hook refuses or throws.
    static int RunProgram() noexcept;

private:
    int Run();

    int exitCode_ = 0;
};

}  // namespace framework

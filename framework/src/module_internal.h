// What the parts of the window layer share among themselves.
#pragma once

#include <framework/win32.h>

#include <cstdint>

namespace framework {

/// Registers the platform's common controls, once.
void ensureCommonControls() noexcept;

/// Passes the exception that is being handled to the application object. Throws nothing. Must be
/// called from within a catch block.
void reportCurrentException() noexcept;

/// A function of a loaded library of the platform by name, or null. The caller names its type.
template <typename Function>
Function* platformFunction(HMODULE module, const char* name) noexcept {
    if (!module) return nullptr;
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
}

template <typename Function>
Function* platformFunction(const wchar_t* library, const char* name) noexcept {
    return platformFunction<Function>(::GetModuleHandleW(library), name);
}

}  // namespace framework

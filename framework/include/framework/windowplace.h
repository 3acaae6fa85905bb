// Where the user has put a window, kept from run to run.
#pragma once

#include <framework/win32.h>

#include <string>

namespace framework {

/// Keeps place and size of the window under `name` in the user's part of the registry. Where that
/// cannot be written nothing is kept.
void keepWindowPlace(HWND window, const std::wstring& name) noexcept;

/// Gives the window the place and size that are kept under `name`. False, with nothing changed,
/// when there are none or no screen would show them.
bool restoreWindowPlace(HWND window, const std::wstring& name) noexcept;

}  // namespace framework

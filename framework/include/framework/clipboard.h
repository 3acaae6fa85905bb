// Text on the clipboard.
#pragma once

#include <framework/win32.h>

#include <string>
#include <string_view>

namespace framework {

/// Puts a text (UTF-8) on the clipboard in place of what is there. False when another program has
/// the clipboard or there is no memory; what is there stays then. May throw `std::bad_alloc`.
bool putOnClipboard(HWND owner, std::string_view text);

/// The text on the clipboard in UTF-8; empty when there is none. May throw `std::bad_alloc`.
std::string textFromClipboard(HWND owner);

}  // namespace framework

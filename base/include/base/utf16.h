// Between the UTF-8 of our texts and the UTF-16 of the platform's calls. For Windows only.
#pragma once

#include <string>
#include <string_view>

namespace base {

/// UTF-16 of a UTF-8 text. Bytes that are not UTF-8 become U+FFFD, so that any text can be shown.
/// Embedded NULs are kept. Throws std::bad_alloc, and std::length_error beyond 512 MB.
std::wstring toWide(std::string_view utf8);

/// UTF-8 of a UTF-16 text. Unpaired surrogates become U+FFFD. Throws as `toWide`.
std::string toUtf8(std::wstring_view utf16);

}  // namespace base

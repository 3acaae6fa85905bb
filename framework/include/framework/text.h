// Conversion between the UTF-8 of our texts and the UTF-16 of the platform's calls.
#pragma once

#include <string>
#include <string_view>

/// UTF-16 of a UTF-8 text. Bytes that are not UTF-8 become U+FFFD, so that any text can be shown.
/// Embedded NULs are kept. Throws std::bad_alloc, and std::length_error beyond 2 GB.
std::wstring toWide(std::string_view utf8);

/// UTF-8 of a UTF-16 text. Unpaired surrogates become U+FFFD. Throws as `toWide`.
std::string toUtf8(std::wstring_view utf16);

/// The longest beginning of `utf8` of at most `maxBytes` bytes that does not end within a
/// character.
std::string_view clipUtf8(std::string_view utf8, size_t maxBytes) noexcept;

// Text in fixed-width fields.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

/// Puts `text` into `field`: up to its first NUL, cut at a UTF-8 character boundary when it is too
/// long, the rest of the field filled with NULs. A full field has no terminator.
void fltSetText(std::span<char> field, std::string_view text) noexcept;

/// The text of a fixed-width field, up to its terminator or its end.
std::string_view fltText(std::span<const char> field) noexcept;

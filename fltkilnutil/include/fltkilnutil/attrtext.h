// Numbers of attributes as text, the same on every platform and in every locale.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// Room for any text that the formatting functions produce, terminator included.
inline constexpr std::size_t kFltNumberTextSize = 32;

/// Writes `value` to `text`, NUL-terminated, as "%d" would; returns the number of characters.
std::size_t fltFormatInteger(std::int32_t value, char (&text)[kFltNumberTextSize]) noexcept;

/// Writes `value` to `text`, NUL-terminated, as "%g" would in the "C" locale; returns the number of
/// characters.
std::size_t fltFormatReal(double value, char (&text)[kFltNumberTextSize]) noexcept;

/// Reads the decimal integer at the start of `text`, after white space and a sign; 0 when there is
/// none. A number out of range becomes the nearest limit.
std::int32_t fltParseInteger(std::string_view text) noexcept;

/// Reads the decimal floating-point number at the start of `text`, after white space and a sign; 0
/// when there is none ("nan" and "inf" are none). A number out of range becomes the largest finite
/// one of its sign, or 0.
double fltParseReal(std::string_view text) noexcept;

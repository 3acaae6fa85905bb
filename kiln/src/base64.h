// Bytes as text.
#pragma once

#include <kiln/platform.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace kiln {

/// Base64 with the usual alphabet and padding, in one line.
std::string toBase64(const BYTE* bytes, std::size_t length);
/// Appends that to `text`.
void appendBase64(const BYTE* bytes, std::size_t length, std::string& text);

/// How many bytes `text` stands for; none when it has a length that no bytes lead to.
std::optional<std::size_t> base64Size(std::string_view text) noexcept;
/// Puts them at `bytes`; false when `text` is not exactly what `toBase64` returns for some bytes.
bool fromBase64(std::string_view text, BYTE* bytes) noexcept;

}  // namespace kiln

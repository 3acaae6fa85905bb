// Bytes as text.
#pragma once

#include <kiln/platform.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kiln {

/// Base64 with the usual alphabet and padding, in one line.
std::string toBase64(const BYTE* bytes, std::size_t length);
/// The bytes again; none when `text` is not exactly what `toBase64` returns for some bytes.
std::optional<std::vector<BYTE>> fromBase64(std::string_view text);

}  // namespace kiln

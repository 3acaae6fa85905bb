// Text of files that do not say how they are encoded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace fltkilnutil {

/// The text in `field` as UTF-8: up to its first NUL, without control characters other than tabs
/// and line ends, without blanks at its end.
///
/// Bytes that are valid UTF-8 are taken as such. A field that is full to its end (a NUL would have
/// ended it) may have cut its last character in two; the rest of it is dropped. Other bytes are
/// taken as GB 2312 when every byte above 0x7F belongs to a pair in that set's range and the
/// platform knows all characters, which is how older programs write Chinese; what is left is taken
/// as Latin-1, so that any bytes at all give readable text of some kind.
std::string textOf(std::span<const std::uint8_t> field);

/// The text in a field of a record.
inline std::string textOf(std::span<const char> field) {
    return textOf(std::span(reinterpret_cast<const std::uint8_t*>(field.data()), field.size()));
}

}  // namespace fltkilnutil

// UTF-8, the encoding of all texts within the programs.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace base {

/// Bytes of the character that begins with `lead`; 0 when none does.
std::size_t characterLength(char lead) noexcept;

/// Whether `byte` stands within a character and begins none.
constexpr bool continuesCharacter(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// Bytes of the well-formed character at `at`, which is below the text's size; 0 when there is
/// none: a wrong byte, a form that is longer than needed, a surrogate, a value above U+10FFFF, or a
/// character that the end of the text cuts.
std::size_t characterAt(std::string_view text, std::size_t at) noexcept;

/// `text` with every byte that is not part of a well-formed character replaced by U+FFFD.
std::string validUtf8(std::string_view text);

/// The longest beginning of `text` of at most `maxBytes` bytes that does not end within a
/// character.
std::string_view clipUtf8(std::string_view text, std::size_t maxBytes) noexcept;

/// The text with the letters A to Z made small.
std::string smallLetters(std::string_view text);

/// Equal but for the case of the letters A to Z.
bool sameTextIgnoringCase(std::string_view a, std::string_view b) noexcept;

}  // namespace base

// The languages that windows and messages speak.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace base {

/// A language; its value is the platform's identifier of it (LANGID).
enum class Language : std::uint16_t {
    kChinese = 0x0804,  ///< Simplified Chinese, and what is shown where another has no text
    kEnglish = 0x0409,
};

/// "zh" or "en".
const char* codeOf(Language language) noexcept;
/// The language of a code as `codeOf` returns it; none for any other.
std::optional<Language> languageOf(std::string_view code) noexcept;

}  // namespace base

#include "text.h"

#include <algorithm>

namespace kiln {

namespace {

constexpr char lower(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr unsigned byteAt(std::string_view text, std::size_t at) noexcept {
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0u;
}

// The length of the well-formed sequence at `at`; 0 when there is none.
std::size_t sequenceLength(std::string_view text, std::size_t at) noexcept {
    const unsigned lead = byteAt(text, at);
    if (lead < 0x80) return 1;
    const std::size_t length = lead >= 0xC2 && lead < 0xE0   ? 2
                               : lead >= 0xE0 && lead < 0xF0 ? 3
                               : lead >= 0xF0 && lead < 0xF5 ? 4
                                                             : 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byteAt(text, at + i) & 0xC0) != 0x80) return 0;
    // Overlong forms, surrogates and values above U+10FFFF show in the second byte.
    const unsigned second = byteAt(text, at + 1);
    if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
        (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F))
        return 0;
    return length;
}

}  // namespace

bool sameTextIgnoringCase(std::string_view a, std::string_view b) noexcept {
    return std::ranges::equal(a, b, {}, lower, lower);
}

std::string validUtf8(std::string_view text) {
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    if (std::ranges::all_of(text, isAscii)) return std::string(text);
    std::string valid;
    valid.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = sequenceLength(text, at);
        if (length > 0)
            valid += text.substr(at, length);
        else
            valid += "\xEF\xBF\xBD";
        at += std::max<std::size_t>(length, 1);
    }
    return valid;
}

std::filesystem::path pathFrom(std::string_view utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string textOf(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

}  // namespace kiln

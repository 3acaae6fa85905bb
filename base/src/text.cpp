#include <base/text.h>

#include <algorithm>

namespace base {

namespace {

constexpr char smallLetter(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr unsigned valueOf(char c) noexcept {
    return static_cast<unsigned char>(c);
}

// Whether a character's second byte may follow its first one. Overlong forms, surrogates and
// values above U+10FFFF show there.
bool mayFollow(unsigned lead, unsigned second) noexcept {
    switch (lead) {
        case 0xE0:
            return second >= 0xA0;
        case 0xED:
            return second < 0xA0;
        case 0xF0:
            return second >= 0x90;
        case 0xF4:
            return second < 0x90;
        default:
            return true;
    }
}

}  // namespace

std::size_t characterLength(char lead) noexcept {
    const unsigned value = valueOf(lead);
    if (value < 0x80) return 1;
    if (value >= 0xC2 && value < 0xE0) return 2;
    if (value >= 0xE0 && value < 0xF0) return 3;
    if (value >= 0xF0 && value < 0xF5) return 4;
    return 0;
}

std::size_t characterAt(std::string_view text, std::size_t at) noexcept {
    const std::size_t length = characterLength(text[at]);
    if (length <= 1) return length;
    const std::string_view rest = text.substr(at + 1, length - 1);
    if (rest.size() < length - 1 || !std::ranges::all_of(rest, continuesCharacter)) return 0;
    return mayFollow(valueOf(text[at]), valueOf(rest.front())) ? length : 0;
}

std::string validUtf8(std::string_view text) {
    if (std::ranges::all_of(text, [](char c) { return valueOf(c) < 0x80; }))
        return std::string(text);
    std::string valid;
    valid.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = characterAt(text, at);
        if (length > 0)
            valid += text.substr(at, length);
        else
            valid += "\xEF\xBF\xBD";
        at += std::max<std::size_t>(length, 1);
    }
    return valid;
}

std::string_view clipUtf8(std::string_view text, std::size_t maxBytes) noexcept {
    if (text.size() <= maxBytes) return text;
    while (maxBytes > 0 && continuesCharacter(text[maxBytes])) --maxBytes;
    return text.substr(0, maxBytes);
}

std::string smallLetters(std::string_view text) {
    std::string letters(text);
    std::ranges::transform(letters, letters.begin(), smallLetter);
    return letters;
}

bool sameTextIgnoringCase(std::string_view a, std::string_view b) noexcept {
    return std::ranges::equal(a, b, {}, smallLetter, smallLetter);
}

}  // namespace base

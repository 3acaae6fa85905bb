#include "base64.h"

#include <array>
#include <cstdint>

namespace kiln {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// 0xFF for what is no character of the alphabet.
constexpr std::array<std::uint8_t, 256> kValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(0xFF);
    for (std::size_t i = 0; i < kAlphabet.size(); ++i)
        values[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
    return values;
}();

/// For the lowest six bits.
char digitOf(unsigned bits) noexcept {
    return kAlphabet.data()[bits & 63];
}

unsigned valueOf(char c) noexcept {
    return kValues[static_cast<unsigned char>(c)];
}

std::size_t paddingOf(std::string_view text) noexcept {
    std::size_t padding = 0;
    while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=')
        ++padding;
    return padding;
}

}  // namespace

void appendBase64(const BYTE* bytes, std::size_t length, std::string& text) {
    const std::size_t at = text.size();
    text.resize(at + (length + 2) / 3 * 4, '=');
    char* to = text.data() + at;
    for (; length >= 3; bytes += 3, length -= 3, to += 4) {
        const unsigned group = unsigned{bytes[0]} << 16 | unsigned{bytes[1]} << 8 | bytes[2];
        to[0] = digitOf(group >> 18);
        to[1] = digitOf(group >> 12);
        to[2] = digitOf(group >> 6);
        to[3] = digitOf(group);
    }
    if (length == 0) return;
    const unsigned group = unsigned{bytes[0]} << 16 | (length == 2 ? unsigned{bytes[1]} << 8 : 0);
    to[0] = digitOf(group >> 18);
    to[1] = digitOf(group >> 12);
    if (length == 2) to[2] = digitOf(group >> 6);
}

std::string toBase64(const BYTE* bytes, std::size_t length) {
    std::string text;
    appendBase64(bytes, length, text);
    return text;
}

std::optional<std::size_t> base64Size(std::string_view text) noexcept {
    if (text.size() % 4 != 0) return std::nullopt;
    return text.size() / 4 * 3 - paddingOf(text);
}

bool fromBase64(std::string_view text, BYTE* bytes) noexcept {
    const std::size_t padding = paddingOf(text);
    if (text.size() % 4 != 0) return false;
    unsigned wrong = 0;
    const std::size_t whole = text.size() / 4 - (padding > 0 ? 1 : 0);
    const char* at = text.data();
    for (std::size_t i = 0; i < whole; ++i, at += 4, bytes += 3) {
        const unsigned a = valueOf(at[0]), b = valueOf(at[1]), c = valueOf(at[2]),
                       d = valueOf(at[3]);
        wrong |= a | b | c | d;
        const unsigned group = a << 18 | b << 12 | c << 6 | d;
        bytes[0] = static_cast<BYTE>(group >> 16);
        bytes[1] = static_cast<BYTE>(group >> 8);
        bytes[2] = static_cast<BYTE>(group);
    }
    if (padding > 0) {
        const unsigned a = valueOf(at[0]), b = valueOf(at[1]),
                       c = padding == 1 ? valueOf(at[2]) : 0;
        wrong |= a | b | c;
        const unsigned group = a << 18 | b << 12 | c << 6;
        bytes[0] = static_cast<BYTE>(group >> 16);
        if (padding == 1) bytes[1] = static_cast<BYTE>(group >> 8);
        const unsigned rest = padding == 1 ? group & 0xFF : group & 0xFFFF;
        if (rest != 0) return false;  // bits that belong to no byte
    }
    return (wrong & 0xC0) == 0;
}

}  // namespace kiln

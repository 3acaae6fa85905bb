#include "base64.h"

#include <array>

namespace kiln {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<int, 256> kValues = [] {
    std::array<int, 256> values{};
    values.fill(-1);
    for (std::size_t i = 0; i < kAlphabet.size(); ++i)
        values[static_cast<unsigned char>(kAlphabet[i])] = static_cast<int>(i);
    return values;
}();

}  // namespace

std::string toBase64(const BYTE* bytes, std::size_t length) {
    std::string text;
    text.reserve((length + 2) / 3 * 4);
    for (std::size_t at = 0; at < length; at += 3) {
        const std::size_t count = length - at < 3 ? length - at : 3;
        unsigned group = 0;
        for (std::size_t i = 0; i < 3; ++i) group = group << 8 | (i < count ? bytes[at + i] : 0u);
        for (std::size_t i = 0; i < 4; ++i)
            text += i <= count ? kAlphabet[group >> (18 - 6 * i) & 63] : '=';
    }
    return text;
}

std::optional<std::vector<BYTE>> fromBase64(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    std::size_t padding = 0;
    while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=')
        ++padding;
    std::vector<BYTE> bytes;
    bytes.reserve(text.size() / 4 * 3);
    for (std::size_t at = 0; at < text.size(); at += 4) {
        const std::size_t missing = at + 4 == text.size() ? padding : 0;
        unsigned group = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            const int value =
                i < 4 - missing ? kValues[static_cast<unsigned char>(text[at + i])] : 0;
            if (value < 0) return std::nullopt;
            group = group << 6 | static_cast<unsigned>(value);
        }
        for (std::size_t i = 0; i < 3; ++i) {
            const auto byte = static_cast<BYTE>(group >> (16 - 8 * i));
            if (i < 3 - missing)
                bytes.push_back(byte);
            else if (byte != 0)
                return std::nullopt;  // bits that belong to no byte
        }
    }
    return bytes;
}

}  // namespace kiln

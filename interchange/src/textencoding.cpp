#include <interchange/textencoding.h>

#include <algorithm>
#include <string_view>

#ifdef _WIN32
#include <windows.h>
#else
#include <iconv.h>
#endif

namespace interchange {

namespace {

std::uint8_t byteAt(std::string_view text, std::size_t i) {
    return static_cast<std::uint8_t>(text[i]);
}

bool isContinuation(std::uint8_t byte) {
    return (byte & 0xC0) == 0x80;
}

/// Bytes of the UTF-8 character that starts with `lead`; 0 when none does.
std::size_t lengthOf(std::uint8_t lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return 2;
    if (lead >= 0xE0 && lead <= 0xEF) return 3;
    if (lead >= 0xF0 && lead <= 0xF4) return 4;
    return 0;
}

/// Whether the second byte of a character may follow its first: shorter forms exist for some
/// characters, surrogates are none, and Unicode ends at U+10FFFF.
bool mayFollow(std::uint8_t lead, std::uint8_t second) {
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

/// Bytes of the whole character at `i`; 0 when there is none, because of a wrong byte or because
/// the text ends within it.
std::size_t characterAt(std::string_view text, std::size_t i) {
    const std::size_t length = lengthOf(byteAt(text, i));
    if (length == 0 || length > text.size() - i) return 0;
    for (std::size_t k = 1; k < length; ++k) {
        if (!isContinuation(byteAt(text, i + k))) return 0;
    }
    return length == 1 || mayFollow(byteAt(text, i), byteAt(text, i + 1)) ? length : 0;
}

/// Bytes at the start of `text` that are whole UTF-8 characters.
std::size_t validLength(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size()) {
        const std::size_t length = characterAt(text, i);
        if (length == 0) break;
        i += length;
    }
    return i;
}

/// Whether the text ends at `i` with the beginning of a character.
bool isCutCharacter(std::string_view text, std::size_t i) {
    if (lengthOf(byteAt(text, i)) <= text.size() - i) return false;
    const std::string_view rest = text.substr(i + 1);
    return std::ranges::all_of(rest,
                               [](char c) { return isContinuation(static_cast<std::uint8_t>(c)); });
}

/// The text if it reads as GB 2312, without half a pair at the end of a full field; else nothing.
std::string_view asGb2312(std::string_view text, bool full) {
    bool pairs = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (byteAt(text, i) < 0x80) continue;
        if (byteAt(text, i) < 0xA1 || byteAt(text, i) > 0xF7) return {};
        if (i + 1 == text.size()) return full && pairs ? text.substr(0, i) : std::string_view();
        if (byteAt(text, ++i) < 0xA1) return {};
        pairs = true;
    }
    return text;
}

/// The text converted from GB 2312, empty when the platform cannot.
#ifdef _WIN32
std::string fromGb2312(std::string_view text) {
    constexpr UINT kGbk = 936;
    const int length = static_cast<int>(text.size());
    const int wideLength =
        MultiByteToWideChar(kGbk, MB_ERR_INVALID_CHARS, text.data(), length, nullptr, 0);
    if (wideLength <= 0) return {};
    std::wstring wide(static_cast<std::size_t>(wideLength), L'\0');
    MultiByteToWideChar(kGbk, MB_ERR_INVALID_CHARS, text.data(), length, wide.data(), wideLength);
    const int narrowLength = WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, wide.data(),
                                                 wideLength, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(std::max(narrowLength, 0)), '\0');
    WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, wide.data(), wideLength, result.data(),
                        narrowLength, nullptr, nullptr);
    return result;
}
#else
std::string fromGb2312(std::string_view text) {
    const iconv_t converter = iconv_open("UTF-8", "GBK");
    if (converter == reinterpret_cast<iconv_t>(-1)) return {};
    std::string source(text);
    std::string result(text.size() * 3, '\0');
    char* in = source.data();
    char* out = result.data();
    std::size_t inLeft = source.size(), outLeft = result.size();
    const bool whole = iconv(converter, &in, &inLeft, &out, &outLeft) == 0;
    iconv_close(converter);
    result.resize(whole ? result.size() - outLeft : 0);
    return result;
}
#endif

std::string fromLatin1(std::string_view text) {
    std::string result;
    result.reserve(text.size() * 2);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::uint8_t byte = byteAt(text, i);
        if (byte < 0x80) {
            result += static_cast<char>(byte);
        } else if (byte >= 0xA0) {
            result += static_cast<char>(0xC0 | (byte >> 6));
            result += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return result;
}

std::string toUtf8(std::string_view text, bool full) {
    const std::size_t valid = validLength(text);
    if (valid == text.size()) return std::string(text);
    if (full && isCutCharacter(text, valid)) return std::string(text.substr(0, valid));
    const std::string chinese = fromGb2312(asGb2312(text, full));
    return chinese.empty() ? fromLatin1(text) : chinese;
}

bool isStrayControl(char c) {
    return static_cast<std::uint8_t>(c) < 0x20 && c != '\t' && c != '\n';
}

}  // namespace

std::string textOf(std::span<const std::uint8_t> field) {
    const auto terminator = std::ranges::find(field, std::uint8_t{0});
    const bool full = terminator == field.end();
    const std::string_view bytes(reinterpret_cast<const char*>(field.data()),
                                 static_cast<std::size_t>(terminator - field.begin()));
    // What names mostly are: letters and digits of ASCII.
    const auto isPlain = [](char c) { return c > ' ' && c < '\x7F'; };
    if (std::ranges::all_of(bytes, isPlain)) return std::string(bytes);
    std::string text = toUtf8(bytes, full);
    std::erase_if(text, isStrayControl);
    text.erase(text.find_last_not_of(" \t\n") + 1);
    return text;
}

std::string_view startOf(std::string_view text, std::size_t most) noexcept {
    if (text.size() <= most) return text;
    std::size_t end = most;
    while (end > 0 && isContinuation(byteAt(text, end))) --end;
    return text.substr(0, end);
}

}  // namespace interchange

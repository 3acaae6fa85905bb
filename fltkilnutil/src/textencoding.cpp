#include <base/text.h>
#include <fltkilnutil/textencoding.h>

#include <algorithm>
#include <string_view>

#ifdef _WIN32
#include <base/utf16.h>
#include <windows.h>
#else
#include <iconv.h>
#endif

namespace fltkilnutil {

namespace {

std::uint8_t byteAt(std::string_view text, std::size_t i) {
    return static_cast<std::uint8_t>(text[i]);
}

/// Bytes at the start of `text` that are whole UTF-8 characters.
std::size_t validLength(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size()) {
        const std::size_t length = base::characterAt(text, i);
        if (length == 0) break;
        i += length;
    }
    return i;
}

/// Whether the text ends at `i` with the beginning of a character.
bool isCutCharacter(std::string_view text, std::size_t i) {
    if (base::characterLength(text[i]) <= text.size() - i) return false;
    return std::ranges::all_of(text.substr(i + 1), base::continuesCharacter);
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
    return base::toUtf8(wide);
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
    const std::string_view whole(reinterpret_cast<const char*>(field.data()), field.size());
    // What names mostly are: letters and digits of ASCII.
    std::size_t length = 0;
    while (length < whole.size() && whole[length] > ' ' && whole[length] < '\x7F') ++length;
    if (length == whole.size() || whole[length] == 0) return std::string(whole.substr(0, length));
    length = std::min(whole.find('\0', length), whole.size());
    std::string text = toUtf8(whole.substr(0, length), length == whole.size());
    std::erase_if(text, isStrayControl);
    text.erase(text.find_last_not_of(" \t\n") + 1);
    return text;
}

}  // namespace fltkilnutil

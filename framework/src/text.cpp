#include <framework/text.h>
#include <framework/win32.h>

#include <climits>
#include <stdexcept>

namespace {

int platformLength(size_t length) {
    if (length > INT_MAX / 4) throw std::length_error("text too long");
    return static_cast<int>(length);
}

}  // namespace

std::wstring toWide(std::string_view utf8) {
    if (utf8.empty()) return {};
    const int length = platformLength(utf8.size());
    // UTF-16 never has more units than UTF-8 has bytes.
    std::wstring wide(utf8.size(), L'\0');
    const int units = ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data(), length);
    wide.resize(static_cast<size_t>(units));
    return wide;
}

std::string toUtf8(std::wstring_view utf16) {
    if (utf16.empty()) return {};
    const int length = platformLength(utf16.size());
    const int byteCount =
        ::WideCharToMultiByte(CP_UTF8, 0, utf16.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<size_t>(byteCount), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, utf16.data(), length, utf8.data(), byteCount, nullptr,
                          nullptr);
    return utf8;
}

std::string_view clipUtf8(std::string_view utf8, size_t maxBytes) noexcept {
    if (utf8.size() <= maxBytes) return utf8;
    const auto continues = [&](size_t at) {
        return (static_cast<unsigned char>(utf8[at]) & 0xC0) == 0x80;
    };
    size_t end = maxBytes;
    while (end > 0 && continues(end)) --end;
    return utf8.substr(0, end);
}

#include <base/utf16.h>
#include <windows.h>

#include <climits>
#include <stdexcept>

namespace base {

namespace {

int platformLength(std::size_t length) {
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
    wide.resize(static_cast<std::size_t>(units));
    return wide;
}

std::string toUtf8(std::wstring_view utf16) {
    if (utf16.empty()) return {};
    const int length = platformLength(utf16.size());
    const int byteCount =
        ::WideCharToMultiByte(CP_UTF8, 0, utf16.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(byteCount), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, utf16.data(), length, utf8.data(), byteCount, nullptr,
                          nullptr);
    return utf8;
}

}  // namespace base
